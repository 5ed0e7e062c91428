// KyMemoryPool: a store of reusable scratch buffers. A taker gets a buffer of at least
// the size it asks for; when done, the buffer stays in the pool for the next taker and
// is never shrunk nor given back before the pool dies. A buffer is busy while its lock
// count is above 0; a buffer taken unlocked is valid only until the next use of its
// pool. "Lock" is a busy mark, not a thread lock: pools are plain shared data.
//
// Three pools exist, one per element type: KyCharPool (char), KyKyUIntPool (unsigned
// long) and KyPointerPool (void*). Each is one constant-initialised static whose
// destructor runs after the global context and the memory manager are gone, so the
// pools are usable before and after every other object of the library. Counts given
// to the typed pools are element counts.
//
// Failure: a null result when the heap fails or a data pointer is unknown; the pools
// throw nothing of their own (the record of a new block comes from operator new).
#ifndef KYBASE_CORE_MEMORY_POOL_H
#define KYBASE_CORE_MEMORY_POOL_H

#include <cstdint>
#include <iosfwd>

#include "kybase/core/export.h"

/// The record of one pooled buffer, kept by its pool in a chain.
struct KY_EXPORT KyMemoryPoolBlock {
  /// The buffer, from KyMalloc; null when the heap refused it.
  void* data;
  /// The lock count: the buffer is busy while it is above 0.
  std::int32_t locks;
  /// The buffer's size in bytes.
  unsigned long size;
  /// The next record of the pool.
  KyMemoryPoolBlock* next;
};

/// A pool of reusable scratch buffers; see the family page for its contract. Only the
/// three typed pools make pools.
class KY_EXPORT KyMemoryPool {
 public:
  /// Frees every buffer and record of the pool.
  ~KyMemoryPool();

  /// A free buffer of at least `size` bytes, locked once when `lock` is true. Reuses
  /// the first free buffer that is large enough, else enlarges the largest free one
  /// (doubling from its size), else makes a new one; null above 2 GiB or when the heap
  /// fails.
  void* alloc(unsigned long size, bool lock);
  /// Makes the buffer `data` hold at least `size` bytes, keeping its contents; a new
  /// buffer may take its place, so use the result from here on. A null `data` is
  /// alloc(); an unknown one gives null.
  void* reAlloc(void* data, unsigned long size, bool lock);
  /// Adds one to the lock count of the buffer `data`; returns `data`, or null when the
  /// pool does not know it.
  void* lock(void* data) const;
  /// Takes one from the lock count of the buffer `data`; returns `data`, or null when
  /// the pool does not know it.
  void* unLock(void* data) const;
  /// Writes "--  KyPoolOf(name)  --" and the number of buffers; with `verbose` above 0
  /// one line per buffer (address, size, locks) instead.
  void printInformation(std::ostream& stream, const char* name, unsigned short verbose) const;

 protected:
  /// An empty pool; constant-initialised, so it is usable before any constructor runs.
  constexpr explicit KyMemoryPool(int elementSize) : elementSize(elementSize), blocks(nullptr) {}

  /// alloc() that also hands out the buffer's record in `block`.
  void* take(KyMemoryPoolBlock*& block, unsigned long size, bool lock);
  /// reAlloc() on a record: keeps the buffer when it is larger than `size`, else moves
  /// it to a doubled one. Locks first when `lock` is true, and undoes that on failure.
  void* grow(KyMemoryPoolBlock* block, unsigned long size, bool lock);
  /// The record of the buffer `data`, locked once more; null when unknown.
  KyMemoryPoolBlock* getBlock(void* data) const;
  /// The buffer of a record; null for a null record.
  void* getData(KyMemoryPoolBlock* block) const;
  /// Takes one from the record's lock count and returns its buffer.
  void* release(KyMemoryPoolBlock* block);

 private:
  KyMemoryPoolBlock* find(void* data) const;

  [[maybe_unused]] int elementSize;  // kept for layout; the typed pools scale by themselves
  KyMemoryPoolBlock* blocks;
};

/// The pool of char buffers: sizes are counts of char.
class KY_EXPORT KyCharPool : public KyMemoryPool {
 public:
  /// The one pool of this type.
  static KyCharPool _Pool;

