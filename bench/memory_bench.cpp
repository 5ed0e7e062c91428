// Small cell pairs through KyMemoryManager against malloc/free, and pointer-keyed
// KyHashTable against std::unordered_map.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <algorithm>
#include <random>
#include <unordered_map>
#include <vector>

#include "kybase/containers/hash_table.h"
#include "kybase/core/memory_manager.h"

namespace {

// Eight cells live at once, so the pair is not a single cell bouncing in a register.
constexpr int kLive = 8;

void SmallAlloc_Ky(benchmark::State& state) {
  const auto size = static_cast<unsigned int>(state.range(0));
  KyMemoryManager& manager = KyMemoryManager::GetInstance();
  void* cells[kLive];
  for (auto _ : state) {
    for (void*& cell : cells) cell = manager.alloc(size);
    benchmark::DoNotOptimize(cells);
    for (void* cell : cells) manager.release(cell, size);
  }
  state.SetItemsProcessed(state.iterations() * kLive);
}

void SmallAlloc_Base_malloc(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  void* cells[kLive];
  for (auto _ : state) {
    for (void*& cell : cells) cell = std::malloc(size);
    benchmark::DoNotOptimize(cells);
    for (void* cell : cells) std::free(cell);
  }
  state.SetItemsProcessed(state.iterations() * kLive);
}

BENCHMARK(SmallAlloc_Ky)->Arg(8)->Arg(16)->Arg(32)->Arg(64);
BENCHMARK(SmallAlloc_Base_malloc)->Arg(8)->Arg(16)->Arg(32)->Arg(64);

// Keys look like heap pointers: 16-byte aligned addresses in one region, shuffled.
std::vector<void*> Keys(std::size_t count) {
  std::vector<void*> keys(count);
  for (std::size_t i = 0; i < count; ++i) keys[i] = reinterpret_cast<void*>(0x7f0000100000 + i * 48);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(42));
  return keys;
}

void Table_Ky(benchmark::State& state) {
  const std::vector<void*> keys = Keys(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    KyHashTable table;
    for (void* key : keys) table.insert(key, key);
    for (void* key : keys) benchmark::DoNotOptimize(table.find(key));
    for (void* key : keys) table.remove(key);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * 3);
}

void Table_Base_unordered_map(benchmark::State& state) {
  const std::vector<void*> keys = Keys(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    std::unordered_map<void*, void*> table;
    for (void* key : keys) table[key] = key;
    for (void* key : keys) benchmark::DoNotOptimize(table.find(key)->second);
    for (void* key : keys) table.erase(key);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * 3);
}

BENCHMARK(Table_Ky)->Arg(1000)->Arg(10000);
BENCHMARK(Table_Base_unordered_map)->Arg(1000)->Arg(10000);

}  // namespace
