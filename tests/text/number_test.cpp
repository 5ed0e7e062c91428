// KyNumeric and the double <-> text conversions, under "C" and under the locales named
// in KY_TEST_LOCALES (comma separated). The number_locales test sets it, together with a
// LOCPATH that holds locales built by localedef at test time; a locale that could not be
// built makes its cases skip and say why.
#include <gtest/gtest.h>
#include <locale.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "kybase/text/number_text.h"
#include "kybase/text/numeric.h"

namespace {

std::vector<std::string> NumberTestLocales() {
  std::vector<std::string> names{"C"};
  std::istringstream listed(std::getenv("KY_TEST_LOCALES") != nullptr ? std::getenv("KY_TEST_LOCALES") : "");
  for (std::string name; std::getline(listed, name, ',');) names.push_back(name);
  return names;
}

// Sets the whole locale for one case and puts "C" back after it.
class NumberLocales : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (std::setlocale(LC_ALL, GetParam().c_str()) == nullptr)
      GTEST_SKIP() << "locale " << GetParam() << " is not available (localedef could not build it into LOCPATH)";
  }
  void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

INSTANTIATE_TEST_SUITE_P(Locales, NumberLocales, testing::ValuesIn(NumberTestLocales()),
                         [](const testing::TestParamInfo<std::string>& info) {
                           std::string name = info.param;
                           for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                           return name;
                         });

constexpr double kInf = std::numeric_limits<double>::infinity();

struct Written { std::string text; int length; };

Written Write(double value, const char* format = nullptr) {
  char buffer[1024];
  std::memset(buffer, 'X', sizeof buffer);
  const int length = KyDoubleToString(buffer, value, format);
  return {buffer, length};
}

struct Read { double value; long consumed; bool ok; };

Read ReadText(const char* text) {
  char* end = nullptr;
  double value = -123;
  const bool ok = KyStringToDouble(text, end, value);
  return {value, end - text, ok};
}

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// printf's "%.16g" text of a value and what strtod reads back from it, both in this
// thread's C locale whatever the process's locale is.
std::pair<std::string, double> InCLocale(double value) {
  const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
  const locale_t previous = uselocale(c);
  char text[64];
  std::snprintf(text, sizeof text, "%.16g", value);
  const double read = std::strtod(text, nullptr);
  uselocale(previous);
  freelocale(c);
  return {text, read};
}

TEST_P(NumberLocales, SpecialValuesIgnoreTheFormat) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const char* format : {static_cast<const char*>(nullptr), "%f", "[%g]"}) {
    const Written texts[] = {Write(nan, format), Write(-nan, format), Write(kInf, format), Write(-kInf, format)};
    const Written expected[] = {{"NaN", 3}, {"NaN", 3}, {"Infinity", 8}, {"-Infinity", 9}};
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(texts[i].text == expected[i].text && texts[i].length == expected[i].length);
  }
}

TEST_P(NumberLocales, CallerFormatsTurnEverythingBeforeTheExponentIntoPoints) {
  const std::tuple<double, const char*, const char*> cases[] = {
      {1.5, "%.2f", "1.50"}, {1.5, "%8.3f", "...1.500"}, {2.5, "x%gy", ".2.5."}, {12345.678, "%.3E", "1.235E+04"},
      {1.5, "%e", "1.500000e+00"}, {-3.25, "%+.1f", "-3.2"}};
  for (const auto& [value, format, text] : cases) EXPECT_EQ(Write(value, format).text, text) << format;
  // An "e" anywhere ends the scan, so what follows keeps the locale's separator.
  EXPECT_EQ(Write(1.5, "e%g").text, std::string("e1") + localeconv()->decimal_point + "5");
  // A text longer than any stack buffer of the formatter.
  const Written wide = Write(1e300, "%.300f");
  EXPECT_EQ(wide.length, 602);
  EXPECT_EQ(wide.text.substr(0, 4), "1000");
  EXPECT_EQ(wide.text.substr(301, 3), ".00");
}

