#include "kybase/text/numeric.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr int kDigits = KyNumeric::kMaxDigits;
// Places of the multiplication work arrays: the product of two 48-digit numbers.
constexpr int kProductPlaces = 2 * kDigits;
// Exponent digits read past this value make the text invalid anyway.
constexpr long kExponentCap = 1000000;
// The largest 32-bit long, the bound of isInteger.
constexpr const char* kLongMaxText = "2147483647";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsSign(char c) { return c == '+' || c == '-'; }

bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

bool IsExponentLetter(char c) { return c == 'e' || c == 'E'; }

bool FitsShort(long value) { return value >= SHRT_MIN && value <= SHRT_MAX; }

// All 48 places may hold digits, and then there is no terminator.
int DigitCount(const char* digits) {
  int count = 0;
  while (count < kDigits && digits[count] != '\0') ++count;
  return count;
}

void Terminate(char* digits, int count) {
  if (count < kDigits) std::memset(digits + count, 0, static_cast<std::size_t>(kDigits - count));
}

// A first stored digit "0" reads as zero: 0.05, held as "05", is zero here.
bool PassesZeroTest(const char* digits) { return digits[0] == '\0' || digits[0] == '0'; }

// Moves the digits right by `places`, fills the front with "0" and drops what passes
// the last place.
void ShiftRight(char* digits, long places) {
  const int count = DigitCount(digits);
  const int shift = static_cast<int>(std::min<long>(places, kDigits));
  const int total = std::min(count + shift, kDigits);
  for (int i = total - 1; i >= shift; --i) digits[i] = digits[i - shift];
  std::memset(digits, '0', static_cast<std::size_t>(shift));
  Terminate(digits, total);
}

// Reads an optionally signed exponent; digits past the cap change nothing.
long ReadExponent(const char* p) {
  const bool negative = *p == '-';
  if (IsSign(*p)) ++p;
  long value = 0;
  for (; IsDigit(*p); ++p)
    if (value < kExponentCap) value = value * 10 + (*p - '0');
  return negative ? -value : value;
}

// Compares a digit text that may fill all 48 places with a terminated one, as strcmp.
int CompareText(const char* digits, int count, const char* text) {
  const int textCount = static_cast<int>(std::strlen(text));
  const int common = std::min(count, textCount);
  const int order = std::memcmp(digits, text, static_cast<std::size_t>(common));
  if (order != 0) return order;
  return count - textCount;
}

// The scale by which a factor moves the point of a product.
long FactorScale(short pointPosition, int count) { return pointPosition > 0 ? pointPosition : 1 - count; }

// Long multiplication of two digit arrays aligned to the right; returns the number of
// digits of the product, 0 when it is zero.
int multiplyDigits(const char* first, long firstCount, const char* second, long secondCount, char* product) {
  std::memset(product, 0, kProductPlaces);
  for (long j = 0; j < secondCount; ++j) {
    const int factor = second[kProductPlaces - 1 - j];
    char row[kProductPlaces + 1];
    int rowLength = 0;
    int carry = 0;
    for (long i = 0; i < firstCount; ++i) {
      const int value = first[kProductPlaces - 1 - i] * factor + carry;
      row[rowLength++] = static_cast<char>(value % 10);
      carry = value / 10;
    }
    if (carry != 0) row[rowLength++] = static_cast<char>(carry);
    carry = 0;
    // The partial product stays below ten to the power of its digits, so no place is
    // needed beyond the 96 of the array.
    for (long k = 0; k < rowLength || carry != 0; ++k) {
      const long place = kProductPlaces - 1 - (j + k);
      const int value = product[place] + (k < rowLength ? row[k] : 0) + carry;
      product[place] = static_cast<char>(value % 10);
      carry = value / 10;
    }
  }
  int lead = 0;
  while (lead < kProductPlaces && product[lead] == 0) ++lead;
  return kProductPlaces - lead;
}

