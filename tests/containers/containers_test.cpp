#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "kybase/containers/array.h"
#include "kybase/containers/hash_table.h"
#include "kybase/containers/list.h"
#include "kybase/containers/typed_lists.h"
#include "kybase/core/memory_manager.h"
#include "kybase/core/memory_pool.h"

namespace {

void* V(std::uintptr_t value) { return reinterpret_cast<void*>(value); }

std::vector<std::uintptr_t> Values(const KyArray& array) {
  std::vector<std::uintptr_t> out;
  for (unsigned long i = 0; i < array.getLength(); ++i) out.push_back(reinterpret_cast<std::uintptr_t>(array[i]));
  return out;
}

TEST(Array, CapacityExactFromConstructorThenPowersOfTwo) {
  EXPECT_EQ(KyArray().getMaxLength(), 4u);
  EXPECT_EQ(KyArray(0).getArray(), nullptr);
  KyArray array(3);
  std::vector<unsigned long> capacities;
  for (std::uintptr_t i = 1; i <= 9; ++i) {
    array.add(V(i));
    capacities.push_back(array.getMaxLength());
  }
  EXPECT_EQ(capacities, (std::vector<unsigned long>{3, 3, 3, 4, 8, 8, 8, 8, 16}));
  EXPECT_EQ(Values(array), (std::vector<std::uintptr_t>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(Array, EraseShrinksWhenFourTimesTheLengthFits) {
  const std::pair<unsigned long, unsigned long> cases[] = {{16, 16}, {17, 64}, {0, 4}};
  for (const auto& [keep, capacity] : cases) {
    KyArray array(64);
    for (std::uintptr_t i = 0; i < 64; ++i) array.add(V(i));
    array.erase(keep, 64);
    EXPECT_EQ(array.getLength(), keep);
    EXPECT_EQ(array.getMaxLength(), capacity) << keep;
  }
}

TEST(Array, EraseWithToBelowFromErasesToTheEnd) {
  KyArray array;
  for (std::uintptr_t i = 0; i < 5; ++i) array.add(V(i));
  array.erase(2, 1);
  EXPECT_EQ(Values(array), (std::vector<std::uintptr_t>{0, 1}));
  array.remove(V(0));
  array.remove(V(9));
  EXPECT_EQ(Values(array), (std::vector<std::uintptr_t>{1}));
  // Erasing from behind the end raises the length; the new places are null.
  array.remove(3);
  EXPECT_EQ(Values(array), (std::vector<std::uintptr_t>{1, 0, 0}));
}

TEST(Array, InsertPopTopAndIndex) {
  KyArray array;
  void* values[] = {V(7), V(8)};
  array.insert(0, V(1));
  array.insert(99, V(3));
  array.insert(values, 2, 1);
  array.insert(values, 0, 0);
  EXPECT_EQ(Values(array), (std::vector<std::uintptr_t>{1, 7, 8, 3}));
  EXPECT_EQ(array.getIndex(V(8)), 2u);
  EXPECT_EQ(array.getIndex(V(5)), KyArray::kNotFound);
  EXPECT_EQ(array.top(), V(3));
  array.pop();
  EXPECT_EQ(Values(array), (std::vector<std::uintptr_t>{1, 7, 8}));
  KyArray other;
  other.append(array);
  other.insert(array, 1);
  EXPECT_EQ(Values(other), (std::vector<std::uintptr_t>{1, 1, 7, 8, 7, 8}));
  KyArray none(0);
  none.pop();
  EXPECT_EQ(none.getLength(), 0u);
  EXPECT_EQ(none.top(), nullptr);
}

TEST(Array, ClearCompactOwnershipAndDeepCopies) {
  KyArray array(0);
  array.clear();
  EXPECT_EQ(array.getMaxLength(), 4u);
  array.add(V(1));
  array.compact();
  EXPECT_EQ(array.getMaxLength(), 1u);
  void** block = array.exportData();
  EXPECT_EQ(array.getArray(), nullptr);
  EXPECT_EQ(array.getMaxLength(), 0u);
  array.setData(block, 1, KyArray::kNotFound);
  EXPECT_EQ(array.getMaxLength(), 1u);
  KyArray copy(array);
  copy[0] = V(9);
  EXPECT_EQ(array[0], V(1));
  EXPECT_EQ(copy.getMaxLength(), 1u);
  KyArray& alias = array;
  array = alias;
  EXPECT_EQ(Values(array), (std::vector<std::uintptr_t>{1}));
  KyArray empty(16);
  copy = empty;
  EXPECT_EQ(copy.getArray(), nullptr);
  EXPECT_EQ(copy.getMaxLength(), 0u);
  KyFree(array.exportData());
}

TEST(BitArray, BoundAcceptsTheIndexEqualToTheLength) {
  KyBitArray bits(9, true);
  EXPECT_TRUE(bits[9]);
  EXPECT_FALSE(bits.isSet(10));
  bits.set(10);
  EXPECT_FALSE(bits.isSet(10));
  // A length that is a multiple of 8 puts the bit at the length in the spare byte.
  KyBitArray whole(16, false);
  whole.set(16);
  EXPECT_TRUE(whole.isSet(16));
  whole -= 16;
  EXPECT_FALSE(whole[16]);
  whole += 3;
  whole.invert(4);
  whole.set(5, true);
  whole.set(3, false);
  EXPECT_EQ(std::vector<bool>({whole[3], whole[4], whole[5]}), std::vector<bool>({false, true, true}));
}

TEST(BitArray, SetLengthGrowsOnlyByWholeBytes) {
  KyBitArray bits(9, false);
  const std::pair<unsigned long, unsigned long> lengths[] = {{12, 9}, {17, 17}, {3, 17}};
  for (const auto& [wanted, length] : lengths) {
    bits.setLength(wanted, true);
    EXPECT_EQ(bits.getLength(), length) << wanted;
  }
  EXPECT_FALSE(bits.isSet(9));  // the old spare bits stay as they were
  EXPECT_TRUE(bits.isSet(16));
  KyBitArray copy(bits);
  copy.set(0);
  EXPECT_FALSE(bits.isSet(0));
}

// Opens the hash function and the size rule of either table to the tests.
template <class Base>
class Exposed : public Base {
 public:
  using Base::Base;
  using Base::hash;
  using Base::nextTableSize;
};
using Table = Exposed<KyHashTable>;
using StringTable = Exposed<KyStringHashTable>;

// Bucket counts a table passes through while distinct pointer keys are added, until
// it stops growing at 9239.
std::vector<unsigned long> GrowthFrom(unsigned long buckets) {
  KyHashTable table(buckets);
  std::vector<unsigned long> counts;
  for (std::uintptr_t i = 1; table.numberOfBuckets() != 9239; ++i) {
    table.insert(V(i * 8), V(i));
    if (counts.empty() || counts.back() != table.numberOfBuckets()) counts.push_back(table.numberOfBuckets());
  }
  return counts;
}

TEST(HashTable, GrowthSequences) {
  EXPECT_EQ(GrowthFrom(17), (std::vector<unsigned long>{17, 29, 47, 79, 127, 211, 337, 541, 877, 1403, 2251, 3607,
                                                         5771, 9239}));
  EXPECT_EQ(GrowthFrom(1024), (std::vector<unsigned long>{1024, 1643, 2633, 4217, 6749, 9239}));
}

TEST(HashTable, NextTableSize) {
  const std::pair<unsigned long, unsigned long> cases[] = {{0, 17},       {17, 17},     {27, 29},     {1024, 1031},
                                                           {1638, 1643}, {9239, 9239}, {9240, 9239}};
  for (const auto& [in, out] : cases) EXPECT_EQ(Table::nextTableSize(in), out) << in;
}

TEST(HashTable, GrowsAtALoadOfSevenOrAtALongChainAboveALoadOfTwo) {
  KyHashTable table;
  for (std::uintptr_t i = 1; i <= 118; ++i) table.insert(V(i), V(i));
  EXPECT_EQ(table.numberOfBuckets(), 17u);
  table.insert(V(119), nullptr);
  EXPECT_EQ(table.numberOfBuckets(), 29u);
  EXPECT_EQ(table.getLength(), 119u);

  KyHashTable chained;
  // Multiples of 17 below 65536 all hash to bucket 0.
  for (std::uintptr_t i = 1; i <= 13; ++i) chained.insert(V(17 * i), nullptr);
  EXPECT_EQ(chained.getBuckets()[0].length, 13u);
  for (std::uintptr_t i = 0; chained.getLength() < 51; ++i)
    if ((17 * 100 + i) % 17 != 0) chained.insert(V(17 * 100 + i), nullptr);
  EXPECT_EQ(chained.numberOfBuckets(), 17u);
  chained.insert(V(17 * 14), nullptr);
  EXPECT_EQ(chained.numberOfBuckets(), 29u);

  KyHashTable larger(10000);  // a larger start is brought down to the last size
  for (std::uintptr_t i = 1; i <= 70001; ++i) larger.insert(V(i * 8), nullptr);
  EXPECT_EQ(larger.numberOfBuckets(), 9239u);
}

TEST(HashTable, RemovalRaisesOnlySmallTablesTo17) {
  const std::pair<unsigned long, unsigned long> cases[] = {{10, 17}, {11, 5}};
  for (const auto& [entries, bucketsAfter] : cases) {
    KyHashTable table(5);
    for (std::uintptr_t i = 1; i <= entries; ++i) table.insert(V(i), V(i));
    table.remove(V(1));
    EXPECT_EQ(table.numberOfBuckets(), bucketsAfter) << entries;
    for (std::uintptr_t i = 2; i <= entries; ++i) EXPECT_EQ(table.find(V(i)), V(i));
  }
}

bool IsEven(void* value, void* argument) {
  return (reinterpret_cast<std::uintptr_t>(value) % 2 == 0) == (argument != nullptr);
}

TEST(HashTable, InsertReplaceRemoveAndFind) {
  KyHashTable table;
  table.insert(V(8), V(1));
  table.insert(V(8), V(2));
  EXPECT_EQ(table.getLength(), 1u);
  EXPECT_EQ(table.find(V(8)), V(2));
  EXPECT_EQ(table.find(V(8), IsEven, V(1)), V(2));  // the predicate vetoes the one cell
  EXPECT_EQ(table.find(V(8), IsEven, nullptr), nullptr);
  EXPECT_TRUE(table.replace(V(16), V(3)));
  EXPECT_FALSE(table.remove(V(24)));
  EXPECT_EQ(table.getLength(), 2u);
  EXPECT_TRUE(table.remove(V(16)));
  EXPECT_EQ(table.find(V(16)), nullptr);
  table.empty();
  EXPECT_EQ(table.getLength(), 0u);
  EXPECT_EQ(table.numberOfBuckets(), 17u);
}

TEST(HashTable, PointerHashFoldsBothHalves) {
  Table table(17);
  const std::uintptr_t low = 0x12345678;
  const std::uintptr_t wide = (static_cast<std::uintptr_t>(0x0F0F0000) << 32) | low;
  EXPECT_EQ(table.hash(V(low)), ((0x1234u ^ 0x5678u) % 17));
  const std::uint32_t folded = 0x12345678u ^ 0x0F0F0000u;
  EXPECT_EQ(table.hash(V(wide)), (((folded >> 16) ^ (folded & 0xFFFF)) % 17));
}

TEST(HashTable, TraversalIsBucketOrderThenChainHeadFirst) {
  KyHashTable table(17);
  // 1 and 18 share bucket 1 (18 inserted last stands first); 2 is in bucket 2.
  table.insert(V(2), V(20));
  table.insert(V(1), V(10));
  table.insert(V(18), V(180));
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
  EXPECT_EQ(values[0], V(180));
  delete[] values;

  void** pooled = table.convertToArray(count, false);
  KyMemoryPoolBlock* block = KyPointerPool::GetBlock(pooled);
  EXPECT_NE(block, nullptr);
  KyPointerPool::ReleaseBlock(block);
  EXPECT_EQ(pooled[1], V(10));

  KyHashTable none;
  EXPECT_EQ(none.convertToArray(count, true), nullptr);
  EXPECT_EQ(count, 0u);
}

TEST(StringHashTable, MatchesByContentAndKeepsTheFirstKeyPointer) {
  StringTable table(31);
  char first[] = "alpha";
  char second[] = "alpha";
  table.insert(first, V(1));
  table.insert(second, V(2));
  EXPECT_EQ(table.find(const_cast<char*>("alpha")), V(2));
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


std::vector<std::uintptr_t> Values(const Ky_List& list) {
  std::vector<std::uintptr_t> out;
  for (Ky_List::Cell* cell = list.getFirst(); cell != nullptr; cell = cell->getNext())
    out.push_back(reinterpret_cast<std::uintptr_t>(cell->getValue()));
  return out;
}

std::unique_ptr<KyList> Make(std::initializer_list<std::uintptr_t> values) {
  auto list = std::make_unique<KyList>();
  for (std::uintptr_t value : values) list->append(V(value));
  return list;
}

TEST(List, InsertPlacesAndKeepsTheTail) {
  KyList list;
  list.insert(V(5), 0);
  list.append(V(7));
  list.insert(V(6), 1);
  list.insert(V(9), 100);  // past the end appends
  list.insert(V(10), -1);
  list.insert(V(4), 0);
  EXPECT_EQ(Values(list), (std::vector<std::uintptr_t>{4, 5, 6, 7, 9, 10}));
  EXPECT_EQ(list.getLength(), 6u);
  list.append(V(11));  // links behind the tail the inserts maintained
  EXPECT_EQ(list[6], V(11));
  EXPECT_EQ(list.getValue(7), nullptr);
}

TEST(List, RemoveTakesTheFirstOccurrenceAndRepairsTheTail) {
  auto list = Make({1, 2, 1, 3, 5});
  EXPECT_TRUE(list->remove(V(1)));
  EXPECT_FALSE(list->remove(V(9)));
  Ky_List::Cell* cell = list->removeCell(V(5));  // handed over detached
  ASSERT_NE(cell, nullptr);
  EXPECT_EQ(cell->getNext(), nullptr);
  delete cell;
  EXPECT_TRUE(list->remove(V(3)));
  list->append(V(4));  // behind the repaired tail
  EXPECT_EQ(Values(*list), (std::vector<std::uintptr_t>{2, 1, 4}));
  auto single = Make({1});
  EXPECT_TRUE(single->remove(V(1)));
  EXPECT_TRUE(single->getFirst() == nullptr && single->getLast() == nullptr && single->getLength() == 0);
}

TEST(List, PushAndPopMoveAValueOnePlace) {
  using Op = void (Ky_List::*)(void*);
  const std::tuple<Op, std::uintptr_t, std::vector<std::uintptr_t>> cases[] = {
      {&Ky_List::push, 3, {1, 3, 2, 4}}, {&Ky_List::push, 1, {1, 2, 3, 4}}, {&Ky_List::push, 9, {1, 2, 3, 4}},
      {&Ky_List::pop, 2, {1, 3, 2, 4}},  {&Ky_List::pop, 4, {1, 2, 3, 4}},  {&Ky_List::pop, 9, {1, 2, 3, 4}}};
  for (const auto& [operation, value, result] : cases) {
    auto list = Make({1, 2, 3, 4});
    (list.get()->*operation)(V(value));
    EXPECT_EQ(Values(*list), result) << value;
  }
  auto list = Make({1, 2, 3, 4});
  list->swap(V(1), V(4));
  EXPECT_EQ(Values(*list), (std::vector<std::uintptr_t>{4, 2, 3, 1}));
  list->swap(V(1), V(8));
  EXPECT_EQ(Values(*list), (std::vector<std::uintptr_t>{4, 2, 3, 1}));
}

TEST(List, CopyApplyMapUntilAndCellChains) {
  auto list = Make({1, 2, 3, 4});
  std::unique_ptr<KyList> copy(list->copy());  // deep in cells, shares the values
  list->apply([](void* value, void* argument) { static_cast<KyList*>(argument)->remove(value); }, list.get());
  EXPECT_EQ(list->getLength(), 0u);  // apply survives the removal of the current cell
  EXPECT_EQ(Values(*copy), (std::vector<std::uintptr_t>{1, 2, 3, 4}));
  EXPECT_EQ(list->mapUntil([](void*, void*, void*) -> void* { return V(1); }, nullptr, V(7)), V(7));
  auto firstAbove1 = [](void* value, void*, void* stop) -> void* { return value > V(1) ? value : stop; };
  EXPECT_EQ(copy->mapUntil(firstAbove1, nullptr, nullptr), V(2));
  Ky_List::Cell* chain = new Ky_List::Cell(V(1), new Ky_List::Cell(V(2), new Ky_List::Cell(V(3), nullptr)));
  EXPECT_EQ(chain->getLength(), 3u);
  EXPECT_EQ((*chain)[2], V(3));
  EXPECT_EQ((*chain)[3], nullptr);
  EXPECT_EQ(chain->getLast()->getValue(), V(3));
  chain = chain->remove(V(1));
  EXPECT_EQ(chain->remove(V(3)), chain);
  EXPECT_EQ(chain->getValue(), V(2));
  EXPECT_EQ(chain->getLength(), 1u);
  delete chain;
}

TEST(List, LongChainsDieWithoutRecursion) {
  KyList* list = new KyList;
  for (std::uintptr_t i = 0; i < 2000000; ++i) list->append(V(i));
  delete list;
  Ky_List::Cell* chain = nullptr;
  for (std::uintptr_t i = 0; i < 2000000; ++i) chain = new Ky_List::Cell(V(i), chain);
  delete chain;
}

TEST(SafeListIterator, TwoIteratorsParkedOnARemovedCellBothMove) {
  auto list = Make({1, 2, 3});
  KySafeListIterator one(*list);
  KySafeListIterator two(*list);
  EXPECT_EQ(one.getNextElement(), V(1));
  EXPECT_EQ(two.getNextElement(), V(1));
  list->remove(V(2));
  EXPECT_EQ(one.getNextElement(), V(3));
  EXPECT_EQ(two.getNextElement(), V(3));
  EXPECT_FALSE(two.hasMoreElements());
  // Parked on the head, then the head goes.
  KySafeListIterator head(*list);
  list->remove(V(1));
  EXPECT_EQ(head.getNextElement(), V(3));
  list.reset();  // the list dies first; the orphaned iterators must not touch it
}

TEST(SafeListIterator, EmptyEndsDeathOrphansAndDestructionDeregisters) {
  auto list = Make({1, 2});
  { KySafeListIterator gone(*list); }
  KyListIterator walker(*list);
  ++walker;
  walker++;
  EXPECT_FALSE(walker.hasMoreElements());
  auto* iterator = new KySafeListIterator(*list);
  list->empty();
  EXPECT_FALSE(iterator->hasMoreElements());
  EXPECT_TRUE(iterator->isListAlive());
  list->append(V(5));
  EXPECT_EQ(iterator->getNextElement(), nullptr);
  KySafeListIterator other(*list);
  list.reset();
  EXPECT_FALSE(iterator->isListAlive());
  EXPECT_FALSE(other.isListAlive());
  EXPECT_EQ(other.getNextElement(), nullptr);
  delete iterator;  // touches nothing of the dead list
}

std::vector<std::uintptr_t> Pairs(const KyAList& list) {
  std::vector<std::uintptr_t> out;
  for (Ky_AList::Cell* cell = list.getFirst(); cell != nullptr; cell = cell->getNext()) {
    out.push_back(reinterpret_cast<std::uintptr_t>(cell->getKey()));
    out.push_back(reinterpret_cast<std::uintptr_t>(cell->getValue()));
  }
  return out;
}

TEST(AList, DuplicateKeysShowInTurn) {
  KyAList list;
  list.append(V(1), V(10));
  list.append(V(2), V(20));
  list.append(V(1), V(11));
  EXPECT_EQ(list.get(V(1)), V(10));
  EXPECT_TRUE(list.remove(V(1)));
  EXPECT_EQ(list.get(V(1)), V(11));
  EXPECT_FALSE(list.remove(V(2), V(99)));
  EXPECT_TRUE(list.remove(V(2), V(20)));
  EXPECT_EQ(Pairs(list), (std::vector<std::uintptr_t>{1, 11}));
  EXPECT_TRUE(list.replace(V(1), V(12)));
  EXPECT_FALSE(list.replace(V(3), V(12)));
  void* value = nullptr;
  EXPECT_TRUE(list.find(V(1), &value));
  EXPECT_EQ(value, V(12));
}

TEST(AList, InsertAndCellLookupReportPredecessors) {
  KyAList list;
  const int inserts[][2] = {{2, 0}, {4, 5}, {3, 1}, {1, 0}, {5, -1}};  // key (value ten times it), place
  for (const auto& [key, place] : inserts) list.insert(V(key), V(10 * key), place);
  EXPECT_EQ(Pairs(list), (std::vector<std::uintptr_t>{1, 10, 2, 20, 3, 30, 4, 40, 5, 50}));
  Ky_AList::Cell* previous = reinterpret_cast<Ky_AList::Cell*>(V(1));
  EXPECT_EQ(list.getFirstCell(V(1), &previous), list.getFirst());
  EXPECT_EQ(previous, nullptr);
  EXPECT_EQ(list.getCell(V(3), V(30), &previous)->getKey(), V(3));
  EXPECT_EQ(previous->getKey(), V(2));
  EXPECT_EQ(list.getItem(V(9), &previous), nullptr);
  EXPECT_EQ(previous->getKey(), V(5));
  KyAList none;
  EXPECT_EQ(none.getFirstCell(V(1), &previous), nullptr);
  EXPECT_EQ(previous, nullptr);
}

TEST(AListIterator, PairsRepairAndTypedLists) {
  KyAList list;
  list.append(V(1), V(10));
  list.append(V(2), V(20));
  KySafeAListIterator safe(list);
  KyAListIterator plain(list);
  void* value = V(77);
  EXPECT_EQ(plain.getNextPair(value), V(1));
  EXPECT_EQ(value, V(10));
  EXPECT_EQ(plain.getNextKey(), V(2));
  value = V(77);
  EXPECT_EQ(plain.getNextPair(value), nullptr);
  EXPECT_EQ(value, V(77));
  list.remove(V(1));
  EXPECT_EQ(safe.getNextElement(), V(20));
  EXPECT_EQ(list.mapUntil([](void*, void*, void*, void* stop) { return stop; }, nullptr, V(3)), V(3));
  KyKyXmlNodeIList nodes;
  auto* node = reinterpret_cast<KyXmlNodeI*>(V(8));
  nodes.append(node);
  EXPECT_EQ(KyKyXmlNodeISLIter(nodes).getNextElement(), node);
}

}  // namespace
