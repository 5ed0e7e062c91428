#include "kybase/core/memory_manager.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <sstream>
#include <utility>

#include "kybase/core/memory_pool.h"
#include "support/sanitizer.h"

namespace {

// A pool of its own per test, so that no other user of the static pools interferes.
class TestPool : public KyMemoryPool {
 public:
  TestPool() : KyMemoryPool(1) {}
  using KyMemoryPool::getBlock;
  using KyMemoryPool::release;
  using KyMemoryPool::take;

  unsigned long sizeOf(void* data) {
    KyMemoryPoolBlock* block = getBlock(data);
    release(block);
    return block->size;
  }
  std::string info(unsigned short verbose) const {
    std::ostringstream out;
    printInformation(out, "Char", verbose);
    return out.str();
  }
};

TEST(MemoryPool, UnlockedBlocksAreHandedOutAgainLockedOnesAreDistinct) {
  TestPool pool;
  void* first = pool.alloc(10, false);
  EXPECT_EQ(pool.alloc(20, true), first);
  void* second = pool.alloc(10, true);
  EXPECT_NE(second, first);
  EXPECT_EQ(pool.unLock(first), first);
  EXPECT_EQ(pool.alloc(10, false), first);
  EXPECT_EQ(pool.lock(reinterpret_cast<void*>(0x10)), nullptr);
}

// First fit; when nothing fits, the largest too-small block (the later of equal ones)
// is enlarged, keeping its contents.
TEST(MemoryPool, FirstFitAndEnlargementOfTheLargestTooSmallBlock) {
  TestPool pool;
  void* big = pool.alloc(128, true);  // made first, so it stands behind the other
  void* small = pool.alloc(64, true);
  pool.unLock(big);
  pool.unLock(small);
  EXPECT_EQ(pool.alloc(100, false), big);
  std::memcpy(big, "contents", 9);
  void* enlarged = pool.alloc(300, false);
  EXPECT_NE(enlarged, big);
  EXPECT_EQ(pool.sizeOf(enlarged), 512u);
  EXPECT_STREQ(static_cast<char*>(enlarged), "contents");
  EXPECT_EQ(pool.alloc(64, false), small);
  TestPool equal;
  void* later = equal.alloc(64, true);
  void* earlier = equal.alloc(64, true);  // stands first in the chain
  equal.unLock(later);
  equal.unLock(earlier);
  EXPECT_EQ(equal.sizeOf(equal.alloc(65, true)), 128u);
  EXPECT_EQ(equal.alloc(10, false), earlier);
}

TEST(MemoryPool, ReAllocKeepsLargerBlocksAndMovesOnAnExactSize) {
  TestPool pool;
  EXPECT_EQ(pool.reAlloc(reinterpret_cast<void*>(0x10), 10, false), nullptr);
  void* block = pool.alloc(64, true);
  std::memcpy(block, "keep", 5);
  void* moved = pool.reAlloc(block, 64, false);
  EXPECT_NE(moved, block);
  EXPECT_STREQ(static_cast<char*>(moved), "keep");
  EXPECT_EQ(pool.sizeOf(moved), 64u);
  void* grown = pool.reAlloc(moved, 100, false);
  EXPECT_EQ(pool.sizeOf(grown), 128u);
  EXPECT_EQ(pool.reAlloc(grown, 64, false), grown);
  EXPECT_NE(pool.reAlloc(nullptr, 10, true), grown);
  KyMemoryPoolBlock* taken = nullptr;  // every block operation counts a lock
  void* data = pool.take(taken, 10, true);
  ASSERT_NE(taken, nullptr);
  EXPECT_EQ(pool.getBlock(data), taken);
  EXPECT_EQ(taken->locks, 2);
  EXPECT_TRUE(pool.release(taken) == data && pool.release(taken) == data && taken->locks == 0);
}

TEST(MemoryPool, PrintInformationListsBlocksInChainOrder) {
  TestPool pool;
  EXPECT_EQ(pool.info(0), "--  KyPoolOf(Char)  --\t0 Blocks\n");
  EXPECT_EQ(pool.info(1), "--  KyPoolOf(Char)  --\n#0\tAddress\t\tSize\t\tLocks\n");
  void* first = pool.alloc(10, true);
  void* second = pool.alloc(100, false);
  std::ostringstream expected;
  expected << "--  KyPoolOf(Char)  --\n#2\tAddress\t\tSize\t\tLocks\n"
           << "\t" << second << "\t\t128\t\t0\n"
           << "\t" << first << "\t\t64\t\t1\n";
  EXPECT_EQ(pool.info(2), expected.str());
  EXPECT_EQ(pool.info(0), "--  KyPoolOf(Char)  --\t2 Blocks\n");
}

TEST(MemoryPool, TypedPoolsScaleCountsByElementSize) {
  unsigned long* numbers = KyKyUIntPool::Alloc(17, true);
  KyMemoryPoolBlock* block = KyKyUIntPool::GetBlock(numbers);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block->size, 256u);  // 17 elements of 8 bytes, doubled from 64
  KyKyUIntPool::ReleaseBlock(block);
  KyKyUIntPool::UnLock(numbers);
  KyMemoryPoolBlock* chars = nullptr;
  std::memcpy(KyCharPool::AllocBlock(chars, 70), "abc", 4);
  EXPECT_EQ(chars->size, 128u);
  char* grown = KyCharPool::ReAllocBlock(chars, 1000);
  EXPECT_EQ(chars->size, 1024u);
  EXPECT_STREQ(KyCharPool::GetData(chars), "abc");
  EXPECT_EQ(KyCharPool::ReleaseBlock(chars), grown);
  EXPECT_EQ(KyCharPool::ReleaseBlock(nullptr), nullptr);
  EXPECT_EQ(KyPointerPool::GetData(nullptr), nullptr);
}

