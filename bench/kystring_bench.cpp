// KyString against the nearest standard equivalents: copying (a reference count
// against a deep copy), comparing, searching, substituting a frequent word and
// wildcard matching, on a generated English-like text of 1 MB. The "Wide" pairs run
// under C.UTF-8, where KyString works on wide units, against std::wstring.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

#include "kybase/text/kystring.h"

namespace {

const char* const kWords[] = {"the",   "of",    "and",   "to",    "in",    "a",      "is",    "that",  "for",
                              "it",    "as",    "was",   "with",  "be",    "by",     "on",    "not",   "he",
                              "this",  "are",   "or",    "his",   "from",  "at",     "which", "but",   "have",
                              "an",    "had",   "they",  "you",   "were",  "their",  "one",   "all",   "we",
                              "can",   "her",   "has",   "there", "been",  "if",     "more",  "when",  "will",
                              "would", "who",   "so",    "no",    "river", "garden", "stone", "light", "morning"};

// A deterministic text of about `bytes` bytes of words and blanks, ending in "zebra".
std::string MakeText(std::size_t bytes) {
  std::mt19937 random(7);
  std::string text;
  text.reserve(bytes + 16);
  const std::size_t count = sizeof kWords / sizeof kWords[0];
  while (text.size() + 6 < bytes) {
    text += kWords[random() % count];
    text += ' ';
  }
  text += "zebra";
  return text;
}

const std::string& Text() {
  static const std::string text = MakeText(1 << 20);
  return text;
}

std::wstring Widen(const std::string& text) { return std::wstring(text.begin(), text.end()); }

// Switches the locale for one benchmark and restores "C" after it.
class BenchLocale {
 public:
  explicit BenchLocale(const char* name) : ok_(std::setlocale(LC_ALL, name) != nullptr) {}
  ~BenchLocale() { std::setlocale(LC_ALL, "C"); }
  bool ok() const { return ok_; }

