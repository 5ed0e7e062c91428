#include "kybase/text/kystring.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>

#include "kybase/text/internal_string.h"
#include "kybase/text/mb_string.h"
#include "kybase/text/sb_string.h"
#include "kybase/text/string_units_internal.h"

const char* const KyString::DefaultIntegerFormat = "%d";
const char* const KyString::DefaultUnsignedIntegerFormat = "%u";
const char* const KyString::DefaultShortFormat = "%hd";
const char* const KyString::DefaultUnsignedShortFormat = "%hu";
const char* const KyString::DefaultLongFormat = "%ld";
const char* const KyString::DefaultUnsignedLongFormat = "%lu";
const char* const KyString::DefaultFloatFormat = "%f";
const char* const KyString::DefaultDoubleFormat = "%g";
const char* const KyString::EmptyCString = "";

// Both start set so that building a shared empty string does not ask for itself.
bool KyString::emptySBPending = true;
bool KyString::emptyMBPending = true;

namespace {

bool MultiByteNow() { return MB_CUR_MAX >= 2; }

// Formats one number with the caller's format. The usual 160-byte buffer takes most
// results; a longer one is formatted again into a buffer of its own size, so no output
// is cut and no buffer overruns.
template <typename Number>
std::unique_ptr<char[]> FormatNumber(const char* format, const char* fallback, Number number) {
  if (format == nullptr) format = fallback;
  char small[160];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  int written = std::snprintf(small, sizeof small, format, number);
  std::unique_ptr<char[]> text;
  if (written < 0) written = 0;
  text.reset(new char[static_cast<std::size_t>(written) + 1]);
  if (static_cast<std::size_t>(written) < sizeof small)
    std::memcpy(text.get(), small, static_cast<std::size_t>(written));
  else
    std::snprintf(text.get(), static_cast<std::size_t>(written) + 1, format, number);
#pragma GCC diagnostic pop
  text[written] = '\0';
  return text;
}

}  // namespace

KyInternalString* KyInternalString::SharedEmpty() { return KyString::sharedEmptyString().internalString; }

KyInternalString* KyString::MakeBody(bool multiByte, const char* text, int count) {
  KyInternalString* body;
  if (multiByte)
    body = new KyMBString(text, count);
  else
    body = new KySBString(text, count);
  body->refCount = 1;
  return body;
}

KyString& KyString::sharedEmptyString() {
  // The two empty strings are never destroyed: a client's static object may still make
  // empty strings while the process exits.
  if (!MultiByteNow()) {
    static KyString* const emptySB = new KyString(EmptyCString);
    emptySBPending = false;
    return *emptySB;
  }
  static KyString* const emptyMB = new KyString(EmptyCString);
  emptyMBPending = false;
  return *emptyMB;
}

KyString::KyString(KyInternalString* internal) : internalString(internal) { ++internal->refCount; }

KyString::KyString(const char* text, int count) : internalString(nullptr) {
  const bool multiByte = MultiByteNow();
  if (text == nullptr || *text == '\0') {
    if (!(multiByte ? emptyMBPending : emptySBPending)) {
      internalString = sharedEmptyString().internalString;
      ++internalString->refCount;
      return;
    }
    if (text == nullptr) text = EmptyCString;
  }
  internalString = MakeBody(multiByte, text, count);
}

// The multi-byte choice is made before formatting, as for text.
KyString::KyString(short number, const char* format)
    : internalString(nullptr) {
  const bool multiByte = MultiByteNow();
  internalString = MakeBody(multiByte, FormatNumber(format, DefaultShortFormat, static_cast<int>(number)).get(), -1);
}

KyString::KyString(unsigned short number, const char* format) : internalString(nullptr) {
  const bool multiByte = MultiByteNow();
  internalString =
      MakeBody(multiByte, FormatNumber(format, DefaultUnsignedShortFormat, static_cast<int>(number)).get(), -1);
}

