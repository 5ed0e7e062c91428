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

struct KY_EXPORT KyBucketCell {
  void* key;
  void* value;
  KyBucketCell* next;

  static void* operator new(std::size_t size);
  static void operator delete(void* pointer, std::size_t size);
};

struct KY_EXPORT KyBucket {
  std::uint32_t length = 0;
  KyBucketCell* first = nullptr;

  KyBucket() = default;
  ~KyBucket();
  KyBucket(const KyBucket&) = default;
  KyBucket& operator=(const KyBucket&) = default;
};

class KY_EXPORT KyHashTable {
 public:
  explicit KyHashTable(unsigned long buckets = 17);
  KyHashTable(const KyHashTable&) = default;
  KyHashTable& operator=(const KyHashTable&) = default;
  virtual ~KyHashTable();

  // Adds the entry, or stores the value in the entry of an equal key (which keeps its
  // first key pointer).
  virtual void insert(void* const key, void* const value);
  // insert() under another name: always true, and adds a missing key.
  virtual bool replace(void* const key, void* const value);
  virtual bool contains(void* const key) const;
  virtual bool remove(void* const key);
  // The value of `key`, or with a predicate the value of the entry of `key` for which
  // predicate(value, argument) holds; null when there is none.
  virtual void* find(void* const key, bool (*predicate)(void*, void*) = nullptr, void* argument = nullptr) const;

  void empty();
  void mapHash(void (*function)(void* key, void* value, void* argument), void* argument) const;
  // The values in traversal order, or null for an empty table. With onHeap the caller
  // owns the array (delete[]); otherwise it lives in KyPointerPool, unlocked, and is
  // valid until the next use of that pool.
  void** convertToArray(unsigned long& count, bool onHeap) const;

  unsigned long getLength() const { return length; }
  unsigned long numberOfBuckets() const { return bucketCount; }
  KyBucket* getBuckets() const { return buckets; }

 protected:
  static constexpr unsigned long kMaxBuckets = 9239;

  virtual bool match(void* const left, void* const right) const;
  virtual unsigned long hash(void* const key) const;

  // The next bucket count for a wanted size: at least 17, at most 9239, odd and free
  // of the factors 3 to 13 (not necessarily prime).
  static unsigned long nextTableSize(unsigned long wanted);

  void init(unsigned long count);
  void insert(unsigned long bucket, void* const key, void* const value);
  bool remove(unsigned long bucket, void* const key);
  void reHash(unsigned long count);
  void growingReHash();
  void shrinkingRehash();

  // value % numberOfBuckets(), by multiplication with a reciprocal fixed at each
  // resize rather than by division.
  std::uint32_t reduce(std::uint32_t value) const;

  // Fills `out` with keys or values in traversal order.
  void collect(void** out, bool keys) const;

 private:
  // True when this object is a plain KyHashTable, so that the hot paths may hash and
  // compare keys without a virtual call. Found at the first use: a derived class's
  // identity is not known while the base is being constructed.
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

class KY_EXPORT KyStringHashTable : public KyHashTable {
 public:
  explicit KyStringHashTable(unsigned long buckets);
  ~KyStringHashTable() override;

  // The keys in traversal order, or sorted by unsigned bytes; storage as in
  // convertToArray().
  const char* const* convertToStrings(unsigned long& count, bool sorted, bool onHeap) const;

 protected:
  bool match(void* const left, void* const right) const override;
  unsigned long hash(void* const key) const override;
};

#endif  // KYBASE_CONTAINERS_HASH_TABLE_H
