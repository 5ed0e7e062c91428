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

class KY_EXPORT KyExtensionList {
 public:
  KyExtensionList() = default;
  ~KyExtensionList();
  KyExtensionList(const KyExtensionList&) = delete;
  KyExtensionList& operator=(const KyExtensionList&) = delete;

  void add(KyLocaleExtension* extension);  // a null extension is not added
  // Takes out the first entry equal to `extension`; the rest keep their order.
  void remove(KyLocaleExtension* extension);
  // Takes out the last entry equal to `extension`; false when there is none.
  bool removeLast(KyLocaleExtension* extension);
  // The first entry whose getType() equals `type`, or null.
  KyLocaleExtension* find(int type) const;

  unsigned long getCount() const { return count; }
  unsigned long getCapacity() const { return capacity; }

 private:
  KyLocaleExtension** array = nullptr;
  unsigned long count = 0;
  unsigned long capacity = 0;
};

class KY_EXPORT KyLocaleExtension {
 public:
  explicit KyLocaleExtension(KyLocale* locale);
  virtual ~KyLocaleExtension();
  KyLocaleExtension(const KyLocaleExtension&) = delete;
  KyLocaleExtension& operator=(const KyLocaleExtension&) = delete;

  virtual int getType() const { return type; }
  // A short label of the extension's kind for the client's own diagnostics; the
  // library never calls it. Declaring it is what a derived class must do.
  virtual const char* getName() const = 0;

  KyLocale* getLocale() const { return locale; }
  bool isBad() const { return bad; }
  void lock();
  void unlock();

  KyEncoding getEncoding() const;
  KyEncoding getEncoding(KyCategory category) const;
  unsigned short getMaxCharSize() const;
  const char* getStdLangTerr(KyCategory category) const;
  char* getStdLocaleName(KyCategory category) const;
  const char* getSystemCodeset() const;
  const char* getSystemLocaleName(KyCategory category) const;
  KyEncodingCompat isEncodingCompatible(KyEncoding other) const;
  bool isStandardLocale(KyCategory category) const;
  bool setEncoding();
  bool setSystemLocaleName(const char* name, bool setSystem, KyCategory category);

  static const char* GetEncodingName(KyEncoding encoding);
  static KyEncoding GetKyEncoding(const char* name);
  static char* GetStdLocaleName(const char* systemName);

 protected:
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