// The default text is printf's in the C locale, and reads back as the C locale's strtod
// reads that text (sixteen digits need not give the same double back).
TEST_P(NumberLocales, DefaultTextIsPrintfInTheCLocaleAndReadsBack) {
  std::mt19937_64 random(1234);
  const double chosen[] = {1.5, 1e300, -0.0, 1e-5, 1e16, 1e15, 123456789012345678.0};
  for (int i = 0; i < 20000; ++i) {
    // Random bit patterns (every exponent) mixed with ordinary decimal values.
    const std::uint64_t bits = random();
    double value = static_cast<double>(static_cast<std::int64_t>(bits % 2000001) - 1000000) / 1000.0;
    if (i < 7)
      value = chosen[i];
    else if (i % 2 == 0)
      std::memcpy(&value, &bits, sizeof value);
    const Written written = Write(value);
    const auto [printed, reread] = InCLocale(value);
    const Read read = ReadText(written.text.c_str());
    ASSERT_EQ(read.consumed, written.length) << written.text;
    if (std::isnan(value)) {
      ASSERT_FALSE(read.ok);
      continue;
    }
    ASSERT_TRUE(read.ok) << written.text;
    ASSERT_TRUE(SameBits(read.value, reread)) << written.text;
    if (!std::isfinite(value)) continue;
    ASSERT_EQ(written.text, printed) << std::hexfloat << value;
    // The explicit format takes the printf route and its scan.
    ASSERT_EQ(written.text, Write(value, "%.16g").text) << std::hexfloat << value;
  }
}

TEST_P(NumberLocales, ReadsTexts) {
  const std::tuple<const char*, double, long> cases[] = {
      {"0.5", 0.5, 3}, {"1.5e", 1.5, 4}, {"1.5E+", 1.5, 5}, {"1.5abc", 1.5, 3}, {".5", 0.5, 2}, {"-.5", -0.5, 3},
      {"+.5", 0.5, 3}, {"5.", 5.0, 2}, {"12.5e3", 12500.0, 6}, {"-0.25", -0.25, 5}, {"1.5e-2x", 0.015, 6},
      {"2.5e 3", 2.5, 4}, {".", 0.0, 1}, {"-.e5", 0.0, 4},
      {"0.1000000000000000055511151231257827021181583404541015625", 0.1, 57},
      {"123456789012345678901234567890.5", 123456789012345678901234567890.5, 32},
      {"4.9406564584124654e-324", 5e-324, 23}, {"1.0e400", kInf, 7}, {"1.5e99999999999", kInf, 15},
      {"-1.5e-99999999999", -0.0, 17}, {"0.0e99999999999", 0.0, 15}, {"2.4703282292062327e-324", 0.0, 23},
      // Texts without a point go to the runtime.
      {"1e5", 1e5, 3}, {"7e", 7.0, 1}, {"-0", -0.0, 2}, {"Infinity", kInf, 8}, {"-Infinity", -kInf, 9}, {"abc", 0.0, 0},
      {"", 0.0, 0}, {"  42", 42.0, 4}, {"0x10", 16.0, 4}, {"+12;", 12.0, 3}, {"1e400", kInf, 5}, {"1e-400", 0.0, 6},
  };
  for (const auto& [text, value, consumed] : cases) {
    const Read read = ReadText(text);
    EXPECT_TRUE(read.ok) << text;
    EXPECT_TRUE(SameBits(read.value, value)) << text << " read " << read.value;
    EXPECT_EQ(read.consumed, consumed) << text;
  }
  // A decimal comma is the runtime's business: only a comma locale reads past it.
  const bool commaLocale = std::strcmp(localeconv()->decimal_point, ",") == 0;
  const Read comma = ReadText("12,5");
  EXPECT_EQ(comma.value, commaLocale ? 12.5 : 12.0);
  EXPECT_EQ(comma.consumed, commaLocale ? 4 : 2);
  // Only NaN fails.
  EXPECT_FALSE(ReadText("NaN").ok);
  EXPECT_FALSE(ReadText("-nan(123)").ok);
}

