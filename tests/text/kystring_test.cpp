#include "kybase/text/kystring.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>

#include "text/kystring_locale.h"

namespace {

using KyStringBodyTest = KyStringKindTest;
KY_INSTANTIATE_KINDS(KyStringBodyTest);

TEST_P(KyStringBodyTest, KindEmptinessAndBlanks) {
  EXPECT_EQ(IsMultiByteString(KyString("abc")), multiByte());
  EXPECT_EQ(IsSingleByteString(KyString("abc")), !multiByte());
  EXPECT_EQ(IsMultiByteString(KyString(42)), multiByte());
  for (const KyString& s : {KyString(), KyString(static_cast<const char*>(nullptr)), KyString("")}) {
    EXPECT_EQ(s.getLength(), 0u);
    EXPECT_EQ(s.getSize(), 1u);
    EXPECT_STREQ(s.getValue(), "");
    EXPECT_TRUE(s.isEmpty() && !s && s.isBlank());
  }
  EXPECT_TRUE(KyString(" \t\r\n").isBlank());
  EXPECT_FALSE(KyString(" a ").isBlank());
  KyString s("text");
  char* copy = s.copyValue();
  EXPECT_STREQ(copy, "text");
  EXPECT_NE(copy, s.getValue());
  delete[] copy;
  const char* view = s;
  EXPECT_EQ(view, s.getValue());
}

TEST_P(KyStringBodyTest, CountCutsOnlySingleByteText) {
  KyString cut("abcdef", 3);
  EXPECT_EQ(cut.getLength(), multiByte() ? 6u : 3u);
  EXPECT_EQ(cut.getSize(), multiByte() ? 7u : 4u);
  EXPECT_STREQ(cut.getValue(), multiByte() ? "abcdef" : "abc");
}

TEST(KyStringBody, CountPastTheTextKeepsAZeroTailUntilAnEdit) {
  ScopedLocale c("C");
  KyString padded("abc", 10);
  EXPECT_EQ(padded.getLength(), 10u);
  EXPECT_EQ(padded.getSize(), 11u);
  EXPECT_STREQ(padded.getValue(), "abc");
  char* bytes = padded.copyValue();
  EXPECT_EQ(std::memcmp(bytes, "abc\0\0\0\0\0\0\0\0", 11), 0);
  delete[] bytes;
  padded.replace(KyString("x"), 0, 0, 0, 0);
  EXPECT_EQ(padded.getLength(), 3u);

  KyString none("abc", 0);
  EXPECT_TRUE(none.isEmpty());
  EXPECT_EQ(none.getSize(), 1u);
  KyString("abc").getSubString(5, 9);  // makes the shared empty string live
  EXPECT_NE(none.getInternalString(), KyString().getInternalString());
}

// Length counts characters; an invalid or cut sequence ends the text.
TEST(KyStringBody, MultiByteLengthAndInvalidSequences) {
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
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

TEST(KyStringBody, EditsRegenerateCharactersOfEveryWidth) {
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
  KyString s("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");  // a, e acute, euro sign, an emoji
  s.substitute("a", "bb");
  EXPECT_STREQ(s.getValue(), "bb\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(s.getLength(), 5u);
  KyMBString body;  // a surrogate has no UTF-8 form and ends the narrow one
  const wchar_t surrogate[] = {L'a', static_cast<wchar_t>(0xD800), L'b', 0};
  body.setWideValue(surrogate, true, -1, true);
  EXPECT_STREQ(body.getValue(), "a");
  EXPECT_EQ(body.getLength(), 3);
}

TEST(KyStringBody, UnwritableUnitEndsTheNarrowForm) {
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
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

TEST_P(KyStringBodyTest, CopiesShareAndEditsUnshare) {
  KyString s("hello");
  EXPECT_EQ(RefCount(s), 1);
  {
    KyString t(s);
    KyString u;
    u = t;
    EXPECT_EQ(t.getInternalString(), s.getInternalString());
    EXPECT_EQ(RefCount(s), 3);
    u.toUpper();
    EXPECT_STREQ(u.getValue(), "HELLO");
    EXPECT_STREQ(s.getValue(), "hello");
    EXPECT_EQ(RefCount(s), 2);
    EXPECT_EQ(RefCount(u), 1);
  }
  EXPECT_EQ(RefCount(s), 1);
  KyInternalString* before = s.getInternalString();
  KyString& alias = s;
  s = alias;
  EXPECT_EQ(s.getInternalString(), before);
  EXPECT_EQ(RefCount(s), 1);
  s.toLower();  // the only owner edits in place
  EXPECT_EQ(s.getInternalString(), before);
}

TEST_P(KyStringBodyTest, SubStrings) {
  KyString s("0123456789");
  KyString whole = s.getSubString(0, -1);
  EXPECT_EQ(whole.getInternalString(), s.getInternalString());
  EXPECT_EQ(s.getSubString(0, 10).getInternalString(), s.getInternalString());
  whole.catenate("x");
  EXPECT_STREQ(s.getValue(), "0123456789");

  EXPECT_TRUE(s.getSubString(5, 2).isEmpty());
  KyString past = s.getSubString(10, 20);
  EXPECT_TRUE(past.isEmpty());
  // Once the shared empty string is in use, every empty string of the kind shares it.
  EXPECT_EQ(KyString().getInternalString(), past.getInternalString());
  EXPECT_EQ(KyString("").getInternalString(), s.getSubString(5, 2).getInternalString());
  EXPECT_STREQ(s.getSubString(2, 99).getValue(), "23456789");
  EXPECT_STREQ(s.getSubString(3, 6).getValue(), "345");
  EXPECT_STREQ(s.getSubString(-4, 2).getValue(), "01");
}

TEST_P(KyStringBodyTest, NumbersUseTheirDefaultFormats) {
  const std::pair<KyString, const char*> cases[] = {
      {KyString(static_cast<short>(-5)), "-5"},        {KyString(static_cast<unsigned short>(65535)), "65535"},
      {KyString(-2147483647 - 1), "-2147483648"},     {KyString(4294967295u), "4294967295"},
      {KyString(-9223372036854775807L), "-9223372036854775807"},
      {KyString(18446744073709551615UL), "18446744073709551615"},
      {KyString(1.5f), "1.500000"},                   {KyString(0.1), "0.1"},
      {KyString(static_cast<short>(-1), "%hx"), "ffff"}, {KyString(3.14159, "%08.3f"), "0003.142"},
      {KyString(7, nullptr), "7"}};
  for (const auto& [number, text] : cases) EXPECT_STREQ(number.getValue(), text);
}

TEST_P(KyStringBodyTest, LongNumberTextIsKeptWholeAndEmptyTextGetsItsOwnBody) {
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

// A string keeps its kind when the locale changes; only multi-byte strings know wide blanks.
TEST(KyStringBody, KindStaysWhenTheLocaleChanges) {
  ScopedLocale c("C");
  const char* ideographicSpace = "\xE3\x80\x80";
  KyString before("abc");
  EXPECT_FALSE(KyString(ideographicSpace).isBlank());
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
  EXPECT_TRUE(KyString(ideographicSpace).isBlank());
  EXPECT_TRUE(IsMultiByteString(KyString("abc")));
  before.toUpper();
  EXPECT_TRUE(IsSingleByteString(before));
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
        ok = ok && KyString("").getInternalString() == shared.getInternalString();
        std::exit(ok ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
