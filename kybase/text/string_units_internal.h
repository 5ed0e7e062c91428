// Text algorithms shared by the two string bodies, written once over the unit type:
// char for KySBString, wchar_t for KyMBString. Every function reads and writes only
// inside the ranges it is given; a text buffer always holds its length plus a
// terminator, and searches may look at that terminator but never past it.
#ifndef KYBASE_TEXT_STRING_UNITS_INTERNAL_H
#define KYBASE_TEXT_STRING_UNITS_INTERNAL_H

#include <algorithm>
#include <cctype>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <strings.h>
#include <type_traits>
#include <vector>

#include "kybase/text/internal_string.h"

// An end of -1 or past the length means the length.
inline int KyClampEnd(int end, int length) { return end < 0 || end > length ? length : end; }

// Keeps a start inside [0, limit], so that no position reaches outside the text.
inline int KyClampStart(int start, int limit) { return start < 0 ? 0 : (start > limit ? limit : start); }

inline const char* KyFindUnit(const char* s, char c, long n) {
  return static_cast<const char*>(std::memchr(s, c, static_cast<std::size_t>(n)));
}
inline const wchar_t* KyFindUnit(const wchar_t* s, wchar_t c, long n) {
  return std::wmemchr(s, c, static_cast<std::size_t>(n));
}
inline int KyEqualUnits(const char* a, const char* b, long n) {
  return std::memcmp(a, b, static_cast<std::size_t>(n)) == 0;
}
// Patterns are short and candidates many: a loop beats a call per candidate.
inline int KyEqualUnits(const wchar_t* a, const wchar_t* b, long n) {
  for (long i = 0; i < n; ++i)
    if (a[i] != b[i]) return 0;
  return 1;
}
inline void KyMoveUnits(char* to, const char* from, long n) {
  if (n > 0) std::memmove(to, from, static_cast<std::size_t>(n));
}
inline void KyMoveUnits(wchar_t* to, const wchar_t* from, long n) {
  if (n > 0) std::wmemmove(to, from, static_cast<std::size_t>(n));
}
inline long KyTextLength(const char* s) { return static_cast<long>(std::strlen(s)); }
inline long KyTextLength(const wchar_t* s) { return static_cast<long>(std::wcslen(s)); }

// Whole-tail comparison up to the terminators: -1 or +1 at the first difference, taken
// as unsigned units, and 0 when both end together.
inline int KyCompareTails(const char* a, const char* b) {
  int r = std::strcmp(a, b);
  return (r > 0) - (r < 0);
}
inline int KyCompareTails(const wchar_t* a, const wchar_t* b) {
  for (;; ++a, ++b) {
    auto x = static_cast<std::make_unsigned<wchar_t>::type>(*a);
    auto y = static_cast<std::make_unsigned<wchar_t>::type>(*b);
    if (x != y) return x < y ? -1 : 1;
    if (x == 0) return 0;
  }
}
inline int KyComparePrefix(const char* a, const char* b, long n) {
  return std::strncmp(a, b, static_cast<std::size_t>(n));
}
inline int KyComparePrefix(const wchar_t* a, const wchar_t* b, long n) {
  return std::wcsncmp(a, b, static_cast<std::size_t>(n));
}
inline int KyCaseCompareTails(const char* a, const char* b) { return strcasecmp(a, b); }
inline int KyCaseCompareTails(const wchar_t* a, const wchar_t* b) { return wcscasecmp(a, b); }
inline int KyCaseComparePrefix(const char* a, const char* b, long n) {
  return strncasecmp(a, b, static_cast<std::size_t>(n));
}
inline int KyCaseComparePrefix(const wchar_t* a, const wchar_t* b, long n) {
  return wcsncasecmp(a, b, static_cast<std::size_t>(n));
}

