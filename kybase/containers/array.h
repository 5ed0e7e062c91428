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

/// A growable array of untyped pointers; see the family page for its contract.
class KY_EXPORT KyArray {
 public:
  /// getIndex() of an absent pointer; also setData()'s "capacity equals length".
  static constexpr unsigned long kNotFound = static_cast<unsigned long>(-1);

  /// An empty array with room for exactly `size` pointers.
  explicit KyArray(unsigned long size = 4);
  /// A deep copy: a block of the other's capacity holding its pointers.
  KyArray(const KyArray& other);
  /// Copies the other's pointers into a new block; on a heap failure nothing changes.
  KyArray& operator=(const KyArray& other);
  /// Frees the block, not what the pointers stand for.
  ~KyArray();

  /// The slot `index`, unchecked.
  void*& operator[](unsigned long index) { return data[index]; }
  /// The pointer at `index`, unchecked.
  void* operator[](unsigned long index) const { return data[index]; }

  /// Appends one pointer; the same as push().
  void add(void* const value) { push(value); }
  /// Appends one pointer, growing the block when it is full.
  void push(void* const& value) {
    if (length < maxLength)
      data[length++] = value;
    else
      insert(length, value);
  }
  /// Appends `count` pointers from a plain array.
  void append(void* const* values, unsigned long count) { insert(values, count, length); }
  /// Appends the pointers of another array.
  void append(const KyArray& other) { insert(other.data, other.length, length); }
  /// An index above the length means the end.
  void insert(unsigned long index, void* const& value) { insert(&value, 1, index); }
  /// Inserts `count` pointers from a plain array before `index`.
  void insert(void* const* values, unsigned long count, unsigned long index);
  /// Inserts the pointers of another array before `index`.
  void insert(const KyArray& other, unsigned long index) { insert(other.data, other.length, index); }

  /// Removes [from, to). A `to` above the length or below `from` means the length.
  void erase(unsigned long from, unsigned long to);
  /// Removes the pointer at `index`.
  void remove(unsigned long index) { erase(index, index + 1); }
  /// Removes the first occurrence of `value`, if any.
  void remove(const void* value);
  /// Removes the last pointer; nothing on an empty array.
  void pop() {
    if (length > 0) erase(length - 1, length);
  }
  /// The last element; on an empty array a scratch slot that belongs to no array.
  void*& top();
  /// The index of the first occurrence of `value`, or kNotFound.
  unsigned long getIndex(const void* value) const;
  /// Removes every pointer (and gives the block back as erase() does).
  void clear() { erase(0, kNotFound); }
  /// The same as clear().
  void empty() { clear(); }
  /// Shrinks the capacity to the length.
  void compact();
  /// Doubles the capacity (to the next power of two from 4).
  void grow() { setMaxLength(2UL * maxLength, false); }
  /// Sets the capacity to `size`, or with `exact` false to the first power of two from
  /// 4 that holds it; a size below the length changes nothing.
  void setMaxLength(unsigned long size, bool exact);
  /// Takes ownership of `newData` (from KyMalloc); a `newMaxLength` of kNotFound means
  /// the capacity equals `newLength`.
  void setData(void** newData, unsigned long newLength, unsigned long newMaxLength);
  /// Gives the block up to the caller (free it with KyFree); the array is left empty
  /// with no block.
  void** exportData();

  /// The block itself; null when the array has none.
  void** getArray() const { return data; }
  /// The number of pointers.
  unsigned long getLength() const { return length; }
  /// The capacity.
  unsigned long getMaxLength() const { return maxLength; }

 private:
  /// Sets the capacity to exactly `size` elements; false if the heap says no.
  bool resize(unsigned long size);

  void** data;
  std::uint32_t maxLength;
  std::uint32_t length;
};

/// KyBitArray: a fixed-layout array of bits, bit i in byte i / 8 under 1 << (i % 8).
/// Bit operations accept an index up to and including the length; the block always
/// holds one byte more than the bits need, so that index is always inside it.
/// Assignment is shallow (it shares the block, and only one of the two may be
/// destroyed); the copy constructor copies. The array never shrinks.
class KY_EXPORT KyBitArray {
 public:
  /// `length` bits, all set to `value`.
  KyBitArray(unsigned long length, bool value);
  /// A copy with a block of its own.
  KyBitArray(const KyBitArray& other);
  /// Shares the other's block (see above).
  KyBitArray& operator=(const KyBitArray& other) = default;
  /// Frees the block.
  virtual ~KyBitArray();

  /// The same as isSet().
  bool operator[](unsigned long index) const { return isSet(index); }
  /// The bit `index`; false past the length.
  bool isSet(unsigned long index) const {
    return index <= length && (data[index / 8] & (1u << (index % 8))) != 0;
  }
  /// Sets the bit `index`; nothing past the length.
  void set(unsigned long index) {
    if (index <= length) data[index / 8] |= static_cast<unsigned char>(1u << (index % 8));
  }
  /// The same as set(index).
  void operator+=(unsigned long index) { set(index); }
  /// Clears the bit `index`; nothing past the length.
  void unset(unsigned long index) {
    if (index <= length) data[index / 8] &= static_cast<unsigned char>(~(1u << (index % 8)));
  }
  /// The same as unset().
  void operator-=(unsigned long index) { unset(index); }
  /// Sets or clears the bit `index`.
  void set(unsigned long index, bool value) { value ? set(index) : unset(index); }
  /// Turns the bit `index` over; nothing past the length.
  void invert(unsigned long index) {
    if (index <= length) data[index / 8] ^= static_cast<unsigned char>(1u << (index % 8));
  }
  /// Grows by whole bytes only: nothing happens unless `newLength` needs more bytes.
  void setLength(unsigned long newLength, bool value);
  /// The number of bits.
  unsigned long getLength() const { return length; }

 private:
  std::uint32_t length;
  unsigned char* data;
};

#endif  // KYBASE_CONTAINERS_ARRAY_H
