#include <cstring>
#include <istream>
#include <ostream>

#include "kybase/text/internal_string.h"
#include "kybase/text/kystring.h"

namespace {

// The fixed delimiter set of a plain token; the stream's locale is never asked.
bool IsDelimiter(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\0'; }

// Bytes read by a stream operator: a local buffer of 1024 bytes, flushed into a heap
// block when full, so short tokens cost no heap work until the end.
class ReadBuffer {
 public:
  ReadBuffer() = default;
  ReadBuffer(const ReadBuffer&) = delete;
  ReadBuffer& operator=(const ReadBuffer&) = delete;
  ~ReadBuffer() { delete[] block_; }

  void put(char c) {
    if (used_ > sizeof local_ - 1) flush(true);
    local_[used_++] = c;
  }

  // Moves what the local buffer holds to the block, which then ends with a zero byte.
  const char* finish() {
    if (used_ > 0) flush(false);
    if (block_ != nullptr) block_[count_] = '\0';
    return block_;
  }

  unsigned long count() const { return count_; }

 private:
  // A flush while reading doubles the block; the last one only makes room.
  void flush(bool doubling) {
    const unsigned long total = count_ + used_;
    if (capacity_ <= total + 1) {
      const unsigned long capacity = doubling ? 2 * total + 1 : total + 1;
      char* grown = new char[capacity];
      if (count_ > 0) std::memcpy(grown, block_, count_);
      delete[] block_;
      block_ = grown;
      capacity_ = capacity;
    }
    std::memcpy(block_ + count_, local_, used_);
    count_ = total;
    used_ = 0;
  }

  char local_[1024];
  unsigned long used_ = 0;
  char* block_ = nullptr;
  unsigned long count_ = 0;
  unsigned long capacity_ = 0;
};

// Only the low 16 bits of the saved flags are given back to the stream.
void RestoreFlags(std::ios_base& stream, std::ios_base::fmtflags saved) {
  stream.flags(saved & static_cast<std::ios_base::fmtflags>(0xFFFF));
}

}  // namespace

void KyString::storeRead(const char* text, unsigned long count) {
  replace(*this, 0, -1, 0, 0);
  if (count == 0) return;
  KyString temporary(text);
  const int length = internalString->length;
  const int end = count > static_cast<unsigned long>(KyInternalString::kMaxLength) ? KyInternalString::kMaxLength
                                                                                    : static_cast<int>(count);
  replace(temporary, length, length, 0, end);
}

std::ostream& operator<<(std::ostream& stream, const KyString& string) { return stream << string.getValue(); }

std::istream& operator>>(std::istream& stream, KyString& string) {
  const std::ios_base::fmtflags saved = stream.flags();
  stream.unsetf(std::ios_base::skipws);
  ReadBuffer buffer;
  char c = '\0';
  while (stream.good() && IsDelimiter(c)) stream >> c;
  while (stream.good()) {
    if (IsDelimiter(c)) break;
    buffer.put(c);
    stream >> c;
  }
  const char* text = buffer.finish();
  RestoreFlags(stream, saved);
  string.storeRead(text, buffer.count());
  return stream;
}

void KyString::writeQuoted(std::ostream& stream) const {
  const char* text = getValue();
  const unsigned int bytes = getSize() - 1;
  stream << '"';
  for (unsigned int i = 0; i < bytes; ++i) {
    if (text[i] == '\\' || text[i] == '"') stream << '\\';
    stream << text[i];
  }
  stream << '"';
}

void KyString::readQuoted(std::istream& stream) {
  const std::ios_base::fmtflags saved = stream.flags();
  stream.unsetf(std::ios_base::skipws);
  ReadBuffer buffer;
  char c = '\0';
  while (stream.good() && c != '"') stream >> c;
  bool escaped = false;
  stream >> c;
  while (stream.good()) {
    if (!escaped && c == '\\') {
      escaped = true;
    } else if (!escaped && c == '"') {
      break;
    } else {
      buffer.put(c);
      escaped = false;
    }
    stream >> c;
  }
  const char* text = buffer.finish();
  RestoreFlags(stream, saved);
  storeRead(text, buffer.count());
}
