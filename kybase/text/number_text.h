// Text for doubles that reads the same under every LC_NUMERIC: the decimal separator in
// text is always ".", whatever the process's locale says.
//
// KyDoubleToString writes into a buffer the caller owns and sizes; no size is passed, so
// the buffer has to hold the longest result of the format (32 bytes are ample for the
// default "%.16g"). Anything the format writes before an exponent letter that is not a
// digit, "+" or "-" becomes "." (a decimal comma, but also blanks or letters that a
// caller's format adds). NaN and the infinities are written as "NaN", "Infinity" and
// "-Infinity" whatever the format.
//
// KyStringToDouble reads a number from the start of a text and points `end` behind what
// it read. It fails (returns false) only for a NaN result; a text without a number gives
// 0 with `end` at the start, so callers look at `end`.
//
// Both functions are re-entrant apart from the runtime's locale, which they read and
// never change. Nothing is thrown.
#ifndef KYBASE_TEXT_NUMBER_TEXT_H
#define KYBASE_TEXT_NUMBER_TEXT_H

#include "kybase/core/export.h"

/// Writes `value` with `format` (null means "%.16g") and returns the length of the text.
KY_EXPORT int KyDoubleToString(char* buffer, double value, const char* format);

/// Reads a number at the start of `text` into `result`; false when the result is a NaN.
KY_EXPORT bool KyStringToDouble(const char* text, char*& end, double& result);

#endif  // KYBASE_TEXT_NUMBER_TEXT_H
