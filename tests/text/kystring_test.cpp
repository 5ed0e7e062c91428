// KyString under both of its kinds. A string's kind follows MB_CUR_MAX when it is
// made, so the kind cases run under "C" (single byte) and "C.UTF-8" (multi byte); each
// sets the locale before making strings and puts the previous one back after.
#include "kybase/text/kystring.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>

#include "kybase/text/mb_string.h"
#include "kybase/text/sb_string.h"

namespace {

// Switches LC_ALL for its lifetime.
struct ScopedLocale {
  explicit ScopedLocale(const char* name) : entered(std::setlocale(LC_ALL, name) != nullptr) {}
  ~ScopedLocale() { std::setlocale(LC_ALL, saved.c_str()); }
  const std::string saved = std::setlocale(LC_ALL, nullptr);  // made before `entered`
  const bool entered;
};

// Enters C.UTF-8 until the end of the case, or skips it.
#define KY_ENTER_UTF8_OR_SKIP()   \
  ScopedLocale utf8("C.UTF-8"); \
  if (!utf8.entered) GTEST_SKIP() << "C.UTF-8 is not installed"

bool IsMultiByteString(const KyString& s) { return dynamic_cast<KyMBString*>(s.getInternalString()) != nullptr; }
int RefCount(const KyString& s) { return s.getInternalString()->getRefCount(); }

// Parameter: the locale name. Cases skip when the locale is missing.
class KyStringKinds : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (!locale_.entered) GTEST_SKIP() << "locale " << GetParam() << " is not installed";
  }
  bool multiByte() const { return std::string(GetParam()) != "C"; }

 private:
  const ScopedLocale locale_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Kinds, KyStringKinds, testing::Values("C", "C.UTF-8"),
                         [](const testing::TestParamInfo<const char*>& info) {
                           return std::string(info.param) == "C" ? "SingleByte" : "MultiByte";
                         });

TEST_P(KyStringKinds, KindEmptinessBlanksAndCounts) {
  EXPECT_EQ(IsMultiByteString(KyString("abc")), multiByte());
  EXPECT_EQ(IsMultiByteString(KyString(42)), multiByte());
  for (const KyString& s : {KyString(), KyString(static_cast<const char*>(nullptr)), KyString("")}) {
    EXPECT_EQ(s.getLength(), 0u);
    EXPECT_EQ(s.getSize(), 1u);
    EXPECT_STREQ(s.getValue(), "");
    EXPECT_TRUE(s.isEmpty() && !s && s.isBlank());
  }
  EXPECT_TRUE(KyString(" \t\r\n").isBlank());
  EXPECT_FALSE(KyString(" a ").isBlank());
  KyString cut("abcdef", 3);  // a count cuts only single-byte text
  EXPECT_EQ(cut.getLength(), multiByte() ? 6u : 3u);
  EXPECT_STREQ(cut.getValue(), multiByte() ? "abcdef" : "abc");
}

TEST(KyStringBody, CountPastTheTextKeepsAZeroTailUntilAnEdit) {
  ScopedLocale c("C");
  KyString padded("abc", 10);
  EXPECT_EQ(padded.getLength(), 10u);
  EXPECT_EQ(padded.getSize(), 11u);
  char* bytes = padded.copyValue();
  EXPECT_EQ(std::memcmp(bytes, "abc\0\0\0\0\0\0\0\0", 11), 0);
  delete[] bytes;
  padded.replace(KyString("x"), 0, 0, 0, 0);
  EXPECT_EQ(padded.getLength(), 3u);

  KyString none("abc", 0);
  EXPECT_TRUE(none.isEmpty());
  KyString("abc").getSubString(5, 9);  // makes the shared empty string live
  EXPECT_NE(none.getInternalString(), KyString().getInternalString());
}

