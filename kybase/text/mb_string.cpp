#include "kybase/text/mb_string.h"

#include <langinfo.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <cwctype>

#include "kybase/text/string_units_internal.h"

namespace {

const std::size_t kConversionError = static_cast<std::size_t>(-1);
const std::size_t kLimit = static_cast<std::size_t>(KyInternalString::kMaxLength);

// The wide form of the longest prefix of text that the current encoding reads as whole
// characters, in a new block of at least *units + 1 units. Reading stops at an invalid
// or incomplete sequence; *bytes gets the narrow bytes that were read.
wchar_t* WideOf(const char* text, std::size_t* units, std::size_t* bytes) {
  std::size_t total = std::strlen(text);
  if (total > kLimit) total = kLimit;
  // A character takes at least one byte, so the bytes bound the units.
  wchar_t* wide = new wchar_t[total + 1];
  std::mbstate_t state{};
  const char* source = text;
  if (text[total] == '\0') {
    const std::size_t converted = std::mbsrtowcs(wide, &source, total + 1, &state);
    if (converted != kConversionError) {
      *units = converted;
      *bytes = total;
      // Text of wide characters would leave most of the block unused.
      if (converted < total / 2) {
        wchar_t* exact = new wchar_t[converted + 1];
        std::wmemcpy(exact, wide, converted + 1);
        delete[] wide;
        wide = exact;
      }
      return wide;
    }
    state = std::mbstate_t{};
  }
  std::size_t used = 0;
  std::size_t count = 0;
  while (used < total) {
    const std::size_t step = std::mbrtowc(wide + count, text + used, total - used, &state);
    if (step == kConversionError || step == static_cast<std::size_t>(-2) || step == 0) break;
    used += step;
    ++count;
  }
  wide[count] = L'\0';
  *units = count;
  *bytes = used;
  return wide;
}

// The narrow form of wide in a new block, stopping before the first unit that the
// current encoding cannot write. *bytes gets its length without the terminator. One
// pass into a block that grows when the text needs more than a quarter extra.
char* NarrowOfUtf8(const wchar_t* wide, std::size_t units, std::size_t* bytes);

char* NarrowOf(const wchar_t* wide, std::size_t* bytes) {
  const std::size_t units = std::wcslen(wide);
  if (std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0)
    if (char* narrow = NarrowOfUtf8(wide, units, bytes)) return narrow;
  std::size_t capacity = units + units / 4 + 16;
  char* narrow = new char[capacity];
  std::size_t used = 0;
  std::mbstate_t state{};
  const wchar_t* source = wide;
  while (source != nullptr) {
    const std::size_t step = std::wcsrtombs(narrow + used, &source, capacity - used, &state);
    if (step == kConversionError || used + step > kLimit) break;
    used += step;
    if (source == nullptr) {
      *bytes = used;
      return narrow;
    }
    capacity *= 2;
    char* grown = new char[capacity];
    std::memcpy(grown, narrow, used);
    delete[] narrow;
    narrow = grown;
  }
  delete[] narrow;
  char scratch[MB_LEN_MAX];
  state = std::mbstate_t{};
  std::size_t total = 0;
  const wchar_t* stop = wide;
  for (; *stop != L'\0'; ++stop) {
    const std::size_t step = std::wcrtomb(scratch, *stop, &state);
    if (step == kConversionError || total + step > kLimit) break;
    total += step;
  }
  narrow = new char[total + 1];
  state = std::mbstate_t{};
  used = 0;
  for (const wchar_t* unit = wide; unit != stop; ++unit) used += std::wcrtomb(narrow + used, *unit, &state);
  narrow[used] = '\0';
  *bytes = used;
  return narrow;
}

// Under UTF-8, wcsrtombs writes scalar values in their standard form; this writes the
// same bytes without a call per character. A text holding anything else (a surrogate,
// a value past U+10FFFF) gives null and takes the general way.
char* NarrowOfUtf8(const wchar_t* wide, std::size_t units, std::size_t* bytes) {
  if (units > kLimit) return nullptr;
  // An ASCII text, the common case, is one pass into a block of its exact size.
  char* ascii = new char[units + 1];
  std::size_t done = 0;
  for (; done < units && static_cast<std::uint32_t>(wide[done]) < 0x80; ++done)
    ascii[done] = static_cast<char>(wide[done]);
  if (done == units) {
    ascii[units] = '\0';
    *bytes = units;
    return ascii;
  }
  std::size_t total = done;
  for (std::size_t i = done; i < units; ++i) {
    const auto unit = static_cast<std::uint32_t>(wide[i]);
    if (unit < 0x80) {
      ++total;
    } else if (unit < 0x800) {
      total += 2;
    } else if (unit < 0x10000 && (unit < 0xD800 || unit >= 0xE000)) {
      total += 3;
    } else if (unit >= 0x10000 && unit <= 0x10FFFF) {
      total += 4;
    } else {
      total = kLimit + 1;
      break;
    }
  }
  if (total > kLimit) {
    delete[] ascii;
    return nullptr;
  }
  char* narrow = new char[total + 1];
  std::memcpy(narrow, ascii, done);
  delete[] ascii;
  char* out = narrow + done;
  for (std::size_t i = done; i < units; ++i) {
    const auto unit = static_cast<std::uint32_t>(wide[i]);
    if (unit < 0x80) {
      *out++ = static_cast<char>(unit);
      continue;
    }
    if (unit < 0x800) {
      *out++ = static_cast<char>(0xC0 | (unit >> 6));
    } else if (unit < 0x10000) {
      *out++ = static_cast<char>(0xE0 | (unit >> 12));
      *out++ = static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
    } else {
      *out++ = static_cast<char>(0xF0 | (unit >> 18));
      *out++ = static_cast<char>(0x80 | ((unit >> 12) & 0x3F));
      *out++ = static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
    }
    *out++ = static_cast<char>(0x80 | (unit & 0x3F));
  }
  *out = '\0';
  *bytes = total;
  return narrow;
}

const KyMBString& Wide(const KyInternalString& body) { return dynamic_cast<const KyMBString&>(body); }

}  // namespace

