// KyMemoryManager: the allocator of the library's small fixed-size objects (list
// cells, list objects, hash table cells). Cells of 1 to 64 bytes come from large
// blocks in eight size classes of 8 bytes; freed cells go on a per-class free list
// (last in, first out) and are never returned to the system before shut-down.
// A cell carries no header, so release() must be given the size given to alloc()
// (or any size of the same class). Requests above 64 bytes go to the heap and are
// remembered in a table so that the ones still alive at shut-down are freed.
//
// Beside it stand KyMalloc, KyRealloc, KyFree and KyMemMove, the library's doors to
// the general heap.
//
// Two environment switches are read once: KY_MEMORYMANAGER (unset, "true", "yes":
// on; anything else sends every request to the heap) and KY_TRACEMEMORYMANAGER
// ("true"/"yes": counters and a status report on stderr at each step; "update":
// counters only). Both compare without regard to case.
//
// Threads: only the first GetInstance() is safe against concurrent callers; the
// manager itself takes no lock and must be used from one thread at a time.
// Failure: alloc() returns null when the heap is exhausted; it never throws.
#ifndef KYBASE_CORE_MEMORY_MANAGER_H
#define KYBASE_CORE_MEMORY_MANAGER_H

#include <cstdint>
#include <iosfwd>

#include "kybase/core/export.h"

class KyHashTable;

/// The small-cell allocator; see the family page for its contract.
class KY_EXPORT KyMemoryManager {
 public:
  /// The manager of the process, made on the first call (which reads the switches).
  static KyMemoryManager& GetInstance();

  /// A manager of its own, apart from GetInstance()'s; its cells die with it.
  KyMemoryManager();
  /// Frees every block and every big request still alive.
  ~KyMemoryManager();
  /// Not copyable: cells belong to one manager.
  KyMemoryManager(const KyMemoryManager&) = delete;
  /// Not assignable.
  KyMemoryManager& operator=(const KyMemoryManager&) = delete;

  // The common case, a cell popped from or pushed on its free list, is inline; the
  // rest (switches, counters, bumping, new blocks, big requests) is out of line.
  /// A cell of at least `size` bytes (8-aligned), or a heap block above 64 bytes; null
  /// when the heap is exhausted.
  void* alloc(unsigned int size) {
    if (quiet && size - 1 < kMaxCell) {
      void*& head = freeLists[(size - 1) / 8];
      if (void* cell = head) {
        head = *static_cast<void**>(cell);
        // The next request of this size takes the new head: fetching it now hides the
        // wait for a cell last touched when a large structure was given back.
        __builtin_prefetch(head, 1);
        return cell;
      }
    }
    return allocSlow(size);
  }
  /// Gives back a cell; `size` must fall in the class of the size given to alloc().
  /// A null pointer is ignored.
  void release(void* pointer, unsigned int size) {
    if (quiet && pointer != nullptr && size - 1 < kMaxCell) {
      void*& head = freeLists[(size - 1) / 8];
      *static_cast<void**>(pointer) = head;
      head = pointer;
      return;
    }
    releaseSlow(pointer, size);
  }
  /// Writes the bytes held in blocks and the bytes in use.
  void status(std::ostream& stream) const;

 private:
  struct SingletonTag {};
  explicit KyMemoryManager(SingletonTag);

  static constexpr unsigned int kClassCount = 9;
  static constexpr unsigned int kMaxCell = 64;
  static constexpr unsigned int kFirstBlock = 4096;
  static constexpr unsigned int kBlockHeader = 8;

  static unsigned int alignedSize(unsigned int size) { return (size + 7) & ~7u; }
  static unsigned int category(unsigned int size) { return size % 8 ? size / 8 : size / 8 - 1; }

  void* allocSlow(unsigned int size);
  void releaseSlow(void* pointer, unsigned int size);
  void* allocBig(unsigned int size);
  void* allocFromNewBlock(unsigned int rounded);
  void countRequest(unsigned int size);
  void traceStatus() const;

  void* freeLists[kClassCount];
  char* bumpPointer;
  char* blockEnd;
  std::uint32_t blockSize;
  std::uint32_t allocatedBytes;
  std::uint32_t usedBytes;
  std::uint32_t totalRequested;
  [[maybe_unused]] std::int32_t reserved;  // stays 0
  std::int32_t currentRequested;
  std::int32_t peakRequested;
  /// Requests above 64 bytes still alive, key and value the block; made at the first.
  KyHashTable* bigBlockTable;
  /// Cells are on and nothing is counted: the free lists may be used directly. Set
  /// once the switches have been read; cleared at destruction.
  bool quiet;
  bool singleton;
};

/// Heap doors. KyMalloc and KyRealloc retry through std::get_new_handler() for as long
/// as a handler is installed and the heap says no; without a handler they return null.
KY_EXPORT void* KyMalloc(unsigned int size);
/// realloc() that retries through the new handler in the same way.
KY_EXPORT void* KyRealloc(void* pointer, unsigned int size);
/// free(); null is ignored.
KY_EXPORT void KyFree(void* pointer);
/// With a size of 0 nothing is touched, so null pointers may pass.
KY_EXPORT void* KyMemMove(void* destination, const void* source, unsigned int size);

#endif  // KYBASE_CORE_MEMORY_MANAGER_H
