#include "kybase/url/url_buf_internal.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "kybase/url/ky_zlib.h"
#include "kybase/url/url_protocol_internal.h"

namespace {

struct Scheme {
  const char* name;
  std::size_t length;
  unsigned short port;
};

// In the order they are tried; file has no port.
constexpr Scheme kSchemes[] = {{"http", 4, 80}, {"ftp", 3, 21}, {"file", 4, 0}};

constexpr std::int32_t kFirstChunk = 4096;
constexpr std::int32_t kLargestChunk = 1 << 30;
constexpr std::uint32_t kFirstBufferLimit = 0x40000;
constexpr int kInflatedSize = 0xA000;
constexpr std::int32_t kKeptLimit = std::numeric_limits<std::int32_t>::max();

const Scheme* FindScheme(const char* name) {
  std::size_t length = std::strlen(name);
  for (const Scheme& scheme : kSchemes)
    if (length > scheme.length && std::strncmp(name, scheme.name, scheme.length) == 0 && name[scheme.length] == ':')
      return &scheme;
  return nullptr;
}

char* Copy(const char* from, std::size_t length) {
  char* text = new char[length + 1];
  std::memcpy(text, from, length);
  text[length] = '\0';
  return text;
}

}  // namespace

KyUrlBuf::KyUrlBuf(const char* name, bool binary) : KyUrlBuf(nullptr, false, nullptr) {
  if (!parseUrl(name, binary)) protocol = new FileProtocol(name, binary);
  if (!protocol->failed() && fill() != -1) return;
  freeParts();
  delete protocol;
  protocol = nullptr;
}

KyUrlBuf::KyUrlBuf(std::istream* stream, bool ownsStream) : KyUrlBuf(stream, ownsStream, new StreamProtocol(stream)) {}

KyUrlBuf::KyUrlBuf(std::istream* stream, bool ownsStream, Protocol* protocol)
    : stream(stream),
      ownsStream(ownsStream),
      protocol(protocol),
      host(nullptr),
      path(nullptr),
      user(nullptr),
      password(nullptr),
      input(nullptr),
      inputBlock(nullptr),
      keptData(nullptr),
      keptLength(0),
      keptBlock(nullptr),
      inflated(nullptr),
      inflatedBlock(nullptr),
      compressed(false),
      firstRead(true),
      zStream{},
      chunkSize(kFirstChunk),
      bufferLimit(kFirstBufferLimit),
      hints(KyIUrlStream::kNoHints),
      ended(false),
      inflating(false),
      gzip(false),
      inputPosition(0),
      inputLength(0) {}

KyUrlBuf::~KyUrlBuf() {
  if (ownsStream) delete stream;
  delete protocol;
  freeParts();
  if (inflatedBlock != nullptr) {
    if (inflating) Ky::Zlib1_2_8::inflateEnd(&zStream);
    KyCharPool::ReleaseBlock(inflatedBlock);
  }
  KyCharPool::ReleaseBlock(keptBlock);
  KyCharPool::ReleaseBlock(inputBlock);
}

bool KyUrlBuf::IsAnURL(const char* name) { return name != nullptr && FindScheme(name) != nullptr; }

const char* KyUrlBuf::getHeader() const { return protocol != nullptr ? protocol->getHeader() : nullptr; }

void KyUrlBuf::setBufferLimit(unsigned long limit) {
  bufferLimit = static_cast<std::uint32_t>(std::min<unsigned long>(limit, std::numeric_limits<std::uint32_t>::max()));
}

void KyUrlBuf::freeParts() {
  delete[] host;
  delete[] path;
  delete[] user;
  delete[] password;
  host = path = user = password = nullptr;
}

