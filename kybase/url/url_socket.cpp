#include "kybase/url/url_socket_internal.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr int kWaitMilliseconds = 10000;
constexpr int kSilentPeriods = 2;

bool SetBlocking(int descriptor, bool blocking) {
  int flags = fcntl(descriptor, F_GETFL);
  if (flags < 0) return false;
  flags = blocking ? (flags & ~O_NONBLOCK) : (flags | O_NONBLOCK);
  return fcntl(descriptor, F_SETFL, flags) == 0;
}

// Connects without blocking, so that an address that never answers is given up after
// the usual wait instead of the system's much longer one.
bool ConnectBounded(int descriptor, const sockaddr_in& address) {
  if (!SetBlocking(descriptor, false)) return false;
  if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    if (errno != EINPROGRESS && errno != EINTR) return false;
    if (!KyUrlWait(descriptor, POLLOUT)) return false;
    int error = 0;
    socklen_t length = sizeof error;
    if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &length) != 0 || error != 0) return false;
  }
  return SetBlocking(descriptor, true);
}

}  // namespace

bool KyUrlWait(int descriptor, short events) {
  int silent = 0;
  for (;;) {
    pollfd entry{descriptor, events, 0};
    int ready = poll(&entry, 1, kWaitMilliseconds);
    if (ready > 0) return true;
    if (ready == 0) {
      if (++silent >= kSilentPeriods) return false;
    } else if (errno != EINTR) {
      return false;
    }
  }
}

int KyUrlConnect(const char* host, unsigned short port) {
  if (host == nullptr) return -1;
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host, nullptr, &hints, &found) != 0 || found == nullptr) return -1;
  sockaddr_in address{};
  std::memcpy(&address, found->ai_addr, sizeof address);
  freeaddrinfo(found);
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0) return -1;
  if (!ConnectBounded(descriptor, address)) KyUrlClose(descriptor);
  return descriptor;
}

bool KyUrlSend(int descriptor, const char* text, std::size_t length) {
  while (length > 0) {
    if (!KyUrlWait(descriptor, POLLOUT)) return false;
    ssize_t sent = send(descriptor, text, length, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0) {
      if (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK) continue;
      return false;
    }
    text += sent;
    length -= static_cast<std::size_t>(sent);
  }
  return true;
}

bool KyUrlSend(int descriptor, const char* text) { return KyUrlSend(descriptor, text, std::strlen(text)); }

int KyUrlReceive(int descriptor, char* buffer, int size) {
  if (descriptor < 0 || size < 1) return -1;
  for (;;) {
    if (!KyUrlWait(descriptor, POLLIN)) return -1;
    ssize_t received = recv(descriptor, buffer, static_cast<std::size_t>(size), 0);
    if (received < 0 && errno == EINTR) continue;
    return static_cast<int>(received);
  }
}

void KyUrlClose(int& descriptor) {
  if (descriptor >= 0) close(descriptor);
  descriptor = -1;
}
