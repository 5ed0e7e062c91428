// Number text and KyNumeric on arbitrary bytes. The whole input, with a terminator
// added, goes to KyStringToDouble, whose result and end must match a reading by strtod
// alone; the value is written back and must match "%.16g". The input's first lines are
// then given to KyNumeric::set, and what it accepts goes through the arithmetic, the
// comparisons, the conversions and get into buffers of every small size, each buffer
// exactly as large as the size given.
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "kybase/text/number_text.h"
#include "kybase/text/numeric.h"

namespace {

void Check(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "numeric_fuzz: %s\n", what);
    std::abort();
  }
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The reading step by step, with strtod on a rewritten text that has no point.
bool ReferenceRead(const char* text, const char*& end, double& result) {
  const char* p = text;
  if (*p == '+' || *p == '-') ++p;
  while (IsDigit(*p)) ++p;
  const std::size_t intLen = static_cast<std::size_t>(p - text);
  if (*p != '.') {
    char* stop = nullptr;
    result = std::strtod(text, &stop);
    end = stop;
    return !std::isnan(result);
  }
  const char* fraction = ++p;
  while (IsDigit(*p)) ++p;
  const std::size_t fracLen = static_cast<std::size_t>(p - fraction);
  long long exponent = 0;
  if (std::tolower(static_cast<unsigned char>(*p)) == 'e') {
    const char* expText = ++p;
    if (*p == '+' || *p == '-') ++p;
    while (IsDigit(*p)) ++p;
    const std::string digits(expText, p);
    exponent = std::strtoll(digits.c_str(), nullptr, 10);
    if (exponent > INT_MAX) exponent = INT_MAX;
    if (exponent < INT_MIN) exponent = INT_MIN;
  }
  end = p;
  const std::string rewritten = std::string(text, intLen) + std::string(fraction, fracLen) + "e" +
                                std::to_string(exponent - static_cast<long long>(fracLen));
  result = std::strtod(rewritten.c_str(), nullptr);
  return !std::isnan(result);
}

void CheckReading(const char* text) {
  char* end = nullptr;
  double value = 0;
  const bool ok = KyStringToDouble(text, end, value);
  const char* expectedEnd = nullptr;
  double expected = 0;
  const bool expectedOk = ReferenceRead(text, expectedEnd, expected);
  Check(ok == expectedOk, "KyStringToDouble result flag differs from strtod");
  Check(end == expectedEnd, "KyStringToDouble end differs from strtod");
  Check(std::isnan(value) ? std::isnan(expected) : std::memcmp(&value, &expected, sizeof value) == 0,
        "KyStringToDouble value differs from strtod");

  char written[32];
  const int length = KyDoubleToString(written, value, nullptr);
  Check(length == static_cast<int>(std::strlen(written)), "KyDoubleToString length");
  if (std::isfinite(value)) {
    char printed[32];
    std::snprintf(printed, sizeof printed, "%.16g", value);
    Check(std::strcmp(written, printed) == 0, "KyDoubleToString differs from %.16g");
  }
}

void CheckText(const KyNumeric& value) {
  for (long size = 1; size <= 64; ++size) {
    std::unique_ptr<char[]> buffer(new char[static_cast<std::size_t>(size)]);
    value.get(buffer.get(), size);
    for (long i = 0; i < size && buffer[i] != '\0'; ++i)
      Check(IsDigit(buffer[i]) || std::strchr("-.e", buffer[i]) != nullptr, "get wrote a stray character");
  }
}

void Exercise(KyNumeric a, const KyNumeric& b, short scale) {
  CheckText(a);
  Check(a == a && a >= a && a <= a && !(a < a) && !(a > a), "a value differs from itself");
  const bool equal = a == b;
  const bool greater = a > b;
  const bool less = a < b;
  Check(!(equal && (greater || less)) && !(greater && less), "comparisons contradict each other");
  CheckText(a + b);
  CheckText(a - b);
  CheckText(a * b);
  CheckText(a + 7L);
  CheckText(a.abs());
  static_cast<void>(a.isInteger());
  static_cast<void>(a.getScale());
  static_cast<void>(static_cast<long>(a));
  static_cast<void>(static_cast<double>(a));
  KyNumeric scaled(a);
  CheckText(scaled.setScale(scale));
  a.negate();
  CheckText(a * a);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  CheckReading(input.c_str());

  const std::size_t firstEnd = input.find('\n');
  const std::string first = input.substr(0, firstEnd);
  const std::string rest = firstEnd == std::string::npos ? "" : input.substr(firstEnd + 1);
  const std::size_t secondEnd = rest.find('\n');
  const std::string second = rest.substr(0, secondEnd);
  const std::string third = secondEnd == std::string::npos ? "" : rest.substr(secondEnd + 1);
  CheckReading(first.c_str());

  KyNumeric a;
  KyNumeric b;
  if (!a.set(first.c_str())) return 0;
  if (!b.set(second.c_str())) b = a;
  const short scale = static_cast<short>(std::strtol(third.c_str(), nullptr, 10));
  Exercise(a, b, scale);
  Exercise(b, a, static_cast<short>(-scale));
  return 0;
}
