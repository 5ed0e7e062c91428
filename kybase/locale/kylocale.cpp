#include "kybase/locale/kylocale.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include "kybase/locale/locale_descriptor.h"
#include "kybase/locale/locale_tables_internal.h"
#include "kybase/locale/pointer_list_internal.h"

KyLocale* KyLocale::_Locale = nullptr;
KyLocale** KyLocale::_LocaleList = nullptr;
unsigned long KyLocale::_LocaleNumber = 0;
unsigned long KyLocale::_MaxLocaleNumber = 0;

namespace {

// A null name given to a stream is undefined behaviour; the line stops there, with the
// stream in its failed state, as the runtime the library mirrors left it.
void WriteName(const char* name) {
  if (name != nullptr)
    std::cerr << name;
  else
    std::cerr.setstate(std::ios_base::failbit);
}

}  // namespace

KyLocale::KyLocale(const char* name) {
  KyAppendPointer(_LocaleList, _LocaleNumber, _MaxLocaleNumber, this);

  ctypeCategory = new KyLocaleCatDescriptor;
  messagesCategory = new KyLocaleCatDescriptor;

  if (std::setlocale(LC_ALL, name != nullptr ? name : "") == nullptr) {
    std::cerr << "KyLocale::KyLocale ";
    WriteName(name);
    std::cerr << " locale not supported by the system." << std::endl;
    bad = true;
    setSystemLocaleName("C", true, kCategoryCType);
    setSystemLocaleName("C", true, kCategoryMessages);
    return;
  }

  const char* current = std::setlocale(LC_CTYPE, nullptr);
  if (current != nullptr) {
    // Standardising calls setlocale, which may reuse the text glibc returned.
    std::string ctypeName = current;
    bool warned = false;
    const char* held = ctypeCategory->getSystemLocaleName();
    if (held == nullptr || ctypeName != held) {
      if (!ctypeCategory->setSystemLocaleName(ctypeName.c_str())) {
        std::cerr << "Not a standard KBC locale " << ctypeName << std::endl;
        warned = true;
      }
    }
    // The runtime the library mirrors has no messages category: it takes the
    // character-type name too.
    held = messagesCategory->getSystemLocaleName();
    if (held == nullptr || ctypeName != held) {
      if (!messagesCategory->setSystemLocaleName(ctypeName.c_str()) && !warned)
        std::cerr << "Not a standard Kyrel KBC locale " << ctypeName << std::endl;
    }
  }

  if (_Locale == nullptr) _Locale = this;
  setEncoding();
  setMaxCharSize();
}

KyLocale::~KyLocale() {
  delete ctypeCategory;
  ctypeCategory = nullptr;
  delete messagesCategory;
  messagesCategory = nullptr;
  delete[] systemCodeset;
  systemCodeset = nullptr;
  if (_Locale == this) _Locale = nullptr;
  for (unsigned long index = 0; index < _LocaleNumber; ++index) {
    if (_LocaleList[index] != this) continue;
    KyRemovePointerAt(_LocaleList, _LocaleNumber, index);
    break;
  }
  if (_LocaleNumber == 0) {
    delete[] _LocaleList;
    _LocaleList = nullptr;
    _MaxLocaleNumber = 0;
  }
}

KyLocale* KyLocale::Get(bool create, const char* name) {
  if (name == nullptr && _Locale != nullptr) return _Locale;
  if (name != nullptr) {
    for (unsigned long index = 0; index < _LocaleNumber; ++index) {
      const char* systemName = _LocaleList[index]->getSystemLocaleName(kCategoryCType);
      if (systemName != nullptr && std::strcmp(systemName, name) == 0) return _LocaleList[index];
    }
  }
  if (!create) return nullptr;
  auto* locale = new KyLocale(name);
  if (locale->isBad()) {
    delete locale;
    return nullptr;
  }
  return locale;
}

KyLocale* KySetLocale(const char* name) {
  KyLocale* locale = KyLocale::Get(true, name);
  if (locale != nullptr) locale->setDefaultLocale();
  return locale;
}

void KyLocale::addExtension(KyLocaleExtension* extension) {
  if (extension == nullptr) return;
  extensions.add(extension);
  if (extension->locale == this) ++extension->listings;
}

void KyLocale::removeExtension(KyLocaleExtension* extension) {
  unsigned long before = extensions.getCount();
  extensions.remove(extension);
  if (extensions.getCount() != before && extension->locale == this) --extension->listings;
}

void KyLocale::setDefaultLocale() { _Locale = this; }

void KyLocale::lock() { ++lockCount; }

void KyLocale::unlock() {
  if (--lockCount == 0) delete this;
}

KyLocaleCatDescriptor* KyLocale::getCategory(KyCategory category) const {
  if (category == kCategoryCType) return ctypeCategory;
  if (category == kCategoryMessages) return messagesCategory;
  return nullptr;
}

