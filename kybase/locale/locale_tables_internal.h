// The locale layer's tables and the lookups over them. Exported for the tests and the
// fuzz target only; clients use the static services of KyLocale.
//
// Every result that is a char* is a new array the caller releases with delete[].
#ifndef KYBASE_LOCALE_LOCALE_TABLES_INTERNAL_H
#define KYBASE_LOCALE_LOCALE_TABLES_INTERNAL_H

#include "kybase/core/export.h"
#include "kybase/locale/locale_tables.h"
#include "kybase/text/kystring.h"

struct KY_EXPORT KyLocaleTables {
  struct EncodingRow {
    KyEncoding id;
    const char* name;
    int compatible[3];  // ended early by -1
    int partlyCompatible[3];
  };
  struct NameRow {
    const char* key;
    const char* value;
  };

  static constexpr int kEncodingCount = 42;
  static constexpr int kNameCount = 128;
  static const EncodingRow encodingTable[kEncodingCount];
  static const NameRow localeNameTable[kNameCount + 1];  // ended by a null key

  // The standard language and territory of a system base name, or null.
  static char* lookupStdLangTerr(const char* base);
  // The encoding of a codeset spelling; stdLangTerr may be null.
  static KyEncoding encodingFromCodeset(KyString codeset, const char* stdLangTerr);
  // The codeset of the current LC_CTYPE in a spelling encodingFromCodeset knows, or
  // null when the system names none.
  static char* currentCodePageName();
  static KyEncodingCompat isEncodingCompatible(KyEncoding own, KyEncoding other);

  // Splits a system locale name into base and codeset at the last dot, after dropping
  // an "@modifier". codeset is null when there is no dot. Both are new arrays.
  static void splitName(const char* name, char*& base, char*& codeset);
  static char* copyText(const char* text);  // null for null
};

#endif  // KYBASE_LOCALE_LOCALE_TABLES_INTERNAL_H