KyString::KyString(int number, const char* format) : internalString(nullptr) {
  const bool multiByte = MultiByteNow();
  internalString = MakeBody(multiByte, FormatNumber(format, DefaultIntegerFormat, number).get(), -1);
}

KyString::KyString(unsigned int number, const char* format) : internalString(nullptr) {
  const bool multiByte = MultiByteNow();
  internalString = MakeBody(multiByte, FormatNumber(format, DefaultUnsignedIntegerFormat, number).get(), -1);
}

KyString::KyString(long number, const char* format) : internalString(nullptr) {
  const bool multiByte = MultiByteNow();
  internalString = MakeBody(multiByte, FormatNumber(format, DefaultLongFormat, number).get(), -1);
}

KyString::KyString(unsigned long number, const char* format) : internalString(nullptr) {
  const bool multiByte = MultiByteNow();
  internalString = MakeBody(multiByte, FormatNumber(format, DefaultUnsignedLongFormat, number).get(), -1);
}

KyString::KyString(float number, const char* format) : internalString(nullptr) {
  const bool multiByte = MultiByteNow();
  internalString =
      MakeBody(multiByte, FormatNumber(format, DefaultFloatFormat, static_cast<double>(number)).get(), -1);
}

KyString::KyString(double number, const char* format) : internalString(nullptr) {
  const bool multiByte = MultiByteNow();
  internalString = MakeBody(multiByte, FormatNumber(format, DefaultDoubleFormat, number).get(), -1);
}

KyString& KyString::operator=(const KyString& other) {
  ++other.internalString->refCount;
  Release(internalString);
  internalString = other.internalString;
  return *this;
}

char* KyString::copyValue() const {
  char* copy = new char[internalString->size];
  std::memcpy(copy, internalString->value, internalString->size);
  return copy;
}

bool KyString::isBlank() const { return isEmpty() || internalString->isBlank(); }

KyString KyString::getSubString(int start, int end) const {
  const int length = internalString->length;
  if (start >= length) return sharedEmptyString();
  if (start == 0 && (end == -1 || end == length)) return *this;
  return KyString(internalString->getSubString(start, end));
}

int KyString::mixing(const KyString& other) const {
  if (internalString->isMultiByte() == other.internalString->isMultiByte()) return 0;
  return internalString->isMultiByte() != 0 && MultiByteNow() ? 1 : -1;
}

void KyString::unshare() {
  if (internalString->refCount == 1) return;
  KyInternalString* own = internalString->copy();
  own->refCount = 1;
  Release(internalString);
  internalString = own;
}

void KyString::reserve(int n) {
  unshare();
  internalString->reserve(n);
}

int KyString::compare(const KyString& other, int start, int end, int otherStart, int otherEnd) const {
  return compareRanges(other, start, end, otherStart, otherEnd, false);
}

int KyString::caseCompare(const KyString& other, int start, int end, int otherStart, int otherEnd) const {
  return compareRanges(other, start, end, otherStart, otherEnd, true);
}

int KyString::compareRanges(const KyString& other, int start, int end, int otherStart, int otherEnd,
                            bool ignoreCase) const {
  if (isEmpty() && other.isEmpty()) return 0;
  const int mix = mixing(other);
  if (mix < 0) return -1;
  const char* name = ignoreCase ? "KyString::caseCompare" : "KyString::compare";
  end = KyClampEnd(end, internalString->length);
  otherEnd = KyClampEnd(otherEnd, other.internalString->length);
  if (end < start) {
    std::cerr << name << ": 2nd parameter is greater than 3rd one." << std::endl;
    return -1;
  }
  if (otherEnd < otherStart) {
    std::cerr << name << ": 4th parameter is greater than 5th one." << std::endl;
    return -1;
  }
  if (internalString == other.internalString && start == otherStart && end == otherEnd) return 0;
  auto against = [&](const KyInternalString& right) {
    return ignoreCase ? internalString->caseCompare(right, start, end, otherStart, otherEnd)
                      : internalString->compare(right, start, end, otherStart, otherEnd);
  };
  if (mix == 0) return against(*other.internalString);
  KyMBString temporary(other.getValue());
  return against(temporary);
}