// Length counts characters; an invalid or cut sequence ends the text.
TEST(KyStringBody, MultiByteLengthAndInvalidSequences) {
  KY_ENTER_UTF8_OR_SKIP();
  const std::tuple<const char*, const char*, unsigned int> cases[] = {
      {"\xC3\xA9t\xC3\xA9", "\xC3\xA9t\xC3\xA9", 3}, {"\xE2\x82\xAC", "\xE2\x82\xAC", 1}, {"ab\xFF" "cd", "ab", 2},
      {"\xC3\xA9x\xC3", "\xC3\xA9x", 2},          {"\x80", "", 0},                   {"a\xE2\x82", "a", 1}};
  for (const auto& [text, kept, length] : cases) {
    KyString s(text);
    EXPECT_STREQ(s.getValue(), kept) << text;
    EXPECT_EQ(s.getLength(), length) << text;
    EXPECT_EQ(s.getSize(), std::strlen(kept) + 1) << text;
  }
}

// Edits work on the wide characters and write the narrow form again; indexes count characters.
TEST(KyStringBody, EditsRegenerateCharactersOfEveryWidth) {
  KY_ENTER_UTF8_OR_SKIP();
  KyString s("\xC3\x84" "b\xE2\x82\xAC\xF0\x9F\x98\x80");  // A umlaut, b, euro sign, an emoji
  s.toLower();
  s.substitute("b", "\xC3\xA7\xC3\xA7");
  EXPECT_STREQ(s.getValue(), "\xC3\xA4\xC3\xA7\xC3\xA7\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(s.getLength(), 5u);
  EXPECT_EQ(s.getIndexOf("\xE2\x82\xAC"), 3);
  EXPECT_EQ(KyString("\xC3\xA4\xC3\xA7").caseCompare("\xC3\x84\xC3\x87"), 0);
  KyMBString body;  // a surrogate has no UTF-8 form and ends the narrow one
  const wchar_t surrogate[] = {L'a', static_cast<wchar_t>(0xD800), L'b', 0};
  body.setWideValue(surrogate, true, -1, true);
  EXPECT_STREQ(body.getValue(), "a");
  EXPECT_EQ(body.getLength(), 3);
}

TEST(KyStringBody, UnwritableUnitEndsTheNarrowForm) {
  KY_ENTER_UTF8_OR_SKIP();
  KyString s("a\xC3\xA9");
  KyString tail("b");
  {
    ScopedLocale c("C");
    s += tail;
  }
  EXPECT_EQ(s.getLength(), 3u);
  EXPECT_STREQ(s.getValue(), "a");
  EXPECT_EQ(std::wcscmp(static_cast<KyMBString*>(s.getInternalString())->getWideValue(), L"a\u00e9b"), 0);
}

TEST_P(KyStringKinds, CopiesShareAndEditsUnshare) {
  KyString s("Hello");
  {
    KyString t(s);
    KyString u;
    u = t;
    EXPECT_EQ(RefCount(s), 3);
    u.toUpper();
    EXPECT_STREQ(u.getValue(), "HELLO");
    EXPECT_STREQ(s.getValue(), "Hello");
    EXPECT_EQ(RefCount(s), 2);
  }
  EXPECT_EQ(RefCount(s), 1);
  KyInternalString* before = s.getInternalString();
  KyString& alias = s;
  s = alias;
  EXPECT_EQ(s.getInternalString(), before);
  EXPECT_EQ(RefCount(s), 1);
  EXPECT_STREQ(s.toLower().getValue(), "hello");  // the only owner edits in place
  EXPECT_EQ(s.getInternalString(), before);
}

TEST_P(KyStringKinds, SubStrings) {
  KyString s("0123456789");
  KyString whole = s.getSubString(0, -1);
  EXPECT_EQ(whole.getInternalString(), s.getInternalString());
  EXPECT_EQ(s.getSubString(0, 10).getInternalString(), s.getInternalString());
  whole.catenate("x");
  EXPECT_STREQ(s.getValue(), "0123456789");

  KyString past = s.getSubString(10, 20);
  // Once the shared empty string is in use, every empty string of the kind shares it.
  EXPECT_EQ(KyString().getInternalString(), past.getInternalString());
  EXPECT_EQ(KyString("").getInternalString(), s.getSubString(5, 2).getInternalString());
  EXPECT_STREQ(s.getSubString(2, 99).getValue(), "23456789");
  EXPECT_STREQ(s.getSubString(3, 6).getValue(), "345");
  EXPECT_STREQ(s.getSubString(-4, 2).getValue(), "01");
}

TEST_P(KyStringKinds, NumbersUseTheirDefaultFormats) {
  const std::pair<KyString, const char*> cases[] = {
      {KyString(static_cast<short>(-5)), "-5"}, {KyString(static_cast<unsigned short>(65535)), "65535"},
      {KyString(-2147483647 - 1), "-2147483648"}, {KyString(4294967295u), "4294967295"},
      {KyString(-9223372036854775807L), "-9223372036854775807"},
      {KyString(18446744073709551615UL), "18446744073709551615"}, {KyString(1.5f), "1.500000"}, {KyString(0.1), "0.1"},
      {KyString(static_cast<short>(-1), "%hx"), "ffff"}, {KyString(3.14159, "%08.3f"), "0003.142"},
      {KyString(7, nullptr), "7"}};
  for (const auto& [number, text] : cases) EXPECT_STREQ(number.getValue(), text);
}

TEST_P(KyStringKinds, LongNumberTextIsKeptWholeAndEmptyTextGetsItsOwnBody) {
  char expected[400];
  ASSERT_GT(std::snprintf(expected, sizeof expected, "%f", 1e300), 300);
  EXPECT_STREQ(KyString(1e300, "%f").getValue(), expected);
  KyString padded(12, "%300d");
  EXPECT_EQ(padded.getLength(), 300u);
  EXPECT_TRUE(padded.endsWith("12"));
  KyString("abc").getSubString(5, 9);
  KyString empty(5, "");
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_NE(empty.getInternalString(), KyString().getInternalString());
}

// The two shared empty strings start pending: until a substring first asks for one,
// every empty string of that kind gets its own body. A fresh process shows this.
TEST(KyStringBodyDeathTest, SharedEmptyStringStartsPending) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        bool ok = KyString().getInternalString() != KyString().getInternalString();
        KyString shared = KyString("ab").getSubString(2, 3);
        ok = ok && KyString().getInternalString() == shared.getInternalString();
        std::exit(ok ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

std::string Quoted(const KyString& s) {
  std::ostringstream out;
  s.writeQuoted(out);
  return out.str();
}

KyString ReadQuoted(const std::string& text, bool* failed = nullptr) {
  std::istringstream in(text);
  KyString s("old");
  s.readQuoted(in);
  if (failed != nullptr) *failed = in.fail();
  return s;
}

TEST_P(KyStringKinds, QuotedRoundTripsAndReadingRules) {
  for (const char* text : {"a\"b\\", "", "plain", "line\nend\t", "\\\\\"\"", "\xC3\xA9t\xC3\xA9 \"x\""}) {
    const KyString back = ReadQuoted(Quoted(KyString(text)));
    EXPECT_STREQ(back.getValue(), text) << Quoted(KyString(text));
    EXPECT_EQ(back.getLength(), KyString(text).getLength()) << text;
  }
  EXPECT_EQ(Quoted(KyString("a\"b\\")), "\"a\\\"b\\\\\"");
  EXPECT_EQ(Quoted(KyString()), "\"\"");
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"abc", "", true},                    // no quote: everything is skipped
      {"xy \"a\\nb\" tail", "anb", false},  // a backslash makes the next byte literal
      {"\"open", "open", true},             // no closing quote: kept to the end
      {"\"ends\\", "ends", true},           // a backslash at the very end is dropped
      {"", "", true},
  };
  for (const auto& [input, text, failed] : cases) {
    bool fail = !failed;
    EXPECT_STREQ(ReadQuoted(input, &fail).getValue(), text) << input;
    EXPECT_EQ(fail, failed) << input;
  }
  std::istringstream in("\"one\" rest");
  KyString s;
  s.readQuoted(in);
  EXPECT_EQ(in.get(), ' ');  // nothing behind the closing quote was read
}

