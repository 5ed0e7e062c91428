#include "kybase/text/kystring.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "text/kystring_locale.h"

namespace {

using KyStringBodyTest = KyStringKindTest;
KY_INSTANTIATE_KINDS(KyStringBodyTest);

TEST_P(KyStringBodyTest, KindFollowsMbCurMax) {
  KyString s("abc");
  EXPECT_EQ(IsMultiByteString(s), multiByte());
  EXPECT_EQ(IsSingleByteString(s), !multiByte());
  EXPECT_EQ(IsMultiByteString(KyString(42)), multiByte());
}

TEST_P(KyStringBodyTest, EmptyStrings) {
  for (const KyString& s : {KyString(), KyString(static_cast<const char*>(nullptr)), KyString("")}) {
    EXPECT_EQ(s.getLength(), 0u);
    EXPECT_EQ(s.getSize(), 1u);
    EXPECT_STREQ(s.getValue(), "");
    EXPECT_TRUE(s.isEmpty());
    EXPECT_TRUE(!s);
    EXPECT_TRUE(s.isBlank());
  }
}

TEST_P(KyStringBodyTest, CountCutsOnlySingleByteText) {
  KyString cut("abcdef", 3);
  if (multiByte()) {
    EXPECT_EQ(cut.getLength(), 6u);
    EXPECT_STREQ(cut.getValue(), "abcdef");
  } else {
    EXPECT_EQ(cut.getLength(), 3u);
    EXPECT_EQ(cut.getSize(), 4u);
    EXPECT_STREQ(cut.getValue(), "abc");
  }
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

TEST(KyStringBody, MultiByteLengthCountsCharacters) {
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
  KyString s("\xC3\xA9t\xC3\xA9");  // "été"
  EXPECT_EQ(s.getLength(), 3u);
  EXPECT_EQ(s.getSize(), 6u);
  EXPECT_EQ(KyString("\xE2\x82\xAC").getLength(), 1u);
}

TEST(KyStringBody, InvalidSequenceEndsTheText) {
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
  struct Case {
    const char* text;
    const char* kept;
    unsigned int length;
  } cases[] = {
      {"ab\xFF" "cd", "ab", 2},
      {"\xC3\xA9x\xC3", "\xC3\xA9x", 2},
      {"\x80", "", 0},
      {"a\xE2\x82", "a", 1},
  };
  for (const Case& c : cases) {
    KyString s(c.text);
    EXPECT_STREQ(s.getValue(), c.kept) << c.text;
    EXPECT_EQ(s.getLength(), c.length) << c.text;
    EXPECT_EQ(s.getSize(), std::strlen(c.kept) + 1) << c.text;
  }
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
  EXPECT_STREQ(KyString(static_cast<short>(-5)).getValue(), "-5");
  EXPECT_STREQ(KyString(static_cast<unsigned short>(65535)).getValue(), "65535");
  EXPECT_STREQ(KyString(-2147483647 - 1).getValue(), "-2147483648");
  EXPECT_STREQ(KyString(4294967295u).getValue(), "4294967295");
  EXPECT_STREQ(KyString(-9223372036854775807L).getValue(), "-9223372036854775807");
  EXPECT_STREQ(KyString(18446744073709551615UL).getValue(), "18446744073709551615");
  EXPECT_STREQ(KyString(1.5f).getValue(), "1.500000");
  EXPECT_STREQ(KyString(0.1).getValue(), "0.1");
  EXPECT_STREQ(KyString(static_cast<short>(-1), "%hx").getValue(), "ffff");
  EXPECT_STREQ(KyString(3.14159, "%08.3f").getValue(), "0003.142");
  EXPECT_STREQ(KyString(7, nullptr).getValue(), "7");
}

TEST_P(KyStringBodyTest, LongNumberTextIsKeptWhole) {
  char expected[400];
  int n = std::snprintf(expected, sizeof expected, "%f", 1e300);
  ASSERT_GT(n, 300);
  KyString big(1e300, "%f");
  EXPECT_STREQ(big.getValue(), expected);
  KyString padded(12, "%300d");
  EXPECT_EQ(padded.getLength(), 300u);
  EXPECT_TRUE(padded.endsWith("12"));
}

TEST_P(KyStringBodyTest, EmptyNumberTextGetsItsOwnBody) {
  KyString("abc").getSubString(5, 9);
  KyString empty(5, "");
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_NE(empty.getInternalString(), KyString().getInternalString());
}

TEST_P(KyStringBodyTest, BlankAndCopyValue) {
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

TEST(KyStringBody, WideBlankIsKnownOnlyToMultiByteStrings) {
  const char* ideographicSpace = "\xE3\x80\x80";
  KyString single(ideographicSpace);
  EXPECT_FALSE(single.isBlank());
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
  EXPECT_TRUE(KyString(ideographicSpace).isBlank());
}

TEST(KyStringBody, KindStaysWhenTheLocaleChanges) {
  ScopedLocale c("C");
  KyString before("abc");
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
  KyString after("abc");
  EXPECT_TRUE(IsSingleByteString(before));
  EXPECT_TRUE(IsMultiByteString(after));
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
