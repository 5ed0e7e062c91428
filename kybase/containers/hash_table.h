// KyHashTable maps one pointer-sized key to one pointer-sized value by chaining; keys
// are compared by identity. KyStringHashTable treats the key as a zero-terminated
// string and compares by content (bytes, no locale, no case folding).
//
// Ownership: a table owns its bucket array and its cells, never what keys and values
// point to. KyStringHashTable does not copy its keys: a key string must outlive its
// entry unchanged. Copying a table is member-wise and shares buckets and cells with
// the source, so only one of the two may be used and destroyed.
//
// Growth: by 1.6 through nextTableSize(), capped at 9239 buckets, after which chains
// simply get longer. Cells come from KyMemoryManager and move without reallocation
// when the table grows. Traversals go bucket by bucket, each chain head to tail.
//
// Threads: none; a table takes no lock. Failure: operator new[] may throw
// std::bad_alloc; nothing else is reported.
#ifndef KYBASE_CONTAINERS_HASH_TABLE_H
#define KYBASE_CONTAINERS_HASH_TABLE_H

#include <cstdint>

#include "kybase/core/export.h"

/// One entry of a table's chain; its memory comes from KyMemoryManager.
struct KY_EXPORT KyBucketCell {
  /// The key pointer, as inserted first.
  void* key;
  /// The value pointer.
  void* value;
  /// The next cell of the chain, or null.
  KyBucketCell* next;

  /// A cell from KyMemoryManager.
  static void* operator new(std::size_t size);
  /// Back to KyMemoryManager.
  static void operator delete(void* pointer, std::size_t size);
};

/// One chain of a table: its length and its first cell.
struct KY_EXPORT KyBucket {
  /// The number of cells in the chain.
  std::uint32_t length = 0;
  /// The head of the chain, or null.
  KyBucketCell* first = nullptr;

  /// An empty chain.
  KyBucket() = default;
  /// Deletes the head cell; the table empties its chains before that.
  ~KyBucket();
  /// Shares the chain.
  KyBucket(const KyBucket&) = default;
  /// Shares the chain.
  KyBucket& operator=(const KyBucket&) = default;
};

/// A chained hash table of pointer keys and values; see the family page.
class KY_EXPORT KyHashTable {
 public:
  /// An empty table of `buckets` buckets (one at least).
  explicit KyHashTable(unsigned long buckets = 17);
  /// Shares buckets and cells with the source.
  KyHashTable(const KyHashTable&) = default;
  /// Shares buckets and cells with the source.
  KyHashTable& operator=(const KyHashTable&) = default;
  /// Deletes the cells and the buckets.
  virtual ~KyHashTable();

  /// Adds the entry, or stores the value in the entry of an equal key (which keeps its
  /// first key pointer).
  virtual void insert(void* const key, void* const value);
  /// insert() under another name: always true, and adds a missing key.
  virtual bool replace(void* const key, void* const value);
  /// True when an entry has this key.
  virtual bool contains(void* const key) const;
  /// Removes the entry of `key`; false when there is none.
  virtual bool remove(void* const key);
  /// The value of `key`, or with a predicate the value of the entry of `key` for which
  /// predicate(value, argument) holds; null when there is none.
  virtual void* find(void* const key, bool (*predicate)(void*, void*) = nullptr, void* argument = nullptr) const;

  /// Removes every entry; the bucket count stays.
  void empty();
  /// Calls function(key, value, argument) on every entry, in traversal order.
  void mapHash(void (*function)(void* key, void* value, void* argument), void* argument) const;
  /// The values in traversal order, or null for an empty table. With onHeap the caller
  /// owns the array (delete[]); otherwise it lives in KyPointerPool, unlocked, and is
  /// valid until the next use of that pool.
  void** convertToArray(unsigned long& count, bool onHeap) const;

  /// The number of entries.
  unsigned long getLength() const { return length; }
  /// The number of buckets.
  unsigned long numberOfBuckets() const { return bucketCount; }
  /// The bucket array, numberOfBuckets() long.
  KyBucket* getBuckets() const { return buckets; }

 protected:
  /// The most buckets a table grows to.
  static constexpr unsigned long kMaxBuckets = 9239;

  /// True when two keys are equal: identity here.
  virtual bool match(void* const left, void* const right) const;
  /// The bucket of a key: the pointer folded to 16 bits, reduced by the bucket count.
  virtual unsigned long hash(void* const key) const;

  /// The next bucket count for a wanted size: at least 17, at most 9239, odd and free
  /// of the factors 3 to 13 (not necessarily prime).
  static unsigned long nextTableSize(unsigned long wanted);

  /// Makes `count` empty buckets (one at least).
  void init(unsigned long count);
  /// insert() into a known bucket.
  void insert(unsigned long bucket, void* const key, void* const value);
  /// remove() from a known bucket.
  bool remove(unsigned long bucket, void* const key);
  /// Moves every cell into `count` new buckets.
  void reHash(unsigned long count);
  /// reHash() to the next table size from 1.6 times the bucket count.
  void growingReHash();
  /// reHash() to the next table size from half the bucket count.
  void shrinkingRehash();

  /// value % numberOfBuckets(), by multiplication with a reciprocal fixed at each
  /// resize rather than by division.
  std::uint32_t reduce(std::uint32_t value) const;

  /// Fills `out` with keys or values in traversal order.
  void collect(void** out, bool keys) const;

 private:
  /// True when this object is a plain KyHashTable, so that the hot paths may hash and
  /// compare keys without a virtual call. Found at the first use: a derived class's
  /// identity is not known while the base is being constructed.
  bool identityKeys() const;
  std::uint32_t identityHash(void* key) const;
  void setBucketCount(std::uint32_t count);
  KyBucketCell* findCell(void* key) const;

  KyBucket* buckets;
  std::uint32_t bucketCount;
  unsigned long length;
  std::uint64_t modMagic = 0;
  mutable signed char plain = -1;
};

/// A hash table whose keys are zero-terminated strings, compared by content.
class KY_EXPORT KyStringHashTable : public KyHashTable {
 public:
  /// An empty table of `buckets` buckets.
  explicit KyStringHashTable(unsigned long buckets);
  /// Deletes the cells, not the key strings.
  ~KyStringHashTable() override;

  /// The keys in traversal order, or sorted by unsigned bytes; storage as in
  /// convertToArray().
  const char* const* convertToStrings(unsigned long& count, bool sorted, bool onHeap) const;

 protected:
  /// True when the two strings have the same bytes.
  bool match(void* const left, void* const right) const override;
  /// A hash of the string's bytes (taken as signed), reduced by the bucket count.
  unsigned long hash(void* const key) const override;
};

#endif  // KYBASE_CONTAINERS_HASH_TABLE_H
