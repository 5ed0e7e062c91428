#include "kybase/text/sb_string.h"

#include <cctype>
#include <cstring>

#include "kybase/text/string_units_internal.h"

namespace {

// The bytes of another body's narrow text. For a single-byte body that is its length;
// a multi-byte body counts wide units there, so its size is used instead.
int NarrowLength(const KyInternalString& body) {
  return body.isMultiByte() != 0 ? static_cast<int>(body.getSize()) - 1 : body.getLength();
}

}  // namespace

KySBString::KySBString(const char* text, int count) { setText(text == nullptr ? "" : text, count); }

void KySBString::setText(const char* text, int count) {
  long n = count;
  if (count < 0) n = static_cast<long>(std::strlen(text));
  if (n > kMaxLength) n = kMaxLength;
  char* buffer = new char[static_cast<std::size_t>(n) + 1];
  if (count < 0)
    std::memcpy(buffer, text, static_cast<std::size_t>(n));
  else
    std::strncpy(buffer, text, static_cast<std::size_t>(n));
  buffer[n] = '\0';
  delete[] value;
  value = buffer;
  length = static_cast<int>(n);
  size = static_cast<unsigned int>(n) + 1;
}

void KySBString::adopt(char* buffer) {
  if (buffer != value) delete[] value;
  value = buffer;
  length = static_cast<int>(std::strlen(value));
  size = static_cast<unsigned int>(length) + 1;
}

KyInternalString* KySBString::getSubString(int start, int end) const {
  start = KyClampStart(start, length);
  int count = -1;
  if (end != -1 && end <= length) {
    if (end <= start) return SharedEmpty();
    count = end - start;
  }
  KySBString* part = new KySBString();
  part->setText(value + start, count);
  return part;
}

int KySBString::getIndexOf(const KyInternalString& pattern, int from, int patternStart, int patternEnd) const {
  const int patternLength = NarrowLength(pattern);
  patternEnd = KyClampEnd(patternEnd, patternLength);
  patternStart = KyClampStart(patternStart, patternLength);
  if (patternEnd <= patternStart) return length;
  return KyFindForward(value, length, from, pattern.getValue() + patternStart, patternEnd - patternStart);
}

int KySBString::getLastIndexOf(const KyInternalString& pattern, int from, int patternStart, int patternEnd) const {
  const int patternLength = NarrowLength(pattern);
  if (patternEnd > patternLength) patternEnd = patternLength;
  patternStart = KyClampStart(patternStart, patternLength);
  const int n = patternEnd - patternStart;
  if (n > length) return -1;
  if (from == -1 || from > length) from = length;
  // A start too close to the end is read as the position of the pattern's last
  // character.
  if (static_cast<long>(from) > static_cast<long>(length) - n) from -= n - 1;
  return KyFindBackward(value, length, from, pattern.getValue() + patternStart, n);
}

bool KySBString::isBlank() const {
  for (int i = 0; i < length; ++i)
    if (!std::isspace(static_cast<unsigned char>(value[i]))) return false;
  return true;
}

int KySBString::compare(const KyInternalString& other, int start, int end, int otherStart, int otherEnd) const {
  return KyCompareRanges(
      value, length, other.getValue(), NarrowLength(other), start, end, otherStart, otherEnd,
      [](const char* a, const char* b) { return KyCompareTails(a, b); },
      [](const char* a, const char* b, long n) { return KyComparePrefix(a, b, n); });
}

int KySBString::caseCompare(const KyInternalString& other, int start, int end, int otherStart,
                            int otherEnd) const {
  return KyCompareRanges(
      value, length, other.getValue(), NarrowLength(other), start, end, otherStart, otherEnd,
      [](const char* a, const char* b) { return KyCaseCompareTails(a, b); },
      [](const char* a, const char* b, long n) { return KyCaseComparePrefix(a, b, n); });
}