// A token ends at a blank or a zero byte; one that runs into the end of the input is
// kept and fails the stream; the stream's flags stay; widths apply to both writers.
TEST_P(KyStringKinds, TokensFlagsAndWidths) {
  std::istringstream in(std::string("  ab \r\n\tx\0y cd", 14));
  in >> std::hex;
  const std::ios_base::fmtflags before = in.flags();
  KyString s("old");
  std::string seen;
  for (int i = 0; i < 3 && in >> s; ++i) seen += std::string(s.getValue()) + "|";
  EXPECT_EQ(seen, "ab|x|y|");
  EXPECT_EQ(in.flags(), before);
  in >> s;
  EXPECT_STREQ(s.getValue(), "cd");
  EXPECT_TRUE(in.fail());
  EXPECT_TRUE((std::istringstream() >> s).fail() && s.isEmpty());
  std::ostringstream out;
  out << std::setw(6) << std::setfill('.') << KyString("ab") << "|";
  KyString("ab").writeQuoted(out << std::setw(3));
  EXPECT_EQ(out.str(), "....ab|..\"ab\"");
  for (std::size_t n : {1023u, 1024u, 1025u, 5000u}) {  // across the local buffer
    std::string token;
    for (std::size_t i = 0; i < n; ++i) token += static_cast<char>('a' + i % 26);
    std::istringstream long_in(token + " next");
    long_in >> s;
    EXPECT_EQ(std::string(s.getValue()), token);
    EXPECT_EQ(std::string(ReadQuoted("\"" + token + "\"").getValue()), token);
  }
}

