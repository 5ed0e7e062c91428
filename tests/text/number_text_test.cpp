#include "kybase/text/number_text.h"

#include <gtest/gtest.h>

#include <locale.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <tuple>

#include "number_locale.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

struct Written {
  std::string text;
  int length;
};

Written Write(double value, const char* format = nullptr) {
  char buffer[1024];
  std::memset(buffer, 'X', sizeof buffer);
  const int length = KyDoubleToString(buffer, value, format);
  return {buffer, length};
}

struct Read {
  double value;
  long consumed;
  bool ok;
};

Read ReadText(const char* text) {
  char* end = nullptr;
  double value = -123;
  const bool ok = KyStringToDouble(text, end, value);
  return {value, end - text, ok};
}

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Runs `call` in the C locale, whatever the process's locale is.
template <typename Call>
auto InC(Call call) {
  locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
  locale_t previous = uselocale(c);
  auto result = call();
  uselocale(previous);
  freelocale(c);
  return result;
}

std::string PrintfInC(double value) {
  return InC([value] {
    char text[64];
    std::snprintf(text, sizeof text, "%.16g", value);
    return std::string(text);
  });
}

double StrtodInC(const std::string& text) {
  return InC([&text] { return std::strtod(text.c_str(), nullptr); });
}

// Random bit patterns (every exponent) mixed with ordinary decimal values.
double RandomDouble(std::mt19937_64& random) {
  if (random() % 2 == 0) {
    const std::uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }
  return static_cast<double>(static_cast<std::int64_t>(random() % 2000001) - 1000000) / 1000.0;
}

class NumberTextTest : public NumberLocaleTest {};

TEST_P(NumberTextTest, DefaultFormatWritesPointsAndExponents) {
  const std::tuple<double, const char*> cases[] = {
      {1.5, "1.5"}, {1e300, "1e+300"}, {-0.0, "-0"}, {1e-5, "1e-05"},
      {1e16, "1e+16"}, {1e15, "1000000000000000"}, {123456789012345678.0, "1.234567890123457e+17"},
  };
  for (const auto& [value, text] : cases) {
    const Written written = Write(value);
    EXPECT_EQ(written.text, text);
    EXPECT_EQ(written.length, static_cast<int>(std::strlen(text))) << text;
  }
}

TEST_P(NumberTextTest, SpecialValuesIgnoreTheFormat) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const char* format : {static_cast<const char*>(nullptr), "%f", "[%g]"}) {
    const Written texts[] = {Write(nan, format), Write(-nan, format), Write(kInf, format), Write(-kInf, format)};
    const Written expected[] = {{"NaN", 3}, {"NaN", 3}, {"Infinity", 8}, {"-Infinity", 9}};
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(texts[i].text == expected[i].text && texts[i].length == expected[i].length);
  }
}

TEST_P(NumberTextTest, CallerFormatsTurnEverythingBeforeTheExponentIntoPoints) {
  EXPECT_EQ(Write(1.5, "%.2f").text, "1.50");
  EXPECT_EQ(Write(1.5, "%8.3f").text, "...1.500");
  EXPECT_EQ(Write(2.5, "x%gy").text, ".2.5.");
  EXPECT_EQ(Write(12345.678, "%.3E").text, "1.235E+04");
  EXPECT_EQ(Write(1.5, "%e").text, "1.500000e+00");
  EXPECT_EQ(Write(-3.25, "%+.1f").text, "-3.2");
  // An "e" anywhere ends the scan, so what follows keeps the locale's separator.
  char separator[8];
  std::snprintf(separator, sizeof separator, "%.1f", 0.5);
  EXPECT_EQ(Write(1.5, "e%g").text, std::string("e1") + separator[1] + "5");
  // A text longer than any stack buffer of the formatter.
  const Written wide = Write(1e300, "%.300f");
  EXPECT_EQ(wide.length, 602);
  EXPECT_EQ(wide.text.substr(0, 4), "1000");
  EXPECT_EQ(wide.text.substr(301, 3), ".00");
}