bool KyString::equals(const KyString& other, int start, int end, int otherStart, int otherEnd) const {
  if (mixing(other) < 0) return false;
  end = KyClampEnd(end, internalString->length);
  otherEnd = KyClampEnd(otherEnd, other.internalString->length);
  if (internalString == other.internalString && start == otherStart && end == otherEnd) return true;
  if (start < end) return otherStart < otherEnd && compare(other, start, end, otherStart, otherEnd) == 0;
  return otherStart >= otherEnd;
}

bool KyString::matches(const KyString& pattern, int start, int end, int patternStart, int patternEnd) const {
  if (isEmpty() && pattern.isEmpty()) return true;
  const int mix = mixing(pattern);
  if (mix < 0) return false;
  const int length = internalString->length;
  if (start > length) start = length;
  end = KyClampEnd(end, length);
  if (end < start) {
    std::cerr << "KyString::matches: string start after end." << std::endl;
    return false;
  }
  const int patternLength = pattern.internalString->length;
  if (patternStart > patternLength) patternStart = patternLength;
  patternEnd = KyClampEnd(patternEnd, patternLength);
  if (patternEnd < patternStart) {
    std::cerr << "KyString::matches: pattern start after end." << std::endl;
    return false;
  }
  if (internalString == pattern.internalString && start == patternStart && end == patternEnd) return true;
  if (mix == 0) return internalString->matches(*pattern.internalString, start, end, patternStart, patternEnd);
  KyMBString temporary(pattern.getValue());
  return internalString->matches(temporary, start, end, patternStart, patternEnd);
}

int KyString::getIndexOf(const KyString& pattern, int from, int patternStart, int patternEnd) const {
  const int mix = mixing(pattern);
  if (mix < 0) return -1;
  if (mix == 0) return internalString->getIndexOf(*pattern.internalString, from, patternStart, patternEnd);
  // Through the temporary the caller's start and pattern range are not applied.
  KyMBString temporary(pattern.getValue());
  return internalString->getIndexOf(temporary, 0, 0, -1);
}

int KyString::getLastIndexOf(const KyString& pattern, int from, int patternStart, int patternEnd) const {
  const int length = internalString->length;
  patternEnd = KyClampEnd(patternEnd, pattern.internalString->length);
  if (patternEnd <= patternStart && (from == -1 || from >= length)) return length;
  const int mix = mixing(pattern);
  if (mix < 0) return -1;
  if (mix == 0) return internalString->getLastIndexOf(*pattern.internalString, from, patternStart, patternEnd);
  // Through the temporary the pattern end stays -1, which compares without limit: a
  // match is found only where the whole pattern ends exactly at the end of the text.
  KyMBString temporary(pattern.getValue());
  return internalString->getLastIndexOf(temporary, -1, 0, -1);
}

bool KyString::startsWith(const KyString& pattern, int patternStart, int patternEnd) const {
  return getIndexOf(pattern, 0, patternStart, patternEnd) == 0;
}

bool KyString::endsWith(const KyString& pattern, int patternStart, int patternEnd) const {
  patternEnd = KyClampEnd(patternEnd, pattern.internalString->length);
  const int at = getLastIndexOf(pattern, -1, patternStart, patternEnd);
  return at != -1 && at == internalString->length - patternEnd + patternStart;
}

