// The memory manager's environment switches, one case per process (see CMakeLists.txt).
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdlib>
#include <sstream>
#include <string>

#include "kybase/core/memory_manager.h"

namespace {

const bool Unset = [] {
  if (const char* name = std::getenv("KY_TEST_UNSET")) unsetenv(name);
  return true;
}();

std::string Status(unsigned long allocated, unsigned long used) {
  return "STATUS OF SMALL CELLS MEMORY:\nCURRENTLY ALLOCATED MEMORY " + std::to_string(allocated) +
         " BYTES.\nCURRENTLY USED MEMORY " + std::to_string(used) + " BYTES.\n";
}

std::string StatusOf(const KyMemoryManager& manager) {
  std::ostringstream out;
  manager.status(out);
  return out.str();
}

TEST(MemoryManagerEnv, TraceLevel0KeepsCountersStillAndQuiet) {
  KyMemoryManager& manager = KyMemoryManager::GetInstance();
  testing::internal::CaptureStderr();
  for (int i = 0; i < 600; ++i) manager.alloc(8);
  void* big = manager.alloc(100);
  manager.release(big, 100);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(StatusOf(manager), Status(4096, 0));
}

TEST(MemoryManagerEnv, TraceLevel1CountsWithoutWriting) {
  KyMemoryManager& manager = KyMemoryManager::GetInstance();
  testing::internal::CaptureStderr();
  void* a = manager.alloc(10);
  void* b = manager.alloc(64);
  EXPECT_EQ(StatusOf(manager), Status(4096, 80));
  // A big request leaves the used bytes alone (its table cell of 24 bytes counts).
  void* big = manager.alloc(1000);
  EXPECT_EQ(StatusOf(manager), Status(4096, 104));
  manager.release(big, 1000);
  manager.release(a, 10);
  EXPECT_EQ(StatusOf(manager), Status(4096, 64));
  manager.release(b, 64);
  // 112 bytes of the first block are taken: 62 more cells of 64 fit, one comes from
  // the free list, and the rest from a second block of 8192 bytes.
  for (int i = 0; i < 100; ++i) manager.alloc(64);
  EXPECT_EQ(StatusOf(manager), Status(4096 + 8192, 6400));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(MemoryManagerEnv, TraceLevel3WritesStatusAtEachStep) {
  KyMemoryManager& manager = KyMemoryManager::GetInstance();
  testing::internal::CaptureStderr();
  void* a = manager.alloc(16);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), Status(4096, 0) + Status(4096, 16));

  testing::internal::CaptureStderr();
  manager.release(a, 16);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), Status(4096, 0));

  // The first big request also makes the big-request table, whose cell is a small
  // request of its own: entry report of the big one, then the cell's two.
  void* big = manager.alloc(200);
  testing::internal::CaptureStderr();
  void* big2 = manager.alloc(300);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), Status(4096, 24) + Status(4096, 24) + Status(4096, 48));

  // A big release writes nothing itself; only the table's cell, released as a small
  // cell, reports.
  testing::internal::CaptureStderr();
  manager.release(big2, 300);
  manager.release(big, 200);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), Status(4096, 24) + Status(4096, 0));
}

// Off, consecutive requests are separate heap blocks; on, cells of one block.
TEST(MemoryManagerEnv, ManagerOffSendsEverythingToTheHeap) {
  KyMemoryManager& manager = KyMemoryManager::GetInstance();
  void* a = manager.alloc(8);
  void* b = manager.alloc(8);
  EXPECT_NE(static_cast<char*>(b) - static_cast<char*>(a), 8);
  EXPECT_GE(malloc_usable_size(a), 8u);
  manager.release(a, 8);
  manager.release(b, 8);
  EXPECT_EQ(StatusOf(manager), Status(4096, 0));
}

TEST(MemoryManagerEnv, ManagerOnServesCellsFromBlocks) {
  char* a = static_cast<char*>(KyMemoryManager::GetInstance().alloc(8));
  EXPECT_EQ(static_cast<char*>(KyMemoryManager::GetInstance().alloc(8)) - a, 8);
}

}  // namespace
