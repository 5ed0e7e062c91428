#include "kybase/core/memory_pool.h"

#include <cstring>
#include <limits>
#include <ostream>

#include "kybase/core/memory_manager.h"

// The three pools, in the order their destructors are registered at load: they run at
// unload in the reverse order, after every object made on first use.
KyCharPool KyCharPool::_Pool;
KyKyUIntPool KyKyUIntPool::_Pool;
KyPointerPool KyPointerPool::_Pool;

namespace {

constexpr unsigned long kFirstSize = 64;
// The largest buffer a pool makes: the heap doors take 32-bit sizes, and doubling
// from 64 reaches this bound exactly.
constexpr unsigned long kMaxSize = 1UL << 31;

// Doubles from `size` (or from 64 for a record left empty by a failed request) until
// `wanted` fits. `wanted` is at most kMaxSize, so the doubling ends.
unsigned long DoubledSize(unsigned long size, unsigned long wanted) {
  if (size == 0) size = kFirstSize;
  while (size < wanted) size *= 2;
  return size;
}

void AddLock(KyMemoryPoolBlock* block, int delta) {
  block->locks = static_cast<std::int32_t>(static_cast<std::uint32_t>(block->locks) + static_cast<std::uint32_t>(delta));
}

// Moves the block to a buffer of `size` bytes, keeping its contents. On failure the
// block keeps its old buffer and null returns.
void* Enlarge(KyMemoryPoolBlock* block, unsigned long size) {
  void* data = KyMalloc(static_cast<unsigned int>(size));
  if (data == nullptr) return nullptr;
  KyMemMove(data, block->data, static_cast<unsigned int>(block->size));
  KyFree(block->data);
  block->data = data;
  block->size = size;
  return data;
}

}  // namespace

KyMemoryPool::~KyMemoryPool() {
  while (blocks != nullptr) {
    KyMemoryPoolBlock* next = blocks->next;
    KyFree(blocks->data);
    delete blocks;
    blocks = next;
  }
}

void* KyMemoryPool::alloc(unsigned long size, bool lock) {
  KyMemoryPoolBlock* block = nullptr;
  return take(block, size, lock);
}

void* KyMemoryPool::reAlloc(void* data, unsigned long size, bool lock) {
  if (data == nullptr) return alloc(size, lock);
  KyMemoryPoolBlock* block = find(data);
  return block != nullptr ? grow(block, size, lock) : nullptr;
}

void* KyMemoryPool::lock(void* data) const {
  KyMemoryPoolBlock* block = find(data);
  if (block == nullptr) return nullptr;
  AddLock(block, 1);
  return data;
}

void* KyMemoryPool::unLock(void* data) const {
  KyMemoryPoolBlock* block = find(data);
  if (block == nullptr) return nullptr;
  AddLock(block, -1);
  return data;
}

void* KyMemoryPool::take(KyMemoryPoolBlock*& block, unsigned long size, bool lock) {
  if (size > kMaxSize) return nullptr;
  KyMemoryPoolBlock* largest = nullptr;
  for (KyMemoryPoolBlock* candidate = blocks; candidate != nullptr; candidate = candidate->next) {
    if (candidate->locks != 0) continue;
    if (candidate->size >= size) {
      block = candidate;
      if (lock) AddLock(candidate, 1);
      return candidate->data;
    }
    if (largest == nullptr || candidate->size >= largest->size) largest = candidate;
  }
  if (largest != nullptr) {
    void* data = Enlarge(largest, DoubledSize(largest->size, size));
    if (data == nullptr) return nullptr;
    block = largest;
    if (lock) AddLock(largest, 1);
    return data;
  }
  KyMemoryPoolBlock* fresh = new KyMemoryPoolBlock{nullptr, 0, DoubledSize(kFirstSize, size), blocks};
  fresh->data = KyMalloc(static_cast<unsigned int>(fresh->size));
  if (fresh->data == nullptr) fresh->size = 0;
  blocks = fresh;
  block = fresh;
  if (lock) AddLock(fresh, 1);
  return fresh->data;
}

void* KyMemoryPool::grow(KyMemoryPoolBlock* block, unsigned long size, bool lock) {
  if (size > kMaxSize) return nullptr;
  if (lock) AddLock(block, 1);
  if (block->size > size) return block->data;
  // A request for exactly the present size also moves the buffer: callers see the
  // data pointer change and must not keep the old one.
  void* data = Enlarge(block, DoubledSize(block->size, size));
  if (data == nullptr && lock) AddLock(block, -1);
  return data;
}