// Declines (false) whatever is not a well-formed URL of a known scheme, and a file: URL
// whose file cannot be opened; the caller then opens the whole name as a file name.
bool KyUrlBuf::parseUrl(const char* name, bool binary) {
  if (name == nullptr || *name == '\0') return false;
  const Scheme* scheme = FindScheme(name);
  if (scheme == nullptr) return false;
  const bool isFile = scheme->port == 0;
  const char* at = name + scheme->length + 1;
  if (!isFile) {
    if (at[0] != '/' || at[1] != '/') return false;
    at += 2;
  }
  const char* hostFrom = at;
  if (std::strchr(name, '@') != nullptr) {
    const char* stop = at;
    while (*stop != '\0' && *stop != ':' && *stop != '@') ++stop;
    if (*stop == '\0') return false;
    // The user is copied from three characters behind the scheme's name whatever the
    // scheme, so a file: user comes out shifted by two. The copy ends at most at the
    // name's terminator, since the scan stopped on a character before it.
    user = Copy(name + scheme->length + 3, static_cast<std::size_t>(stop - at));
    if (*stop == ':') {
      const char* passwordFrom = stop + 1;
      const char* sign = std::strchr(passwordFrom, '@');
      if (sign == nullptr) {
        freeParts();
        return false;
      }
      // A second "@" further on ends the password instead, which keeps the first.
      if (const char* second = std::strchr(sign + 1, '@')) sign = second;
      password = Copy(passwordFrom, static_cast<std::size_t>(sign - passwordFrom));
      at = sign + 1;
      hostFrom = at;
    } else {
      // With a user alone the host is copied from the "@" on, for the length of the
      // true host: the look-up of that name fails.
      at = stop + 1;
      hostFrom = stop;
    }
  }
  if (!isFile) {
    const char* stop = at;
    while (*stop != '\0' && *stop != ':' && *stop != '/') ++stop;
    if (*stop == '\0') {
      freeParts();
      return false;
    }
    host = Copy(hostFrom, static_cast<std::size_t>(stop - at));
    // A port is read past and never used: the scheme's own port always applies.
    if (*stop == ':') {
      stop = std::strchr(stop, '/');
      if (stop == nullptr) {
        freeParts();
        return false;
      }
    }
    at = stop;
  }
  path = Copy(at, std::strlen(at));
  if (scheme->port == 80)
    protocol = new HttpProtocol(host, path, scheme->port);
  else if (scheme->port == 21)
    protocol = new FtpProtocol(host, user, password, path, scheme->port);
  else
    protocol = new FileProtocol(path, binary);
  if (protocol->failed()) {
    delete protocol;
    protocol = nullptr;
    freeParts();
    return false;
  }
  return true;
}

int KyUrlBuf::fill() {
  if (protocol == nullptr || ended) return -1;
  if (firstRead) return fillFirst();
  if (compressed) return fillCompressed();
  if (static_cast<std::uint32_t>(chunkSize) <= bufferLimit && chunkSize < kLargestChunk) {
    KyCharPool::ReleaseBlock(inputBlock);
    inputBlock = nullptr;
    input = KyCharPool::AllocBlock(inputBlock, static_cast<unsigned long>(chunkSize) * 2);
    if (input != nullptr) {
      chunkSize *= 2;
    } else {
      KyCharPool::ReleaseBlock(inputBlock);
      inputBlock = nullptr;
      input = KyCharPool::AllocBlock(inputBlock, static_cast<unsigned long>(chunkSize));
      if (input == nullptr) return endOfSource();
    }
  }
  int got = protocol->read(input, chunkSize);
  if (got < 1) return endOfSource();
  return deliver(input, got);
}

int KyUrlBuf::fillFirst() {
  firstRead = false;
  input = KyCharPool::AllocBlock(inputBlock, static_cast<unsigned long>(chunkSize));
  if (input == nullptr) return endOfSource();
  int got = protocol->read(input, chunkSize);
  if (got < 1) return endOfSource();
  // A network read may bring a single byte: the kind of data is told from four.
  while (got < 4) {
    int more = protocol->read(input + got, chunkSize - got);
    if (more < 1) break;
    got += more;
  }
  const unsigned char* head = reinterpret_cast<const unsigned char*>(input);
  gzip = got >= 2 && head[0] == 0x1F && head[1] == 0x8B;
  compressed = gzip || (got >= 4 && head[0] == 'P' && head[1] == 'K' && head[2] == 3 && head[3] == 4);
  if (!compressed) return deliver(input, got);

  inflated = KyCharPool::AllocBlock(inflatedBlock, kInflatedSize);
  if (inflated == nullptr) return endOfSource();
  inputPosition = 0;
  inputLength = got;
  if (!(gzip ? skipGzipHeader(0) : skipZipHeader())) return endOfSource();
  zStream = z_stream{};
  zStream.next_in = reinterpret_cast<Bytef*>(input + inputPosition);
  zStream.avail_in = static_cast<uInt>(inputLength - inputPosition);
  if (Ky::Zlib1_2_8::inflateInit2_(&zStream, -15, "1.2.8", static_cast<int>(sizeof(z_stream))) != Z_OK)
    return endOfSource();
  inflating = true;
  return fillCompressed();
}

