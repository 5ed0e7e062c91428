// KyMBString: the body of a KyString made while the process's character set is multi
// byte (MB_CUR_MAX of 2 or more). The text is kept twice: wideValue, the working form
// in which characters are wide units and every edit is made, and the narrow value,
// regenerated from the wide form after each edit under the current LC_CTYPE.
//
// Conversions never leave their buffers: narrow text stops at its first byte that does
// not begin a valid character of the current encoding, and the narrow form stops at the
// first wide unit that the current encoding cannot write (the wide form keeps it). A
// count given with narrow text does not shorten it: the whole text is converted.
//
// Arguments of another kind must be KyMBString too (the cast throws std::bad_cast
// otherwise). Ownership, failure and threads as for KyInternalString.
#ifndef KYBASE_TEXT_MB_STRING_H
#define KYBASE_TEXT_MB_STRING_H

#include <cwchar>

#include "kybase/core/export.h"
#include "kybase/text/internal_string.h"

/// The multi-byte body: the text kept as wide units beside its narrow bytes, so that
/// characters are wide units.
class KY_EXPORT KyMBString : public KyInternalString {
 public:
  /// A body from narrow text (null: the empty text), decoded under the current locale;
  /// the count is not used.
  explicit KyMBString(const char* text = nullptr, int count = -1);
  /// Frees both forms of the text.
  ~KyMBString() override;

  /// Sets the text from narrow bytes. With copy false the body adopts text, which must
  /// come from new[]. A null text is the empty text.
  void setValue(const char* text, bool copy, int count);
  /// Sets the text from wide units: count units, or to the terminator for a negative
  /// count. With copy false the body adopts text (from new[]). releaseOld frees the
  /// current wide form first.
  void setWideValue(const wchar_t* text, bool copy, int count, bool releaseOld);

  /// The wide form, zero-terminated.
  const wchar_t* getWideValue() const { return wideValue; }
  /// The number of wide units, the terminator included.
  int getWideSize() const { return wideSize; }

  KyInternalString* getSubString(int start, int end) const override;
  int getIndexOf(const KyInternalString& pattern, int from, int patternStart, int patternEnd) const override;
  int getLastIndexOf(const KyInternalString& pattern, int from, int patternStart, int patternEnd) const override;
  bool isBlank() const override;
  int compare(const KyInternalString& other, int start, int end, int otherStart, int otherEnd) const override;
  int caseCompare(const KyInternalString& other, int start, int end, int otherStart, int otherEnd) const override;
  bool matches(const KyInternalString& pattern, int start, int end, int patternStart,
               int patternEnd) const override;
  int isMultiByte() const override;
  void replace(const KyInternalString& other, int start, int end, int otherStart, int otherEnd) override;
  void substitute(const KyInternalString& oldText, const KyInternalString& newText, int start, int end,
                  int oldStart, int oldEnd, int newStart, int newEnd) override;
  KyInternalString* substituted(const KyInternalString& oldText, const KyInternalString& newText, int start, int end,
                                int oldStart, int oldEnd, int newStart, int newEnd) const override;
  void toLower() override;
  void toUpper() override;
  KyInternalString* copy() const override;

 private:
  /// Takes over buffer as the wide form, recounts from its terminator and regenerates
  /// the narrow form.
  void adoptWide(wchar_t* buffer);
  /// Rebuilds value and size from the wide form.
  void regenerateNarrow();

  wchar_t* wideValue;
  int wideSize;
};

#endif  // KYBASE_TEXT_MB_STRING_H