TEST(MemoryPool, OversizedRequestsFailInsteadOfLooping) {
  TestPool pool;
  EXPECT_EQ(pool.alloc(~0UL, false), nullptr);
  EXPECT_EQ(KyPointerPool::Alloc(~0UL / 4, false), nullptr);
  void* block = pool.alloc(10, false);
  EXPECT_EQ(pool.reAlloc(block, (1UL << 31) + 1, false), nullptr);
  EXPECT_EQ(pool.sizeOf(block), 64u);
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
  for (void* cell : {a, static_cast<void*>(nullptr), c, b}) manager.release(cell, 8);
  EXPECT_EQ(manager.alloc(8), b);
  EXPECT_EQ(manager.alloc(8), c);
  EXPECT_EQ(manager.alloc(8), a);
}

// A block holds 4088 bytes of cells. What is left when the next cell does not fit goes
// to the free list of its size; an exact fill leaves nothing to list.
TEST(MemoryManager, RemainderOfABlockGoesToItsFreeList) {
  KyMemoryManager manager;
  void* first = manager.alloc(64);
  for (int i = 1; i < 63; ++i) manager.alloc(64);  // 4032 bytes
  void* fromNewBlock = manager.alloc(64);
  EXPECT_EQ(Distance(first, manager.alloc(56)), 63 * 64);
  EXPECT_EQ(Distance(fromNewBlock, manager.alloc(56)), 64);  // the remainder was one cell
  KyMemoryManager exact;
  void* start = exact.alloc(8);
  void* last = start;
  for (int i = 1; i < 511; ++i) last = exact.alloc(8);
  EXPECT_EQ(Distance(start, last), 510 * 8);
  void* next = exact.alloc(8);
  EXPECT_NE(Distance(start, next), 511 * 8);
  EXPECT_EQ(Distance(next, exact.alloc(8)), 8);
  EXPECT_EQ(Distance(next, exact.alloc(16)), 16);
}

TEST(MemoryManager, BigRequestsBypassCellsAndDieWithTheManager) {
  auto* manager = new KyMemoryManager;
  void* small = manager->alloc(64);
  void* big = manager->alloc(65);
  EXPECT_NE(Distance(small, big), 64);
  static_cast<char*>(big)[64] = 1;
  void* big2 = manager->alloc(1000);
  static_cast<char*>(big2)[999] = 1;
  manager->release(big2, 1000);
  delete manager;  // frees `big`, which a leak checker would report otherwise
}

TEST(KyMemMove, SizeZeroTouchesNothingAndReallocKeepsContents) {
  char target[4] = {'a', 'b', 'c', 'd'};
  EXPECT_EQ(KyMemMove(target, nullptr, 0), target);
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
