// Path parsing and directory walks. Parse: 1,000,000 seeded path texts made into a path,
// normalised and printed, against std::filesystem's lexically_normal. Walk: a tree of
// about 100,000 entries built once (untimed) in a temporary directory, listed with full
// path and kind per entry, against std::filesystem::recursive_directory_iterator; both
// walks are checked to give the same set before timing.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kybase/paths/path_name.h"

namespace {

const std::vector<std::string>& Texts() {
  static const std::vector<std::string> texts = [] {
    std::mt19937 random(20261123);
    const char* parts[] = {"usr", "local", "lib", "..", ".", "share", "kybase", "a", "data.xml", "x.tar.gz"};
    std::vector<std::string> out;
    out.reserve(1000000);
    for (int n = 0; n < 1000000; ++n) {
      std::string text = random() % 2 ? "/" : "";
      const int count = 2 + random() % 6;
      for (int k = 0; k < count; ++k) {
        text += parts[random() % 10];
        text += random() % 8 == 0 ? "//" : "/";
      }
      text += parts[random() % 10];
      out.push_back(std::move(text));
    }
    return out;
  }();
  return texts;
}

void Parse_Ky(benchmark::State& state) {
  const auto& texts = Texts();
  std::size_t bytes = 0;
  for (auto _ : state) {
    for (const std::string& text : texts) {
      KyPathName path(text.c_str());
      const char* printed = path;
      bytes += std::char_traits<char>::length(printed);
    }
  }
  benchmark::DoNotOptimize(bytes);
  state.SetItemsProcessed(state.iterations() * static_cast<long>(texts.size()));
}
BENCHMARK(Parse_Ky)->Unit(benchmark::kMillisecond);

void Parse_Base_lexically_normal(benchmark::State& state) {
  const auto& texts = Texts();
  std::size_t bytes = 0;
  for (auto _ : state) {
    for (const std::string& text : texts) bytes += std::filesystem::path(text).lexically_normal().string().size();
  }
  benchmark::DoNotOptimize(bytes);
  state.SetItemsProcessed(state.iterations() * static_cast<long>(texts.size()));
}
BENCHMARK(Parse_Base_lexically_normal)->Unit(benchmark::kMillisecond);

// The tree: 40 directories of 25 directories of 99 files each.
const std::string& Tree() {
  static const std::string root = [] {
    char name[] = "/tmp/kypathbenchXXXXXX";
    if (mkdtemp(name) == nullptr) std::abort();
    for (int a = 0; a < 40; ++a) {
      const std::string top = std::string(name) + "/d" + std::to_string(a);
      std::filesystem::create_directory(top);
      for (int b = 0; b < 25; ++b) {
        const std::string sub = top + "/s" + std::to_string(b);
        std::filesystem::create_directory(sub);
        for (int c = 0; c < 99; ++c) std::ofstream(sub + "/f" + std::to_string(c) + ".txt");
      }
    }
    std::atexit([] { std::filesystem::remove_all(Tree()); });
    return std::string(name) + "/";
  }();
  return root;
}

using Entries = std::vector<std::pair<std::string, bool>>;

void WalkKy(const KyPathName& directory, Entries& out) {
  if (!directory.openDir()) return;
  KyPathName entry;
  while (directory.readDir(entry)) {
    if (entry.isCurrentDirectory()) continue;
    const bool isDirectory = entry.isDirectory();
    if (isDirectory && entry.getUnixDirectory(true) == "../") continue;
    KyPathName full(directory);
    full.merge(entry);
    out.emplace_back(static_cast<const char*>(full), isDirectory);
    if (isDirectory) WalkKy(full, out);
  }
  directory.closeDir();
}

void WalkBase(const std::string& root, Entries& out) {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const bool isDirectory = entry.is_directory();
    out.emplace_back(entry.path().string() + (isDirectory ? "/" : ""), isDirectory);
  }
}

bool SameSets() {
  Entries ours, theirs;
  WalkKy(KyPathName(Tree().c_str()), ours);
  WalkBase(Tree(), theirs);
  return ours.size() >= 100000 && std::set<std::pair<std::string, bool>>(ours.begin(), ours.end()) ==
                                      std::set<std::pair<std::string, bool>>(theirs.begin(), theirs.end());
}

void Walk_Ky(benchmark::State& state) {
  if (!SameSets()) state.SkipWithError("the two walks differ");
  const KyPathName root(Tree().c_str());
  for (auto _ : state) {
    Entries out;
    out.reserve(110000);
    WalkKy(root, out);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(Walk_Ky)->Unit(benchmark::kMillisecond);

void Walk_Base_recursive_directory_iterator(benchmark::State& state) {
  for (auto _ : state) {
    Entries out;
    out.reserve(110000);
    WalkBase(Tree(), out);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(Walk_Base_recursive_directory_iterator)->Unit(benchmark::kMillisecond);

}  // namespace
