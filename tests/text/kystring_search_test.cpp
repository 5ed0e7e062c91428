#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>

#include "kybase/text/kystring.h"
#include "text/kystring_locale.h"

namespace {

using KyStringSearchTest = KyStringKindTest;
KY_INSTANTIATE_KINDS(KyStringSearchTest);

int Sign(int v) { return (v > 0) - (v < 0); }

TEST_P(KyStringSearchTest, CompareSigns) {
  const std::tuple<const char*, const char*, int, int, int, int, int> cases[] = {
      // Whole tails: the shorter sorts first; sub-ranges: the shorter sorts after.
      {"ab", "abc", 0, -1, 0, -1, -1}, {"abc", "ab", 0, -1, 0, -1, 1}, {"abx", "abc", 0, 2, 0, 3, 1},
      {"abc", "abx", 0, 3, 0, 2, -1},  {"abc", "abc", 0, -1, 0, -1, 0}, {"xabc", "abc", 1, -1, 0, -1, 0},
      {"abd", "abc", 0, 3, 0, 3, 1},   {"abc", "abd", 0, 2, 0, 2, 0},  {"b", "a", 0, -1, 0, -1, 1},
  };
  for (const auto& [a, b, start, end, otherStart, otherEnd, sign] : cases) {
    EXPECT_EQ(Sign(KyString(a).compare(KyString(b), start, end, otherStart, otherEnd)), sign)
        << a << " " << b;
  }
  EXPECT_EQ(KyString("b").compare("a"), 1);  // whole tails give exactly -1 or +1
  EXPECT_EQ(Sign(KyString("ABX").caseCompare("abc", 0, 2, 0, 3)), 1);
  EXPECT_EQ(KyString("HeLLo").caseCompare("hello"), 0);
  EXPECT_TRUE(KyString("abc") < KyString("abd") && KyString("abc") == "abc" && KyString("abc") != "abd");
  EXPECT_TRUE(KyString("b") >= "a" && KyString("b") >= KyString("a"));
}

TEST_P(KyStringSearchTest, ReversedRangesWriteTheirMessages) {
  KyString s("abcdef");
  const std::tuple<int, int, int, int, const char*> cases[] = {
      {4, 2, 0, -1, "2nd parameter is greater than 3rd one.\n"},
      {9, -1, 0, -1, "2nd parameter is greater than 3rd one.\n"},
      {0, -1, 3, 1, "4th parameter is greater than 5th one.\n"}};
  for (const auto& [start, end, otherStart, otherEnd, words] : cases) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(s.compare(s, start, end, otherStart, otherEnd), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string("KyString::compare: ") + words);
    testing::internal::CaptureStderr();
    EXPECT_EQ(s.caseCompare(s, start, end, otherStart, otherEnd), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string("KyString::caseCompare: ") + words);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(s.equals(s, start, end, otherStart, otherEnd));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }
  testing::internal::CaptureStderr();
  EXPECT_FALSE(s.matches("a", 3, 1));
  EXPECT_FALSE(s.matches("abc", 0, -1, 2, 1));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "KyString::matches: string start after end.\nKyString::matches: pattern start after end.\n");
}

TEST_P(KyStringSearchTest, EmptyStringsAgreeWhateverTheRanges) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(KyString().compare(KyString(""), 5, 1, 7, 2), 0);
  EXPECT_TRUE(KyString().matches(KyString(), 5, 1, 7, 2));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(KyString("abc").equals(KyString("xyz"), 2, 1, 3, 3));
  EXPECT_FALSE(KyString("abc").equals(KyString("xyz"), 2, 1, 0, 3));
  EXPECT_TRUE(KyString("abc").equals(KyString("xbc"), 1, -1, 1, 3));
  EXPECT_FALSE(KyString("abc").equals(KyString("abc"), 0, 2, 0, 3));
}

// The wildcard language as a plain recursion, for small inputs.
bool Reference(const std::string& t, std::size_t i, const std::string& p, std::size_t j) {
  for (;;) {
    if (i == t.size()) return p.find_first_not_of('*', j) == std::string::npos;
    if (j == p.size()) return false;
    if (p[j] == '?' || p[j] == t[i]) {
      ++i;
      ++j;
      continue;
    }
    if (p[j] != '*') return false;
    return Reference(t, i + 1, p, j) || Reference(t, i, p, j + 1) || Reference(t, i + 1, p, j + 1);
  }
}

