#include "kybase/locale/locale_descriptor.h"

#include <clocale>
#include <cstring>
#include <string>

#include "kybase/locale/locale_tables_internal.h"

KyLocaleCatDescriptor::KyLocaleCatDescriptor(const KyLocaleCatDescriptor& other)
    : systemLocaleName(KyLocaleTables::copyText(other.systemLocaleName)),
      standard(other.standard),
      stdLangTerr(KyLocaleTables::copyText(other.stdLangTerr)),
      encoding(other.encoding) {}

// The texts are copied, not shared, so each object frees only its own.
KyLocaleCatDescriptor& KyLocaleCatDescriptor::operator=(const KyLocaleCatDescriptor& other) {
  if (this == &other) return *this;
  char* name = KyLocaleTables::copyText(other.systemLocaleName);
  char* langTerr = KyLocaleTables::copyText(other.stdLangTerr);
  clear();
  systemLocaleName = name;
  stdLangTerr = langTerr;
  standard = other.standard;
  encoding = other.encoding;
  return *this;
}

KyLocaleCatDescriptor::~KyLocaleCatDescriptor() { clear(); }

void KyLocaleCatDescriptor::clear() {
  delete[] systemLocaleName;
  systemLocaleName = nullptr;
  delete[] stdLangTerr;
  stdLangTerr = nullptr;
}

char* KyLocaleCatDescriptor::getStdLocaleName() {
  if (!standard) return nullptr;
  const char* name = encoding >= 0 && encoding < KyLocaleTables::kEncodingCount
                         ? KyLocaleTables::encodingTable[encoding].name
                         : "";
  std::string text = std::string(stdLangTerr != nullptr ? stdLangTerr : "") + "." + name;
  return KyLocaleTables::copyText(text.c_str());
}

bool KyLocaleCatDescriptor::setSystemLocaleName(const char* name) {
  delete[] systemLocaleName;
  systemLocaleName = name != nullptr && name[0] != '\0' ? KyLocaleTables::copyText(name) : nullptr;
  return standardize();
}

void KyLocaleCatDescriptor::setStdLangTerr(const char* langTerr, KyEncoding newEncoding) {
  if (stdLangTerr != nullptr) {
    if (langTerr != nullptr && std::strcmp(stdLangTerr, langTerr) == 0) return;
    delete[] stdLangTerr;
    stdLangTerr = nullptr;
  }
  delete[] systemLocaleName;
  systemLocaleName = nullptr;
  standard = false;
  encoding = newEncoding;
  if (langTerr != nullptr && std::strlen(langTerr) == 5 && langTerr[2] == '_') {
    stdLangTerr = KyLocaleTables::copyText(langTerr);
    standard = true;
    return;
  }
  if (langTerr != nullptr && langTerr[0] != '\0') systemLocaleName = KyLocaleTables::copyText(langTerr);
}

bool KyLocaleCatDescriptor::standardize() {
  delete[] stdLangTerr;
  stdLangTerr = nullptr;
  standard = false;
  encoding = kUnknownEncoding;
  if (systemLocaleName == nullptr) return false;

  char* base;
  char* codeset;
  KyLocaleTables::splitName(systemLocaleName, base, codeset);
  stdLangTerr = KyLocaleTables::lookupStdLangTerr(base);
  delete[] base;
  if (stdLangTerr == nullptr) {
    delete[] codeset;
    return false;
  }
  if (codeset == nullptr) {
    if (std::strcmp(systemLocaleName, "C") == 0) {
      encoding = kUSASCII;
    } else {
      // The name glibc hands back is reused by the next call: keep a copy.
      std::string current = std::setlocale(LC_CTYPE, nullptr);
      if (current == systemLocaleName) {
        codeset = KyLocaleTables::currentCodePageName();
      } else {
        std::setlocale(LC_CTYPE, systemLocaleName);
        codeset = KyLocaleTables::currentCodePageName();
        std::setlocale(LC_CTYPE, current.c_str());
      }
      if (codeset == nullptr) encoding = kUSASCII;
    }
  }
  if (codeset != nullptr) {
    encoding = KyLocaleTables::encodingFromCodeset(KyString(codeset), stdLangTerr);
    delete[] codeset;
  }
  standard = encoding != kUnknownEncoding;
  return standard;
}
