#include "kybase/containers/hash_table.h"

#include <cstdlib>
#include <cstring>
#include <typeinfo>

#include "kybase/core/memory_manager.h"
#include "kybase/core/memory_pool.h"

void* KyBucketCell::operator new(std::size_t size) {
  return KyMemoryManager::GetInstance().alloc(static_cast<unsigned int>(size));
}

void KyBucketCell::operator delete(void* pointer, std::size_t size) {
  KyMemoryManager::GetInstance().release(pointer, static_cast<unsigned int>(size));
}

KyBucket::~KyBucket() { delete first; }

KyHashTable::KyHashTable(unsigned long buckets) : buckets(nullptr), bucketCount(0), length(0) { init(buckets); }

KyHashTable::~KyHashTable() {
  empty();
  delete[] buckets;
}

void KyHashTable::init(unsigned long count) {
  length = 0;
  // A table of no buckets would divide by zero at its first hash; it gets one bucket.
  // Counts are 32-bit, like the hashes they divide.
  setBucketCount(count == 0 ? 1 : count > UINT32_MAX ? UINT32_MAX : static_cast<std::uint32_t>(count));
  buckets = new KyBucket[bucketCount];
}

unsigned long KyHashTable::nextTableSize(unsigned long wanted) {
  if (wanted < 17) return 17;
  if (wanted > kMaxBuckets) return kMaxBuckets;
  if (wanted % 2 == 0) ++wanted;
  while (wanted % 3 == 0 || wanted % 5 == 0 || wanted % 7 == 0 || wanted % 11 == 0 || wanted % 13 == 0) wanted += 2;
  return wanted;
}

void KyHashTable::setBucketCount(std::uint32_t count) {
  bucketCount = count;
  modMagic = UINT64_MAX / count + 1;
}

std::uint32_t KyHashTable::reduce(std::uint32_t value) const {
  const std::uint64_t low = modMagic * value;
  return static_cast<std::uint32_t>((static_cast<unsigned __int128>(low) * bucketCount) >> 64);
}

bool KyHashTable::match(void* const left, void* const right) const { return left == right; }

unsigned long KyHashTable::hash(void* const key) const { return identityHash(key); }

std::uint32_t KyHashTable::identityHash(void* key) const {
  const std::uint64_t bits = reinterpret_cast<std::uintptr_t>(key);
  const std::uint32_t folded = static_cast<std::uint32_t>(bits ^ (bits >> 32));
  return reduce((folded >> 16) ^ (folded & 0xFFFF));
}

bool KyHashTable::identityKeys() const {
  if (plain < 0) plain = typeid(*this) == typeid(KyHashTable) ? 1 : 0;
  return plain != 0;
}

KyBucketCell* KyHashTable::findCell(void* key) const {
  if (identityKeys()) {
    KyBucketCell* cell = buckets[identityHash(key)].first;
    while (cell != nullptr && cell->key != key) cell = cell->next;
    return cell;
  }
  KyBucketCell* cell = buckets[hash(key)].first;
  while (cell != nullptr && !match(key, cell->key)) cell = cell->next;
  return cell;
}

void KyHashTable::insert(void* const key, void* const value) {
  insert(identityKeys() ? identityHash(key) : hash(key), key, value);
}

void KyHashTable::insert(unsigned long bucket, void* const key, void* const value) {
  KyBucket& chain = buckets[bucket];
  const bool identity = identityKeys();
  for (KyBucketCell* cell = chain.first; cell != nullptr; cell = cell->next) {
    if (identity ? cell->key == key : match(key, cell->key)) {
      cell->value = value;
      return;
    }
  }
  chain.first = new KyBucketCell{key, value, chain.first};
  ++chain.length;
  ++length;
  // The load is length / bucketCount in integers; "load > 2" is "length >= 3 * count".
  const unsigned long count = bucketCount;
  if (((chain.length > 12 && length >= 3 * count) || length >= 7 * count) && count != kMaxBuckets) growingReHash();
}

bool KyHashTable::replace(void* const key, void* const value) {
  insert(key, value);
  return true;
}

bool KyHashTable::contains(void* const key) const { return findCell(key) != nullptr; }

bool KyHashTable::remove(void* const key) { return remove(identityKeys() ? identityHash(key) : hash(key), key); }

bool KyHashTable::remove(unsigned long bucket, void* const key) {
  KyBucket& chain = buckets[bucket];
  KyBucketCell** link = &chain.first;
  if (identityKeys()) {
    while (*link != nullptr && (*link)->key != key) link = &(*link)->next;
  } else {
    while (*link != nullptr && !match(key, (*link)->key)) link = &(*link)->next;
  }
  KyBucketCell* cell = *link;
  if (cell == nullptr) return false;
  *link = cell->next;
  delete cell;
  --chain.length;
  --length;
  // Only a table made with fewer than 17 buckets is ever resized here, and then up to
  // 17: callers rely on large tables never rehashing on removal.
  if (bucketCount < 17 && length < 2UL * bucketCount) shrinkingRehash();
  return true;
}