// Big5 has characters whose second byte is 0x5C, the backslash. The locale is built
// with localedef into the build tree, and LOCPATH points there while it is entered.
TEST(KyStringStream, BackslashByteInsideAMultiByteCharacter) {
  char self[4096] = {};
  ASSERT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
  std::string dir = self;
  dir = dir.substr(0, dir.rfind('/') + 1) + "kystring_test_locales";
  // localedef may report warnings and still build the locale.
  const std::string build = "mkdir -p " + dir + " && localedef -i zh_TW -f BIG5 " + dir + "/zh_TW.BIG5";
  (void)!std::system((build + " >/dev/null 2>&1").c_str());
  const char* had = std::getenv("LOCPATH");
  const std::string saved = had != nullptr ? had : "";
  setenv("LOCPATH", dir.c_str(), 1);
  ScopedLocale big5("zh_TW.BIG5");
  had != nullptr ? setenv("LOCPATH", saved.c_str(), 1) : unsetenv("LOCPATH");
  if (!big5.entered) GTEST_SKIP() << "no Big5 locale: localedef could not build zh_TW.BIG5 into " << dir;
  const char text[] = "a\xB3\x5C" "b";  // U+8A31 is B3 5C in Big5
  KyString s(text);
  ASSERT_TRUE(IsMultiByteString(s));
  EXPECT_EQ(s.getLength(), 3u);
  const std::string quoted = Quoted(s);
  EXPECT_EQ(quoted, "\"a\xB3\\\x5C" "b\"");
  KyString back = ReadQuoted(quoted);
  EXPECT_STREQ(back.getValue(), text);
  EXPECT_EQ(back.getLength(), 3u);
}

int Sign(int v) { return (v > 0) - (v < 0); }

TEST_P(KyStringKinds, CompareSigns) {
  const std::tuple<const char*, const char*, int, int, int, int, int> cases[] = {
      // Whole tails: the shorter sorts first; sub-ranges: the shorter sorts after.
      {"ab", "abc", 0, -1, 0, -1, -1}, {"abc", "ab", 0, -1, 0, -1, 1}, {"abx", "abc", 0, 2, 0, 3, 1},
      {"abc", "abx", 0, 3, 0, 2, -1},  {"abc", "abc", 0, -1, 0, -1, 0}, {"xabc", "abc", 1, -1, 0, -1, 0},
      {"abd", "abc", 0, 3, 0, 3, 1},   {"abc", "abd", 0, 2, 0, 2, 0},  {"b", "a", 0, -1, 0, -1, 1},
  };
  for (const auto& [a, b, start, end, otherStart, otherEnd, sign] : cases)
    EXPECT_EQ(Sign(KyString(a).compare(KyString(b), start, end, otherStart, otherEnd)), sign) << a << " " << b;
  EXPECT_EQ(KyString("b").compare("a"), 1);  // whole tails give exactly -1 or +1
  EXPECT_EQ(Sign(KyString("ABX").caseCompare("abc", 0, 2, 0, 3)), 1);
  EXPECT_EQ(KyString("HeLLo").caseCompare("hello"), 0);
  EXPECT_TRUE(KyString("abc") < KyString("abd") && KyString("abc") == "abc" && KyString("abc") != "abd");
  EXPECT_TRUE(KyString("b") >= "a" && KyString("b") >= KyString("a"));
}

