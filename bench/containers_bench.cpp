// Lists, arrays and symbols against their standard counterparts.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <forward_list>
#include <list>
#include <string>
#include <unordered_set>
#include <vector>

#include "kybase/containers/array.h"
#include "kybase/containers/list.h"
#include "kybase/containers/symbol.h"

namespace {

void* V(std::int64_t value) { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(value) * 8 + 8); }

// Appends n values, then removes from the front until the list is empty.
void ListAppendRemove_Ky(benchmark::State& state) {
  const std::int64_t n = state.range(0);
  for (auto _ : state) {
    KyList list;
    for (std::int64_t i = 0; i < n; ++i) list.append(V(i));
    while (Ky_List::Cell* first = list.getFirst()) list.remove(first->getValue());
    benchmark::DoNotOptimize(list.getLength());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void ListAppendRemove_Base_std_list(benchmark::State& state) {
  const std::int64_t n = state.range(0);
  for (auto _ : state) {
    std::list<void*> list;
    for (std::int64_t i = 0; i < n; ++i) list.push_back(V(i));
    while (!list.empty()) list.pop_front();
    benchmark::DoNotOptimize(list.size());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void ListAppendRemove_Base_forward_list(benchmark::State& state) {
  const std::int64_t n = state.range(0);
  for (auto _ : state) {
    std::forward_list<void*> list;
    auto tail = list.before_begin();
    for (std::int64_t i = 0; i < n; ++i) tail = list.insert_after(tail, V(i));
    while (!list.empty()) list.pop_front();
    benchmark::DoNotOptimize(list.empty());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

BENCHMARK(ListAppendRemove_Ky)->Arg(100)->Arg(10000);
BENCHMARK(ListAppendRemove_Base_std_list)->Arg(100)->Arg(10000);
BENCHMARK(ListAppendRemove_Base_forward_list)->Arg(100)->Arg(10000);

void ArrayPush_Ky(benchmark::State& state) {
  const std::int64_t n = state.range(0);
  for (auto _ : state) {
    KyArray array;
    for (std::int64_t i = 0; i < n; ++i) array.push(V(i));
    benchmark::DoNotOptimize(array.getArray());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void ArrayPush_Base_vector(benchmark::State& state) {
  const std::int64_t n = state.range(0);
  for (auto _ : state) {
    std::vector<void*> array;
    for (std::int64_t i = 0; i < n; ++i) array.push_back(V(i));
    benchmark::DoNotOptimize(array.data());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

BENCHMARK(ArrayPush_Ky)->Arg(1000000);
BENCHMARK(ArrayPush_Base_vector)->Arg(1000000);

std::vector<std::string> Names(std::size_t count) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) names.push_back("symbol_" + std::to_string(i * 7919));
  return names;
}

void SymbolGet_Ky(benchmark::State& state) {
  const std::vector<std::string> names = Names(static_cast<std::size_t>(state.range(0)));
  for (const std::string& name : names) KySymbol::Get(name.c_str(), true);
  for (auto _ : state)
    for (const std::string& name : names) benchmark::DoNotOptimize(KySymbol::Get(name.c_str(), false));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void SymbolGet_Base_unordered_set(benchmark::State& state) {
  const std::vector<std::string> names = Names(static_cast<std::size_t>(state.range(0)));
  std::unordered_set<std::string> set(names.begin(), names.end());
  for (auto _ : state)
    for (const std::string& name : names) benchmark::DoNotOptimize(set.find(name));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(SymbolGet_Ky)->Arg(1000);
BENCHMARK(SymbolGet_Base_unordered_set)->Arg(1000);

}  // namespace
