#include "kybase/core/memory_pool.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

namespace {

// A pool of its own per test, so that no other user of the static pools interferes.
class TestPool : public KyMemoryPool {
 public:
  TestPool() : KyMemoryPool(1) {}
  using KyMemoryPool::getBlock;
  using KyMemoryPool::grow;
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
  EXPECT_EQ(pool.sizeOf(first), 64u);
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
  EXPECT_EQ(pool.getBlock(reinterpret_cast<void*>(0x10)), nullptr);
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

}  // namespace
