#include "kybase/locale/locale_extension.h"

#include "kybase/locale/kylocale.h"
#include "kybase/locale/pointer_list_internal.h"

KyExtensionList::~KyExtensionList() {
  if (capacity != 0) delete[] array;
}

void KyExtensionList::add(KyLocaleExtension* extension) {
  if (extension != nullptr) KyAppendPointer(array, count, capacity, extension);
}

void KyExtensionList::remove(KyLocaleExtension* extension) {
  for (unsigned long index = 0; index < count; ++index) {
    if (array[index] != extension) continue;
    KyRemovePointerAt(array, count, index);
    return;
  }
}

bool KyExtensionList::removeLast(KyLocaleExtension* extension) {
  for (unsigned long index = count; index-- != 0;) {
    if (array[index] != extension) continue;
    KyRemovePointerAt(array, count, index);
    return true;
  }
  return false;
}

KyLocaleExtension* KyExtensionList::find(int type) const {
  for (unsigned long index = 0; index < count; ++index)
    if (array[index]->getType() == type) return array[index];
  return nullptr;
}

KyLocaleExtension::KyLocaleExtension(KyLocale* extended) : locale(extended) {
  if (locale != nullptr) locale->lock();
}

// Every entry of this extension leaves its locale's list first, so a later find never
// reaches a dead object.
KyLocaleExtension::~KyLocaleExtension() {
  if (locale == nullptr) return;
  for (; listings != 0; --listings) locale->extensions.removeLast(this);
  locale->unlock();
}

void KyLocaleExtension::lock() { ++lockCount; }

void KyLocaleExtension::unlock() {
  if (--lockCount == 0) delete this;
}

KyEncoding KyLocaleExtension::getEncoding() const {
  return locale != nullptr ? locale->getEncoding() : kUnknownEncoding;
}

KyEncoding KyLocaleExtension::getEncoding(KyCategory category) const {
  return locale != nullptr ? locale->getEncoding(category) : kUnknownEncoding;
}

unsigned short KyLocaleExtension::getMaxCharSize() const { return locale != nullptr ? locale->getMaxCharSize() : 0; }

const char* KyLocaleExtension::getStdLangTerr(KyCategory category) const {
  return locale != nullptr ? locale->getStdLangTerr(category) : nullptr;
}

char* KyLocaleExtension::getStdLocaleName(KyCategory category) const {
  return locale != nullptr ? locale->getStdLocaleName(category) : nullptr;
}

const char* KyLocaleExtension::getSystemCodeset() const {
  return locale != nullptr ? locale->getSystemCodeset() : nullptr;
}

const char* KyLocaleExtension::getSystemLocaleName(KyCategory category) const {
  return locale != nullptr ? locale->getSystemLocaleName(category) : nullptr;
}

KyEncodingCompat KyLocaleExtension::isEncodingCompatible(KyEncoding other) const {
  return locale != nullptr ? locale->isEncodingCompatible(other) : kNotCompatible;
}

bool KyLocaleExtension::isStandardLocale(KyCategory category) const {
  return locale != nullptr && locale->isStandardLocale(category);
}

bool KyLocaleExtension::setEncoding() { return locale != nullptr && locale->setEncoding(); }

bool KyLocaleExtension::setSystemLocaleName(const char* name, bool setSystem, KyCategory category) {
  return locale != nullptr && locale->setSystemLocaleName(name, setSystem, category);
}

const char* KyLocaleExtension::GetEncodingName(KyEncoding encoding) { return KyLocale::GetEncodingName(encoding); }

KyEncoding KyLocaleExtension::GetKyEncoding(const char* name) { return KyLocale::GetKyEncoding(name); }

char* KyLocaleExtension::GetStdLocaleName(const char* systemName) { return KyLocale::GetStdLocaleName(systemName); }