TEST_P(KyStringSearchTest, WildcardsAgreeWithTheRecursiveDefinition) {
  std::mt19937 random(20240611);
  const char alphabet[] = "ab*?";
  for (int round = 0; round < 4000; ++round) {
    std::string text, pattern;
    for (int n = static_cast<int>(random() % 8); n > 0; --n) text += alphabet[random() % (round % 2 ? 3 : 2)];
    for (int n = static_cast<int>(random() % 7); n > 0; --n) pattern += alphabet[random() % 4];
    if (text.empty() && pattern.empty()) continue;
    ASSERT_EQ(KyString(text.c_str()).matches(pattern.c_str()), Reference(text, 0, pattern, 0))
        << "\"" << text << "\" ~ \"" << pattern << "\"";
  }
  // Ranges of the text, and case.
  EXPECT_TRUE(KyString("abc").matches("", 1, 1));
  EXPECT_TRUE(KyString("abc").matches("*", 3, 3));
  EXPECT_TRUE(KyString("abcabd").matches("a*c", 0, 3));
  EXPECT_FALSE(KyString("ABC").matches("abc"));
  std::string text(10000, 'a');  // many stars on a long text stay fast
  const std::string stars(30, '*');
  EXPECT_FALSE(KyString(text.c_str()).matches((stars + "b").c_str()));
  EXPECT_TRUE(KyString(text.c_str()).matches((stars + "a").c_str()));
  text[5000] = '*';
  EXPECT_FALSE(KyString(text.c_str()).matches((stars + "b").c_str()));
  EXPECT_TRUE(KyString(text.c_str()).matches((stars + "a*a").c_str()));
}

TEST_P(KyStringSearchTest, Searches) {
  KyString s("abcabc");
  const std::pair<int, int> found[] = {
      {s.getIndexOf("bc"), 1},           {s.getIndexOf("bc", 2), 4},       {s.getIndexOf("xbcx", 0, 1, 3), 1},
      {s.getIndexOf("abcd"), -1},        {s.getIndexOf(""), 6},            {s.getIndexOf("abc", 2, 1, 1), 6},
      {s.getLastIndexOf("abc", 4), 0},   {s.getLastIndexOf("abc"), 3},     {s.getLastIndexOf("abc", 3), 3},
      {s.getLastIndexOf("c", 4), 2},     {s.getLastIndexOf("abcabcx"), -1}, {s.getLastIndexOf("", 2), 2},
      {s.getLastIndexOf("", -1), 6},
  };
  for (std::size_t i = 0; i < sizeof found / sizeof found[0]; ++i) EXPECT_EQ(found[i].first, found[i].second) << i;
  const std::pair<bool, bool> ends[] = {{s.startsWith("ab"), true},        {s.startsWith("bc"), false},
                                        {s.startsWith(""), false},         {KyString().startsWith(""), true},
                                        {s.endsWith("bc"), true},          {s.endsWith("xbcx", 1, 3), true},
                                        {s.endsWith("ab"), false}};
  for (std::size_t i = 0; i < sizeof ends / sizeof ends[0]; ++i) EXPECT_EQ(ends[i].first, ends[i].second) << i;
}

// Candidates that keep failing move the search to its other strategy mid-text.
TEST_P(KyStringSearchTest, SearchesAmongManyNearMisses) {
  std::string text;
  for (int i = 0; i < 3000; ++i) text += i % 97 == 96 ? " the " : i % 3 ? " th" : " tx ";
  text += " thee";
  const KyString s(text.c_str());
  for (const char* pattern : {" the ", " thee", "e  t", " the  "}) {
    for (int from : {0, 1, 500, 9000}) {
      const std::size_t at = text.find(pattern, static_cast<std::size_t>(from));
      EXPECT_EQ(s.getIndexOf(pattern, from), at == std::string::npos ? -1 : static_cast<int>(at)) << pattern << from;
    }
  }
}

TEST_P(KyStringSearchTest, Splicing) {
  KyString s("hello");
  KyString shared(s);
  s.replace("J", 0, 1);
  EXPECT_STREQ(s.getValue(), "Jello");
  EXPECT_STREQ(shared.getValue(), "hello");
  s.replace("ELL", 1, 4, 0, -1);
  EXPECT_STREQ(s.getValue(), "JELLo");
  s.catenate("world", 1, 3);
  EXPECT_STREQ(s.getValue(), "JELLoor");
  s.prepend(">");
  s.insert("_", 3);
  EXPECT_STREQ(s.getValue(), ">JE_LLoor");
  s.insert("z", 99);
  EXPECT_STREQ(s.getValue(), ">JE_LLoor");
  s.remove(2);
  EXPECT_STREQ(s.getValue(), ">J");
  s += s;
  EXPECT_STREQ(s.getValue(), ">J>J");
  s.remove(">");
  EXPECT_STREQ(s.getValue(), "JJ");
  KyString twin(s);
  s.replace("x", 2, 1);  // a reversed range edits nothing but has unshared
  EXPECT_STREQ(s.getValue(), "JJ");
  EXPECT_NE(s.getInternalString(), twin.getInternalString());
  KyString mixed("Hello World");
  KyString original(mixed);
  EXPECT_STREQ(mixed.toUpper().getValue(), "HELLO WORLD");
  EXPECT_STREQ(original.getValue(), "Hello World");
  EXPECT_STREQ(mixed.toLower().getValue(), "hello world");
}