int KyUrlBuf::fillCompressed() {
  for (;;) {
    if (zStream.avail_in == 0) {
      int got = protocol->read(input, chunkSize);
      if (got < 1) return endOfSource();
      zStream.next_in = reinterpret_cast<Bytef*>(input);
      zStream.avail_in = static_cast<uInt>(got);
    }
    zStream.next_out = reinterpret_cast<Bytef*>(inflated);
    zStream.avail_out = kInflatedSize;
    int result = Ky::Zlib1_2_8::inflate(&zStream, Z_NO_FLUSH);
    int made = kInflatedSize - static_cast<int>(zStream.avail_out);
    // Z_BUF_ERROR with input left means no progress is possible; stopping there (and
    // at every other error) keeps a broken stream from spinning.
    if (result == Z_STREAM_END) {
      if (!gzip || !nextGzipMember()) ended = true;
    } else if (result != Z_OK && (result != Z_BUF_ERROR || zStream.avail_in != 0)) {
      ended = true;
    }
    if (made > 0) return deliver(inflated, made);
    if (ended) return endOfSource();
  }
}

// Behind a gzip member's 8-byte trailer, which is not checked, another member may
// start; then the inflate state begins again at its data.
bool KyUrlBuf::nextGzipMember() {
  inputPosition = static_cast<int>(reinterpret_cast<char*>(zStream.next_in) - input);
  inputLength = inputPosition + static_cast<int>(zStream.avail_in);
  if (!skipHeaderBytes(8)) return false;
  int first = headerByte();
  int second = first < 0 ? -1 : headerByte();
  if (first != 0x1F || second != 0x8B) return false;
  if (!skipGzipHeader(2) || inflateReset(&zStream) != Z_OK) return false;
  zStream.next_in = reinterpret_cast<Bytef*>(input + inputPosition);
  zStream.avail_in = static_cast<uInt>(inputLength - inputPosition);
  return true;
}

int KyUrlBuf::headerByte() {
  if (inputPosition >= inputLength) {
    int got = protocol->read(input, chunkSize);
    if (got < 1) return -1;
    inputPosition = 0;
    inputLength = got;
  }
  return static_cast<unsigned char>(input[inputPosition++]);
}

bool KyUrlBuf::skipHeaderBytes(unsigned long count) {
  while (count > 0) {
    if (inputPosition >= inputLength && headerByte() < 0) return false;
    if (inputPosition >= inputLength) continue;
    unsigned long step = std::min<unsigned long>(count, static_cast<unsigned long>(inputLength - inputPosition));
    inputPosition += static_cast<int>(step);
    count -= step;
  }
  return true;
}

bool KyUrlBuf::skipHeaderText() {
  for (;;) {
    int byte = headerByte();
    if (byte < 0) return false;
    if (byte == 0) return true;
  }
}

// The compression method is not looked at. Flags: 4 extra field, 8 name, 16 comment,
// 2 header check, skipped in that order. `magicRead` bytes of the fixed part are
// already behind the input position.
bool KyUrlBuf::skipGzipHeader(int magicRead) {
  unsigned char fixed[10] = {};
  for (int index = magicRead; index < 10; ++index) {
    int next = headerByte();
    if (next < 0) return false;
    fixed[index] = static_cast<unsigned char>(next);
  }
  const unsigned char flags = fixed[3];
  if ((flags & 4) != 0) {
    int low = headerByte();
    int high = low < 0 ? -1 : headerByte();
    if (high < 0 || !skipHeaderBytes(static_cast<unsigned long>(low | (high << 8)))) return false;
  }
  if ((flags & 8) != 0 && !skipHeaderText()) return false;
  if ((flags & 16) != 0 && !skipHeaderText()) return false;
  if ((flags & 2) != 0 && !skipHeaderBytes(2)) return false;
  return true;
}

