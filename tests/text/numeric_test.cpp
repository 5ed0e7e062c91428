#include "kybase/text/numeric.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cstring>
#include <string>
#include <tuple>

#include "number_locale.h"

namespace {

std::string Text(const KyNumeric& value) {
  char buffer[128];
  value.get(buffer, sizeof buffer);
  return buffer;
}

std::string Text(const char* text) { return Text(KyNumeric(text)); }

std::string Repeat(char c, int count) { return std::string(static_cast<std::size_t>(count), c); }

TEST(Numeric, GetWritesItsOwnTexts) {
  const std::tuple<const char*, const char*> cases[] = {
      {"0.5", ".5"},   {"-0.5", "-.5"},   {"100", "100"}, {"1e3", "1000"}, {"-1e3", "-100"},   {"12.5", "12.5"},
      {"-12.5", "-12.5"}, {"1.50", "1.5"}, {"1e-5", ".1e-4"}, {"1.5e-3", ".15e-2"}, {"0.05", ".05"}, {"0.001", ".001"},
      {"0", ".0"},     {"0.0", "0"},      {"-0", ".0"},   {" + 7", "7"},   {"5.", "5"},       {"123.456e2", "12345.6"},
      {"1e200", ".1e201"}, {"0001.25", "1.25"}};
  for (const auto& [text, expected] : cases) EXPECT_EQ(Text(text), expected) << text;
  const std::pair<long, const char*> longs[] = {
      {100L, "100"}, {-42L, "-42"}, {0L, "0"}, {LONG_MIN, "-9223372036854775808"}};
  for (const auto& [value, text] : longs) EXPECT_EQ(Text(KyNumeric(value)), text);
  EXPECT_EQ(Text(KyNumeric()), "0");
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
      {"1.50", "==", "1.5", true},  {100L, "==", "1e2", true},    {100L, "==", "10", false},  {"5", "==", "-5", false},
      {"1.25", "==", "1.2", false}, {"0.05", "==", "0.07", true}, {-5L, ">", -3L, true},      {-5L, "<", -3L, false},
      {5L, ">", -3L, true},         {-3L, ">", 5L, false},        {3L, "<", 5L, true},
      {"12.5", ">", "12.25", true},
      {"0.5", ">", "1e-5", true},   {5L, ">=", 5L, true},         {5L, "<=", 5L, true},       {5L, ">", 5L, false},
      {5L, "<", 5L, false},         {"1e2", ">=", 100L, false},   {"1e2", "<=", 100L, true},  {"1e2", "<", 100L, false},
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
      {"0.1", '-', "0.3", "-.2"},
      {"5", '-', "-3", "8"}, {"-5", '-', "3", "-8"}, {"-5", '-', "-3", "-2"}, {"-3", '-', "-5", "2"},
      {"10", '-', "0.5", "9.5"}, {"7", '-', "7", "0"}, {"1.1e-5", '-', "1e-5", ".1e-5"}, {"12", '*', "12", "144"},
      {"1.5", '*', "1.5", "22.5"}, {"0.5", '*', "0.5", ".25"}, {"0.05", '*', "0.5", ".025"}, {"-2", '*', "3", "-6"},
      {"-2", '*', "-3", "6"}, {"100", '*', "2", "200"}, {"1.5", '*', "0.5", "7.5"}, {"0", '*', "123", "0"},
      {"1e-5", '*', "1e-5", ".1"},
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
  EXPECT_EQ(Text(KyNumeric("-1e30") - KyNumeric("1e-20")), "0");
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
  for (const auto& [value, integer] : cases) {
    EXPECT_EQ(value.isInteger(), integer) << Text(value);
    EXPECT_EQ(value.isReal(), !integer) << Text(value);
  }
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
  KyNumeric copy;
  copy.set(value);
  EXPECT_EQ(Text(copy), "2.5");
}

class NumericLocaleTest : public NumberLocaleTest {};

TEST_P(NumericLocaleTest, ConversionsReadThePointAndRestoreTheLocale) {
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

INSTANTIATE_TEST_SUITE_P(Locales, NumericLocaleTest, testing::ValuesIn(NumberTestLocales()), LocaleTestName);

}  // namespace