KyEncoding KyLocale::getEncoding(KyCategory category) const {
  KyLocaleCatDescriptor* descriptor = getCategory(category);
  return descriptor != nullptr ? descriptor->getEncoding() : kUnknownEncoding;
}

const char* KyLocale::getSystemLocaleName(KyCategory category) const {
  KyLocaleCatDescriptor* descriptor = getCategory(category);
  return descriptor != nullptr ? descriptor->getSystemLocaleName() : nullptr;
}

const char* KyLocale::getStdLangTerr(KyCategory category) const {
  KyLocaleCatDescriptor* descriptor = getCategory(category);
  return descriptor != nullptr ? descriptor->getStdLangTerr() : nullptr;
}

char* KyLocale::getStdLocaleName(KyCategory category) const {
  KyLocaleCatDescriptor* descriptor = getCategory(category);
  return descriptor != nullptr ? descriptor->getStdLocaleName() : nullptr;
}

bool KyLocale::isStandardLocale(KyCategory category) const {
  KyLocaleCatDescriptor* descriptor = getCategory(category);
  return descriptor != nullptr && descriptor->isStandard();
}

KyEncodingCompat KyLocale::isEncodingCompatible(KyEncoding other) const {
  return KyLocaleTables::isEncodingCompatible(encoding, other);
}

bool KyLocale::setSystemLocaleName(const char* name, bool setSystem, KyCategory category) {
  if (category == kCategoryAll) {
    bool ctype = setSystemLocaleName(name, setSystem, kCategoryCType);
    bool messages = setSystemLocaleName(name, setSystem, kCategoryMessages);
    return ctype && messages;
  }
  if (name == nullptr) return true;
  KyLocaleCatDescriptor* descriptor = getCategory(category);
  bool result = true;
  const char* current = descriptor != nullptr ? descriptor->getSystemLocaleName() : nullptr;
  if (current == nullptr || std::strcmp(current, name) != 0)
    result = descriptor != nullptr && descriptor->setSystemLocaleName(name);
  if (setSystem && category == kCategoryCType) {
    std::setlocale(LC_CTYPE, name);
    setEncoding();
    setMaxCharSize();
  }
  return result;
}

bool KyLocale::setEncoding() {
  delete[] systemCodeset;
  systemCodeset = nullptr;
  const char* name = getSystemLocaleName(kCategoryCType);
  if (name == nullptr) return false;
  if (std::strcmp(name, "C") == 0) {
    encoding = kUSASCII;
    return true;
  }
  char* base;
  char* codeset;
  KyLocaleTables::splitName(name, base, codeset);
  if (codeset != nullptr) {
    char* langTerr = KyLocaleTables::lookupStdLangTerr(base);
    systemCodeset = codeset;
    encoding = KyLocaleTables::encodingFromCodeset(KyString(systemCodeset), langTerr);
    delete[] langTerr;
  }
  delete[] base;
  return true;
}

void KyLocale::setMaxCharSize() {
  std::size_t size = MB_CUR_MAX;
  maxCharSize = size == 0 ? 1 : static_cast<unsigned short>(size);
}

const char* KyLocale::GetEncodingName(KyEncoding encoding) {
  if (encoding < 0 || encoding >= KyLocaleTables::kEncodingCount) return nullptr;
  const KyLocaleTables::EncodingRow& row = KyLocaleTables::encodingTable[encoding];
  return row.id == encoding ? row.name : nullptr;
}

KyEncoding KyLocale::GetKyEncoding(const char* name) {
  if (name == nullptr) return kUnknownEncoding;
  for (const KyLocaleTables::EncodingRow& row : KyLocaleTables::encodingTable)
    if (std::strcmp(row.name, name) == 0) return row.id;
  return kUnknownEncoding;
}

char* KyLocale::GetStdLocaleName(const char* systemName) {
  if (systemName == nullptr) return nullptr;
  char* base;
  char* codeset;
  KyLocaleTables::splitName(systemName, base, codeset);
  char* langTerr = KyLocaleTables::lookupStdLangTerr(base);
  delete[] base;
  if (langTerr == nullptr) {
    delete[] codeset;
    return nullptr;
  }
  KyEncoding encoding;
  bool refused = false;
  if (codeset != nullptr) {
    encoding = KyLocaleTables::encodingFromCodeset(KyString(codeset), langTerr);
    delete[] codeset;
  } else {
    std::string saved = std::setlocale(LC_ALL, nullptr);
    KyLocale* locale = Get(true, systemName);
    refused = locale == nullptr;
    encoding = refused ? kUnknownEncoding : locale->encoding;
    std::setlocale(LC_ALL, saved.c_str());
  }
  char* result = nullptr;
  if (!refused) {
    std::string text = std::string(langTerr) + "." + GetEncodingName(encoding);
    result = KyLocaleTables::copyText(text.c_str());
  }
  delete[] langTerr;
  return result;
}
