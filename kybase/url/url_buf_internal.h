// KyUrlBuf: the stream buffer behind KyIUrlStream. It reads through a Protocol in
// chunks, recognises gzip and zip data by its first bytes and inflates it, and keeps
// every byte delivered (unless kReadOnce is set) so that seeks can go back.
//
// Chunks: plain input is read in 4096 bytes, then doubled before each read while the
// chunk is not above the buffer limit (and below 2^30); compressed input stays at 4096.
// Every fill delivers at least one byte or reports the end (-1); after the end every
// fill reports it again.
//
// Compressed input: gzip headers are skipped by their flags in the order extra field,
// name, comment, header check; a zip gives the data of its first entry. Headers may run
// over several chunks; a source that ends inside one ends the stream. The inflate state
// keeps the part of a chunk that did not fit one inflated area for the next fill, so
// data of any ratio reads back whole. The end of the deflate data ends the stream
// unless a further gzip member follows the trailer; corrupt data gives what zlib made.
//
// Kept data stays below 2^31 bytes: a chunk that would pass that sets kReadOnce, and
// that chunk and all later ones are delivered in place.
//
// Every buffer is a locked block of KyCharPool, held for the life of the buffer.
#ifndef KYBASE_URL_URL_BUF_INTERNAL_H
#define KYBASE_URL_URL_BUF_INTERNAL_H

#include <zlib.h>

#include <cstdint>
#include <istream>
#include <streambuf>

#include "kybase/core/memory_pool.h"
#include "kybase/url/url_stream.h"

class Protocol;

class KyUrlBuf : public std::streambuf {
 public:
  // Opens `name` as a URL, or else as a file name, and reads the first chunk; isOpen()
  // is false if either step failed.
  KyUrlBuf(const char* name, bool binary);
  // Reads from `stream`, deleted at the end when `ownsStream`; nothing is read before
  // the first character is asked for.
  KyUrlBuf(std::istream* stream, bool ownsStream);
  ~KyUrlBuf() override;

  KyUrlBuf(const KyUrlBuf&) = delete;
  KyUrlBuf& operator=(const KyUrlBuf&) = delete;

  static bool IsAnURL(const char* name);

  bool isOpen() const { return protocol != nullptr; }
  const char* getHeader() const;
  unsigned long getBufferLimit() const { return bufferLimit; }
  void setBufferLimit(unsigned long limit);
  KyIUrlStream::StreamHint getHints() const { return hints; }
  void setHints(KyIUrlStream::StreamHint newHints) { hints = newHints; }

 protected:
  int_type underflow() override;
  pos_type seekoff(off_type offset, std::ios_base::seekdir way, std::ios_base::openmode mode) override;
  pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;

 private:
  KyUrlBuf(std::istream* stream, bool ownsStream, Protocol* protocol);
  bool parseUrl(const char* name, bool binary);
  void freeParts();
  int fill();
  int fillFirst();
  int fillCompressed();
  int deliver(char* data, int size);
  int endOfSource();
  int headerByte();
  bool skipHeaderBytes(unsigned long count);
  bool skipHeaderText();
  bool skipGzipHeader(int magicRead);
  bool skipZipHeader();
  bool nextGzipMember();
  bool keepsData() const { return (hints & KyIUrlStream::kReadOnce) == 0; }
  off_type currentPosition() const;
  void place(off_type position);

  std::istream* stream;
  bool ownsStream;
  Protocol* protocol;
  char* host;
  char* path;
  char* user;
  char* password;
  char* input;
  KyMemoryPoolBlock* inputBlock;
  char* keptData;
  std::int32_t keptLength;
  KyMemoryPoolBlock* keptBlock;
  char* inflated;
  KyMemoryPoolBlock* inflatedBlock;
  bool compressed;
  bool firstRead;
  z_stream zStream;
  std::int32_t chunkSize;
  std::uint32_t bufferLimit;
  KyIUrlStream::StreamHint hints;
  // Beyond the fields above: the end has been seen, the inflate state is live, the
  // data is gzip (which may have further members), and the unread part of the input
  // while headers are skipped.
  bool ended;
  bool inflating;
  bool gzip;
  int inputPosition;
  int inputLength;
};

#endif  // KYBASE_URL_URL_BUF_INTERNAL_H