 private:
  bool ok_;
};

void Copy_Ky(benchmark::State& state) {
  KyString text(std::string(static_cast<std::size_t>(state.range(0)), 'x').c_str());
  for (auto _ : state) {
    KyString copy(text);
    benchmark::DoNotOptimize(copy.getInternalString());
  }
}
BENCHMARK(Copy_Ky)->Arg(1024);

void Copy_Base_std_string(benchmark::State& state) {
  std::string text(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    std::string copy(text);
    benchmark::DoNotOptimize(copy.data());
  }
}
BENCHMARK(Copy_Base_std_string)->Arg(1024);

void Compare_Ky(benchmark::State& state) {
  const std::string& text = Text();
  KyString a(text.c_str());
  KyString b(text.c_str());
  for (auto _ : state) benchmark::DoNotOptimize(a.compare(b));
}
BENCHMARK(Compare_Ky)->Arg(1 << 20);

void Compare_Base_std_string(benchmark::State& state) {
  const std::string a = Text();
  const std::string b = Text();
  for (auto _ : state) benchmark::DoNotOptimize(a.compare(b));
}
BENCHMARK(Compare_Base_std_string)->Arg(1 << 20);

void IndexOf_Ky(benchmark::State& state) {
  KyString text(Text().c_str());
  KyString word("zebra");
  for (auto _ : state) benchmark::DoNotOptimize(text.getIndexOf(word));
}
BENCHMARK(IndexOf_Ky)->Arg(1 << 20);

void IndexOf_Base_string_view(benchmark::State& state) {
  const std::string_view text = Text();
  for (auto _ : state) benchmark::DoNotOptimize(text.find("zebra"));
}
BENCHMARK(IndexOf_Base_string_view)->Arg(1 << 20);

void Substitute_Ky(benchmark::State& state) {
  KyString text(Text().c_str());
  KyString oldWord(" the ");
  KyString newWord(" a ");
  for (auto _ : state) {
    KyString edited(text);
    edited.substitute(oldWord, newWord);
    benchmark::DoNotOptimize(edited.getValue());
  }
}
BENCHMARK(Substitute_Ky)->Arg(1 << 20);

std::string ReplaceAll(std::string_view text, std::string_view oldWord, std::string_view newWord) {
  std::string out;
  out.reserve(text.size());
  std::size_t at = 0;
  for (std::size_t hit; (hit = text.find(oldWord, at)) != std::string_view::npos; at = hit + oldWord.size()) {
    out.append(text, at, hit - at);
    out.append(newWord);
  }
  out.append(text, at, std::string_view::npos);
  return out;
}

void Substitute_Base_std_string(benchmark::State& state) {
  const std::string text = Text();
  for (auto _ : state) {
    std::string edited = ReplaceAll(text, " the ", " a ");
    benchmark::DoNotOptimize(edited.data());
  }
}
BENCHMARK(Substitute_Base_std_string)->Arg(1 << 20);

void Matches_Ky(benchmark::State& state) {
  KyString text(Text().c_str());
  KyString pattern("*river*garden*zebra");
  for (auto _ : state) benchmark::DoNotOptimize(text.matches(pattern));
}
BENCHMARK(Matches_Ky)->Arg(1 << 20);

// The same question with finds: each piece after the previous one, the last at the end.
void Matches_Base_string_view(benchmark::State& state) {
  const std::string_view text = Text();
  for (auto _ : state) {
    std::size_t at = text.find("river");
    if (at != std::string_view::npos) at = text.find("garden", at + 5);
    const bool match = at != std::string_view::npos && text.size() >= at + 6 + 5 &&
                       text.substr(text.size() - 5) == "zebra";
    benchmark::DoNotOptimize(match);
  }
}
BENCHMARK(Matches_Base_string_view)->Arg(1 << 20);

void IndexOfWide_Ky(benchmark::State& state) {
  BenchLocale utf8("C.UTF-8");
  if (!utf8.ok()) return state.SkipWithError("C.UTF-8 is not installed");
  KyString text(Text().c_str());
  KyString word("zebra");
  for (auto _ : state) benchmark::DoNotOptimize(text.getIndexOf(word));
}
BENCHMARK(IndexOfWide_Ky)->Arg(1 << 20);

void IndexOfWide_Base_wstring_view(benchmark::State& state) {
  const std::wstring text = Widen(Text());
  const std::wstring_view view = text;
  for (auto _ : state) benchmark::DoNotOptimize(view.find(L"zebra"));
}
BENCHMARK(IndexOfWide_Base_wstring_view)->Arg(1 << 20);

void SubstituteWide_Ky(benchmark::State& state) {
  BenchLocale utf8("C.UTF-8");
  if (!utf8.ok()) return state.SkipWithError("C.UTF-8 is not installed");
  KyString text(Text().c_str());
  KyString oldWord(" the ");
  KyString newWord(" a ");
  for (auto _ : state) {
    KyString edited(text);
    edited.substitute(oldWord, newWord);
    benchmark::DoNotOptimize(edited.getValue());
  }
}
BENCHMARK(SubstituteWide_Ky)->Arg(1 << 20);

// The wide baseline also produces the narrow form, as a multi-byte KyString does.
void SubstituteWide_Base_wstring(benchmark::State& state) {
  BenchLocale utf8("C.UTF-8");
  const std::wstring text = Widen(Text());
  for (auto _ : state) {
    std::wstring edited;
    edited.reserve(text.size());
    std::size_t at = 0;
    for (std::size_t hit; (hit = text.find(L" the ", at)) != std::wstring::npos; at = hit + 5) {
      edited.append(text, at, hit - at);
      edited.append(L" a ");
    }
    edited.append(text, at, std::wstring::npos);
    std::string narrow(edited.size() * MB_CUR_MAX + 1, '\0');
    narrow.resize(std::wcstombs(&narrow[0], edited.c_str(), narrow.size()));
    benchmark::DoNotOptimize(narrow.data());
  }
}
BENCHMARK(SubstituteWide_Base_wstring)->Arg(1 << 20);

}  // namespace