// Holds LC_NUMERIC at "C" while it lives, so that the runtime reads "." as the point,
// and then puts the previous name back.
class NumericLocaleC {
 public:
  NumericLocaleC() {
    const char* name = std::setlocale(LC_NUMERIC, nullptr);
    if (name != nullptr) {
      const std::size_t size = std::strlen(name) + 1;
      if (size > sizeof local) {
        block.reset(new char[size]);
        saved = block.get();
      }
      std::memcpy(saved, name, size);
    } else {
      saved = nullptr;
    }
    std::setlocale(LC_NUMERIC, "C");
  }
  ~NumericLocaleC() {
    if (saved != nullptr) std::setlocale(LC_NUMERIC, saved);
  }
  NumericLocaleC(const NumericLocaleC&) = delete;
  NumericLocaleC& operator=(const NumericLocaleC&) = delete;

 private:
  char local[64];
  std::unique_ptr<char[]> block;
  char* saved = local;
};

}  // namespace

KyNumeric::KyNumeric() : sign(0), pointPosition(0), digits() {}

KyNumeric::KyNumeric(long value) : KyNumeric() { set(value); }

KyNumeric::KyNumeric(const char* text) : KyNumeric() { set(text); }

KyNumeric::KyNumeric(const KyNumeric& other) = default;

KyNumeric& KyNumeric::operator=(const KyNumeric& other) = default;

KyNumeric::~KyNumeric() = default;

bool KyNumeric::set(long value) {
  sign = value < 0 ? 1 : 0;
  // Through unsigned arithmetic, so that the most negative long keeps its digits.
  unsigned long magnitude = value < 0 ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
  char reversed[24];
  int count = 0;
  for (; magnitude != 0; magnitude /= 10) reversed[count++] = static_cast<char>('0' + magnitude % 10);
  for (int i = 0; i < count; ++i) digits[i] = reversed[count - 1 - i];
  Terminate(digits, count);
  pointPosition = static_cast<short>(count);
  return true;
}

bool KyNumeric::validateText(const char* text) {
  if (text == nullptr) return true;
  const char* p = text;
  while (IsSpace(*p)) ++p;
  if (IsSign(*p)) ++p;
  while (IsSpace(*p)) ++p;
  const char* number = p;
  // Integer digits count from the first non-zero one; fraction digits all count.
  long intCount = 0;
  for (; IsDigit(*p); ++p)
    if ((intCount > 0 || *p != '0') && intCount <= kDigits) ++intCount;
  long fracCount = 0;
  if (*p == '.')
    for (++p; IsDigit(*p); ++p)
      if (fracCount <= kDigits) ++fracCount;
  long exponent = 0;
  if (IsExponentLetter(*p)) {
    ++p;
    const char* expText = p;
    if (IsSign(*p)) ++p;
    if (!IsDigit(*p)) return false;
    exponent = ReadExponent(expText);
    while (IsDigit(*p)) ++p;
  }
  if (*p != '\0') return false;

  long count = intCount + fracCount;
  if (p == number + 1 && *number == '0') count = 1;
  if (count < 1 || count > kDigits) return false;
  if (!FitsShort(intCount - std::labs(exponent))) return false;
  // The point lands at intCount + exponent; a position that a short cannot hold is
  // refused rather than wrapped.
  return FitsShort(intCount + exponent);
}

bool KyNumeric::set(const char* text) {
  if (!validateText(text)) return false;
  sign = 0;
  pointPosition = 0;
  std::memset(digits, 0, sizeof digits);
  if (text == nullptr) return true;

  const char* p = IsSign(*text) ? text + 1 : text;
  while (*p == '0') ++p;
  if (*p == '\0') {
    digits[0] = '0';
    return true;
  }

  p = text;
  while (IsSpace(*p)) ++p;
  if (IsSign(*p)) sign = *p++ == '-' ? 1 : 0;
  while (IsSpace(*p)) ++p;
  while (*p == '0') ++p;
  if (*p == '\0') return true;

  int count = 0;
  long point = 0;
  bool pointSeen = false;
  for (; *p != '\0'; ++p) {
    if (IsDigit(*p)) {
      if (count < kDigits) digits[count++] = *p;
    } else if (*p == '.') {
      point = count;
      pointSeen = true;
    } else if (IsExponentLetter(*p)) {
      point += ReadExponent(p + 1);
      break;
    }
  }
  if (pointSeen) {
    while (count > 0 && digits[count - 1] == '0') digits[--count] = '\0';
  } else {
    point += count;
  }
  pointPosition = static_cast<short>(point);
  return true;
}

