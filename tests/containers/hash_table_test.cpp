#include "kybase/containers/hash_table.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "kybase/core/memory_pool.h"

namespace {

void* Key(std::uintptr_t value) { return reinterpret_cast<void*>(value); }

class Table : public KyHashTable {
 public:
  using KyHashTable::KyHashTable;
  using KyHashTable::hash;
  using KyHashTable::nextTableSize;
};

class StringTable : public KyStringHashTable {
 public:
  using KyStringHashTable::KyStringHashTable;
  using KyStringHashTable::hash;
};

// Bucket counts a table passes through while distinct pointer keys are added, until
// it stops growing at 9239.
std::vector<unsigned long> GrowthFrom(unsigned long buckets) {
  KyHashTable table(buckets);
  std::vector<unsigned long> counts;
  for (std::uintptr_t i = 1; table.numberOfBuckets() != 9239; ++i) {
    table.insert(Key(i * 8), Key(i));
    if (counts.empty() || counts.back() != table.numberOfBuckets()) counts.push_back(table.numberOfBuckets());
  }
  return counts;
}

TEST(HashTable, GrowthSequences) {
  EXPECT_EQ(GrowthFrom(17), (std::vector<unsigned long>{17, 29, 47, 79, 127, 211, 337, 541, 877, 1403, 2251, 3607,
                                                         5771, 9239}));
  EXPECT_EQ(GrowthFrom(31),
            (std::vector<unsigned long>{31, 53, 89, 149, 239, 383, 613, 983, 1577, 2531, 4049, 6481, 9239}));
  EXPECT_EQ(GrowthFrom(1024), (std::vector<unsigned long>{1024, 1643, 2633, 4217, 6749, 9239}));
}

TEST(HashTable, NextTableSize) {
  const std::pair<unsigned long, unsigned long> cases[] = {{0, 17},       {16, 17},     {17, 17},
                                                           {27, 29},      {1638, 1643}, {9239, 9239},
                                                           {9240, 9239},  {100000, 9239}, {1024, 1031}};
  for (const auto& [in, out] : cases) EXPECT_EQ(Table::nextTableSize(in), out) << in;
}

TEST(HashTable, GrowsAtALoadOfSevenOrAtALongChainAboveALoadOfTwo) {
  KyHashTable table;
  for (std::uintptr_t i = 1; i <= 118; ++i) table.insert(Key(i), Key(i));
  EXPECT_EQ(table.numberOfBuckets(), 17u);
  table.insert(Key(119), nullptr);
  EXPECT_EQ(table.numberOfBuckets(), 29u);
  EXPECT_EQ(table.getLength(), 119u);

  KyHashTable chained;
  // Multiples of 17 below 65536 all hash to bucket 0.
  for (std::uintptr_t i = 1; i <= 13; ++i) chained.insert(Key(17 * i), nullptr);
  EXPECT_EQ(chained.getBuckets()[0].length, 13u);
  for (std::uintptr_t i = 0; chained.getLength() < 51; ++i)
    if ((17 * 100 + i) % 17 != 0) chained.insert(Key(17 * 100 + i), nullptr);
  EXPECT_EQ(chained.numberOfBuckets(), 17u);
  chained.insert(Key(17 * 14), nullptr);
  EXPECT_EQ(chained.numberOfBuckets(), 29u);

  KyHashTable larger(10000);  // a larger start is brought down to the last size
  for (std::uintptr_t i = 1; i <= 70001; ++i) larger.insert(Key(i * 8), nullptr);
  EXPECT_EQ(larger.numberOfBuckets(), 9239u);
  EXPECT_EQ(larger.getLength(), 70001u);
}

TEST(HashTable, RemovalRaisesOnlySmallTablesTo17) {
  const std::pair<unsigned long, unsigned long> cases[] = {{10, 17}, {11, 5}};
  for (const auto& [entries, bucketsAfter] : cases) {
    KyHashTable table(5);
    for (std::uintptr_t i = 1; i <= entries; ++i) table.insert(Key(i), Key(i));
    table.remove(Key(1));
    EXPECT_EQ(table.numberOfBuckets(), bucketsAfter) << entries;
    for (std::uintptr_t i = 2; i <= entries; ++i) EXPECT_EQ(table.find(Key(i)), Key(i));
  }
  KyHashTable big(17);
  for (std::uintptr_t i = 1; i <= 3; ++i) big.insert(Key(i), nullptr);
  big.remove(Key(1));
  EXPECT_EQ(big.numberOfBuckets(), 17u);
}

bool IsEven(void* value, void* argument) {
  return (reinterpret_cast<std::uintptr_t>(value) % 2 == 0) == (argument != nullptr);
}

TEST(HashTable, InsertReplaceRemoveAndFind) {
  KyHashTable table;
  table.insert(Key(8), Key(1));
  table.insert(Key(8), Key(2));
  EXPECT_EQ(table.getLength(), 1u);
  EXPECT_EQ(table.find(Key(8)), Key(2));
  EXPECT_EQ(table.find(Key(8), IsEven, Key(1)), Key(2));  // the predicate vetoes the one cell
  EXPECT_EQ(table.find(Key(8), IsEven, nullptr), nullptr);
  EXPECT_TRUE(table.replace(Key(16), Key(3)));
  EXPECT_TRUE(table.contains(Key(16)));
  EXPECT_FALSE(table.remove(Key(24)));
  EXPECT_EQ(table.getLength(), 2u);
  EXPECT_TRUE(table.remove(Key(16)));
  EXPECT_EQ(table.find(Key(16)), nullptr);
  table.empty();
  EXPECT_EQ(table.getLength(), 0u);
  EXPECT_EQ(table.numberOfBuckets(), 17u);
}

TEST(HashTable, PointerHashFoldsBothHalves) {
  Table table(17);
  const std::uintptr_t low = 0x12345678;
  const std::uintptr_t wide = (static_cast<std::uintptr_t>(0x0F0F0000) << 32) | low;
  EXPECT_EQ(table.hash(Key(low)), ((0x1234u ^ 0x5678u) % 17));
  const std::uint32_t folded = 0x12345678u ^ 0x0F0F0000u;
  EXPECT_EQ(table.hash(Key(wide)), (((folded >> 16) ^ (folded & 0xFFFF)) % 17));
}

TEST(HashTable, TraversalIsBucketOrderThenChainHeadFirst) {
  KyHashTable table(17);
  // 1 and 18 share bucket 1 (18 inserted last stands first); 2 is in bucket 2.
  table.insert(Key(2), Key(20));
  table.insert(Key(1), Key(10));
  table.insert(Key(18), Key(180));
  std::vector<std::uintptr_t> seen;
  table.mapHash(
      [](void* key, void* value, void* argument) {
        auto* out = static_cast<std::vector<std::uintptr_t>*>(argument);
        out->push_back(reinterpret_cast<std::uintptr_t>(key));
        out->push_back(reinterpret_cast<std::uintptr_t>(value));
      },
      &seen);
  EXPECT_EQ(seen, (std::vector<std::uintptr_t>{18, 180, 1, 10, 2, 20}));

  unsigned long count = 99;
  void** values = table.convertToArray(count, true);
  ASSERT_EQ(count, 3u);
  EXPECT_EQ(values[0], Key(180));
  EXPECT_EQ(values[2], Key(20));
  delete[] values;

  void** pooled = table.convertToArray(count, false);
  KyMemoryPoolBlock* block = KyPointerPool::GetBlock(pooled);
  EXPECT_NE(block, nullptr);
  KyPointerPool::ReleaseBlock(block);
  EXPECT_EQ(pooled[1], Key(10));

  KyHashTable none;
  EXPECT_EQ(none.convertToArray(count, true), nullptr);
  EXPECT_EQ(count, 0u);
}

TEST(StringHashTable, MatchesByContentAndKeepsTheFirstKeyPointer) {
  StringTable table(31);
  char first[] = "alpha";
  char second[] = "alpha";
  table.insert(first, Key(1));
  table.insert(second, Key(2));
  EXPECT_EQ(table.getLength(), 1u);
  EXPECT_EQ(table.find(const_cast<char*>("alpha")), Key(2));
  unsigned long count = 0;
  const char* const* keys = table.convertToStrings(count, false, true);
  ASSERT_EQ(count, 1u);
  EXPECT_EQ(keys[0], first);
  delete[] keys;
}

TEST(StringHashTable, HashTakesBytesAsSignedAndSortsThemUnsigned) {
  StringTable table(17);
  EXPECT_EQ(table.hash(const_cast<char*>("")), 0u);
  EXPECT_EQ(table.hash(const_cast<char*>("ab")), (('a' * 16u + 'b') % 17));
  // -23 gives 0xFFFFFFE9, folded to 0x0FFFFF19; taken unsigned it would be 0xE9.
  EXPECT_EQ(table.hash(const_cast<char*>("\xE9")), 0x0FFFFF19u % 17);
  const char* words[] = {"pear", "\xE9t\xE9", "apple", "Zebra", "z"};
  for (const char* word : words) table.insert(const_cast<char*>(word), nullptr);
  unsigned long count = 0;
  const char* const* keys = table.convertToStrings(count, true, false);
  ASSERT_EQ(count, 5u);
  std::vector<std::string> sorted(keys, keys + count);
  EXPECT_EQ(sorted, (std::vector<std::string>{"Zebra", "apple", "pear", "z", "\xE9t\xE9"}));
}

}  // namespace