KyMBString::KyMBString(const char* text, int count) : wideValue(nullptr), wideSize(0) {
  setValue(text, true, count);
}

KyMBString::~KyMBString() { delete[] wideValue; }

// The count does not shorten the text: every character up to the terminator is taken,
// so the same count cuts a single-byte string and not a multi-byte one.
void KyMBString::setValue(const char* text, bool copy, int /*count*/) {
  if (copy && text != nullptr && text == value) return;
  const char* source = text == nullptr ? "" : text;
  std::size_t units = 0;
  std::size_t bytes = 0;
  wchar_t* wide = WideOf(source, &units, &bytes);
  char* narrow;
  if (copy || text == nullptr) {
    narrow = new char[bytes + 1];
    std::memcpy(narrow, source, bytes);
  } else {
    narrow = const_cast<char*>(text);
  }
  narrow[bytes] = '\0';
  if (narrow != value) delete[] value;
  delete[] wideValue;
  value = narrow;
  size = static_cast<unsigned int>(bytes) + 1;
  wideValue = wide;
  length = static_cast<int>(units);
  wideSize = length + 1;
}

void KyMBString::setWideValue(const wchar_t* text, bool copy, int count, bool releaseOld) {
  const wchar_t* source = text == nullptr ? L"" : text;
  long n = count;
  if (count < 0) n = static_cast<long>(std::wcslen(source));
  if (n > kMaxLength) n = kMaxLength;
  wchar_t* wide;
  if (copy || text == nullptr) {
    wide = new wchar_t[static_cast<std::size_t>(n) + 1];
    if (count < 0)
      std::wmemcpy(wide, source, static_cast<std::size_t>(n));
    else
      std::wcsncpy(wide, source, static_cast<std::size_t>(n));
    wide[n] = L'\0';
  } else {
    wide = const_cast<wchar_t*>(text);
  }
  if (releaseOld && wide != wideValue) delete[] wideValue;
  wideValue = wide;
  length = static_cast<int>(n);
  wideSize = length + 1;
  regenerateNarrow();
}

