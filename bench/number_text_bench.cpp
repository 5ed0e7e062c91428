// Number text against the runtime: KyDoubleToString with the default format against
// snprintf("%.16g"), and KyStringToDouble against strtod, over 1,000,000 doubles (random
// bit patterns and ordinary decimal values). Before timing, every output of the library
// is compared with the runtime's; a single difference fails the benchmark.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kybase/text/number_text.h"

namespace {

constexpr int kCount = 1000000;

const std::vector<double>& Values() {
  static const std::vector<double> values = [] {
    std::mt19937_64 random(20240601);
    std::vector<double> result;
    result.reserve(kCount);
    while (result.size() < kCount) {
      double value;
      if (result.size() % 2 == 0) {
        const std::uint64_t bits = random();
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
      } else {
        // Amounts and measurements: up to nine digits with zero to four behind the point.
        static const double kScales[] = {1, 10, 100, 1000, 10000};
        value =
            static_cast<double>(static_cast<std::int64_t>(random() % 2000000000) - 1000000000) / kScales[random() % 5];
      }
      result.push_back(value);
    }
    return result;
  }();
  return values;
}

// The texts that KyDoubleToString writes for the values, end to end with terminators.
struct Texts {
  std::vector<char> bytes;
  std::vector<std::size_t> starts;
};

const Texts& ValueTexts() {
  static const Texts texts = [] {
    Texts result;
    char buffer[32];
    for (double value : Values()) {
      const int length = KyDoubleToString(buffer, value, nullptr);
      result.starts.push_back(result.bytes.size());
      result.bytes.insert(result.bytes.end(), buffer, buffer + length + 1);
    }
    return result;
  }();
  return texts;
}

// Empty when every text equals snprintf's, else the first difference.
std::string CompareWithPrintf() {
  char ours[32];
  char theirs[32];
  for (double value : Values()) {
    const int length = KyDoubleToString(ours, value, nullptr);
    const int expected = std::snprintf(theirs, sizeof theirs, "%.16g", value);
    if (length != expected || std::strcmp(ours, theirs) != 0)
      return std::string("KyDoubleToString wrote ") + ours + " where snprintf wrote " + theirs;
  }
  return "";
}

// Empty when every reading equals strtod's in value and end, else the first difference.
std::string CompareWithStrtod() {
  const Texts& texts = ValueTexts();
  for (std::size_t start : texts.starts) {
    const char* text = texts.bytes.data() + start;
    char* end = nullptr;
    double value = 0;
    KyStringToDouble(text, end, value);
    char* expectedEnd = nullptr;
    const double expected = std::strtod(text, &expectedEnd);
    if (end != expectedEnd || std::memcmp(&value, &expected, sizeof value) != 0)
      return std::string("KyStringToDouble differs from strtod on ") + text;
  }
  return "";
}

void DoubleToString_Ky(benchmark::State& state) {
  static const std::string difference = CompareWithPrintf();
  if (!difference.empty()) {
    state.SkipWithError(difference.c_str());
    return;
  }
  const std::vector<double>& values = Values();
  char buffer[32];
  for (auto _ : state) {
    for (double value : values) {
      benchmark::DoNotOptimize(KyDoubleToString(buffer, value, nullptr));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

void DoubleToString_Base_snprintf(benchmark::State& state) {
  const std::vector<double>& values = Values();
  char buffer[32];
  for (auto _ : state) {
    for (double value : values) {
      benchmark::DoNotOptimize(std::snprintf(buffer, sizeof buffer, "%.16g", value));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

void StringToDouble_Ky(benchmark::State& state) {
  static const std::string difference = CompareWithStrtod();
  if (!difference.empty()) {
    state.SkipWithError(difference.c_str());
    return;
  }
  const Texts& texts = ValueTexts();
  for (auto _ : state) {
    for (std::size_t start : texts.starts) {
      char* end = nullptr;
      double value = 0;
      benchmark::DoNotOptimize(KyStringToDouble(texts.bytes.data() + start, end, value));
      benchmark::DoNotOptimize(value);
    }
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

void StringToDouble_Base_strtod(benchmark::State& state) {
  const Texts& texts = ValueTexts();
  for (auto _ : state) {
    for (std::size_t start : texts.starts) {
      char* end = nullptr;
      benchmark::DoNotOptimize(std::strtod(texts.bytes.data() + start, &end));
    }
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

}  // namespace

BENCHMARK(DoubleToString_Ky)->Arg(kCount)->Unit(benchmark::kMillisecond);
BENCHMARK(DoubleToString_Base_snprintf)->Arg(kCount)->Unit(benchmark::kMillisecond);
BENCHMARK(StringToDouble_Ky)->Arg(kCount)->Unit(benchmark::kMillisecond);
BENCHMARK(StringToDouble_Base_strtod)->Arg(kCount)->Unit(benchmark::kMillisecond);