KyMemoryPoolBlock* KyMemoryPool::getBlock(void* data) const {
  KyMemoryPoolBlock* block = find(data);
  if (block != nullptr) AddLock(block, 1);
  return block;
}

void* KyMemoryPool::getData(KyMemoryPoolBlock* block) const { return block != nullptr ? block->data : nullptr; }

void* KyMemoryPool::release(KyMemoryPoolBlock* block) {
  AddLock(block, -1);
  return block->data;
}

KyMemoryPoolBlock* KyMemoryPool::find(void* data) const {
  for (KyMemoryPoolBlock* block = blocks; block != nullptr; block = block->next)
    if (block->data == data) return block;
  return nullptr;
}

void KyMemoryPool::printInformation(std::ostream& stream, const char* name, unsigned short verbose) const {
  stream << "--  KyPoolOf(" << name << ")  --";
  unsigned long count = 0;
  for (KyMemoryPoolBlock* block = blocks; block != nullptr; block = block->next) ++count;
  if (verbose == 0) {
    stream << "\t" << count << " Blocks\n";
  } else {
    stream << "\n#" << count << "\tAddress\t\tSize\t\tLocks\n";
    for (KyMemoryPoolBlock* block = blocks; block != nullptr; block = block->next)
      stream << "\t" << block->data << "\t\t" << block->size << "\t\t" << block->locks << std::endl;
  }
  stream.flush();
}

namespace {

// Element counts to bytes; a count whose byte size does not fit asks for more than any
// pool can give, which take() and grow() answer with null.
template <typename T>
unsigned long Bytes(unsigned long count) {
  return count > std::numeric_limits<unsigned long>::max() / sizeof(T) ? std::numeric_limits<unsigned long>::max()
                                                                       : count * sizeof(T);
}

}  // namespace

// The typed pools differ only in element type and printed name.
#define KY_DEFINE_TYPED_POOL(Pool, T, Name)                                                            \
  T* Pool::Alloc(unsigned long count, bool lock) { return static_cast<T*>(_Pool.alloc(Bytes<T>(count), lock)); } \
  T* Pool::ReAlloc(T* data, unsigned long count, bool lock) {                                         \
    return static_cast<T*>(_Pool.reAlloc(data, Bytes<T>(count), lock));                               \
  }                                                                                                   \
  T* Pool::AllocBlock(KyMemoryPoolBlock*& block, unsigned long count) {                               \
    return static_cast<T*>(_Pool.take(block, Bytes<T>(count), true));                                 \
  }                                                                                                   \
  T* Pool::ReAllocBlock(KyMemoryPoolBlock*& block, unsigned long count) {                             \
    if (block != nullptr) return static_cast<T*>(_Pool.grow(block, Bytes<T>(count), false));          \
    return static_cast<T*>(_Pool.take(block, Bytes<T>(count), true));                                 \
  }                                                                                                   \
  T* Pool::ReleaseBlock(KyMemoryPoolBlock* block) {                                                   \
    return block != nullptr ? static_cast<T*>(_Pool.release(block)) : nullptr;                        \
  }                                                                                                   \
  KyMemoryPoolBlock* Pool::GetBlock(T* data) { return _Pool.getBlock(data); }                         \
  T* Pool::GetData(KyMemoryPoolBlock* block) { return static_cast<T*>(_Pool.getData(block)); }        \
  T* Pool::Lock(T* data) { return static_cast<T*>(_Pool.lock(data)); }                                \
  T* Pool::UnLock(T* data) { return static_cast<T*>(_Pool.unLock(data)); }                            \
  void Pool::PrintInformation(std::ostream& stream, unsigned short verbose) {                         \
    _Pool.printInformation(stream, Name, verbose);                                                    \
  }

KY_DEFINE_TYPED_POOL(KyCharPool, char, "Char")
KY_DEFINE_TYPED_POOL(KyKyUIntPool, unsigned long, "KyUInt")
KY_DEFINE_TYPED_POOL(KyPointerPool, void*, "Pointer")

#undef KY_DEFINE_TYPED_POOL
