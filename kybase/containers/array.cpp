#include "kybase/containers/array.h"

#include <cstring>

#include "kybase/core/memory_manager.h"

namespace {

// The heap doors take 32-bit byte counts: the largest capacity they can serve.
constexpr unsigned long kMaxElements = 0xFFFFFFFFUL / sizeof(void*);

void* ScratchSlot = nullptr;

}  // namespace

KyArray::KyArray(unsigned long size) : data(nullptr), maxLength(0), length(0) { resize(size); }

KyArray::KyArray(const KyArray& other) : data(nullptr), maxLength(0), length(0) { *this = other; }

KyArray& KyArray::operator=(const KyArray& other) {
  // The new block is filled before the old one goes, so assigning an array to itself
  // reads live data.
  void** copy = nullptr;
  std::uint32_t capacity = 0;
  if (other.length != 0) {
    copy = static_cast<void**>(KyMalloc(static_cast<unsigned int>(other.maxLength * sizeof(void*))));
    if (copy == nullptr) return *this;
    std::memcpy(copy, other.data, other.length * sizeof(void*));
    capacity = other.maxLength;
  }
  const std::uint32_t newLength = other.length;
  KyFree(data);
  data = copy;
  maxLength = capacity;
  length = newLength;
  return *this;
}

KyArray::~KyArray() { KyFree(data); }

bool KyArray::resize(unsigned long size) {
  if (size > kMaxElements) return false;
  if (size == 0) {
    KyFree(data);
    data = nullptr;
    maxLength = 0;
    return true;
  }
  const auto bytes = static_cast<unsigned int>(size * sizeof(void*));
  void** block = static_cast<void**>(data != nullptr ? KyRealloc(data, bytes) : KyMalloc(bytes));
  if (block == nullptr) return false;
  data = block;
  maxLength = static_cast<std::uint32_t>(size);
  return true;
}

void KyArray::setMaxLength(unsigned long size, bool exact) {
  if (size < length) return;
  if (!exact) {
    unsigned long power = 4;
    while (power < size && power <= kMaxElements) power *= 2;
    size = power;
  }
  if (size == maxLength) return;
  resize(size);
}

void KyArray::insert(void* const* values, unsigned long count, unsigned long index) {
  if (count == 0) return;
  if (index > length) index = length;
  if (count > kMaxElements - length) return;
  const unsigned long needed = length + count;
  if (needed > maxLength) {
    setMaxLength(needed, false);
    if (needed > maxLength) return;
  }
  KyMemMove(data + index + count, data + index, static_cast<unsigned int>((length - index) * sizeof(void*)));
  KyMemMove(data + index, values, static_cast<unsigned int>(count * sizeof(void*)));
  length = static_cast<std::uint32_t>(needed);
}

void KyArray::erase(unsigned long from, unsigned long to) {
  if (to > length || to < from) to = length;
  if (from > length) {
    // Erasing from behind the end raises the length to `from`; the new places hold
    // null rather than whatever the block had there.
    if (from > maxLength) setMaxLength(from, false);
    if (from > maxLength) return;
    std::memset(data + length, 0, (from - length) * sizeof(void*));
    length = static_cast<std::uint32_t>(from);
  } else {
    if (to < length)
      KyMemMove(data + from, data + to, static_cast<unsigned int>((length - to) * sizeof(void*)));
    length -= static_cast<std::uint32_t>(to - from);
  }
  if (4UL * length <= maxLength) setMaxLength(length, false);
}

void KyArray::remove(const void* value) {
  const unsigned long index = getIndex(value);
  if (index != kNotFound) remove(index);
}

void*& KyArray::top() {
  if (length == 0) {
    ScratchSlot = nullptr;
    return ScratchSlot;
  }
  return data[length - 1];
}

unsigned long KyArray::getIndex(const void* value) const {
  for (unsigned long index = 0; index < length; ++index)
    if (data[index] == value) return index;
  return kNotFound;
}

void KyArray::compact() {
  if (length == maxLength) return;
  resize(length);
}

void KyArray::setData(void** newData, unsigned long newLength, unsigned long newMaxLength) {
  KyFree(data);
  if (newMaxLength == kNotFound || newMaxLength < newLength) newMaxLength = newLength;
  data = newData;
  length = static_cast<std::uint32_t>(newLength);
  maxLength = static_cast<std::uint32_t>(newMaxLength);
}

void** KyArray::exportData() {
  void** block = data;
  data = nullptr;
  maxLength = 0;
  length = 0;
  return block;
}

// ---- KyBitArray ----

namespace {

unsigned long ByteCount(unsigned long bits) { return (bits + 7) / 8; }

// The block holds the bytes of the bits and one more, so that the bit at index
// `length` (which the bound accepts) always lies inside it.
unsigned long BlockSize(unsigned long bits) { return bits / 8 + 1; }

}  // namespace

KyBitArray::KyBitArray(unsigned long bits, bool value)
    : length(static_cast<std::uint32_t>(bits > 0xFFFFFFFFUL ? 0xFFFFFFFFUL : bits)),
      data(static_cast<unsigned char*>(KyMalloc(static_cast<unsigned int>(BlockSize(length))))) {
  if (data != nullptr) std::memset(data, value ? 0xFF : 0, BlockSize(length));
}

KyBitArray::KyBitArray(const KyBitArray& other)
    : length(other.length), data(static_cast<unsigned char*>(KyMalloc(static_cast<unsigned int>(BlockSize(length))))) {
  if (data != nullptr && other.data != nullptr) std::memcpy(data, other.data, BlockSize(length));
}

KyBitArray::~KyBitArray() { KyFree(data); }

void KyBitArray::setLength(unsigned long bits, bool value) {
  if (bits > 0xFFFFFFFFUL || ByteCount(bits) <= ByteCount(length)) return;
  auto* block = static_cast<unsigned char*>(KyMalloc(static_cast<unsigned int>(BlockSize(bits))));
  if (block == nullptr) return;
  const unsigned long kept = ByteCount(length);
  if (data != nullptr) std::memcpy(block, data, kept);
  std::memset(block + kept, value ? 0xFF : 0, BlockSize(bits) - kept);
  KyFree(data);
  data = block;
  length = static_cast<std::uint32_t>(bits);
}
