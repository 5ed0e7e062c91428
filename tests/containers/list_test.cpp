#include "kybase/containers/list.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "kybase/containers/typed_lists.h"

namespace {

void* V(std::uintptr_t value) { return reinterpret_cast<void*>(value); }

std::vector<std::uintptr_t> Values(const Ky_List& list) {
  std::vector<std::uintptr_t> out;
  for (Ky_List::Cell* cell = list.getFirst(); cell != nullptr; cell = cell->getNext())
    out.push_back(reinterpret_cast<std::uintptr_t>(cell->getValue()));
  return out;
}

KyList* Make(std::initializer_list<std::uintptr_t> values) {
  auto* list = new KyList;
  for (std::uintptr_t value : values) list->append(V(value));
  return list;
}

TEST(List, InsertPlacesAndKeepsTheTail) {
  KyList list;
  list.insert(V(5), 0);
  EXPECT_EQ(list.getFirst(), list.getLast());
  list.append(V(7));
  list.insert(V(6), 1);
  list.insert(V(9), 100);  // past the end appends
  EXPECT_EQ(list.getLast()->getValue(), V(9));
  list.insert(V(10), -1);
  list.insert(V(4), 0);
  EXPECT_EQ(Values(list), (std::vector<std::uintptr_t>{4, 5, 6, 7, 9, 10}));
  EXPECT_EQ(list.getLength(), 6u);
  list.append(V(11));  // links behind the tail the inserts maintained
  EXPECT_EQ(list[6], V(11));
  EXPECT_EQ(list.getValue(7), nullptr);
}

TEST(List, RemoveTakesTheFirstOccurrenceAndRepairsTheTail) {
  KyList* list = Make({1, 2, 1, 3, 5});
  EXPECT_TRUE(list->remove(V(1)));
  EXPECT_FALSE(list->remove(V(9)));
  Ky_List::Cell* cell = list->removeCell(V(5));  // handed over detached
  ASSERT_NE(cell, nullptr);
  EXPECT_EQ(cell->getNext(), nullptr);
  delete cell;
  EXPECT_TRUE(list->remove(V(3)));
  EXPECT_EQ(list->getLast()->getValue(), V(1));
  list->append(V(4));
  EXPECT_EQ(Values(*list), (std::vector<std::uintptr_t>{2, 1, 4}));
  delete list;
  KyList single;
  single.append(V(1));
  EXPECT_TRUE(single.remove(V(1)));
  EXPECT_TRUE(single.getFirst() == nullptr && single.getLast() == nullptr && single.getLength() == 0);
}

TEST(List, PushAndPopMoveAValueOnePlace) {
  const struct {
    void (Ky_List::*operation)(void*);
    std::uintptr_t value;
    std::vector<std::uintptr_t> result;
  } cases[] = {
      {&Ky_List::push, 3, {1, 3, 2, 4}}, {&Ky_List::push, 1, {1, 2, 3, 4}}, {&Ky_List::push, 9, {1, 2, 3, 4}},
      {&Ky_List::pop, 2, {1, 3, 2, 4}},  {&Ky_List::pop, 4, {1, 2, 3, 4}},  {&Ky_List::pop, 9, {1, 2, 3, 4}},
  };
  for (const auto& c : cases) {
    KyList* list = Make({1, 2, 3, 4});
    (list->*c.operation)(V(c.value));
    EXPECT_EQ(Values(*list), c.result) << c.value;
    delete list;
  }
  KyList* list = Make({1, 2, 3, 4});
  list->swap(V(1), V(4));
  EXPECT_EQ(Values(*list), (std::vector<std::uintptr_t>{4, 2, 3, 1}));
  list->swap(V(1), V(8));
  EXPECT_EQ(Values(*list), (std::vector<std::uintptr_t>{4, 2, 3, 1}));
  delete list;
}

TEST(List, CopyApplyMapUntilAndCellChains) {
  KyList* list = Make({1, 2, 3, 4});
  KyList* copy = list->copy();  // deep in cells, shares the values
  list->apply([](void* value, void* argument) { static_cast<KyList*>(argument)->remove(value); }, list);
  EXPECT_EQ(list->getLength(), 0u);  // apply survives the removal of the current cell
  EXPECT_EQ(Values(*copy), (std::vector<std::uintptr_t>{1, 2, 3, 4}));
  EXPECT_EQ(list->mapUntil([](void*, void*, void*) -> void* { return V(1); }, nullptr, V(7)), V(7));
  auto firstAbove1 = [](void* value, void*, void* stop) -> void* { return value > V(1) ? value : stop; };
  EXPECT_EQ(copy->mapUntil(firstAbove1, nullptr, nullptr), V(2));
  delete list;
  delete copy;
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
  KyList* list = Make({1, 2, 3});
  KySafeListIterator one(*list);
  KySafeListIterator two(*list);
  KyListIterator plain(*list);
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
  plain.r(list->getFirst());
  delete list;
}

TEST(SafeListIterator, EmptyEndsDeathOrphansAndDestructionDeregisters) {
  KyList* list = Make({1, 2});
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
  delete list;
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
  EXPECT_EQ(list.getLength(), 3u);
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
  list.insert(V(2), V(20), 0);
  list.insert(V(4), V(40), 5);
  list.insert(V(3), V(30), 1);
  list.insert(V(1), V(10), 0);
  list.insert(V(5), V(50), -1);
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
