// Fuzz target of HTTP replies: the input is the whole reply of a loopback peer to the
// stream's request, read to the end with everything kept and again with kReadOnce.
// The peer is a listening socket of this program: the socket guard routes port 80 to
// it and, right after the stream connects, the reply is written into the connection
// and its sending side shut, so the stream reads a finished reply from one thread.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "kybase/url/url_stream.h"
#include "support/net_guard.h"

namespace {

int listener = -1;
int served = -1;
std::string reply;

// Replies stay within what the loopback connection buffers before anyone reads.
constexpr std::size_t kLongestReply = 32768;

void Answer() {
  served = accept(listener, nullptr, nullptr);
  if (served < 0) return;
  if (!reply.empty() && send(served, reply.data(), reply.size(), MSG_NOSIGNAL | MSG_DONTWAIT) < 0) std::abort();
  shutdown(served, SHUT_WR);
}

void Listen() {
  listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0 || listen(listener, 4) != 0)
    std::abort();
  KyNetGuard::Route(80, ntohs(address.sin_port));
  KyNetGuard::AfterConnect(Answer);
}

std::string Fetch(bool readOnce) {
  KyIUrlStream stream("http://127.0.0.1/fuzz");
  if (readOnce) stream.setHints(KyIUrlStream::kReadOnce);
  std::string out;
  for (char c; stream.get(c);) out += c;
  if (served >= 0) close(served);
  served = -1;
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (listener < 0) Listen();
  reply.assign(reinterpret_cast<const char*>(data), size < kLongestReply ? size : kLongestReply);
  if (Fetch(false) != Fetch(true)) std::abort();
  KyNetGuard::Names().clear();
  KyNetGuard::Ports().clear();
  return 0;
}
