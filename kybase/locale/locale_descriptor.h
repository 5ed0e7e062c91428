// KyLocaleCatDescriptor: the naming state of one locale category -- the system's name
// for it and, when the locale tables understand that name, its standard language and
// territory ("fr_FR") and encoding.
//
// Ownership: both texts are owned and copied on assignment. Failure: nothing is
// reported; a name the tables don't know leaves the descriptor non-standard. Threads:
// standardising may switch LC_CTYPE for a moment, which acts on the whole process.
#ifndef KYBASE_LOCALE_LOCALE_DESCRIPTOR_H
#define KYBASE_LOCALE_LOCALE_DESCRIPTOR_H

#include "kybase/core/export.h"
#include "kybase/locale/locale_tables.h"

/// The names of one locale category: the system name and its standard form.
class KY_EXPORT KyLocaleCatDescriptor {
 public:
  /// A category of no name.
  KyLocaleCatDescriptor() = default;
  /// A copy with texts of its own.
  KyLocaleCatDescriptor(const KyLocaleCatDescriptor& other);
  /// Copies the other's texts; assigning an object to itself changes nothing.
  KyLocaleCatDescriptor& operator=(const KyLocaleCatDescriptor& other);
  /// Frees the texts.
  ~KyLocaleCatDescriptor();

  /// The system name, or null.
  const char* getSystemLocaleName() const { return systemLocaleName; }
  /// The standard "ll_TT", or null.
  const char* getStdLangTerr() const { return stdLangTerr; }
  /// The encoding of the standard name.
  KyEncoding getEncoding() const { return encoding; }
  /// True when the system name maps to a standard one.
  bool isStandard() const { return standard; }

  /// stdLangTerr, a dot and the encoding's standard name, for the caller to delete[];
  /// null when the category is not standard.
  char* getStdLocaleName();

  /// Stores a copy of the name (null for a null or empty one) and standardises it.
  bool setSystemLocaleName(const char* name);
  /// Gives the category its standard form directly. A "ll_TT" shape becomes the
  /// standard pair and clears the system name; anything else becomes the system name,
  /// unstandardised. Nothing changes when the pair is already the one held.
  void setStdLangTerr(const char* langTerr, KyEncoding encoding);
  /// Derives the standard pair and encoding from the system name; false when there is
  /// no name or its base is unknown.
  bool standardize();

 private:
  void clear();

  char* systemLocaleName = nullptr;
  bool standard = false;
  char* stdLangTerr = nullptr;
  KyEncoding encoding = kUnknownEncoding;
};

#endif  // KYBASE_LOCALE_LOCALE_DESCRIPTOR_H
