// KyLocale: a record of one system locale and, by its construction, an action on the
// process: the constructor calls setlocale(LC_ALL, name) and nothing restores the
// earlier locale. Each object holds the system name and a standard form ("en_US" and a
// KyEncoding) of its character-type and messages categories.
//
// Every live object is listed in a process-wide table in construction order; the
// first good one becomes the default (KySetLocale and setDefaultLocale change it).
// Being the default is no hold: lock() and unlock() count holds, and the unlock that
// brings the count back to 0 deletes the object. A locale made with new and never
// locked lives until deleted by hand.
//
// Failure: a name the system refuses makes a "bad" object (descriptors "C") and a line
// on standard error; a name the tables don't know is usable but not standard, with a
// warning line. Threads: none; setlocale and the list are process-wide.
#ifndef KYBASE_LOCALE_KYLOCALE_H
#define KYBASE_LOCALE_KYLOCALE_H

#include "kybase/core/export.h"
#include "kybase/locale/days_of_week.h"
#include "kybase/locale/locale_extension.h"
#include "kybase/locale/locale_tables.h"

class KyLocaleCatDescriptor;

/// The locale categories a KyLocale keeps: character type and messages.
enum KyCategory : int {
  kCategoryAll = 0,       ///< both categories
  kCategoryCType = 2,     ///< character type (LC_CTYPE)
  kCategoryMessages = 6,  ///< messages; the name is read from LC_CTYPE
};

/// A locale object; see the family page for its list, its default and its locks.
class KY_EXPORT KyLocale {
 public:
  /// A null name takes the environment's locale.
  explicit KyLocale(const char* name = nullptr);
  virtual ~KyLocale();
  KyLocale(const KyLocale&) = delete;
  KyLocale& operator=(const KyLocale&) = delete;

  /// Week settings read by the calendar: Monday and 0 here; a derived locale may answer
  /// otherwise.
  virtual KyDaysOfWeek::EDaysOfWeek getFirstDayOfWeek() const { return KyDaysOfWeek::kMonday; }
  /// \copydoc getFirstDayOfWeek
  virtual unsigned char getMinimalDaysInFirstWeek() const { return 0; }

  /// With a null name, the default locale. Otherwise the first listed object whose
  /// character-type system name is exactly `name` (no setlocale call); failing that,
  /// with `create`, a new object, deleted again (null returned) if the system refuses.
  static KyLocale* Get(bool create, const char* name);

  /// The standard name of an encoding ("UTF-8", "ISO-8859-1", ...); null outside 0..41.
  static const char* GetEncodingName(KyEncoding encoding);
  /// The encoding of a standard name, compared exactly; kUnknownEncoding otherwise.
  static KyEncoding GetKyEncoding(const char* name);
  /// "ll_TT.encoding" for a system name, for the caller to delete[]; null when the base
  /// is unknown or the system refuses the name. A name without a codeset makes (and
  /// leaves listed) a KyLocale of it and restores the process locale afterwards.
  static char* GetStdLocaleName(const char* systemName);

  /// Makes this object the default locale, the one Get(…, nullptr) returns.
  void setDefaultLocale();
  /// Adds one lock.
  void lock();
  /// Takes one lock away; the object deletes itself when none is left.
  void unlock();

  /// True when the system refused the name the object was made with.
  bool isBad() const { return bad; }
  /// The descriptor of the character-type or messages category; null for any other.
  KyLocaleCatDescriptor* getCategory(KyCategory category) const;
  /// The encoding of the character-type codeset.
  KyEncoding getEncoding() const { return encoding; }
  /// The encoding of one category's standard name; kUnknownEncoding for no category.
  KyEncoding getEncoding(KyCategory category) const;
  /// The most bytes of a character (MB_CUR_MAX) under this locale.
  unsigned short getMaxCharSize() const { return maxCharSize; }
  /// The codeset part of the character-type system name, or null.
  const char* getSystemCodeset() const { return systemCodeset; }
  /// The system name of a category, as given to setlocale; null for no category.
  const char* getSystemLocaleName(KyCategory category) const;
  /// The standard "ll_TT" of a category, or null.
  const char* getStdLangTerr(KyCategory category) const;
  /// The standard "ll_TT.encoding" of a category for the caller to delete[], or null.
  char* getStdLocaleName(KyCategory category) const;
  /// True when the category's name maps to a standard one.
  bool isStandardLocale(KyCategory category) const;
  /// How text in `other` reads under this locale's encoding.
  KyEncodingCompat isEncodingCompatible(KyEncoding other) const;

  /// kCategoryAll sets both categories. With setSystem, a character-type name is also
  /// given to setlocale(LC_CTYPE, ...); the messages category never touches the system.
  bool setSystemLocaleName(const char* name, bool setSystem, KyCategory category);
  /// Reads the encoding again from the character-type name ("C" is US-ASCII); false
  /// without a name.
  bool setEncoding();

  /// The list holds no reference and keeps duplicates. An extension's destructor takes
  /// all its entries off the locale it extends; entries on any other locale are the
  /// client's to remove before the extension dies. A null extension is not listed.
  void addExtension(KyLocaleExtension* extension);
  /// Takes the first entry of `extension` off the list.
  void removeExtension(KyLocaleExtension* extension);
  /// The first listed extension of this type, or null.
  KyLocaleExtension* getExtension(int type) const { return extensions.find(type); }

 private:
  friend class KyLocaleExtension;
  void setMaxCharSize();

  static KyLocale* _Locale;
  static KyLocale** _LocaleList;
  /// Counts are wider than the 16 bits a reference build used, so any number of live
  /// locales and locks works.
  static unsigned long _LocaleNumber;
  static unsigned long _MaxLocaleNumber;

  bool bad = false;
  KyLocaleCatDescriptor* ctypeCategory = nullptr;
  char* systemCodeset = nullptr;
  KyEncoding encoding = kUnknownEncoding;
  unsigned short maxCharSize = 1;
  KyLocaleCatDescriptor* messagesCategory = nullptr;
  KyExtensionList extensions;
  long lockCount = 0;
};

/// Finds or makes the named locale (see KyLocale::Get) and makes it the default; null,
/// with the default unchanged, when the system refuses the name.
/// Get(true, name) made the default locale; null when the system refuses the name.
KY_EXPORT KyLocale* KySetLocale(const char* name);

#endif  // KYBASE_LOCALE_KYLOCALE_H
