// KyString: the library's text value. A handle of one pointer on a shared,
// reference-counted body (KyInternalString): copies share the body, and every edit
// first makes the body private (copy on write). The body's kind is chosen when the
// string is made, from the current MB_CUR_MAX: below 2 a KySBString, where characters
// are bytes; otherwise a KyMBString, where characters are wide units. All positions and
// lengths count characters; only getSize, getValue, copyValue and the conversion to
// const char* speak of narrow bytes.
//
// Kinds may be mixed only one way: a KyMBString takes a KySBString argument while the
// process is still multi-byte (through a temporary made from its narrow bytes); every
// other mixed call gives up quietly (-1, false, or the string unchanged).
//
// Failure: bad ranges never throw. compare, caseCompare and matches write one line on
// standard error for a reversed range; everything else is silent. Allocation failure is
// std::bad_alloc. Threads: none of this is thread-safe; counts change by plain
// arithmetic, so copies of one string must not be used from two threads.
#ifndef KYBASE_TEXT_KYSTRING_H
#define KYBASE_TEXT_KYSTRING_H

#include <iosfwd>

#include "kybase/core/export.h"
#include "kybase/text/internal_string.h"

/// The library's text value; see the family page for bodies, kinds and failure.
class KY_EXPORT KyString {
 public:
  /// "%d", the format of the int constructor.
  static const char* const DefaultIntegerFormat;
  /// "%u", the format of the unsigned int constructor.
  static const char* const DefaultUnsignedIntegerFormat;
  /// "%hd", the format of the short constructor.
  static const char* const DefaultShortFormat;
  /// "%hu", the format of the unsigned short constructor.
  static const char* const DefaultUnsignedShortFormat;
  /// "%ld", the format of the long constructor.
  static const char* const DefaultLongFormat;
  /// "%lu", the format of the unsigned long constructor.
  static const char* const DefaultUnsignedLongFormat;
  /// "%f", the format of the float constructor.
  static const char* const DefaultFloatFormat;
  /// "%g", the format of the double constructor.
  static const char* const DefaultDoubleFormat;
  /// "", the text of every empty string.
  static const char* const EmptyCString;

  /// From narrow text; a null text is the empty string. A count of -1 takes the text to
  /// its terminator. A single-byte string takes any other count as its length (a count
  /// past the text leaves zero bytes inside the length); a multi-byte string ignores it.
  KyString(const char* text = nullptr, int count = -1);
  /// From a number, formatted with the caller's printf format (a null format means the
  /// default). Output of any length is kept whole.
  KyString(short number, const char* format = DefaultShortFormat);
  /// \copydoc KyString(short, const char*)
  KyString(unsigned short number, const char* format = DefaultUnsignedShortFormat);
  /// \copydoc KyString(short, const char*)
  KyString(int number, const char* format = DefaultIntegerFormat);
  /// \copydoc KyString(short, const char*)
  KyString(unsigned int number, const char* format = DefaultUnsignedIntegerFormat);
  /// \copydoc KyString(short, const char*)
  KyString(long number, const char* format = DefaultLongFormat);
  /// \copydoc KyString(short, const char*)
  KyString(unsigned long number, const char* format = DefaultUnsignedLongFormat);
  /// \copydoc KyString(short, const char*)
  KyString(float number, const char* format = DefaultFloatFormat);
  /// \copydoc KyString(short, const char*)
  KyString(double number, const char* format = DefaultDoubleFormat);
  /// Shares the other's body.
  KyString(const KyString& other) : internalString(other.internalString) { ++internalString->refCount; }
  /// Lets go of the body, which dies with its last handle.
  ~KyString() { Release(internalString); }
  /// Shares the other's body.
  KyString& operator=(const KyString& other);

  /// The narrow text, zero-terminated; valid until the next edit of the string.
  const char* getValue() const { return internalString->value; }
  /// The same as getValue().
  operator const char*() const { return internalString->value; }
  /// A new array of getSize() bytes; the caller releases it with delete[].
  char* copyValue() const;
  /// The number of characters.
  unsigned int getLength() const { return static_cast<unsigned int>(internalString->length); }
  /// The number of narrow bytes, the terminator included.
  unsigned int getSize() const { return internalString->size; }
  /// True for a string of no characters.
  bool isEmpty() const { return internalString->value == nullptr || internalString->value[0] == '\0'; }
  /// The same as isEmpty().
  bool operator!() const { return isEmpty(); }
  /// True when the string is empty or holds blanks only.
  bool isBlank() const;
  /// The body, shared with the copies.
  KyInternalString* getInternalString() const { return internalString; }
  /// Characters [start, end); a whole-string range shares the body.
  KyString getSubString(int start, int end) const;

