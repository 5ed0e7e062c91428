// The sources behind a KyUrlBuf: a local file, one HTTP/1.0 GET, one FTP retrieval in
// active mode, and a caller's stream. Each constructor does the whole opening; read
// delivers up to `size` bytes and returns their number, 0 or -1 at the end or on a
// failure, which look the same to the buffer.
//
// The network protocols never report an opening failure from failed(): a connection
// that could not be made shows as -1 from the first read. Every wait on a socket is
// bounded: 10 seconds of silence counted twice end a read, a send, a connect or the
// wait for an FTP server to connect back. Sends never raise SIGPIPE, and descriptors
// are closed on exec. Nothing is printed and nothing thrown.
#ifndef KYBASE_URL_URL_PROTOCOL_INTERNAL_H
#define KYBASE_URL_URL_PROTOCOL_INTERNAL_H

#include <netinet/in.h>

#include <istream>

class Protocol {
 public:
  virtual ~Protocol() = default;
  virtual bool failed() const = 0;
  virtual int read(char* buffer, int size) = 0;
  virtual const char* getHeader() const { return nullptr; }
};

class FileProtocol : public Protocol {
 public:
  // `binary` has no effect here: files are always read as bytes.
  FileProtocol(const char* path, bool binary);
  ~FileProtocol() override;
  bool failed() const override { return descriptor < 0; }
  int read(char* buffer, int size) override;

 private:
  int descriptor;
};

// Reads through the caller's stream, which it never owns. Its failed() is true while
// the stream is good: nothing asks it, and the sense is kept as the stream has it.
class StreamProtocol : public Protocol {
 public:
  explicit StreamProtocol(std::istream* stream) : stream(stream) {}
  bool failed() const override { return stream != nullptr && stream->good(); }
  int read(char* buffer, int size) override;

 private:
  std::istream* stream;
};

// The response header is the text of the first chunk received, from the status line up
// to the blank line; a reply that does not start with "HTTP" is body from its first
// byte. The end of the header is looked for one byte at a time over the last four bytes
// seen, so a header split over several receives is found wherever it ends.
class HttpProtocol : public Protocol {
 public:
  HttpProtocol(const char* host, const char* path, unsigned short port);
  ~HttpProtocol() override;
  bool failed() const override { return false; }
  int read(char* buffer, int size) override;
  const char* getHeader() const override { return header; }

 private:
  int readHeader(char* buffer, int received);

  int socket;
  int headerDone;
  char* header;
  int headerLength;
  bool firstChunk;
  unsigned char window[4];
};

class FtpProtocol : public Protocol {
 public:
  // `user` and `password` may be null; without a user no login is sent.
  FtpProtocol(const char* host, const char* user, const char* password, const char* path, unsigned short port);
  ~FtpProtocol() override;
  bool failed() const override { return false; }
  int read(char* buffer, int size) override;

 private:
  bool exchange(const char* user, const char* password, const char* path);
  void drain();

  int controlSocket;
  int dataSocket;
  sockaddr_in local;
};

#endif  // KYBASE_URL_URL_PROTOCOL_INTERNAL_H