// The default text is printf's in the C locale, and reads back as the C locale's strtod
// reads that text (sixteen digits need not give the same double back).
TEST_P(NumberTextTest, DefaultTextIsPrintfInTheCLocaleAndReadsBack) {
  std::mt19937_64 random(1234);
  for (int i = 0; i < 20000; ++i) {
    const double value = RandomDouble(random);
    const Written written = Write(value);
    const Read read = ReadText(written.text.c_str());
    ASSERT_EQ(read.consumed, written.length) << written.text;
    if (std::isnan(value)) {
      ASSERT_FALSE(read.ok);
      continue;
    }
    ASSERT_TRUE(read.ok) << written.text;
    ASSERT_TRUE(SameBits(read.value, StrtodInC(PrintfInC(value)))) << written.text;
    if (!std::isfinite(value)) continue;
    ASSERT_EQ(written.text, PrintfInC(value)) << std::hexfloat << value;
    // The explicit format takes the printf route and its scan.
    ASSERT_EQ(written.text, Write(value, "%.16g").text) << std::hexfloat << value;
    ASSERT_EQ(written.length, static_cast<int>(written.text.size()));
  }
}

TEST_P(NumberTextTest, ReadsTexts) {
  const std::tuple<const char*, double, long> cases[] = {
      {"0.5", 0.5, 3}, {"1.5e", 1.5, 4}, {"1.5E+", 1.5, 5},
      {"1.5abc", 1.5, 3}, {".5", 0.5, 2}, {"-.5", -0.5, 3},
      {"+.5", 0.5, 3}, {"5.", 5.0, 2}, {"12.5e3", 12500.0, 6},
      {"-0.25", -0.25, 5}, {"1.5e-2x", 0.015, 6}, {"2.5e 3", 2.5, 4},
      {".", 0.0, 1}, {"-.e5", 0.0, 4}, {"0.1000000000000000055511151231257827021181583404541015625", 0.1, 57},
      {"123456789012345678901234567890.5", 123456789012345678901234567890.5, 32},
      {"4.9406564584124654e-324", 5e-324, 23}, {"1.0e400", kInf, 7},
      {"1.5e99999999999", kInf, 15}, {"-1.5e-99999999999", -0.0, 17}, {"0.0e99999999999", 0.0, 15},
      {"2.4703282292062327e-324", 0.0, 23},
      // Texts without a point go to the runtime.
      {"1e5", 1e5, 3},         {"7e", 7.0, 1},    {"-0", -0.0, 2},    {"Infinity", kInf, 8},
      {"-Infinity", -kInf, 9}, {"abc", 0.0, 0},   {"", 0.0, 0},       {"  42", 42.0, 4},
      {"0x10", 16.0, 4},       {"+12;", 12.0, 3}, {"1e400", kInf, 5}, {"1e-400", 0.0, 6},
  };
  for (const auto& [text, value, consumed] : cases) {
    const Read read = ReadText(text);
    EXPECT_TRUE(read.ok) << text;
    EXPECT_TRUE(SameBits(read.value, value)) << text << " read " << read.value;
    EXPECT_EQ(read.consumed, consumed) << text;
  }
  // A decimal comma is the runtime's business: only a comma locale reads past it.
  const char* text = "12,5";
  char* end = nullptr;
  const double expected = std::strtod(text, &end);
  const Read comma = ReadText(text);
  EXPECT_EQ(comma.value, expected);
  EXPECT_EQ(comma.consumed, end - text);
  EXPECT_EQ(comma.consumed, std::strcmp(localeconv()->decimal_point, ",") == 0 ? 4 : 2);
  // Only NaN fails.
  EXPECT_FALSE(ReadText("NaN").ok);
  EXPECT_FALSE(ReadText("-nan(123)").ok);
}

INSTANTIATE_TEST_SUITE_P(Locales, NumberTextTest, testing::ValuesIn(NumberTestLocales()), LocaleTestName);

// A radix of two bytes (U+066B) becomes two points, as the printf route makes it; such
// a text does not read back.
TEST(NumberTextWideRadix, KeepsThePrintfBytes) {
  const char* name = std::getenv("KY_TEST_WIDE_RADIX_LOCALE");
  if (name == nullptr) GTEST_SKIP() << "runs in number_text_locales, which names a locale with a two-byte radix";
  if (!EnterLocale(name)) GTEST_SKIP() << "locale " << name << " is not available (localedef could not build it)";
  const Written written = Write(1.5);
  const Written exponent = Write(-1e300);
  const Read read = ReadText("2.5");
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(written.text, "1..5");
  EXPECT_EQ(written.length, 4);
  EXPECT_EQ(exponent.text, "-1e+300");
  EXPECT_EQ(read.value, 2.5);
}

}  // namespace