  /// Compares [start, end) of this string with [otherStart, otherEnd) of `other`
  /// character by character: below 0, 0 or above 0. A reversed range writes one line on
  /// standard error; strings of kinds that do not mix give -1.
  int compare(const KyString& other, int start = 0, int end = -1, int otherStart = 0, int otherEnd = -1) const;
  /// compare() without regard to case.
  int caseCompare(const KyString& other, int start = 0, int end = -1, int otherStart = 0,
                  int otherEnd = -1) const;
  /// True when the two ranges hold the same characters; two empty ranges are equal.
  bool equals(const KyString& other, int start = 0, int end = -1, int otherStart = 0, int otherEnd = -1) const;
  /// Wildcards: "?" is one character, "*" any run; no escape. A "*" in the text meets a
  /// "*" of the pattern as a plain character.
  bool matches(const KyString& pattern, int start = 0, int end = -1, int patternStart = 0,
               int patternEnd = -1) const;
  /// The first position from `from` where [patternStart, patternEnd) of `pattern`
  /// occurs, or -1.
  int getIndexOf(const KyString& pattern, int from = 0, int patternStart = 0, int patternEnd = -1) const;
  /// The last position at or before `from` (-1: the end) where the pattern range occurs,
  /// or -1; the length of this string for an empty pattern searched from the end.
  int getLastIndexOf(const KyString& pattern, int from = -1, int patternStart = 0, int patternEnd = -1) const;
  /// True when the pattern range occurs at position 0.
  bool startsWith(const KyString& pattern, int patternStart = 0, int patternEnd = -1) const;
  /// True when the pattern range occurs at the end.
  bool endsWith(const KyString& pattern, int patternStart = 0, int patternEnd = -1) const;

  /// \name Comparison of whole strings
  /** @{ */
  /// equals() and compare() over the whole of both strings.
  bool operator==(const KyString& other) const;
  bool operator!=(const KyString& other) const;
  bool operator<(const KyString& other) const;
  bool operator<=(const KyString& other) const;
  bool operator>(const KyString& other) const;
  bool operator>=(const KyString& other) const;
  // Narrow text on the right, so that s == "text" does not also match the built-in
  // comparison of two pointers.
  bool operator==(const char* text) const;
  bool operator!=(const char* text) const;
  bool operator<(const char* text) const;
  bool operator<=(const char* text) const;
  bool operator>(const char* text) const;
  bool operator>=(const char* text) const;
  /** @} */

  /// Replaces [start, end) by [otherStart, otherEnd) of `other`; returns this string.
  KyString& replace(const KyString& other, int start = 0, int end = -1, int otherStart = 0, int otherEnd = -1);
  /// Appends [otherStart, otherEnd) of `other`; returns this string.
  KyString& catenate(const KyString& other, int otherStart = 0, int otherEnd = -1);
  /// Appends the whole of `other`.
  KyString& operator+=(const KyString& other);
  /// Puts [otherStart, otherEnd) of `other` in front; returns this string.
  KyString& prepend(const KyString& other, int otherStart = 0, int otherEnd = -1);
  /// Inserts [otherStart, otherEnd) of `other` before `position`; returns this string.
  KyString& insert(const KyString& other, int position, int otherStart = 0, int otherEnd = -1);
  /// Removes [start, end); returns this string.
  KyString& remove(int start, int end = -1);
  /// Removes the occurrences of [textStart, textEnd) of `text`; returns this string.
  KyString& remove(const KyString& text, int textStart = 0, int textEnd = -1);
  /// Replaces the occurrences of the old range in [start, end) by the new range; returns
  /// this string. Either text may be this string itself.
  KyString& substitute(const KyString& oldText, const KyString& newText, int start = 0, int end = -1,
                       int oldStart = 0, int oldEnd = -1, int newStart = 0, int newEnd = -1);
  /// Lower-cases every character under the current locale; returns this string.
  KyString& toLower();
  /// Upper-cases every character under the current locale; returns this string.
  KyString& toUpper();

  /// The quoted form: the narrow bytes in double quotes, with a backslash before each
  /// backslash and double quote.
  void writeQuoted(std::ostream& stream) const;
  /// Skips everything up to a double quote, then reads to the closing quote; a
  /// backslash makes the next byte literal. The string is emptied first in all cases.
  void readQuoted(std::istream& stream);

 private:
  explicit KyString(KyInternalString* internal);
  /// A handle on a new body made from text, without the shared-empty step.
  static KyInternalString* MakeBody(bool multiByte, const char* text, int count);
  static KyString& sharedEmptyString();
  static void Release(KyInternalString* internal) {
    if (--internal->refCount == 0) delete internal;
  }
  /// 0 when other has this string's kind, 1 when it may be taken through a temporary
  /// KyMBString, -1 when the call must give up.
  int mixing(const KyString& other) const;
  /// compare() and caseCompare(): the same checks and messages, then one of the two.
  int compareRanges(const KyString& other, int start, int end, int otherStart, int otherEnd, bool ignoreCase) const;
  void unshare();
  void reserve(int n);
  /// Empties the string and appends count bytes of text read by a stream operator.
  void storeRead(const char* text, unsigned long count);

  static bool emptySBPending;
  static bool emptyMBPending;

  KyInternalString* internalString;

  friend class KyInternalString;
  friend std::istream& operator>>(std::istream& stream, KyString& string);
};

/// Writes the narrow text as a const char*, so width and fill apply.
/// Writes the narrow text.
KY_EXPORT std::ostream& operator<<(std::ostream& stream, const KyString& string);
/// Reads one token delimited by blank, line feed, tab, carriage return or a zero byte.
/// The delimiter that ends it is consumed. The string is emptied first in all cases.
/// Reads one word, as for a std::string.
KY_EXPORT std::istream& operator>>(std::istream& stream, KyString& string);

#endif  // KYBASE_TEXT_KYSTRING_H
