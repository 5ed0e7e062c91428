#include "kybase/core/memory_manager.h"

#include <strings.h>
#include <sys/mman.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>

#include "kybase/containers/hash_table.h"

namespace {

// -1 not read yet, 0 off (heap only), 1 on, 2 the manager has been destroyed.
int ManagerState = -1;
// -1 not read yet, then 0, 1 or 3.
int TraceLevel = -1;

constexpr int kStateOff = 0;
constexpr int kStateOn = 1;
constexpr int kStateGone = 2;

bool EqualsNoCase(const char* value, const char* word) { return strcasecmp(value, word) == 0; }

int ReadManagerState() {
  const char* value = std::getenv("KY_MEMORYMANAGER");
  if (value == nullptr || EqualsNoCase(value, "true") || EqualsNoCase(value, "yes")) return kStateOn;
  return kStateOff;
}

int ReadTraceLevel() {
  const char* value = std::getenv("KY_TRACEMEMORYMANAGER");
  if (value == nullptr) return 0;
  if (EqualsNoCase(value, "true") || EqualsNoCase(value, "yes")) return 3;
  if (EqualsNoCase(value, "update")) return 1;
  return 0;
}

// True when requests go through the cells; reads the switch at the first need.
inline bool ManagerOn() {
  if (ManagerState == -1) ManagerState = ReadManagerState();
  return ManagerState == kStateOn;
}

void FreeBigBlock(void* key, void*, void*) { KyFree(key); }

// Large blocks hold trees of many small objects that are walked cell by cell: huge
// pages spare most of the address translations. Only a hint; failure changes nothing.
void AdviseHugePages(char* block, std::uint32_t size) {
  constexpr std::uintptr_t kHugePage = 2u << 20;
  if (size < 2 * kHugePage) return;
  auto start = (reinterpret_cast<std::uintptr_t>(block) + kHugePage - 1) & ~(kHugePage - 1);
  auto end = (reinterpret_cast<std::uintptr_t>(block) + size) & ~(kHugePage - 1);
  if (end > start) madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
}

}  // namespace

KyMemoryManager& KyMemoryManager::GetInstance() {
  static KyMemoryManager instance{SingletonTag{}};
  return instance;
}

KyMemoryManager::KyMemoryManager(SingletonTag) : KyMemoryManager() { singleton = true; }

KyMemoryManager::KyMemoryManager()
    : bumpPointer(nullptr),
      blockEnd(nullptr),
      blockSize(0),
      allocatedBytes(0),
      usedBytes(0),
      totalRequested(0),
      reserved(0),
      currentRequested(0),
      peakRequested(0),
      bigBlockTable(nullptr),
      quiet(false),
      singleton(false) {
  if (TraceLevel == -1) TraceLevel = ReadTraceLevel();
  for (void*& head : freeLists) head = nullptr;
  char* block = static_cast<char*>(KyMalloc(kFirstBlock));
  *reinterpret_cast<char**>(block) = nullptr;
  blockSize = kFirstBlock;
  bumpPointer = block + kBlockHeader;
  blockEnd = block + kFirstBlock;
  usedBytes = 0;
  allocatedBytes = kFirstBlock;
}

KyMemoryManager::~KyMemoryManager() {
  if (bigBlockTable != nullptr) {
    bigBlockTable->mapHash(FreeBigBlock, nullptr);
    delete bigBlockTable;
    bigBlockTable = nullptr;
  }
  char* block = blockEnd - blockSize;
  while (block != nullptr) {
    char* previous = *reinterpret_cast<char**>(block);
    KyFree(block);
    block = previous;
  }
  // Cells handed out before now lived in the blocks just freed: from here on a late
  // release is ignored and a late request goes to the heap.
  quiet = false;
  if (singleton && ManagerState != kStateOff) ManagerState = kStateGone;
}

void KyMemoryManager::countRequest(unsigned int size) {
  totalRequested += size;
  currentRequested = static_cast<std::int32_t>(static_cast<std::uint32_t>(currentRequested) + size);
  if (currentRequested > peakRequested) peakRequested = currentRequested;
  traceStatus();
}

void KyMemoryManager::traceStatus() const {
  if (TraceLevel == 3) status(std::cerr);
}