// Only the first entry is read; its method field is not looked at.
bool KyUrlBuf::skipZipHeader() {
  unsigned char fixed[30];
  for (unsigned char& byte : fixed) {
    int next = headerByte();
    if (next < 0) return false;
    byte = static_cast<unsigned char>(next);
  }
  unsigned long nameLength = fixed[26] | (fixed[27] << 8);
  unsigned long extraLength = fixed[28] | (fixed[29] << 8);
  return skipHeaderBytes(nameLength + extraLength);
}

int KyUrlBuf::endOfSource() {
  ended = true;
  if (inflating) {
    Ky::Zlib1_2_8::inflateEnd(&zStream);
    inflating = false;
  }
  return -1;
}

int KyUrlBuf::deliver(char* data, int size) {
  if (keepsData() && size > kKeptLimit - keptLength) hints = KyIUrlStream::kReadOnce;
  if (keepsData()) {
    std::int32_t length = keptLength + size;
    char* grown = KyCharPool::ReAllocBlock(keptBlock, static_cast<unsigned long>(length));
    if (grown != nullptr) {
      keptData = grown;
      std::memcpy(keptData + keptLength, data, static_cast<std::size_t>(size));
      setg(keptData, keptData + keptLength, keptData + length);
      keptLength = length;
      return size;
    }
    // The heap refused more: nothing is lost, the data is delivered in place.
    hints = KyIUrlStream::kReadOnce;
  }
  setg(data, data, data + size);
  return size;
}

KyUrlBuf::int_type KyUrlBuf::underflow() {
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
  if (fill() == -1) {
    // Kept data stays the get area, so that positions still count from its start.
    if (keptData != nullptr && eback() == keptData)
      setg(keptData, keptData + keptLength, keptData + keptLength);
    else
      setg(nullptr, nullptr, nullptr);
    return traits_type::eof();
  }
  return traits_type::to_int_type(*gptr());
}

KyUrlBuf::off_type KyUrlBuf::currentPosition() const {
  if (gptr() == nullptr) return keptData == nullptr ? 0 : -1;
  if (keptData == nullptr || eback() != keptData) return -1;
  return gptr() - keptData;
}

// A position past the data stays at its end, where the next read finds the end.
void KyUrlBuf::place(off_type position) {
  off_type inside = std::min<off_type>(position, keptLength);
  setg(keptData, keptData + inside, keptData + keptLength);
}

// The result is the position asked for plus the offset, not the position reached:
// seekg looks only for failure, and tellg (an offset of 0) gets the true position.
KyUrlBuf::pos_type KyUrlBuf::seekoff(off_type offset, std::ios_base::seekdir way, std::ios_base::openmode) {
  const pos_type failure = pos_type(off_type(-1));
  if (!keepsData()) return failure;
  off_type target = 0;
  if (way == std::ios_base::beg || way == std::ios_base::cur) {
    off_type from = 0;
    if (way == std::ios_base::cur) {
      from = currentPosition();
      if (from < 0) return failure;
    }
    if (__builtin_add_overflow(from, offset, &target) || target < 0) return failure;
    if (way == std::ios_base::beg || offset > 0) {
      while (target > keptLength) {
        std::int32_t before = keptLength;
        if (fill() == -1) break;
        // Data no longer kept (the limit was reached): the target cannot be reached.
        if (keptLength == before) return failure;
      }
    }
    place(target);
  } else if (way == std::ios_base::end) {
    if (offset > 0) return failure;
    target = keptLength;
    place(target);
  } else {
    return failure;
  }
  off_type result;
  if (__builtin_add_overflow(target, offset, &result)) return failure;
  return pos_type(result);
}

KyUrlBuf::pos_type KyUrlBuf::seekpos(pos_type position, std::ios_base::openmode) {
  return seekoff(off_type(position), std::ios_base::beg, std::ios_base::in | std::ios_base::out);
}
