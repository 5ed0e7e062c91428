#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <sstream>
#include <string>
#include <tuple>

#include <unistd.h>

#include "kybase/text/kystring.h"
#include "text/kystring_locale.h"

namespace {

using KyStringStreamTest = KyStringKindTest;
KY_INSTANTIATE_KINDS(KyStringStreamTest);

std::string Quoted(const KyString& s) {
  std::ostringstream out;
  s.writeQuoted(out);
  return out.str();
}

KyString ReadQuoted(const std::string& text) {
  std::istringstream in(text);
  KyString s("old");
  s.readQuoted(in);
  return s;
}

// Points LOCPATH at a directory for its lifetime.
class ScopedLocPath {
 public:
  explicit ScopedLocPath(const std::string& dir) : had_(std::getenv("LOCPATH") != nullptr) {
    if (had_) saved_ = std::getenv("LOCPATH");
    setenv("LOCPATH", dir.c_str(), 1);
  }
  ~ScopedLocPath() { had_ ? setenv("LOCPATH", saved_.c_str(), 1) : unsetenv("LOCPATH"); }

 private:
  bool had_;
  std::string saved_;
};

TEST_P(KyStringStreamTest, QuotedRoundTripsAndReadingRules) {
  for (const char* text : {"a\"b\\", "", "plain", "line\nend\t", "\\\\\"\""})
    EXPECT_STREQ(ReadQuoted(Quoted(KyString(text))).getValue(), text) << Quoted(KyString(text));
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
    std::istringstream in(input);
    KyString s("old");
    s.readQuoted(in);
    EXPECT_STREQ(s.getValue(), text) << input;
    EXPECT_EQ(in.fail(), failed) << input;
  }
  std::istringstream in("\"one\" rest");
  KyString s;
  s.readQuoted(in);
  EXPECT_EQ(in.get(), ' ');  // nothing behind the closing quote was read
}

// A token ends at a blank or a zero byte; one that runs into the end of the input is
// kept and fails the stream; the stream's flags stay; widths apply to both writers.
TEST_P(KyStringStreamTest, TokensFlagsAndWidths) {
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
  std::istringstream empty("");
  empty >> s;
  EXPECT_TRUE(s.isEmpty() && empty.fail());
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
    EXPECT_EQ(s.getLength(), n);
    EXPECT_EQ(std::string(ReadQuoted("\"" + token + "\"").getValue()), token);
  }
}

TEST(KyStringStream, OtherKindReadsEmptyAndMultiByteTextReadsBackWhole) {
  ScopedLocale c("C");
  KyString single("old");
  ScopedLocale utf8("C.UTF-8");
  if (!utf8.entered()) GTEST_SKIP() << "C.UTF-8 is not installed";
  std::istringstream in("token");
  in >> single;
  EXPECT_TRUE(single.isEmpty());
  EXPECT_TRUE(IsSingleByteString(single));
  KyString s("\xC3\xA9t\xC3\xA9 \"x\"");
  KyString back = ReadQuoted(Quoted(s));
  EXPECT_TRUE(back == s);
  EXPECT_EQ(back.getLength(), 7u);
}

// Big5 has characters whose second byte is 0x5C, the backslash. The locale is built
// with localedef into the build tree, and LOCPATH points there while the case runs.
TEST(KyStringStream, BackslashByteInsideAMultiByteCharacter) {
  char self[4096] = {};
  ASSERT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
  std::string dir = self;
  dir = dir.substr(0, dir.rfind('/') + 1) + "kystring_test_locales";
  // localedef may report warnings and still build the locale.
  const std::string build = "mkdir -p " + dir + " && localedef -i zh_TW -f BIG5 " + dir + "/zh_TW.BIG5";
  (void)!std::system((build + " >/dev/null 2>&1").c_str());
  ScopedLocPath path(dir);
  ScopedLocale big5("zh_TW.BIG5");
  if (!big5.entered()) GTEST_SKIP() << "no Big5 locale: localedef could not build zh_TW.BIG5 into " << dir;
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

}  // namespace