void* KyMemoryManager::allocSlow(unsigned int size) {
  if (!ManagerOn()) return KyMalloc(size);
  quiet = TraceLevel == 0;
  if (TraceLevel != 0) countRequest(size);
  if (size > kMaxCell) return allocBig(size);
  // A request of 0 bytes is served as one of 8, so that it has a class.
  if (size == 0) size = 1;
  const unsigned int rounded = alignedSize(size);
  void*& head = freeLists[category(size)];
  if (void* cell = head) {
    head = *static_cast<void**>(cell);
    if (TraceLevel != 0) {
      usedBytes += rounded;
      traceStatus();
    }
    return cell;
  }
  if (static_cast<unsigned long>(blockEnd - bumpPointer) >= rounded) {
    if (TraceLevel != 0) {
      usedBytes += rounded;
      traceStatus();
    }
    char* cell = bumpPointer;
    bumpPointer += rounded;
    return cell;
  }
  return allocFromNewBlock(rounded);
}

void* KyMemoryManager::allocBig(unsigned int size) {
  void* pointer = KyMalloc(size);
  if (bigBlockTable == nullptr) bigBlockTable = new KyHashTable(1024);
  bigBlockTable->insert(pointer, pointer);
  return pointer;
}

void* KyMemoryManager::allocFromNewBlock(unsigned int rounded) {
  const unsigned int remainder = static_cast<unsigned int>(blockEnd - bumpPointer);
  if (remainder > 0) {
    void*& head = freeLists[category(remainder)];
    *reinterpret_cast<void**>(bumpPointer) = head;
    head = bumpPointer;
    // The remainder now belongs to its free list alone, even if the next block fails.
    bumpPointer = blockEnd;
  }
  const std::uint32_t oldSize = blockSize;
  const std::uint32_t newSize = oldSize <= UINT32_MAX / 2 ? oldSize * 2 : oldSize;
  char* block = static_cast<char*>(KyMalloc(newSize));
  if (block == nullptr) return nullptr;
  AdviseHugePages(block, newSize);
  blockSize = newSize;
  if (TraceLevel != 0) {
    allocatedBytes += newSize;
    usedBytes += rounded;
    traceStatus();
  }
  *reinterpret_cast<char**>(block) = blockEnd - oldSize;
  blockEnd = block + newSize;
  bumpPointer = block + kBlockHeader + rounded;
  return block + kBlockHeader;
}

void KyMemoryManager::releaseSlow(void* pointer, unsigned int size) {
  if (pointer == nullptr) return;
  if (!ManagerOn()) {
    if (ManagerState == kStateOff) KyFree(pointer);
    return;
  }
  if (size > kMaxCell) {
    if (bigBlockTable != nullptr) bigBlockTable->remove(pointer);
    KyFree(pointer);
    return;
  }
  if (size == 0) size = 1;
  void*& head = freeLists[category(size)];
  *static_cast<void**>(pointer) = head;
  head = pointer;
  if (TraceLevel != 0) {
    usedBytes -= alignedSize(size);
    traceStatus();
  }
}

void KyMemoryManager::status(std::ostream& stream) const {
  stream << "STATUS OF SMALL CELLS MEMORY:\n"
         << "CURRENTLY ALLOCATED MEMORY " << allocatedBytes << " BYTES.\n"
         << "CURRENTLY USED MEMORY " << usedBytes << " BYTES.\n";
}

void* KyMalloc(unsigned int size) {
  for (;;) {
    if (void* pointer = std::malloc(size)) return pointer;
    std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) return nullptr;
    handler();
  }
}

void* KyRealloc(void* pointer, unsigned int size) {
  // A size of 0 keeps a one-byte block: realloc would free the block and return null,
  // and a retry or a caller keeping the old pointer would then use freed memory.
  const std::size_t bytes = size != 0 ? size : 1;
  for (;;) {
    if (void* result = std::realloc(pointer, bytes)) return result;
    std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) return nullptr;
    handler();
  }
}

void KyFree(void* pointer) { std::free(pointer); }

void* KyMemMove(void* destination, const void* source, unsigned int size) {
  if (size == 0) return destination;
  return std::memmove(destination, source, size);
}