TEST_P(KyStringKinds, ReversedRangesWriteTheirMessages) {
  KyString s("abcdef");
  const std::tuple<int, int, int, int, const char*> cases[] = {
      {4, 2, 0, -1, "2nd parameter is greater than 3rd one.\n"},
      {9, -1, 0, -1, "2nd parameter is greater than 3rd one.\n"},
      {0, -1, 3, 1, "4th parameter is greater than 5th one.\n"}};
  for (const auto& [start, end, otherStart, otherEnd, words] : cases) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(s.compare(s, start, end, otherStart, otherEnd), -1);
    EXPECT_EQ(s.caseCompare(s, start, end, otherStart, otherEnd), -1);
    EXPECT_FALSE(s.equals(s, start, end, otherStart, otherEnd));  // says nothing
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string("KyString::compare: ") + words + "KyString::caseCompare: " + words);
  }
  testing::internal::CaptureStderr();
  EXPECT_FALSE(s.matches("a", 3, 1));
  EXPECT_FALSE(s.matches("abc", 0, -1, 2, 1));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "KyString::matches: string start after end.\nKyString::matches: pattern start after end.\n");
}

TEST_P(KyStringKinds, EmptyStringsAgreeWhateverTheRanges) {
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
  if (i == t.size()) return p.find_first_not_of('*', j) == std::string::npos;
  if (j == p.size()) return false;
  if (p[j] == '?' || p[j] == t[i]) return Reference(t, i + 1, p, j + 1);
  return p[j] == '*' && (Reference(t, i + 1, p, j) || Reference(t, i, p, j + 1) || Reference(t, i + 1, p, j + 1));
}

TEST_P(KyStringKinds, WildcardsAgreeWithTheRecursiveDefinition) {
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

TEST_P(KyStringKinds, Searches) {
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
TEST_P(KyStringKinds, SearchesAmongManyNearMisses) {
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

TEST_P(KyStringKinds, Splicing) {
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
}

TEST_P(KyStringKinds, SubstituteOverlaps) {
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

// A string keeps its kind when the locale changes; only multi-byte strings know wide
// blanks. A single-byte string never takes a multi-byte argument, and in a multi-byte
// process it reads every token as empty. A multi-byte string takes a single-byte one while the process is multi-byte, through a
// temporary that drops the start and pattern range of a search.
TEST(KyStringSearch, MixedKinds) {
  ScopedLocale c("C");
  const char* ideographicSpace = "\xE3\x80\x80";
  EXPECT_FALSE(KyString(ideographicSpace).isBlank());
  KyString single("abcab");
  KyString ab("ab");
  KyString abc("abc");
  KY_ENTER_UTF8_OR_SKIP();
  EXPECT_TRUE(KyString(ideographicSpace).isBlank());
  KyString multi("abcab");
  EXPECT_EQ(single.compare(multi), -1);
  EXPECT_FALSE(single.equals(multi) || single.matches(multi));
  EXPECT_EQ(single.getIndexOf(multi), -1);
  KyString target(single);
  target.catenate(multi);
  target.substitute(KyString("a"), multi);
  EXPECT_STREQ(target.getValue(), "abcab");
  std::istringstream in("token");
  in >> target;
  EXPECT_TRUE(target.isEmpty());
  EXPECT_NE(dynamic_cast<KySBString*>(target.getInternalString()), nullptr);

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