void KyMBString::regenerateNarrow() {
  std::size_t bytes = 0;
  char* narrow = NarrowOf(wideValue, &bytes);
  delete[] value;
  value = narrow;
  size = static_cast<unsigned int>(bytes) + 1;
}

void KyMBString::adoptWide(wchar_t* buffer) {
  if (buffer != wideValue) delete[] wideValue;
  wideValue = buffer;
  length = static_cast<int>(std::wcslen(wideValue));
  wideSize = length + 1;
  regenerateNarrow();
}

KyInternalString* KyMBString::getSubString(int start, int end) const {
  start = KyClampStart(start, length);
  int count = -1;
  if (end != -1 && end <= length) {
    if (end <= start) return SharedEmpty();
    count = end - start;
  }
  KyMBString* part = new KyMBString();
  part->setWideValue(wideValue + start, true, count, true);
  return part;
}

int KyMBString::getIndexOf(const KyInternalString& pattern, int from, int patternStart, int patternEnd) const {
  const KyMBString& wide = Wide(pattern);
  patternEnd = KyClampEnd(patternEnd, wide.length);
  patternStart = KyClampStart(patternStart, wide.length);
  if (patternEnd <= patternStart) return length;
  return KyFindForward(wideValue, length, from, wide.wideValue + patternStart, patternEnd - patternStart);
}

int KyMBString::getLastIndexOf(const KyInternalString& pattern, int from, int patternStart, int patternEnd) const {
  const KyMBString& wide = Wide(pattern);
  if (patternEnd > wide.length) patternEnd = wide.length;
  patternStart = KyClampStart(patternStart, wide.length);
  const int n = patternEnd - patternStart;
  if (n > length) return -1;
  if (from == -1 || from > length) from = length;
  if (static_cast<long>(from) > static_cast<long>(length) - n) from -= n - 1;
  return KyFindBackward(wideValue, length, from, wide.wideValue + patternStart, n);
}

bool KyMBString::isBlank() const {
  for (int i = 0; i < length; ++i)
    if (!std::iswspace(static_cast<wint_t>(wideValue[i]))) return false;
  return true;
}

int KyMBString::compare(const KyInternalString& other, int start, int end, int otherStart, int otherEnd) const {
  const KyMBString& wide = Wide(other);
  return KyCompareRanges(
      wideValue, length, wide.wideValue, wide.length, start, end, otherStart, otherEnd,
      [](const wchar_t* a, const wchar_t* b) { return KyCompareTails(a, b); },
      [](const wchar_t* a, const wchar_t* b, long n) { return KyComparePrefix(a, b, n); });
}

int KyMBString::caseCompare(const KyInternalString& other, int start, int end, int otherStart,
                            int otherEnd) const {
  const KyMBString& wide = Wide(other);
  return KyCompareRanges(
      wideValue, length, wide.wideValue, wide.length, start, end, otherStart, otherEnd,
      [](const wchar_t* a, const wchar_t* b) { return KyCaseCompareTails(a, b); },
      [](const wchar_t* a, const wchar_t* b, long n) { return KyCaseComparePrefix(a, b, n); });
}

bool KyMBString::matches(const KyInternalString& pattern, int start, int end, int patternStart,
                         int patternEnd) const {
  const KyMBString& wide = Wide(pattern);
  end = KyClampEnd(end, length);
  start = KyClampStart(start, end);
  patternEnd = KyClampEnd(patternEnd, wide.length);
  patternStart = KyClampStart(patternStart, patternEnd);
  return KyMatchRange(wideValue, start, end, wide.wideValue, patternStart, patternEnd);
}

int KyMBString::isMultiByte() const { return 1; }

void KyMBString::replace(const KyInternalString& other, int start, int end, int otherStart, int otherEnd) {
  const KyMBString& wide = Wide(other);
  end = KyClampEnd(end, length);
  otherEnd = KyClampEnd(otherEnd, wide.length);
  if (start > end || otherStart > otherEnd) return;
  start = KyClampStart(start, end);
  otherStart = KyClampStart(otherStart, otherEnd);
  wchar_t* rebuilt = nullptr;
  switch (KyReplaceUnits(wideValue, length, start, end, wide.wideValue + otherStart, otherEnd - otherStart,
                         &rebuilt)) {
    case kKyUnitEditNone:
      return;
    case kKyUnitEditInPlace:
      adoptWide(wideValue);
      return;
    case kKyUnitEditRebuilt:
      adoptWide(rebuilt);
      return;
  }
}

