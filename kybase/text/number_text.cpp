#include "kybase/text/number_text.h"

#include <langinfo.h>

#include <cctype>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>

namespace {

constexpr const char* kDefaultFormat = "%.16g";
// The longest "%.16g" text, "-1.234567890123456e-308", has 23 characters.
constexpr int kDefaultTextRoom = 32;
// Texts of a caller's format up to this size are formed on the stack.
constexpr int kLocalRoom = 256;
// The rewritten number is formed on the stack up to this size.
constexpr std::size_t kRewriteRoom = 128;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsSign(char c) { return c == '+' || c == '-'; }

bool IsExponentLetter(char c) { return std::tolower(static_cast<unsigned char>(c)) == 'e'; }

int WriteFixed(char* buffer, const char* text) {
  const std::size_t length = std::strlen(text);
  std::memcpy(buffer, text, length + 1);
  return static_cast<int>(length);
}

// A digit and the signs pass the scan; an exponent letter ends it; anything else
// (a decimal comma, a blank, a letter the format added) becomes ".".
void PointForSeparators(char* text) {
  for (; *text != '\0'; ++text) {
    if (IsDigit(*text) || IsSign(*text)) continue;
    if (IsExponentLetter(*text)) return;
    *text = '.';
  }
}

// True when the locale's radix is a single byte that the scan turns into ".". Then
// "%.16g" differs from its C-locale text in that byte alone (printf groups digits only
// when asked), so the locale-free formatter writes the same bytes as printf and the
// scan together. A radix of several bytes becomes several points, which only the
// printf route reproduces.
bool RadixBecomesOnePoint() {
  const char* radix = nl_langinfo(RADIXCHAR);
  return radix[0] != '\0' && radix[1] == '\0' && !IsDigit(radix[0]) && !IsSign(radix[0]) && !IsExponentLetter(radix[0]);
}

int FormatAndScan(char* buffer, double value, const char* format) {
  char local[kLocalRoom];
  const int length = std::snprintf(local, sizeof local, format, value);
  if (length < 0) {
    buffer[0] = '\0';
    return 0;
  }
  std::unique_ptr<char[]> block;
  char* text = local;
  if (length >= kLocalRoom) {
    block.reset(new char[static_cast<std::size_t>(length) + 1]);
    text = block.get();
    std::snprintf(text, static_cast<std::size_t>(length) + 1, format, value);
  }
  PointForSeparators(text);
  return WriteFixed(buffer, text);
}

const char* SkipDigits(const char* p) {
  while (IsDigit(*p)) ++p;
  return p;
}

// from_chars takes a "-" but no "+"; a "+" changes nothing in the value.
const char* FromCharsStart(const char* text) { return *text == '+' ? text + 1 : text; }

// strtod on the whole text. Decimal digits behind an optional sign, followed neither by
// the locale's radix nor by a hex marker, can only go on with an exponent: there
// from_chars reads exactly what strtod reads, correctly rounded, and is used unless it
// reports a range error (strtod's overflow and underflow results are its own).
double ReadWhole(const char* text, const char* digits, const char* digitsEnd, char*& end) {
  const char next = *digitsEnd;
  if (digitsEnd != digits && next != 'x' && next != 'X' && next != nl_langinfo(RADIXCHAR)[0]) {
    const char* last = digitsEnd;
    if (IsExponentLetter(next)) {
      last = digitsEnd + 1;
      if (IsSign(*last)) ++last;
      last = SkipDigits(last);
    }
    double value = 0;
    const std::from_chars_result read = std::from_chars(FromCharsStart(text), last, value);
    if (read.ec == std::errc()) {
      end = const_cast<char*>(read.ptr);
      return value;
    }
  }
  return std::strtod(text, &end);
}

// strtod on "<sign and integer digits><fraction digits>e<exponent - fraction digits>",
// a text with no separator that every locale reads alike.
double ReadRewritten(const char* text, std::size_t intLen, const char* fraction, std::size_t fracLen,
                     long long exponent) {
  char local[kRewriteRoom];
  std::unique_ptr<char[]> block;
  // Sign and digits, "e", up to 20 characters of exponent, the terminator.
  const std::size_t size = intLen + fracLen + 24;
  char* rewritten = local;
  if (size > sizeof local) {
    block.reset(new char[size]);
    rewritten = block.get();
  }
  std::memcpy(rewritten, text, intLen);
  std::memcpy(rewritten + intLen, fraction, fracLen);
  std::snprintf(rewritten + intLen + fracLen, 24, "e%lld", exponent - static_cast<long long>(fracLen));
  return std::strtod(rewritten, nullptr);
}

}  // namespace

int KyDoubleToString(char* buffer, double value, const char* format) {
  if (std::isnan(value)) return WriteFixed(buffer, "NaN");
  if (std::isfinite(value)) {
    if (format == nullptr && RadixBecomesOnePoint()) {
      // Same bytes as "%.16g" under the C locale, exponent form ("1e+300") and "-0" included.
      char* last = std::to_chars(buffer, buffer + kDefaultTextRoom - 1, value, std::chars_format::general, 16).ptr;
      *last = '\0';
      return static_cast<int>(last - buffer);
    }
    return FormatAndScan(buffer, value, format != nullptr ? format : kDefaultFormat);
  }
  return value < 0 ? WriteFixed(buffer, "-Infinity") : WriteFixed(buffer, "Infinity");
}

bool KyStringToDouble(const char* text, char*& end, double& result) {
  const char* digits = IsSign(*text) ? text + 1 : text;
  const char* intEnd = SkipDigits(digits);
  if (*intEnd != '.') {
    result = ReadWhole(text, digits, intEnd, end);
    return !std::isnan(result);
  }

  const char* fraction = intEnd + 1;
  const char* p = SkipDigits(fraction);
  const std::size_t fracLen = static_cast<std::size_t>(p - fraction);
  // The exponent is what stands between the letter and the end of its digits; an
  // exponent past the int range reads as the nearest int instead of wrapping.
  long long exponent = 0;
  if (IsExponentLetter(*p)) {
    ++p;
    const bool negative = *p == '-';
    if (IsSign(*p)) ++p;
    for (; IsDigit(*p); ++p)
      if (exponent <= INT_MAX) exponent = exponent * 10 + (*p - '0');
    if (exponent > INT_MAX) exponent = negative ? static_cast<long long>(INT_MAX) + 1 : INT_MAX;
    if (negative) exponent = -exponent;
  }
  end = const_cast<char*>(p);

  // The point-less rewrite and the text as it stands name the same number, so
  // from_chars on the text gives strtod's result on the rewrite; when it reports no
  // number or a range error, or the exponent was clamped, the rewrite decides.
  const std::size_t intLen = static_cast<std::size_t>(intEnd - text);
  if (exponent > INT_MIN && exponent < INT_MAX && (intEnd != digits || fracLen != 0)) {
    double value = 0;
    if (std::from_chars(FromCharsStart(text), p, value).ec == std::errc()) {
      result = value;
      return !std::isnan(result);
    }
  }
  result = ReadRewritten(text, intLen, fraction, fracLen, exponent);
  return !std::isnan(result);
}