bool KyString::operator==(const KyString& other) const { return equals(other, 0, -1, 0, -1); }
bool KyString::operator!=(const KyString& other) const { return !equals(other, 0, -1, 0, -1); }
bool KyString::operator<(const KyString& other) const { return compare(other, 0, -1, 0, -1) < 0; }
bool KyString::operator<=(const KyString& other) const { return compare(other, 0, -1, 0, -1) <= 0; }
bool KyString::operator>(const KyString& other) const { return compare(other, 0, -1, 0, -1) > 0; }
bool KyString::operator>=(const KyString& other) const { return compare(other, 0, -1, 0, -1) >= 0; }
bool KyString::operator==(const char* text) const { return *this == KyString(text); }
bool KyString::operator!=(const char* text) const { return *this != KyString(text); }
bool KyString::operator<(const char* text) const { return *this < KyString(text); }
bool KyString::operator<=(const char* text) const { return *this <= KyString(text); }
bool KyString::operator>(const char* text) const { return *this > KyString(text); }
bool KyString::operator>=(const char* text) const { return *this >= KyString(text); }

KyString& KyString::replace(const KyString& other, int start, int end, int otherStart, int otherEnd) {
  const int mix = mixing(other);
  if (mix < 0) return *this;
  unshare();
  // other may be this very string: its body is read only after unsharing.
  if (mix == 0) {
    internalString->replace(*other.internalString, start, end, otherStart, otherEnd);
  } else {
    KyMBString temporary(other.getValue());
    internalString->replace(temporary, start, end, otherStart, otherEnd);
  }
  return *this;
}

KyString& KyString::catenate(const KyString& other, int otherStart, int otherEnd) {
  const int length = internalString->length;
  return replace(other, length, length, otherStart, otherEnd);
}

KyString& KyString::operator+=(const KyString& other) { return catenate(other, 0, -1); }

KyString& KyString::prepend(const KyString& other, int otherStart, int otherEnd) {
  return replace(other, 0, 0, otherStart, otherEnd);
}

KyString& KyString::insert(const KyString& other, int position, int otherStart, int otherEnd) {
  return replace(other, position, position, otherStart, otherEnd);
}

KyString& KyString::remove(int start, int end) { return replace(*this, start, end, 0, 0); }

KyString& KyString::remove(const KyString& text, int textStart, int textEnd) {
  return substitute(text, *this, 0, -1, textStart, textEnd, 0, 0);
}

KyString& KyString::substitute(const KyString& oldText, const KyString& newText, int start, int end, int oldStart,
                               int oldEnd, int newStart, int newEnd) {
  const int oldMix = mixing(oldText);
  const int newMix = mixing(newText);
  if (oldMix < 0 || newMix < 0) return *this;
  const int first = getIndexOf(oldText, start, oldStart, oldEnd);
  if (first == -1 || (end != -1 && first >= end)) return *this;
  std::unique_ptr<KyMBString> oldTemporary;
  std::unique_ptr<KyMBString> newTemporary;
  if (oldMix == 1) oldTemporary.reset(new KyMBString(oldText.getValue()));
  if (newMix == 1) newTemporary.reset(new KyMBString(newText.getValue()));
  const KyInternalString& oldBody = oldTemporary ? *oldTemporary : *oldText.internalString;
  const KyInternalString& newBody = newTemporary ? *newTemporary : *newText.internalString;
  KyInternalString* own;
  if (&oldText == this || &newText == this) {
    // This very string as an argument (remove passes it as newText) names the private
    // copy that is being edited, as both names refer to it from here on.
    own = internalString->copy();
    own->refCount = 1;
    Release(internalString);
    internalString = own;
    own->substitute(&oldText == this && !oldTemporary ? *own : oldBody,
                    &newText == this && !newTemporary ? *own : newBody, start, end, oldStart, oldEnd, newStart, newEnd);
    return *this;
  }
  // Otherwise the result is made as a new body, whose text an edit that changes the
  // length need not copy first.
  own = internalString->substituted(oldBody, newBody, start, end, oldStart, oldEnd, newStart, newEnd);
  own->refCount = 1;
  Release(internalString);
  internalString = own;
  return *this;
}

KyString& KyString::toLower() {
  unshare();
  internalString->toLower();
  return *this;
}

KyString& KyString::toUpper() {
  unshare();
  internalString->toUpper();
  return *this;
}