bool KySBString::matches(const KyInternalString& pattern, int start, int end, int patternStart,
                         int patternEnd) const {
  const int patternLength = NarrowLength(pattern);
  end = KyClampEnd(end, length);
  start = KyClampStart(start, end);
  patternEnd = KyClampEnd(patternEnd, patternLength);
  patternStart = KyClampStart(patternStart, patternEnd);
  return KyMatchRange(value, start, end, pattern.getValue(), patternStart, patternEnd);
}

int KySBString::isMultiByte() const { return 0; }

void KySBString::replace(const KyInternalString& other, int start, int end, int otherStart, int otherEnd) {
  end = KyClampEnd(end, length);
  otherEnd = KyClampEnd(otherEnd, NarrowLength(other));
  if (start > end || otherStart > otherEnd) return;
  start = KyClampStart(start, end);
  otherStart = KyClampStart(otherStart, otherEnd);
  char* rebuilt = nullptr;
  switch (KyReplaceUnits(value, length, start, end, other.getValue() + otherStart, otherEnd - otherStart, &rebuilt)) {
    case kKyUnitEditNone:
      return;
    case kKyUnitEditInPlace:
      adopt(value);
      return;
    case kKyUnitEditRebuilt:
      adopt(rebuilt);
      return;
  }
}

void KySBString::substitute(const KyInternalString& oldText, const KyInternalString& newText, int start, int end,
                            int oldStart, int oldEnd, int newStart, int newEnd) {
  end = KyClampEnd(end, length);
  if (start >= end) return;
  oldEnd = KyClampEnd(oldEnd, NarrowLength(oldText));
  if (oldStart >= oldEnd) return;
  newEnd = KyClampEnd(newEnd, NarrowLength(newText));
  if (newStart > newEnd) return;
  start = KyClampStart(start, end);
  oldStart = KyClampStart(oldStart, oldEnd);
  newStart = KyClampStart(newStart, newEnd);
  char* rebuilt = nullptr;
  switch (KySubstituteUnits(value, length, start, end, oldText.getValue() + oldStart, oldEnd - oldStart,
                            newText.getValue() + newStart, newEnd - newStart, &rebuilt)) {
    case kKyUnitEditNone:
      return;
    case kKyUnitEditInPlace:
      adopt(value);
      return;
    case kKyUnitEditRebuilt:
      adopt(rebuilt);
      return;
  }
}

// An edit that changes the length builds its result from this body's text straight
// into the new body's block; the text is only read on that path.
KyInternalString* KySBString::substituted(const KyInternalString& oldText, const KyInternalString& newText, int start,
                                          int end, int oldStart, int oldEnd, int newStart, int newEnd) const {
  const int clampedEnd = KyClampEnd(end, length);
  const int clampedOldEnd = KyClampEnd(oldEnd, NarrowLength(oldText));
  const int clampedNewEnd = KyClampEnd(newEnd, NarrowLength(newText));
  const int clampedOldStart = KyClampStart(oldStart, clampedOldEnd);
  const int clampedNewStart = KyClampStart(newStart, clampedNewEnd);
  if (start >= clampedEnd || oldStart >= clampedOldEnd || newStart > clampedNewEnd ||
      clampedOldEnd - clampedOldStart == clampedNewEnd - clampedNewStart)
    return KyInternalString::substituted(oldText, newText, start, end, oldStart, oldEnd, newStart, newEnd);
  char* rebuilt = nullptr;
  if (KySubstituteUnits(value, length, KyClampStart(start, clampedEnd), clampedEnd,
                        oldText.getValue() + clampedOldStart, clampedOldEnd - clampedOldStart,
                        newText.getValue() + clampedNewStart, clampedNewEnd - clampedNewStart,
                        &rebuilt) != kKyUnitEditRebuilt)
    return copy();
  auto* result = new KySBString();
  result->adopt(rebuilt);
  return result;
}

void KySBString::toLower() {
  for (int i = 0; i < length; ++i) value[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(value[i])));
}

void KySBString::toUpper() {
  for (int i = 0; i < length; ++i) value[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(value[i])));
}

KyInternalString* KySBString::copy() const { return new KySBString(value, length); }