void* KyHashTable::find(void* const key, bool (*predicate)(void*, void*), void* argument) const {
  KyBucketCell* cell = findCell(key);
  if (cell == nullptr || predicate == nullptr || predicate(cell->value, argument)) return cell != nullptr ? cell->value : nullptr;
  return nullptr;
}

void KyHashTable::growingReHash() {
  reHash(nextTableSize(static_cast<unsigned long>(1.6 * static_cast<double>(bucketCount))));
}

void KyHashTable::shrinkingRehash() {
  reHash(nextTableSize(static_cast<unsigned long>(0.5 * static_cast<double>(bucketCount))));
}

void KyHashTable::reHash(unsigned long count) {
  KyBucket* const oldBuckets = buckets;
  const unsigned long oldCount = bucketCount;
  KyBucket* const newBuckets = new KyBucket[count];
  setBucketCount(static_cast<std::uint32_t>(count));
  buckets = newBuckets;
  const bool identity = identityKeys();
  for (unsigned long i = 0; i < oldCount; ++i) {
    KyBucketCell* cell = oldBuckets[i].first;
    while (cell != nullptr) {
      KyBucketCell* const next = cell->next;
      KyBucket& target = newBuckets[identity ? identityHash(cell->key) : hash(cell->key)];
      cell->next = target.first;
      target.first = cell;
      ++target.length;
      cell = next;
    }
    oldBuckets[i].first = nullptr;
  }
  delete[] oldBuckets;
}

void KyHashTable::empty() {
  for (unsigned long i = 0; i < bucketCount; ++i) {
    KyBucketCell* cell = buckets[i].first;
    while (cell != nullptr) {
      KyBucketCell* const next = cell->next;
      delete cell;
      cell = next;
    }
    buckets[i].first = nullptr;
  }
  delete[] buckets;
  init(bucketCount);
}

void KyHashTable::mapHash(void (*function)(void*, void*, void*), void* argument) const {
  for (unsigned long i = 0; i < bucketCount; ++i)
    for (KyBucketCell* cell = buckets[i].first; cell != nullptr; cell = cell->next)
      function(cell->key, cell->value, argument);
}

void KyHashTable::collect(void** out, bool keys) const {
  for (unsigned long i = 0; i < bucketCount; ++i)
    for (KyBucketCell* cell = buckets[i].first; cell != nullptr; cell = cell->next)
      *out++ = keys ? cell->key : cell->value;
}

namespace {

void** PointerArray(unsigned long count, bool onHeap) {
  return onHeap ? new void*[count] : KyPointerPool::Alloc(count, false);
}

}  // namespace

void** KyHashTable::convertToArray(unsigned long& count, bool onHeap) const {
  count = length;
  if (count == 0) return nullptr;
  void** array = PointerArray(count, onHeap);
  if (array != nullptr) collect(array, false);
  return array;
}

KyStringHashTable::KyStringHashTable(unsigned long buckets) : KyHashTable(buckets) {}

// The base destructor empties through its own code; nothing here depends on the
// string operations once destruction has begun.
KyStringHashTable::~KyStringHashTable() = default;

bool KyStringHashTable::match(void* const left, void* const right) const {
  if (left == nullptr || right == nullptr) return left == right;
  const char* a = static_cast<const char*>(left);
  const char* b = static_cast<const char*>(right);
  return *a == *b && std::strcmp(static_cast<const char*>(left), static_cast<const char*>(right)) == 0;
}

unsigned long KyStringHashTable::hash(void* const key) const {
  // Bytes count as signed, so characters from 0x80 up subtract: tables built by other
  // code with the same hash stay compatible.
  std::uint32_t h = 0;
  if (key == nullptr) return 0;
  for (const signed char* c = static_cast<const signed char*>(key); *c != 0; ++c) {
    h = h * 16 + static_cast<std::uint32_t>(static_cast<std::int32_t>(*c));
    const std::uint32_t g = h & 0xF0000000u;
    if (g != 0) h = h ^ (g >> 24) ^ g;
  }
  return reduce(h);
}

namespace {

int CompareKeys(const void* left, const void* right) {
  const unsigned char* a = *static_cast<const unsigned char* const*>(left);
  const unsigned char* b = *static_cast<const unsigned char* const*>(right);
  if (a == nullptr || b == nullptr) return 0;
  return std::strcmp(reinterpret_cast<const char*>(a), reinterpret_cast<const char*>(b));
}

}  // namespace

const char* const* KyStringHashTable::convertToStrings(unsigned long& count, bool sorted, bool onHeap) const {
  count = getLength();
  if (count == 0) return nullptr;
  void** array = PointerArray(count, onHeap);
  if (array == nullptr) return nullptr;
  collect(array, true);
  if (sorted) std::qsort(array, count, sizeof(void*), CompareKeys);
  return reinterpret_cast<const char* const*>(array);
}