// A radix of two bytes (U+066B) becomes two points, as the printf route makes it; such
// a text does not read back.
TEST(NumberTextWideRadix, KeepsThePrintfBytes) {
  const char* name = std::getenv("KY_TEST_WIDE_RADIX_LOCALE");
  if (name == nullptr) GTEST_SKIP() << "runs in number_locales, which names a locale with a two-byte radix";
  if (std::setlocale(LC_ALL, name) == nullptr)
    GTEST_SKIP() << "locale " << name << " is not available (localedef could not build it)";
  const Written written = Write(1.5);
  const Written exponent = Write(-1e300);
  const Read read = ReadText("2.5");
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(written.text, "1..5");
  EXPECT_EQ(written.length, 4);
  EXPECT_EQ(exponent.text, "-1e+300");
  EXPECT_EQ(read.value, 2.5);
}


std::string Text(const KyNumeric& value) {
  char buffer[128];
  value.get(buffer, sizeof buffer);
  return buffer;
}

std::string Repeat(char c, int count) { return std::string(static_cast<std::size_t>(count), c); }

TEST(Numeric, GetWritesItsOwnTexts) {
  const std::tuple<KyNumeric, const char*> cases[] = {
      {"0.5", ".5"},   {"-0.5", "-.5"},   {"100", "100"}, {"1e3", "1000"}, {"-1e3", "-100"},   {"12.5", "12.5"},
      {"-12.5", "-12.5"}, {"1.50", "1.5"}, {"1e-5", ".1e-4"}, {"1.5e-3", ".15e-2"}, {"0.05", ".05"}, {"0.001", ".001"},
      {"0", ".0"},     {"0.0", "0"},      {"-0", ".0"},   {" + 7", "7"},   {"5.", "5"},       {"123.456e2", "12345.6"},
      {"1e200", ".1e201"}, {"0001.25", "1.25"},
      {100L, "100"}, {-42L, "-42"}, {0L, "0"}, {LONG_MIN, "-9223372036854775808"}, {KyNumeric(), "0"}};
  for (const auto& [value, expected] : cases) EXPECT_EQ(Text(value), expected) << expected;
}

TEST(Numeric, SmallBuffersAreCutAndNeverOverrun) {
  for (const char* value : {"-12.5", "1e50", "-1e-5", "123456", "-0.05", "-1e3"}) {
    for (long size = 1; size <= 10; ++size) {
      char buffer[16];
      std::memset(buffer, '#', sizeof buffer);
      KyNumeric(value).get(buffer, size);
      for (long i = size; i < 16; ++i) ASSERT_EQ(buffer[i], '#') << value << " size " << size;
    }
  }
  char buffer[8];
  std::memset(buffer, '#', sizeof buffer);
  KyNumeric("123456").get(buffer, 3);
  EXPECT_EQ(std::string(buffer, 4), ".12#");  // the point first, then cut, unterminated
  KyNumeric("1e3").get(buffer, 4);
  EXPECT_EQ(std::string(buffer, 4), ".1e4");
  KyNumeric("1.5").get(nullptr, 4);
}

// A text is checked whole before anything changes; 48 digits are the most a value holds.
TEST(Numeric, TextsAreCheckedBeforeAnythingChanges) {
  const std::string fraction48 = "0." + Repeat('0', 47) + "1", fraction49 = "0." + Repeat('0', 48) + "1";
  const std::string digits48 = "1" + Repeat('2', 46) + "3", digits49 = digits48 + "4", led = "0000" + digits48;
  const char* valid[] = {"0",      "-0",       "0.0",     "5.",              " -5",          "- 5",       "\t+1.5e+3",
                         "1E-5",   "000001",   "1e-32769", "1e32766",        fraction48.c_str(), led.c_str()};
  for (const char* text : valid) EXPECT_TRUE(KyNumeric().set(text)) << text;
  const char* invalid[] = {"",     "-",  "00",   "0e5", "0.", ".",        "1e",      "1e+",             "1.5x",
                           "1 ",   "1..5", "+-1", "e5", "1e-32770", "1e32767", fraction49.c_str(), digits49.c_str()};
  for (const char* text : invalid) {
    KyNumeric value("-7.25");
    EXPECT_FALSE(value.set(text)) << text;
    EXPECT_EQ(Text(value), "-7.25") << text;
  }
  KyNumeric value(digits48.c_str());
  EXPECT_EQ(value.getPrecision(), 48);
  EXPECT_EQ(Text(value), digits48);
  EXPECT_TRUE(value.set(static_cast<const char*>(nullptr)));
  EXPECT_EQ(Text(value), "0");
  EXPECT_EQ(Text(KyNumeric("junk")), "0");
}

