// KySBString: the body of a KyString made while the process's character set is single
// byte (MB_CUR_MAX below 2). Characters are bytes: positions, lengths and every
// comparison work on the narrow text directly, and case conversion uses the C
// library's byte functions under the current LC_CTYPE.
//
// A count given at construction is taken as the length as it stands: a count beyond
// the text leaves a zero-filled tail inside the length until the next edit recounts.
// Ownership, failure and threads as for KyInternalString.
#ifndef KYBASE_TEXT_SB_STRING_H
#define KYBASE_TEXT_SB_STRING_H

#include "kybase/core/export.h"
#include "kybase/text/internal_string.h"

/// The single-byte body: characters are bytes.
class KY_EXPORT KySBString : public KyInternalString {
 public:
  /// A null text is the empty text; a negative count takes the text to its terminator.
  explicit KySBString(const char* text = nullptr, int count = -1);

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
  /// Replaces the text by count bytes of text (-1: to its terminator).
  void setText(const char* text, int count);
  /// Takes over buffer as the text and recounts length and size from its terminator.
  void adopt(char* buffer);
};

#endif  // KYBASE_TEXT_SB_STRING_H
