// KyLocaleExtension: the base of a client's per-locale data. An extension is tied to
// one KyLocale, on which it holds one lock from construction to destruction, answers
// the locale's questions by forwarding, and can be found on the locale by its type
// once the client has added it there (addExtension).
//
// Its own lock()/unlock() count holds on the extension; the unlock that brings the
// count to 0 deletes it. Its destructor takes it off its locale's list, then unlocks
// the locale, which dies with its last lock. Built on a null locale, an extension
// answers every forwarded question with 0, null or false.
//
// KyExtensionList: the locale's array of extensions; it owns the array, not the
// extensions, and keeps duplicates. Threads: none of this is synchronised.
#ifndef KYBASE_LOCALE_LOCALE_EXTENSION_H
#define KYBASE_LOCALE_LOCALE_EXTENSION_H

#include "kybase/core/export.h"
#include "kybase/locale/locale_tables.h"

class KyLocale;
class KyLocaleExtension;
enum KyCategory : int;

/// The extensions listed on one locale, in a growable array.
class KY_EXPORT KyExtensionList {
 public:
  /// An empty list.
  KyExtensionList() = default;
  /// Frees the array; the extensions are not touched.
  ~KyExtensionList();
  /// A list belongs to one locale.
  KyExtensionList(const KyExtensionList&) = delete;
  /// A list belongs to one locale.
  KyExtensionList& operator=(const KyExtensionList&) = delete;

  /// Appends an entry; a null extension is not added.
  void add(KyLocaleExtension* extension);
  /// Takes out the first entry equal to `extension`; the rest keep their order.
  void remove(KyLocaleExtension* extension);
  /// Takes out the last entry equal to `extension`; false when there is none.
  bool removeLast(KyLocaleExtension* extension);
  /// The first entry whose getType() equals `type`, or null.
  KyLocaleExtension* find(int type) const;

  /// The number of entries.
  unsigned long getCount() const { return count; }
  /// The number of entries the array holds before it grows.
  unsigned long getCapacity() const { return capacity; }

 private:
  KyLocaleExtension** array = nullptr;
  unsigned long count = 0;
  unsigned long capacity = 0;
};

/// A client's extension of a KyLocale: holds one lock on the locale and answers for
/// it; see the family page.
class KY_EXPORT KyLocaleExtension {
 public:
  /// Extends `locale` (which may be null) and locks it.
  explicit KyLocaleExtension(KyLocale* locale);
  /// Takes its entries off the extended locale's list, then unlocks the locale.
  virtual ~KyLocaleExtension();
  /// An extension holds a lock of its own.
  KyLocaleExtension(const KyLocaleExtension&) = delete;
  /// An extension holds a lock of its own.
  KyLocaleExtension& operator=(const KyLocaleExtension&) = delete;

  /// The kind a derived class gave with setType(); 0 by default.
  virtual int getType() const { return type; }
  /// A short label of the extension's kind for the client's own diagnostics; the
  /// library never calls it. Declaring it is what a derived class must do.
  virtual const char* getName() const = 0;

  /// The extended locale, or null.
  KyLocale* getLocale() const { return locale; }
  /// False: kept for callers that test it.
  bool isBad() const { return bad; }
  /// Adds one lock.
  void lock();
  /// Takes one lock away; the extension deletes itself when none is left.
  void unlock();

  /// The locale's answer; kUnknownEncoding without a locale.
  KyEncoding getEncoding() const;
  /// The locale's answer for a category; kUnknownEncoding without a locale.
  KyEncoding getEncoding(KyCategory category) const;
  /// The locale's answer; 0 without a locale.
  unsigned short getMaxCharSize() const;
  /// The locale's answer; null without a locale.
  const char* getStdLangTerr(KyCategory category) const;
  /// The locale's answer, for the caller to delete[]; null without a locale.
  char* getStdLocaleName(KyCategory category) const;
  /// The locale's answer; null without a locale.
  const char* getSystemCodeset() const;
  /// The locale's answer; null without a locale.
  const char* getSystemLocaleName(KyCategory category) const;
  /// The locale's answer; kNotCompatible without a locale.
  KyEncodingCompat isEncodingCompatible(KyEncoding other) const;
  /// The locale's answer; false without a locale.
  bool isStandardLocale(KyCategory category) const;
  /// KyLocale::setEncoding() on the locale; false without a locale.
  bool setEncoding();
  /// KyLocale::setSystemLocaleName() on the locale; false without a locale.
  bool setSystemLocaleName(const char* name, bool setSystem, KyCategory category);

  /// KyLocale::GetEncodingName().
  static const char* GetEncodingName(KyEncoding encoding);
  /// KyLocale::GetKyEncoding().
  static KyEncoding GetKyEncoding(const char* name);
  /// KyLocale::GetStdLocaleName().
  static char* GetStdLocaleName(const char* systemName);

 protected:
  /// Gives the extension its kind, as getType() and KyLocale::getExtension() see it.
  void setType(unsigned short newType) { type = newType; }

 private:
  friend class KyLocale;

  bool bad = false;
  KyLocale* locale;
  unsigned long listings = 0;  // entries in the list of `locale`
  unsigned short type = 0;
  long lockCount = 0;
};

#endif  // KYBASE_LOCALE_LOCALE_EXTENSION_H