// Equality ignores trailing zeros but not the point; the zero test reads only the first
// digit; the digit texts decide among equal point positions ("1" ends before "100").
TEST(Numeric, ComparisonsKeepTheirOddities) {
  const std::tuple<KyNumeric, const char*, KyNumeric, bool> cases[] = {
      {"1.50", "==", "1.5", true}, {100L, "==", "1e2", true}, {100L, "==", "10", false}, {"5", "==", "-5", false},
      {"1.25", "==", "1.2", false}, {"0.05", "==", "0.07", true}, {-5L, ">", -3L, true}, {-5L, "<", -3L, false},
      {5L, ">", -3L, true}, {-3L, ">", 5L, false}, {3L, "<", 5L, true}, {"12.5", ">", "12.25", true},
      {"0.5", ">", "1e-5", true}, {5L, ">=", 5L, true}, {5L, "<=", 5L, true}, {5L, ">", 5L, false},
      {5L, "<", 5L, false}, {"1e2", ">=", 100L, false}, {"1e2", "<=", 100L, true}, {"1e2", "<", 100L, false},
  };
  for (const auto& [a, opText, b, holds] : cases) {
    const std::string op = opText;
    const bool got = op == "==" ? a == b : op == ">" ? a > b : op == "<" ? a < b : op == ">=" ? a >= b : a <= b;
    EXPECT_EQ(got, holds) << Text(a) << " " << op << " " << Text(b);
  }
  for (const KyNumeric& zero : {KyNumeric("0.05"), KyNumeric("0"), KyNumeric()}) EXPECT_TRUE(zero.isZero());
  EXPECT_FALSE(KyNumeric("0.5").isZero());
}

TEST(Numeric, ArithmeticFollowsTheSigns) {
  const std::tuple<const char*, char, const char*, const char*> cases[] = {
      {"1.5", '+', "2.25", "3.75"}, {"0.5", '+', "0.5", "1"}, {"99", '+', "1", "100"}, {"-3", '+', "5", "2"},
      {"3", '+', "-5", "-2"}, {"-5", '+', "3", "-2"}, {"5", '+', "-3", "2"}, {"-2", '+', "-3", "-5"},
      {"1e-5", '+', "1e-5", ".2e-4"}, {"1e3", '+', "1e3", "2000"}, {"-0.01", '+', "-0.02", ".03"},
      {"0.1", '-', "0.3", "-.2"}, {"5", '-', "-3", "8"}, {"-5", '-', "3", "-8"}, {"-5", '-', "-3", "-2"},
      {"-3", '-', "-5", "2"}, {"10", '-', "0.5", "9.5"}, {"7", '-', "7", "0"}, {"1.1e-5", '-', "1e-5", ".1e-5"},
      {"12", '*', "12", "144"}, {"1.5", '*', "1.5", "22.5"}, {"0.5", '*', "0.5", ".25"}, {"0.05", '*', "0.5", ".025"},
      {"-2", '*', "3", "-6"}, {"-2", '*', "-3", "6"}, {"100", '*', "2", "200"}, {"1.5", '*', "0.5", "7.5"},
      {"0", '*', "123", "0"}, {"1e-5", '*', "1e-5", ".1"},
  };
  for (const auto& [left, op, right, expected] : cases) {
    KyNumeric a(left);
    const KyNumeric b(right);
    const KyNumeric result = op == '+' ? a + b : op == '-' ? a - b : a * b;
    EXPECT_EQ(Text(result), expected) << left << ' ' << op << ' ' << right;
  }
  KyNumeric value("1.5");
  EXPECT_EQ(Text(value + 2L), "3.5");
  EXPECT_EQ(Text(value), "1.5");
}

