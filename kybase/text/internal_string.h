// KyInternalString: the shared, reference-counted body behind every KyString. Two
// kinds exist: KySBString keeps single-byte text, KyMBString keeps multi-byte text
// twice, as narrow bytes and as wide units. A body is made with a count of 0; each
// KyString handle that stores it owns one count, and the last handle deletes it.
//
// Positions and lengths count characters of the body's own kind (bytes, or wide
// units); only getValue and getSize speak of narrow bytes. An operation that takes a
// body of the other kind as argument must not be called on a KyMBString with a
// KySBString argument (the cast throws std::bad_cast); KyString never does that.
//
// Failure: bad ranges are clamped, never reported here. Allocation failure is
// std::bad_alloc from operator new. Nothing is thread-safe: counts change by plain
// arithmetic.
#ifndef KYBASE_TEXT_INTERNAL_STRING_H
#define KYBASE_TEXT_INTERNAL_STRING_H

#include "kybase/core/export.h"

/// The reference-counted body behind KyString; see the family page. Ranges are in
/// characters of the body's kind, end exclusive, -1 for the end.
class KY_EXPORT KyInternalString {
 public:
  /// The longest text a body holds, in characters: lengths are ints, and the size
  /// with its terminator must stay representable.
  static const int kMaxLength = 0x7FFFFFFE;

  /// Bodies are shared by count, never copied this way; see copy().
  KyInternalString(const KyInternalString&) = delete;
  /// Bodies are not assigned.
  KyInternalString& operator=(const KyInternalString&) = delete;

  /// A new body (count 0) holding [start, end).
  virtual KyInternalString* getSubString(int start, int end) const = 0;
  /// The first position from `from` where the pattern range occurs, or -1.
  virtual int getIndexOf(const KyInternalString& pattern, int from, int patternStart, int patternEnd) const = 0;
  /// The last position at or before `from` (-1: the end) where the pattern range
  /// occurs, or -1.
  virtual int getLastIndexOf(const KyInternalString& pattern, int from, int patternStart,
                             int patternEnd) const = 0;
  /// True when every character is a blank.
  virtual bool isBlank() const = 0;
  /// Compares two ranges character by character: below 0, 0 or above 0.
  virtual int compare(const KyInternalString& other, int start, int end, int otherStart, int otherEnd) const = 0;
  /// compare() without regard to case.
  virtual int caseCompare(const KyInternalString& other, int start, int end, int otherStart,
                          int otherEnd) const = 0;
  /// True when the range matches the wildcard pattern range ("?" one character, "*" any
  /// run).
  virtual bool matches(const KyInternalString& pattern, int start, int end, int patternStart,
                       int patternEnd) const = 0;
  /// 1 for a KyMBString body, 0 for a KySBString one.
  virtual int isMultiByte() const = 0;
  /// Replaces [start, end) by the other's range.
  virtual void replace(const KyInternalString& other, int start, int end, int otherStart, int otherEnd) = 0;
  /// Replaces the occurrences of the old range within [start, end) by the new range.
  virtual void substitute(const KyInternalString& oldText, const KyInternalString& newText, int start, int end,
                          int oldStart, int oldEnd, int newStart, int newEnd) = 0;
  /// A new body (count 0) holding what substitute would leave in a copy of this one;
  /// this body is not changed, so the arguments may be this very body.
  virtual KyInternalString* substituted(const KyInternalString& oldText, const KyInternalString& newText, int start,
                                        int end, int oldStart, int oldEnd, int newStart, int newEnd) const;
  /// Lower-cases every character under the current locale.
  virtual void toLower() = 0;
  /// Upper-cases every character under the current locale.
  virtual void toUpper() = 0;
  /// A new body (count 0) of the same kind and text.
  virtual KyInternalString* copy() const = 0;
  /// Gives the narrow buffer n bytes. The old bytes are dropped, not copied, and the new
  /// block is not initialised; length and the wide form are left as they are.
  virtual void reserve(int n);
  virtual ~KyInternalString();

  /// The narrow text, zero-terminated.
  const char* getValue() const { return value; }
  /// The narrow size in bytes, the terminator included.
  unsigned int getSize() const { return size; }
  /// The number of characters.
  int getLength() const { return length; }
  /// The number of handles sharing the body.
  int getRefCount() const { return refCount; }

 protected:
  KyInternalString() : value(nullptr), size(0), length(0), refCount(0) {}

  /// The shared empty body of the kind the current MB_CUR_MAX gives.
  static KyInternalString* SharedEmpty();

  /// The narrow text.
  char* value;
  /// The narrow size in bytes, the terminator included.
  unsigned int size;
  /// The number of characters.
  int length;
  /// The number of handles sharing the body.
  int refCount;

  friend class KyString;
};

#endif  // KYBASE_TEXT_INTERNAL_STRING_H
