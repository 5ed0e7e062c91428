#include "kybase/url/url_protocol_internal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "kybase/url/url_socket_internal.h"

namespace {

// An FTP reply is read in pieces of this size while pieces come full; a server that
// never stops talking is cut off after kDrainLimit bytes of one reply.
constexpr int kReplyPiece = 512;
constexpr int kDrainLimit = 64 * 1024;

}  // namespace

// Opened without blocking, so that a pipe with no writer cannot hold the open; reads
// then block as usual.
FileProtocol::FileProtocol(const char* path, bool /*binary*/)
    : descriptor(path != nullptr ? open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK) : -1) {
  if (descriptor >= 0) fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
}

FileProtocol::~FileProtocol() {
  if (descriptor >= 0) close(descriptor);
}

int FileProtocol::read(char* buffer, int size) {
  if (descriptor < 0 || size < 1) return -1;
  for (;;) {
    ssize_t got = ::read(descriptor, buffer, static_cast<std::size_t>(size));
    if (got < 0 && errno == EINTR) continue;
    return static_cast<int>(got);
  }
}

int StreamProtocol::read(char* buffer, int size) {
  if (stream == nullptr || !stream->good() || size < 1) return -1;
  stream->read(buffer, size);
  return static_cast<int>(stream->gcount());
}

// The request's line ends are single line feeds, and each piece goes out on its own.
HttpProtocol::HttpProtocol(const char* host, const char* path, unsigned short port)
    : socket(KyUrlConnect(host, port)),
      headerDone(0),
      header(nullptr),
      headerLength(0),
      firstChunk(true),
      window{0, 0, 0, 0} {
  if (socket < 0) return;
  const char* pieces[] = {"GET ", path, " HTTP/1.0\n", "User-Agent: Mozilla/1.5\n", "Host: ", host, "\nAccept: */*\n\n"};
  for (const char* piece : pieces) {
    if (!KyUrlSend(socket, piece)) {
      KyUrlClose(socket);
      return;
    }
  }
}

HttpProtocol::~HttpProtocol() {
  delete[] header;
  KyUrlClose(socket);
}

int HttpProtocol::read(char* buffer, int size) {
  int received = KyUrlReceive(socket, buffer, size);
  if (received < 1 || headerDone != 0) return received;
  if (firstChunk) {
    firstChunk = false;
    header = new char[static_cast<std::size_t>(received) + 1];
    std::memcpy(header, buffer, static_cast<std::size_t>(received));
    header[received] = '\0';
    headerLength = received;
  }
  for (;;) {
    int bodyStart = -1;
    // The count of bytes starts over in every chunk, so the status test below also
    // fires on the fourth byte of a later chunk: a header longer than the first chunk
    // ends there and its rest is delivered as body.
    for (int index = 0; index < received && bodyStart < 0; ++index) {
      std::memmove(window, window + 1, 3);
      window[3] = static_cast<unsigned char>(buffer[index]);
      if (window[0] == '\r' && window[1] == '\n' && (window[2] == '\n' || (window[2] == '\r' && window[3] == '\n'))) {
        headerDone = 1;
        // CR LF LF and one more byte: that byte is the body's first.
        bodyStart = window[3] == '\n' ? index + 1 : index;
        // The text holds only the first chunk; an end found in a later one cuts it at
        // most at its own end.
        if (header != nullptr) header[std::min(bodyStart, headerLength)] = '\0';
      } else if (index == 3 && std::memcmp(window, "HTTP", 4) != 0) {
        // No status line: everything is body, from the first of these four bytes.
        delete[] header;
        header = nullptr;
        headerDone = 1;
        bodyStart = 0;
      }
    }
    if (bodyStart >= 0) {
      int rest = received - bodyStart;
      if (rest > 0) {
        std::memmove(buffer, buffer + bodyStart, static_cast<std::size_t>(rest));
        return rest;
      }
    }
    received = KyUrlReceive(socket, buffer, size);
    if (received < 1) return -1;
    if (bodyStart >= 0) return received;
  }
}

FtpProtocol::FtpProtocol(const char* host, const char* user, const char* password, const char* path,
                         unsigned short port)
    : controlSocket(KyUrlConnect(host, port)), dataSocket(-1), local{} {
  if (controlSocket >= 0) exchange(user, password, path);
}

FtpProtocol::~FtpProtocol() {
  KyUrlClose(controlSocket);
  KyUrlClose(dataSocket);
}

// Replies are read and thrown away: no code is looked at, so a refused login shows
// only when the server never connects back.
void FtpProtocol::drain() {
  char scratch[kReplyPiece];
  int total = 0;
  for (;;) {
    pollfd entry{controlSocket, POLLIN, 0};
    int ready = poll(&entry, 1, 10000);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return;
    ssize_t received = recv(controlSocket, scratch, sizeof scratch, 0);
    if (received != kReplyPiece) return;
    total += kReplyPiece;
    if (total >= kDrainLimit) return;
  }
}

bool FtpProtocol::exchange(const char* user, const char* password, const char* path) {
  const int control = controlSocket;
  socklen_t length = sizeof local;
  if (getsockname(control, reinterpret_cast<sockaddr*>(&local), &length) != 0) return false;
  drain();
  if (user != nullptr) {
    if (!KyUrlSend(control, "USER ") || !KyUrlSend(control, user) || !KyUrlSend(control, "\r\n")) return false;
    // A user without a password is sent with nothing read behind it.
    if (password != nullptr) {
      drain();
      if (!KyUrlSend(control, "PASS ") || !KyUrlSend(control, password) || !KyUrlSend(control, "\r\n")) return false;
      drain();
    }
  }
  if (!KyUrlSend(control, "TYPE I\r\n")) return false;
  drain();

  int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener < 0) return false;
  sockaddr_in data = local;
  data.sin_port = 0;
  length = sizeof data;
  if (bind(listener, reinterpret_cast<sockaddr*>(&data), sizeof data) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&data), &length) != 0 || listen(listener, 1) != 0) {
    KyUrlClose(listener);
    return false;
  }
  const unsigned char* address = reinterpret_cast<const unsigned char*>(&data.sin_addr);
  unsigned int dataPort = ntohs(data.sin_port);
  char command[64];
  std::snprintf(command, sizeof command, "PORT %d,%d,%d,%d,%d,%d", address[0], address[1], address[2], address[3],
                dataPort >> 8, dataPort & 0xFF);
  bool sent = KyUrlSend(control, command) && KyUrlSend(control, "\r\n");
  if (sent) drain();
  sent = sent && KyUrlSend(control, "RETR ") && KyUrlSend(control, *path != '\0' ? path + 1 : path) &&
         KyUrlSend(control, "\r\n");
  if (sent) drain();
  // A server that refused the login never connects back: the wait is bounded like a
  // read, and the open then fails at the first read.
  if (sent && KyUrlWait(listener, POLLIN)) dataSocket = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
  KyUrlClose(listener);
  return dataSocket >= 0;
}

int FtpProtocol::read(char* buffer, int size) { return KyUrlReceive(dataSocket, buffer, size); }