// First p in [0, hayLength - n] with hay[p, p + n) equal to needle, or -1. Candidates
// are found by their first byte; when they fail more often than once in 16 bytes, the
// rest of the hay goes to memmem, whose time stays linear whatever the text.
inline long KySearchUnits(const char* hay, long hayLength, const char* needle, long n) {
  if (n > hayLength) return -1;
  if (n == 0) return 0;
  const char* last = hay + (hayLength - n);
  long misses = 0;
  for (const char* p = hay; p <= last; ++p) {
    if (misses * 16 > (p - hay) + 256) {
      const void* at = memmem(p, static_cast<std::size_t>(last - p + n), needle, static_cast<std::size_t>(n));
      return at == nullptr ? -1 : static_cast<const char*>(at) - hay;
    }
    p = static_cast<const char*>(std::memchr(p, needle[0], static_cast<std::size_t>(last - p + 1)));
    if (p == nullptr) return -1;
    if (KyEqualUnits(p + 1, needle + 1, n - 1)) return p - hay;
    ++misses;
  }
  return -1;
}
// Like the byte search, candidates come from their first unit until they fail more
// often than once in 16 units. Wide text has no memmem, so the rest is then searched
// by stepping on the last unit of the window as far as the pattern allows (a 64-entry
// table of the low bits keeps the set-up cheap).
inline long KySearchWideSkipping(const wchar_t* hay, const wchar_t* from, const wchar_t* last, const wchar_t* needle,
                                 long n) {
  unsigned char shift[64];
  const unsigned char most = static_cast<unsigned char>(std::min<long>(n, 255));
  std::memset(shift, most, sizeof shift);
  for (long i = 0; i < n - 1; ++i)
    shift[static_cast<unsigned>(needle[i]) & 63] = static_cast<unsigned char>(std::min<long>(n - 1 - i, most));
  const wchar_t final = needle[n - 1];
  for (const wchar_t* p = from; p <= last;) {
    const wchar_t unit = p[n - 1];
    if (unit == final && KyEqualUnits(p, needle, n - 1)) return p - hay;
    p += shift[static_cast<unsigned>(unit) & 63];
  }
  return -1;
}

inline long KySearchUnits(const wchar_t* hay, long hayLength, const wchar_t* needle, long n) {
  if (n > hayLength) return -1;
  if (n == 0) return 0;
  const wchar_t* last = hay + (hayLength - n);
  long misses = 0;
  for (const wchar_t* p = hay; p <= last; ++p) {
    if (n >= 2 && misses * 16 > (p - hay) + 64) return KySearchWideSkipping(hay, p, last, needle, n);
    p = std::wmemchr(p, needle[0], static_cast<std::size_t>(last - p + 1));
    if (p == nullptr) return -1;
    if (KyEqualUnits(p + 1, needle + 1, n - 1)) return p - hay;
    ++misses;
  }
  return -1;
}

// strncmp and wcsncmp stop at a zero unit that both sides share: n units of pattern
// compare equal exactly when the units up to and including the pattern's first zero
// (or all n) are equal. This gives the length that a plain comparison must cover.
template <typename Char>
long KyComparedLength(const Char* pattern, long n) {
  const Char* zero = KyFindUnit(pattern, Char(0), n);
  return zero == nullptr ? n : zero - pattern + 1;
}

// The first position from `from` on, below length - n + 1, where n units of pattern
// compare equal as strncmp would compare them; -1 if none. n is at least 1. A negative
// `from` starts at 0.
template <typename Char>
int KyFindForward(const Char* text, int length, int from, const Char* pattern, int n) {
  if (from < 0) from = 0;
  const long last = static_cast<long>(length) - n;
  if (from > last) return -1;
  const long compared = KyComparedLength(pattern, n);
  const long at = KySearchUnits(text + from, last - from + compared, pattern, compared);
  return at < 0 ? -1 : static_cast<int>(from + at);
}

// Going down from `from` (at most length) to 0, the first position where n units of
// pattern compare equal as strncmp would compare them. A negative n compares without
// limit, as strcmp: the rest of the text must equal the whole pattern.
template <typename Char>
int KyFindBackward(const Char* text, int length, int from, const Char* pattern, int n) {
  if (n < 0) {
    const long patternLength = KyTextLength(pattern);
    for (long pos = std::min<long>(from, length - patternLength); pos >= 0; --pos)
      if (text[pos + patternLength] == Char(0) && KyEqualUnits(text + pos, pattern, patternLength))
        return static_cast<int>(pos);
    return -1;
  }
  if (n == 0) return from >= 0 ? from : -1;
  // A candidate whose compared units would run past the terminator meets the
  // terminator before the pattern's own zero, so it cannot compare equal.
  const long compared = KyComparedLength(pattern, n);
  for (long pos = std::min<long>(from, length + 1 - compared); pos >= 0; --pos)
    if (text[pos] == pattern[0] && KyEqualUnits(text + pos, pattern, compared)) return static_cast<int>(pos);
  return -1;
}

