// KyArray: a growable array of untyped pointers whose capacity is kept apart from its
// length. The constructor sets the capacity exactly; growth takes powers of two from
// 4 up; erasing shrinks the block once four times the length fits in it. The array
// owns its block (from KyMalloc) but not what the pointers stand for. Copies are deep.
//
// Failure: element access is not bounds-checked, like a built-in array. If the heap
// refuses a bigger block, the array keeps its old block and the insertion that needed
// the room adds nothing. Threads: none.
#ifndef KYBASE_CONTAINERS_ARRAY_H
#define KYBASE_CONTAINERS_ARRAY_H

#include <cstdint>

#include "kybase/core/export.h"

class KY_EXPORT KyArray {
 public:
  // getIndex() of an absent pointer; also setData()'s "capacity equals length".
  static constexpr unsigned long kNotFound = static_cast<unsigned long>(-1);

  explicit KyArray(unsigned long size = 4);
  KyArray(const KyArray& other);
  KyArray& operator=(const KyArray& other);
  ~KyArray();

  void*& operator[](unsigned long index) { return data[index]; }
  void* operator[](unsigned long index) const { return data[index]; }

  void add(void* const value) { push(value); }
  void push(void* const& value) {
    if (length < maxLength)
      data[length++] = value;
    else
      insert(length, value);
  }
  void append(void* const* values, unsigned long count) { insert(values, count, length); }
  void append(const KyArray& other) { insert(other.data, other.length, length); }
  // An index above the length means the end.
  void insert(unsigned long index, void* const& value) { insert(&value, 1, index); }
  void insert(void* const* values, unsigned long count, unsigned long index);
  void insert(const KyArray& other, unsigned long index) { insert(other.data, other.length, index); }

  // Removes [from, to). A `to` above the length or below `from` means the length.
  void erase(unsigned long from, unsigned long to);
  void remove(unsigned long index) { erase(index, index + 1); }
  void remove(const void* value);
  void pop() {
    if (length > 0) erase(length - 1, length);
  }
  // The last element; on an empty array a scratch slot that belongs to no array.
  void*& top();
  unsigned long getIndex(const void* value) const;
  void clear() { erase(0, kNotFound); }
  void empty() { clear(); }
  void compact();
  void grow() { setMaxLength(2UL * maxLength, false); }
  void setMaxLength(unsigned long size, bool exact);
  // Takes ownership of `newData` (from KyMalloc); a `newMaxLength` of kNotFound means
  // the capacity equals `newLength`.
  void setData(void** newData, unsigned long newLength, unsigned long newMaxLength);
  // Gives the block up to the caller (free it with KyFree); the array is left empty
  // with no block.
  void** exportData();

  void** getArray() const { return data; }
  unsigned long getLength() const { return length; }
  unsigned long getMaxLength() const { return maxLength; }

 private:
  // Sets the capacity to exactly `size` elements; false if the heap says no.
  bool resize(unsigned long size);

  void** data;
  std::uint32_t maxLength;
  std::uint32_t length;
};

// KyBitArray: a fixed-layout array of bits, bit i in byte i / 8 under 1 << (i % 8).
// Bit operations accept an index up to and including the length; the block always
// holds one byte more than the bits need, so that index is always inside it.
// Assignment is shallow (it shares the block, and only one of the two may be
// destroyed); the copy constructor copies. The array never shrinks.
class KY_EXPORT KyBitArray {
 public:
  KyBitArray(unsigned long length, bool value);
  KyBitArray(const KyBitArray& other);
  KyBitArray& operator=(const KyBitArray& other) = default;
  virtual ~KyBitArray();

  bool operator[](unsigned long index) const { return isSet(index); }
  bool isSet(unsigned long index) const {
    return index <= length && (data[index / 8] & (1u << (index % 8))) != 0;
  }
  void set(unsigned long index) {
    if (index <= length) data[index / 8] |= static_cast<unsigned char>(1u << (index % 8));
  }
  void operator+=(unsigned long index) { set(index); }
  void unset(unsigned long index) {
    if (index <= length) data[index / 8] &= static_cast<unsigned char>(~(1u << (index % 8)));
  }
  void operator-=(unsigned long index) { unset(index); }
  void set(unsigned long index, bool value) { value ? set(index) : unset(index); }
  void invert(unsigned long index) {
    if (index <= length) data[index / 8] ^= static_cast<unsigned char>(1u << (index % 8));
  }
  // Grows by whole bytes only: nothing happens unless `newLength` needs more bytes.
  void setLength(unsigned long newLength, bool value);
  unsigned long getLength() const { return length; }

 private:
  std::uint32_t length;
  unsigned char* data;
};

#endif  // KYBASE_CONTAINERS_ARRAY_H
