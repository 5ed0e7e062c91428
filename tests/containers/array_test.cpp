#include "kybase/containers/array.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "kybase/core/memory_manager.h"

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
  EXPECT_EQ(KyArray::kNotFound, ~0UL);
  array.top() = V(4);
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
  EXPECT_NE(array.getArray(), nullptr);
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
  EXPECT_TRUE(bits.isSet(8));
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

}  // namespace