// The comparison shared by compare and caseCompare. When both ranges reach the end of
// their texts the tails are compared whole and the shorter sorts first. Otherwise the
// common prefix decides, and on a tie the shorter range sorts after the longer one:
// callers rely on that reversed sign.
template <typename Char, typename Tails, typename Prefix>
int KyCompareRanges(const Char* text, int length, const Char* other, int otherLength, int start, int end,
                    int otherStart, int otherEnd, Tails tails, Prefix prefix) {
  end = KyClampEnd(end, length);
  otherEnd = KyClampEnd(otherEnd, otherLength);
  start = KyClampStart(start, end);
  otherStart = KyClampStart(otherStart, otherEnd);
  if (end == length && otherEnd == otherLength) return tails(text + start, other + otherStart);
  const long n = end - start;
  const long m = otherEnd - otherStart;
  const int r = prefix(text + start, other + otherStart, std::min(n, m));
  if (r != 0) return r;
  if (n == m) return 0;
  return n < m ? 1 : -1;
}

// True when seg, of k units with "?" matching any unit, equals text[0, k).
template <typename Char>
bool KySegmentAt(const Char* text, const Char* seg, long k) {
  for (long x = 0; x < k; ++x)
    if (seg[x] != Char('?') && seg[x] != text[x]) return false;
  return true;
}

// The leftmost p in [from, n - k] where seg matches text at p, or -1.
template <typename Char>
long KySegmentFind(const Char* text, long n, long from, const Char* seg, long k) {
  if (KyFindUnit(seg, Char('?'), k) == nullptr) {
    const long at = KySearchUnits(text + from, n - from, seg, k);
    return at < 0 ? -1 : from + at;
  }
  for (long p = from; p + k <= n; ++p)
    if (KySegmentAt(text + p, seg, k)) return p;
  return -1;
}

// Wildcard matching of a text that holds no "*". There a pattern "*" is an ordinary run
// of any length, so the fixed prefix and suffix are anchored and each middle segment is
// best taken at its leftmost place.
template <typename Char>
bool KyMatchPlainText(const Char* t, long n, const Char* p, long m) {
  const Char star('*');
  const Char* firstStar = KyFindUnit(p, star, m);
  if (firstStar == nullptr) return n == m && KySegmentAt(t, p, m);
  const long head = firstStar - p;
  if (head > n || !KySegmentAt(t, p, head)) return false;
  long lastStar = m - 1;
  while (p[lastStar] != star) --lastStar;
  const long tail = m - lastStar - 1;
  if (tail > n - head) return false;
  const long tailStart = n - tail;
  if (!KySegmentAt(t + tailStart, p + lastStar + 1, tail)) return false;
  long i = head;
  for (long s = head + 1; s <= lastStar;) {
    const long e = KyFindUnit(p + s, star, lastStar - s + 1) - p;
    if (e > s) {
      const long at = KySegmentFind(t, tailStart, i, p + s, e - s);
      if (at < 0) return false;
      i = at + (e - s);
    }
    s = e + 1;
  }
  return true;
}

// Wildcard matching by table, for a text that holds a "*". At (i, j): the end of the
// text needs a rest of pattern made of "*" only; the end of the pattern fails; a "?"
// or an equal unit advances both (so a "*" meets a text "*" as a plain character);
// another pattern "*" tries (i + 1, j), (i, j + 1) and (i + 1, j + 1). Rows run from the
// end of the text back, two at a time, in time n * m.
template <typename Char>
bool KyMatchTable(const Char* t, long n, const Char* p, long m) {
  const Char star('*');
  std::vector<char> next(static_cast<std::size_t>(m) + 1);
  std::vector<char> current(static_cast<std::size_t>(m) + 1);
  next[m] = 1;
  for (long j = m - 1; j >= 0; --j) next[j] = p[j] == star && next[j + 1];
  for (long i = n - 1; i >= 0; --i) {
    current[m] = 0;
    for (long j = m - 1; j >= 0; --j) {
      if (p[j] == Char('?') || p[j] == t[i])
        current[j] = next[j + 1];
      else if (p[j] != star)
        current[j] = 0;
      else
        current[j] = next[j] || current[j + 1] || next[j + 1];
    }
    current.swap(next);
  }
  return next[0] != 0;
}