void KyMBString::substitute(const KyInternalString& oldText, const KyInternalString& newText, int start, int end,
                            int oldStart, int oldEnd, int newStart, int newEnd) {
  const KyMBString& oldWide = Wide(oldText);
  const KyMBString& newWide = Wide(newText);
  end = KyClampEnd(end, length);
  if (start >= end) return;
  oldEnd = KyClampEnd(oldEnd, oldWide.length);
  if (oldStart >= oldEnd) return;
  newEnd = KyClampEnd(newEnd, newWide.length);
  if (newStart > newEnd) return;
  start = KyClampStart(start, end);
  oldStart = KyClampStart(oldStart, oldEnd);
  newStart = KyClampStart(newStart, newEnd);
  wchar_t* rebuilt = nullptr;
  switch (KySubstituteUnits(wideValue, length, start, end, oldWide.wideValue + oldStart, oldEnd - oldStart,
                            newWide.wideValue + newStart, newEnd - newStart, &rebuilt)) {
    case kKyUnitEditNone:
      return;
    case kKyUnitEditInPlace:
      adoptWide(wideValue);
      return;
    case kKyUnitEditRebuilt:
      adoptWide(rebuilt);
      return;
  }
}

// As for single-byte text: a change of length builds the new wide form from this
// body's, which is only read.
KyInternalString* KyMBString::substituted(const KyInternalString& oldText, const KyInternalString& newText, int start,
                                          int end, int oldStart, int oldEnd, int newStart, int newEnd) const {
  const KyMBString& oldWide = Wide(oldText);
  const KyMBString& newWide = Wide(newText);
  const int clampedEnd = KyClampEnd(end, length);
  const int clampedOldEnd = KyClampEnd(oldEnd, oldWide.length);
  const int clampedNewEnd = KyClampEnd(newEnd, newWide.length);
  const int clampedOldStart = KyClampStart(oldStart, clampedOldEnd);
  const int clampedNewStart = KyClampStart(newStart, clampedNewEnd);
  if (start >= clampedEnd || oldStart >= clampedOldEnd || newStart > clampedNewEnd ||
      clampedOldEnd - clampedOldStart == clampedNewEnd - clampedNewStart)
    return KyInternalString::substituted(oldText, newText, start, end, oldStart, oldEnd, newStart, newEnd);
  wchar_t* rebuilt = nullptr;
  if (KySubstituteUnits(wideValue, length, KyClampStart(start, clampedEnd), clampedEnd,
                        oldWide.wideValue + clampedOldStart, clampedOldEnd - clampedOldStart,
                        newWide.wideValue + clampedNewStart, clampedNewEnd - clampedNewStart,
                        &rebuilt) != kKyUnitEditRebuilt)
    return copy();
  auto* result = new KyMBString();
  result->adoptWide(rebuilt);
  return result;
}

void KyMBString::toLower() {
  for (int i = 0; i < length; ++i) wideValue[i] = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(wideValue[i])));
  regenerateNarrow();
}

void KyMBString::toUpper() {
  for (int i = 0; i < length; ++i) wideValue[i] = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(wideValue[i])));
  regenerateNarrow();
}

KyInternalString* KyMBString::copy() const {
  KyMBString* twin = new KyMBString();
  char* narrow = new char[size];
  std::memcpy(narrow, value, size);
  wchar_t* wide = new wchar_t[static_cast<std::size_t>(length) + 1];
  std::wmemcpy(wide, wideValue, static_cast<std::size_t>(length) + 1);
  delete[] twin->value;
  delete[] twin->wideValue;
  twin->value = narrow;
  twin->size = size;
  twin->length = length;
  twin->wideValue = wide;
  twin->wideSize = wideSize;
  return twin;
}