void KyNumeric::set(const KyNumeric& other) { *this = other; }

void KyNumeric::get(char* buffer, long size) const {
  if (buffer == nullptr || size < 1) return;
  std::memset(buffer, 0, static_cast<std::size_t>(size));
  const int count = DigitCount(digits);
  if (count == 0) {
    buffer[0] = '0';
    return;
  }
  const bool negative = sign != 0;
  long pos = 0;
  if (negative) buffer[pos++] = '-';
  const long point = pointPosition;
  if ((point < 1 || point + pos >= size) && pos < size) buffer[pos++] = '.';

  // The point goes in front of the digit at `pointAt` (the minus sign counts).
  const long pointAt = point + (negative ? 1 : 0);
  bool pointWritten = false;
  int next = 0;
  while (pos < size && next < count) {
    if (pos == pointAt) {
      buffer[pos++] = '.';
      pointWritten = true;
      if (pos == size) break;
    }
    buffer[pos++] = digits[next++];
  }

  const long written = pos - (negative ? 1 : 0);
  if (pointWritten || written == point || point == 0) return;
  // The padding counts the minus sign as a place, so a negative value gets one zero
  // less than it needs: kept for callers that rely on "-1e3" reading "-100".
  if (point > 0 && pos < point && point + pos < size) {
    while (pos < point) buffer[pos++] = '0';
    return;
  }
  // The exponent refers to the form 0.ddd.
  char exponent[8];
  const int length = std::snprintf(exponent, sizeof exponent, "%hd", pointPosition);
  if (pos + 1 + length <= size) {
    buffer[pos] = 'e';
    std::memcpy(buffer + pos + 1, exponent, static_cast<std::size_t>(length));
  }
}

KyNumeric::operator long() const {
  // One byte more than get may fill, so the text is always terminated.
  char text[kDigits + 1] = {};
  get(text, kDigits);
  NumericLocaleC locale;
  return std::strtol(text, nullptr, 10);
}

KyNumeric::operator double() const {
  char text[kDigits + 1] = {};
  get(text, kDigits);
  NumericLocaleC locale;
  return std::strtod(text, nullptr);
}

KyNumeric KyNumeric::add(const KyNumeric& other) const {
  KyNumeric result;
  const int l1 = DigitCount(digits);
  const int l2 = DigitCount(other.digits);
  const long p1 = pointPosition;
  const long p2 = other.pointPosition;
  const long intWidth = std::max(p1, p2);
  const long fracWidth = std::max(l1 - p1, l2 - p2);
  const long width = intWidth + fracWidth;
  // The overflow rule: no error, no rounding, the value is lost.
  if (width >= kDigits) return result;

  // Place 0 takes the carry; the operand with the larger point position starts at 1.
  char first[kDigits + 1];
  char second[kDigits + 1];
  std::memset(first, '0', sizeof first);
  std::memset(second, '0', sizeof second);
  const KyNumeric& wider = p1 >= p2 ? *this : other;
  const KyNumeric& narrower = p1 >= p2 ? other : *this;
  std::memcpy(first + 1, wider.digits, static_cast<std::size_t>(DigitCount(wider.digits)));
  std::memcpy(second + 1 + (intWidth - narrower.pointPosition), narrower.digits,
              static_cast<std::size_t>(DigitCount(narrower.digits)));

  int carry = 0;
  for (long i = width; i >= 1; --i) {
    const int value = (first[i] - '0') + (second[i] - '0') + carry;
    first[i] = static_cast<char>('0' + value % 10);
    carry = value / 10;
  }
  long point = intWidth;
  const char* text = first + 1;
  long count = width;
  if (carry != 0) {
    first[0] = '1';
    text = first;
    ++count;
    ++point;
  }
  // A carry that would put the point beyond a short is lost like a wide sum.
  if (!FitsShort(point)) return result;
  while (count > std::max(point, 0L) && text[count - 1] == '0') --count;

  std::memcpy(result.digits, text, static_cast<std::size_t>(count));
  result.pointPosition = static_cast<short>(point);
  result.sign = PassesZeroTest(result.digits) ? 0 : sign;
  return result;
}