// Wildcard match of text[i, iEnd) against pattern[j, jEnd): "?" is one unit, "*" any
// run, no escape, case-sensitive.
template <typename Char>
bool KyMatchRange(const Char* text, int i, int iEnd, const Char* pattern, int j, int jEnd) {
  if (KyFindUnit(text + i, Char('*'), iEnd - i) != nullptr)
    return KyMatchTable(text + i, iEnd - i, pattern + j, jEnd - j);
  return KyMatchPlainText(text + i, iEnd - i, pattern + j, jEnd - j);
}

enum KyUnitEdit { kKyUnitEditNone, kKyUnitEditInPlace, kKyUnitEditRebuilt };

// Splices count units of other over buffer[start, end), with 0 <= start <= end <=
// length. A range of the same size is overwritten in place; otherwise *rebuilt gets a
// new block. A result longer than KyInternalString::kMaxLength is refused.
template <typename Char>
KyUnitEdit KyReplaceUnits(Char* buffer, int length, int start, int end, const Char* other, int count,
                          Char** rebuilt) {
  if (end - start == count) {
    KyMoveUnits(buffer + start, other, count);
    return kKyUnitEditInPlace;
  }
  const long long total = static_cast<long long>(length) - (end - start) + count;
  if (total > KyInternalString::kMaxLength) return kKyUnitEditNone;
  Char* out = new Char[static_cast<std::size_t>(total) + 1];
  KyMoveUnits(out, buffer, start);
  KyMoveUnits(out + start, other, count);
  KyMoveUnits(out + start + count, buffer + end, length - end);
  out[total] = Char(0);
  *rebuilt = out;
  return kKyUnitEditRebuilt;
}

// Replaces the occurrences of oldText (oldLength units, at least 1) by newText. The
// occurrences are found from `start` on, stepping one unit past the start of each, and
// only those starting at or below end - oldLength count. With equal lengths the text is
// rewritten in place and each search sees what was already written, so "aaaa" with
// "aa" to "ba" gives "bbba". Otherwise the occurrences are found on the unchanged text
// and the output is cut back where two overlap, so "aaa" with "aa" to "b" gives "b".
// The cut may reach before the start of the output for a moment: units written there
// are dropped, and the block is sized for the largest extent the output reaches.
template <typename Char>
KyUnitEdit KySubstituteUnits(Char* buffer, int length, int start, int end, const Char* oldText, int oldLength,
                             const Char* newText, int newLength, Char** rebuilt) {
  const int limit = end - oldLength;
  int p = KyFindForward(buffer, length, start, oldText, oldLength);
  if (p < 0 || p > limit) return kKyUnitEditNone;
  if (oldLength == newLength) {
    do {
      KyMoveUnits(buffer + p, newText, newLength);
      p = KyFindForward(buffer, length, p + 1, oldText, oldLength);
    } while (p >= 0 && p <= limit);
    return kKyUnitEditInPlace;
  }
  std::vector<int> found;
  for (int q = p; q >= 0 && q <= limit; q = KyFindForward(buffer, length, q + 1, oldText, oldLength))
    found.push_back(q);
  const long long total =
      static_cast<long long>(length) + static_cast<long long>(newLength - oldLength) * static_cast<long long>(found.size());
  if (total > KyInternalString::kMaxLength) return kKyUnitEditNone;
  Char* out = new Char[static_cast<std::size_t>(std::max<long long>(length, total)) + 1];
  long long pos = 0;
  auto put = [&](const Char* from, long long count) {
    if (pos < 0) {
      const long long skip = std::min(count, -pos);
      from += skip;
      count -= skip;
      pos += skip;
    }
    KyMoveUnits(out + pos, from, static_cast<long>(count));
    pos += count;
  };
  put(buffer, found[0]);
  for (std::size_t k = 0;; ++k) {
    put(newText, newLength);
    if (k + 1 == found.size()) break;
    const long long gap = static_cast<long long>(found[k + 1]) - found[k] - oldLength;
    if (gap > 0)
      put(buffer + found[k] + oldLength, gap);
    else
      pos += gap;
  }
  put(buffer + found.back() + oldLength, length - found.back() - oldLength);
  out[pos < 0 ? 0 : pos] = Char(0);
  *rebuilt = out;
  return kKyUnitEditRebuilt;
}

#endif  // KYBASE_TEXT_STRING_UNITS_INTERNAL_H