TEST(Numeric, ResultsKeepFortyEightPlaces) {
  // A sum that would need more places is lost; a product keeps its first 48 digits.
  KyNumeric whole(Repeat('9', 24).c_str());
  const KyNumeric tiny(("0." + Repeat('0', 23) + "1").c_str());
  EXPECT_EQ(Text(whole + tiny), "0");
  EXPECT_FALSE((whole + tiny).isNegative());
  EXPECT_EQ(Text(whole - tiny), "0");
  EXPECT_EQ(Text(whole + KyNumeric(("0." + Repeat('0', 22) + "1").c_str())),
            Repeat('9', 24) + "." + Repeat('0', 22) + "1");
  KyNumeric nines(Repeat('9', 30).c_str());
  const KyNumeric product = nines * nines;  // 10^60 - 2 * 10^30 + 1
  EXPECT_EQ(product.getPrecision(), 48);
  EXPECT_EQ(Text(product), Repeat('9', 29) + "8" + Repeat('0', 30));
  KyNumeric smallest(("0." + Repeat('0', 47) + "1").c_str());
  const KyNumeric vanished = smallest * smallest;
  EXPECT_EQ(vanished.getPrecision(), 48);
  EXPECT_TRUE(vanished.isZero());
}

TEST(Numeric, IntegerMeansAThirtyTwoBitLong) {
  const std::tuple<KyNumeric, bool> cases[] = {
      {KyNumeric(), false}, {"0", false},         {123L, true},           {"12.5", false},         {2147483647L, true},
      {2147483648L, false}, {-2147483647L, true}, {"2147483646.5", true}, {"2147483647.5", false}, {999999999L, true},
      {"1e9", true},        {"5e9", false},       {"1e-5", false},         {"0.0e5", false},
  };
  for (const auto& [value, integer] : cases) EXPECT_EQ(value.isInteger(), integer) << Text(value);
  // Not a test for a fraction: a whole number too big for 32 bits is real too.
  EXPECT_TRUE(KyNumeric("5e9").isReal());
  EXPECT_FALSE(KyNumeric(123L).isReal());
}

// setScale moves the point without rounding; a point beyond 48 places leaves zero.
TEST(Numeric, AccessorsScaleAndSign) {
  const std::tuple<KyNumeric, short, short> cases[] = {{"12.5", 3, 1}, {"1e3", 1, -3}, {100L, 3, 0}, {"0.05", 2, 2},
      {KyNumeric(), 0, 0}};
  for (const auto& [value, precision, scale] : cases) {
    EXPECT_EQ(value.getPrecision(), precision) << Text(value);
    EXPECT_EQ(value.getScale(), scale) << Text(value);
  }
  EXPECT_EQ(Text(KyNumeric("1.25").setScale(1)), "12.5");
  EXPECT_EQ(Text(KyNumeric("1.25").setScale(0)), "125");
  EXPECT_EQ(Text(KyNumeric("5").setScale(3)), ".005");
  KyNumeric far("5");
  far.setScale(SHRT_MAX);
  EXPECT_EQ(far.getPrecision(), 48);
  EXPECT_TRUE(far.isZero());
  EXPECT_EQ(Text(KyNumeric("5").setScale(SHRT_MIN)), "5");
  KyNumeric value("-2.5");
  EXPECT_TRUE(value.isNegative());
  EXPECT_EQ(Text(value.abs()), "2.5");
  value.negate();
  EXPECT_EQ(Text(value), "2.5");
}

TEST_P(NumberLocales, ConversionsReadThePointAndRestoreTheLocale) {
  const std::string before = std::setlocale(LC_NUMERIC, nullptr);
  EXPECT_EQ(static_cast<long>(KyNumeric("12.75")), 12L);
  EXPECT_EQ(static_cast<double>(KyNumeric("12.75")), 12.75);
  EXPECT_EQ(static_cast<double>(KyNumeric("-0.5")), -0.5);
  EXPECT_EQ(static_cast<long>(KyNumeric("1e61")), 0L);
  EXPECT_EQ(static_cast<double>(KyNumeric("1e61")), 1e61);
  EXPECT_EQ(static_cast<long>(KyNumeric("-1e3")), -100L);
  EXPECT_EQ(static_cast<long>(KyNumeric(Repeat('1', 20).c_str())), LONG_MAX);
  EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), before);
}

}  // namespace