  /// KyMemoryPool::alloc() for `count` elements.
  static char* Alloc(unsigned long count, bool lock);
  /// KyMemoryPool::reAlloc() for `count` elements.
  static char* ReAlloc(char* data, unsigned long count, bool lock);
  /// A locked buffer of `count` elements, its record in `block`.
  static char* AllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  /// Makes the buffer of `block` hold `count` elements, keeping its lock count; with a
  /// null `block`, AllocBlock().
  static char* ReAllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  /// Takes one from the record's lock count and returns its buffer; null for null.
  static char* ReleaseBlock(KyMemoryPoolBlock* block);
  /// The record of the buffer `data`, locked once more; null when unknown.
  static KyMemoryPoolBlock* GetBlock(char* data);
  /// The buffer of a record; null for a null record.
  static char* GetData(KyMemoryPoolBlock* block);
  /// KyMemoryPool::lock().
  static char* Lock(char* data);
  /// KyMemoryPool::unLock().
  static char* UnLock(char* data);
  /// KyMemoryPool::printInformation() under the pool's element type name.
  static void PrintInformation(std::ostream& stream, unsigned short verbose);

 private:
  constexpr KyCharPool() : KyMemoryPool(sizeof(char)) {}
};

/// The pool of unsigned long buffers: sizes are counts of unsigned long.
class KY_EXPORT KyKyUIntPool : public KyMemoryPool {
 public:
  /// \copydoc KyCharPool::_Pool
  static KyKyUIntPool _Pool;

  /// \copydoc KyCharPool::Alloc
  static unsigned long* Alloc(unsigned long count, bool lock);
  /// \copydoc KyCharPool::ReAlloc
  static unsigned long* ReAlloc(unsigned long* data, unsigned long count, bool lock);
  /// \copydoc KyCharPool::AllocBlock
  static unsigned long* AllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  /// \copydoc KyCharPool::ReAllocBlock
  static unsigned long* ReAllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  /// \copydoc KyCharPool::ReleaseBlock
  static unsigned long* ReleaseBlock(KyMemoryPoolBlock* block);
  /// \copydoc KyCharPool::GetBlock
  static KyMemoryPoolBlock* GetBlock(unsigned long* data);
  /// \copydoc KyCharPool::GetData
  static unsigned long* GetData(KyMemoryPoolBlock* block);
  /// \copydoc KyCharPool::Lock
  static unsigned long* Lock(unsigned long* data);
  /// \copydoc KyCharPool::UnLock
  static unsigned long* UnLock(unsigned long* data);
  /// \copydoc KyCharPool::PrintInformation
  static void PrintInformation(std::ostream& stream, unsigned short verbose);

 private:
  constexpr KyKyUIntPool() : KyMemoryPool(sizeof(unsigned long)) {}
};

/// The pool of pointer buffers: sizes are counts of void*.
class KY_EXPORT KyPointerPool : public KyMemoryPool {
 public:
  /// \copydoc KyCharPool::_Pool
  static KyPointerPool _Pool;

  /// \copydoc KyCharPool::Alloc
  static void** Alloc(unsigned long count, bool lock);
  /// \copydoc KyCharPool::ReAlloc
  static void** ReAlloc(void** data, unsigned long count, bool lock);
  /// \copydoc KyCharPool::AllocBlock
  static void** AllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  /// \copydoc KyCharPool::ReAllocBlock
  static void** ReAllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  /// \copydoc KyCharPool::ReleaseBlock
  static void** ReleaseBlock(KyMemoryPoolBlock* block);
  /// \copydoc KyCharPool::GetBlock
  static KyMemoryPoolBlock* GetBlock(void** data);
  /// \copydoc KyCharPool::GetData
  static void** GetData(KyMemoryPoolBlock* block);
  /// \copydoc KyCharPool::Lock
  static void** Lock(void** data);
  /// \copydoc KyCharPool::UnLock
  static void** UnLock(void** data);
  /// \copydoc KyCharPool::PrintInformation
  static void PrintInformation(std::ostream& stream, unsigned short verbose);

 private:
  constexpr KyPointerPool() : KyMemoryPool(sizeof(void*)) {}
};

#endif  // KYBASE_CORE_MEMORY_POOL_H