KyNumeric KyNumeric::sub(const KyNumeric& other) const {
  KyNumeric result;
  const int l1 = DigitCount(digits);
  const int l2 = DigitCount(other.digits);
  const long p1 = pointPosition;
  const long p2 = other.pointPosition;
  const long intWidth = std::max(p1, p2);
  const long width = intWidth + std::max(l1 - p1, l2 - p2);
  if (width >= kDigits) return result;

  char first[kDigits];
  char second[kDigits];
  std::memset(first, '0', sizeof first);
  std::memset(second, '0', sizeof second);
  std::memcpy(first + (intWidth - p1), digits, static_cast<std::size_t>(l1));
  std::memcpy(second + (intWidth - p2), other.digits, static_cast<std::size_t>(l2));

  int borrow = 0;
  for (long i = width - 1; i >= 0; --i) {
    int value = (first[i] - '0') - (second[i] - '0') - borrow;
    borrow = value < 0 ? 1 : 0;
    first[i] = static_cast<char>('0' + value + 10 * borrow);
  }
  result.sign = static_cast<short>(borrow);

  long point = intWidth;
  const char* text = first;
  long count = width;
  while (count > 0 && *text == '0' && point != 0 && point > SHRT_MIN) {
    ++text;
    --count;
    --point;
  }
  while (count > 0 && text[count - 1] == '0') --count;
  std::memcpy(result.digits, text, static_cast<std::size_t>(count));
  result.pointPosition = static_cast<short>(point);
  return result;
}

KyNumeric KyNumeric::operator+(const KyNumeric& other) {
  if (sign == other.sign) return add(other);
  if (sign != 0) {
    const KyNumeric magnitude = abs();
    if (!magnitude.isGreaterThan(other)) return other.sub(magnitude);
    KyNumeric result = magnitude.sub(other);
    result.sign = sign;
    return result;
  }
  const KyNumeric magnitude = other.abs();
  if (isGreaterThan(magnitude)) return sub(magnitude);
  KyNumeric result = magnitude.sub(*this);
  result.sign = other.sign;
  return result;
}

KyNumeric KyNumeric::operator+(long value) { return *this + KyNumeric(value); }

KyNumeric KyNumeric::operator-(const KyNumeric& other) {
  KyNumeric result;
  if (sign != 0 && other.sign != 0) {
    const KyNumeric mine = abs();
    const KyNumeric theirs = other.abs();
    const bool larger = mine.isGreaterThan(theirs);
    result = larger ? mine.sub(theirs) : theirs.sub(mine);
    result.sign = larger ? 1 : 0;
  } else if (sign != 0) {
    result = abs().add(other);
    result.sign = 1;
  } else if (other.sign != 0) {
    result = add(other);
  } else if (isGreaterThan(other)) {
    result = sub(other);
  } else {
    result = other.sub(*this);
    result.sign = 1;
  }
  return result;
}

long KyNumeric::toDec(char* work) const {
  std::memset(work, 0, kProductPlaces);
  const int count = DigitCount(digits);
  for (int i = 0; i < count; ++i) work[kProductPlaces - count + i] = static_cast<char>(digits[i] - '0');
  int lead = 0;
  while (lead < count && digits[lead] == '0') ++lead;
  return count - lead;
}

KyNumeric KyNumeric::operator*(const KyNumeric& other) {
  char first[kProductPlaces];
  char second[kProductPlaces];
  char product[kProductPlaces];
  const long firstCount = toDec(first);
  const long secondCount = other.toDec(second);
  const int n = multiplyDigits(first, firstCount, second, secondCount, product);

  // Digits past the 48th are lost without rounding.
  KyNumeric result;
  const int kept = std::min(n, kDigits);
  for (int i = 0; i < kept; ++i) result.digits[i] = static_cast<char>('0' + product[kProductPlaces - n + i]);

  // The point follows its own rule, not the arithmetic of a point: a product with fewer
  // digits than its factors together is read too large (1.5 * 1.5 gives 22.5). Kept
  // because callers rely on it.
  const long sum =
      FactorScale(pointPosition, DigitCount(digits)) + FactorScale(other.pointPosition, DigitCount(other.digits));
  if (sum < 0) ShiftRight(result.digits, -sum);
  result.sign = sign == other.sign ? 0 : 1;
  result.pointPosition = static_cast<short>(sum >= n ? n : std::max(sum, 0L));
  return result;
}

