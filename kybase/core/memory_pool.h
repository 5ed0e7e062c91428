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

struct KY_EXPORT KyMemoryPoolBlock {
  void* data;
  std::int32_t locks;
  unsigned long size;
  KyMemoryPoolBlock* next;
};

class KY_EXPORT KyMemoryPool {
 public:
  ~KyMemoryPool();

  void* alloc(unsigned long size, bool lock);
  void* reAlloc(void* data, unsigned long size, bool lock);
  void* lock(void* data) const;
  void* unLock(void* data) const;
  void printInformation(std::ostream& stream, const char* name, unsigned short verbose) const;

 protected:
  constexpr explicit KyMemoryPool(int elementSize) : elementSize(elementSize), blocks(nullptr) {}

  void* take(KyMemoryPoolBlock*& block, unsigned long size, bool lock);
  void* grow(KyMemoryPoolBlock* block, unsigned long size, bool lock);
  KyMemoryPoolBlock* getBlock(void* data) const;
  void* getData(KyMemoryPoolBlock* block) const;
  void* release(KyMemoryPoolBlock* block);

 private:
  KyMemoryPoolBlock* find(void* data) const;

  [[maybe_unused]] int elementSize;  // kept for layout; the typed pools scale by themselves
  KyMemoryPoolBlock* blocks;
};

class KY_EXPORT KyCharPool : public KyMemoryPool {
 public:
  static KyCharPool _Pool;

  static char* Alloc(unsigned long count, bool lock);
  static char* ReAlloc(char* data, unsigned long count, bool lock);
  static char* AllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  static char* ReAllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  static char* ReleaseBlock(KyMemoryPoolBlock* block);
  static KyMemoryPoolBlock* GetBlock(char* data);
  static char* GetData(KyMemoryPoolBlock* block);
  static char* Lock(char* data);
  static char* UnLock(char* data);
  static void PrintInformation(std::ostream& stream, unsigned short verbose);

 private:
  constexpr KyCharPool() : KyMemoryPool(sizeof(char)) {}
};

class KY_EXPORT KyKyUIntPool : public KyMemoryPool {
 public:
  static KyKyUIntPool _Pool;

  static unsigned long* Alloc(unsigned long count, bool lock);
  static unsigned long* ReAlloc(unsigned long* data, unsigned long count, bool lock);
  static unsigned long* AllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  static unsigned long* ReAllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  static unsigned long* ReleaseBlock(KyMemoryPoolBlock* block);
  static KyMemoryPoolBlock* GetBlock(unsigned long* data);
  static unsigned long* GetData(KyMemoryPoolBlock* block);
  static unsigned long* Lock(unsigned long* data);
  static unsigned long* UnLock(unsigned long* data);
  static void PrintInformation(std::ostream& stream, unsigned short verbose);

 private:
  constexpr KyKyUIntPool() : KyMemoryPool(sizeof(unsigned long)) {}
};

class KY_EXPORT KyPointerPool : public KyMemoryPool {
 public:
  static KyPointerPool _Pool;

  static void** Alloc(unsigned long count, bool lock);
  static void** ReAlloc(void** data, unsigned long count, bool lock);
  static void** AllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  static void** ReAllocBlock(KyMemoryPoolBlock*& block, unsigned long count);
  static void** ReleaseBlock(KyMemoryPoolBlock* block);
  static KyMemoryPoolBlock* GetBlock(void** data);
  static void** GetData(KyMemoryPoolBlock* block);
  static void** Lock(void** data);
  static void** UnLock(void** data);
  static void PrintInformation(std::ostream& stream, unsigned short verbose);

 private:
  constexpr KyPointerPool() : KyMemoryPool(sizeof(void*)) {}
};

#endif  // KYBASE_CORE_MEMORY_POOL_H
