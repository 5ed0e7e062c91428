#include "kybase/core/memory_manager.h"

#include <gtest/gtest.h>
#include "support/sanitizer.h"
#include <sys/resource.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <sstream>
#include <utility>
#include <vector>

namespace {

std::string StatusOf(const KyMemoryManager& manager) {
  std::ostringstream out;
  manager.status(out);
  return out.str();
}

std::ptrdiff_t Distance(void* from, void* to) { return static_cast<char*>(to) - static_cast<char*>(from); }

TEST(MemoryManager, SizeClassesRoundToEightAndShareCellsWithinAClass) {
  // Consecutive fresh cells of one request size lie one rounded size apart.
  const std::pair<unsigned int, std::ptrdiff_t> cases[] = {{1, 8},   {8, 8},   {9, 16},  {16, 16},
                                                           {17, 24}, {33, 40}, {57, 64}, {64, 64}};
  for (const auto& [request, cell] : cases) {
    KyMemoryManager manager;
    void* first = manager.alloc(request);
    void* second = manager.alloc(request);
    EXPECT_EQ(Distance(first, second), cell) << "request " << request;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first) % 8, 0u);
    // Any size of the same class may release the cell; the next request of the class gets it.
    manager.release(first, static_cast<unsigned int>(cell));
    EXPECT_EQ(manager.alloc(static_cast<unsigned int>(cell - 7)), first) << "request " << request;
  }
  KyMemoryManager manager;  // the free list is last in, first out
  void* a = manager.alloc(8);
  void* b = manager.alloc(8);
  void* c = manager.alloc(8);
  manager.release(a, 8);
  manager.release(nullptr, 8);
  manager.release(c, 8);
  manager.release(b, 8);
  EXPECT_EQ(manager.alloc(8), b);
  EXPECT_EQ(manager.alloc(8), c);
  EXPECT_EQ(manager.alloc(8), a);
}

TEST(MemoryManager, ExactFillOfFirstBlockLeavesNoRemainder) {
  KyMemoryManager manager;
  // 4096 bytes less the 8-byte header hold exactly 511 cells of 8.
  void* first = manager.alloc(8);
  void* last = first;
  for (int i = 1; i < 511; ++i) last = manager.alloc(8);
  EXPECT_EQ(Distance(first, last), 510 * 8);
  void* next = manager.alloc(8);
  EXPECT_NE(Distance(first, next), 511 * 8);
  // Nothing went on a free list: the following cells come from the new block in order.
  EXPECT_EQ(Distance(next, manager.alloc(8)), 8);
  EXPECT_EQ(Distance(next, manager.alloc(16)), 16);
}

TEST(MemoryManager, RemainderOfBlockGoesToItsFreeList) {
  KyMemoryManager manager;
  // 63 cells of 64 use 4032 of the 4088 bytes; 56 remain.
  void* first = manager.alloc(64);
  for (int i = 1; i < 63; ++i) manager.alloc(64);
  void* fromNewBlock = manager.alloc(64);
  void* remainder = manager.alloc(56);
  EXPECT_EQ(Distance(first, remainder), 63 * 64);
  EXPECT_NE(Distance(first, fromNewBlock), 63 * 64);
  // The remainder was one cell: the next 56-byte request is served by bumping again.
  EXPECT_EQ(Distance(fromNewBlock, manager.alloc(56)), 64);
}

TEST(MemoryManager, BigRequestsBypassCellsAndDieWithTheManager) {
  auto* manager = new KyMemoryManager;
  void* small = manager->alloc(64);
  void* big = manager->alloc(65);
  void* big2 = manager->alloc(1000);
  ASSERT_NE(big, nullptr);
  static_cast<char*>(big)[64] = 1;
  static_cast<char*>(big2)[999] = 1;
  EXPECT_NE(Distance(small, big), 64);
  manager->release(big2, 1000);
  // `big` is still alive and is freed here (a leak checker would report it otherwise).
  delete manager;
}

TEST(MemoryManager, StatusWithoutTraceKeepsInitialCounters) {
  KyMemoryManager manager;
  for (int i = 0; i < 1000; ++i) manager.alloc(40);
  EXPECT_EQ(StatusOf(manager),
            "STATUS OF SMALL CELLS MEMORY:\n"
            "CURRENTLY ALLOCATED MEMORY 4096 BYTES.\n"
            "CURRENTLY USED MEMORY 0 BYTES.\n");
  EXPECT_EQ(&KyMemoryManager::GetInstance(), &KyMemoryManager::GetInstance());
}

TEST(KyMemMove, SizeZeroTouchesNothingAndReallocKeepsContents) {
  char target[4] = {'a', 'b', 'c', 'd'};
  EXPECT_EQ(KyMemMove(target, nullptr, 0), target);
  EXPECT_EQ(KyMemMove(nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(KyMemMove(target + 1, target, 3), target + 1);
  EXPECT_EQ(std::string(target, 4), "aabc");
  char* block = static_cast<char*>(KyMalloc(4));
  std::memcpy(block, "abc", 4);
  block = static_cast<char*>(KyRealloc(block, 4000));
  ASSERT_NE(block, nullptr);
  EXPECT_STREQ(block, "abc");
  block = static_cast<char*>(KyRealloc(block, 0));  // size zero keeps a block
  ASSERT_NE(block, nullptr);
  KyFree(block);
}

#ifndef KY_TEST_ASAN
int HandlerCalls = 0;
void CountingHandler() {
  if (++HandlerCalls == 3) std::set_new_handler(nullptr);
}

// Runs in a child whose address space is too small for the requests.
void ExhaustHeap() {
  rlimit limit{512UL << 20, 512UL << 20};
  setrlimit(RLIMIT_AS, &limit);
  std::set_new_handler(CountingHandler);
  void* block = KyMalloc(0xF0000000u);
  void* moved = KyRealloc(KyMalloc(16), 0xF0000000u);
  std::exit(block == nullptr && moved == nullptr && HandlerCalls == 3 ? 0 : 1);
}

TEST(KyMalloc, RetriesThroughTheNewHandlerUntilItIsGone) {
  EXPECT_EXIT(ExhaustHeap(), ::testing::ExitedWithCode(0), "");
}
#endif

}  // namespace