bool KyNumeric::isEqualTo(const KyNumeric& other) const {
  if (PassesZeroTest(digits) && PassesZeroTest(other.digits)) return true;
  if (sign != other.sign || pointPosition != other.pointPosition) return false;
  int i = 0;
  for (; i < kDigits && digits[i] != '\0' && other.digits[i] != '\0'; ++i)
    if (digits[i] != other.digits[i]) return false;
  // Trailing zeros of the longer one don't count.
  const char* rest = i < kDigits && digits[i] != '\0' ? digits : other.digits;
  for (; i < kDigits && rest[i] != '\0'; ++i)
    if (rest[i] != '0') return false;
  return true;
}

bool KyNumeric::isGreaterThan(const KyNumeric& other) const {
  if (sign == 0 && other.sign > 0) return true;
  if (sign > 0 && other.sign == 0) return false;
  // Past the signs only the size counts, so of two negative values the larger in size
  // is the greater: kept for callers that rely on -5 > -3.
  if (pointPosition != other.pointPosition) return pointPosition > other.pointPosition;
  for (int i = 0; i < kDigits; ++i) {
    if (digits[i] == '\0') return other.digits[i] == '\0';
    if (other.digits[i] == '\0') return true;
    if (digits[i] != other.digits[i]) return digits[i] > other.digits[i];
  }
  return true;
}

bool KyNumeric::isLesserThan(const KyNumeric& other) const { return !isGreaterThan(other) || isEqualTo(other); }

bool KyNumeric::operator==(const KyNumeric& other) const { return isEqualTo(other); }

bool KyNumeric::operator<(const KyNumeric& other) const { return !isEqualTo(other) && !isGreaterThan(other); }

bool KyNumeric::operator>(const KyNumeric& other) const { return !isEqualTo(other) && isGreaterThan(other); }

bool KyNumeric::operator<=(const KyNumeric& other) const { return isLesserThan(other); }

bool KyNumeric::operator>=(const KyNumeric& other) const { return isGreaterThan(other); }

KyNumeric KyNumeric::abs() const {
  KyNumeric result(*this);
  result.sign = 0;
  return result;
}

void KyNumeric::negate() { sign = sign == 0 ? 1 : 0; }

bool KyNumeric::isNegative() const { return sign > 0; }

bool KyNumeric::isZero() const { return PassesZeroTest(digits); }

bool KyNumeric::isInteger() const {
  const int count = DigitCount(digits);
  // Zero is never an integer here, whatever point position it was stored with.
  int zeros = 0;
  while (zeros < count && digits[zeros] == '0') ++zeros;
  if (zeros == count) return false;
  if (pointPosition >= 1 && pointPosition <= 9 && count <= pointPosition) return true;
  // A text comparison: a fraction reads lower, so 2147483646.5 passes.
  if (pointPosition == 10) return CompareText(digits, count, kLongMaxText) <= 0;
  return false;
}

bool KyNumeric::isReal() const { return !isInteger(); }

short KyNumeric::getPrecision() const { return static_cast<short>(DigitCount(digits)); }

short KyNumeric::getScale() const {
  const long scale = DigitCount(digits) - static_cast<long>(pointPosition);
  return static_cast<short>(std::min<long>(scale, SHRT_MAX));
}

KyNumeric& KyNumeric::setScale(short scale) {
  const long n = DigitCount(digits) - static_cast<long>(scale);
  if (n >= 0) {
    // A point beyond what a short holds leaves the value as it was.
    if (FitsShort(n)) pointPosition = static_cast<short>(n);
    return *this;
  }
  ShiftRight(digits, -n);
  pointPosition = 0;
  return *this;
}