TEST_P(KyStringSearchTest, SubstituteOverlaps) {
  const std::tuple<const char*, const char*, const char*, int, int, const char*> cases[] = {
      {"aaaa", "aa", "ba", 0, -1, "bbba"},  // in place: each search sees the rewritten text
      {"aaa", "aa", "b", 0, -1, "b"},       // rebuilt: overlaps cut the output back
      {"abcabc", "bc", "X", 0, 5, "aXabc"},  // an occurrence crossing end stays
      {"abcabc", "bc", "XYZ", 2, -1, "abcaXYZ"}, {"the cat the", "the", "a", 0, -1, "a cat a"},
      {"abab", "", "x", 0, -1, "abab"},          {"abab", "ab", "x", 2, 2, "abab"},
      {"abab", "ab", "", 0, -1, ""},             {"xaaay", "aa", "bbb", 0, -1, "xbbbbby"},
      {"aaa", "aa", "", 0, -1, ""},  // the cut reaches before the output: nothing is left
  };
  for (const auto& [text, oldText, newText, start, end, result] : cases) {
    KyString s(text);
    s.substitute(oldText, newText, start, end);
    EXPECT_STREQ(s.getValue(), result) << text << " " << oldText << " -> " << newText;
  }
  KyString self("abc");
  self.substitute("b", self);
  EXPECT_STREQ(self.getValue(), "aabcc");
  KyString untouched("abc");
  KyString twin(untouched);
  untouched.substitute("x", "y");
  EXPECT_EQ(untouched.getInternalString(), twin.getInternalString());
}

TEST(KyStringSearch, WideCaseConversionRegeneratesTheNarrowForm) {
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
  KyString s("\xC3\x84" "b\xC3\x87");  // "ÄbÇ"
  s.toLower();
  EXPECT_STREQ(s.getValue(), "\xC3\xA4" "b\xC3\xA7");
  EXPECT_EQ(s.getLength(), 3u);
  EXPECT_EQ(s.getIndexOf("b"), 1);
  s.substitute("b", "\xE2\x82\xAC\xE2\x82\xAC");
  EXPECT_STREQ(s.getValue(), "\xC3\xA4\xE2\x82\xAC\xE2\x82\xAC\xC3\xA7");
  EXPECT_EQ(s.getLength(), 4u);
  EXPECT_EQ(KyString("\xC3\xA4\xC3\xA7").caseCompare("\xC3\x84\xC3\x87"), 0);
}

// A single-byte string never takes a multi-byte argument. A multi-byte string takes a
// single-byte one while the process is multi-byte, through a temporary that drops the
// start and pattern range of a search.
TEST(KyStringSearch, MixedKinds) {
  ScopedLocale c("C");
  KyString single("abcab");
  KyString ab("ab");
  KyString abc("abc");
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
  KyString multi("abcab");
  EXPECT_EQ(single.compare(multi), -1);
  EXPECT_FALSE(single.equals(multi) || single.matches(multi));
  EXPECT_EQ(single.getIndexOf(multi), -1);
  KyString target(single);
  target.catenate(multi);
  target.substitute(KyString("a"), multi);
  EXPECT_STREQ(target.getValue(), "abcab");

  EXPECT_EQ(multi.compare(single), 0);
  EXPECT_TRUE(multi.equals(single) && multi.matches(single));
  EXPECT_EQ(multi.getIndexOf(ab, 2), 0);
  EXPECT_EQ(multi.getLastIndexOf(ab, 2), 3);  // only a match that ends the text counts
  EXPECT_EQ(multi.getLastIndexOf(abc), -1);
  EXPECT_EQ(multi.getLastIndexOf(KyString("abc")), 0);
  KyString edited(multi);
  edited.catenate(single);
  EXPECT_STREQ(edited.getValue(), "abcababcab");
  ScopedLocale back("C");
  EXPECT_EQ(multi.compare(single), -1);
  edited = multi;
  edited.catenate(single);
  EXPECT_STREQ(edited.getValue(), "abcab");
}

}  // namespace
