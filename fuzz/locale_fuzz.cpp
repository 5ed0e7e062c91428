// Locale names on arbitrary bytes. The first byte picks "C" or "C.UTF-8" as the process
// locale; the rest, as text, goes to GetStdLocaleName, GetKyEncoding and the category
// descriptor's setters. A standard name must be a pair, a dot and one of the standard
// encoding names; a dotted name that the descriptor calls standard must give the same
// text both ways; ASCII text must give the same results under both locales.
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "kybase/locale/kylocale.h"
#include "kybase/locale/locale_descriptor.h"

namespace {

void Check(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "locale_fuzz: %s\n", what);
    std::abort();
  }
}

std::string StdName(const std::string& name) {
  std::unique_ptr<char[]> result(KyLocale::GetStdLocaleName(name.c_str()));
  if (result == nullptr) return "(null)";
  const char* dot = std::strchr(result.get(), '.');
  Check(dot != nullptr && dot != result.get(), "a standard name is a pair and a dot");
  Check(KyLocale::GetKyEncoding(dot + 1) != 0 || dot[1] == '\0', "a standard name ends in a standard encoding");
  return result.get();
}

void Descriptors(const std::string& name, unsigned char encoding) {
  KyLocaleCatDescriptor descriptor;
  bool standard = descriptor.setSystemLocaleName(name.c_str());
  Check(standard == descriptor.isStandard(), "the setter answers the standard flag");
  // A modifier goes before the split, so only a dot ahead of any "@" names a codeset.
  if (standard && name.substr(0, name.find('@')).find('.') != std::string::npos) {
    std::unique_ptr<char[]> both(descriptor.getStdLocaleName());
    Check(StdName(name) == both.get(), "a dotted standard name is the same both ways");
  }
  KyLocaleCatDescriptor copy;
  copy = descriptor;
  copy.setStdLangTerr(name.c_str(), static_cast<KyEncoding>(encoding % 42));
  std::unique_ptr<char[]> text(copy.getStdLocaleName());
  Check(copy.isStandard() == (text != nullptr), "only a standard descriptor has a standard name");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 4096) return 0;
  const bool utf8 = (data[0] & 1) != 0;
  std::string name(reinterpret_cast<const char*>(data + 1), size - 1);
  name = name.c_str();  // the text ends at the first zero byte

  std::setlocale(LC_ALL, utf8 ? "C.UTF-8" : "C");
  std::string standard = StdName(name);
  KyEncoding encoding = KyLocale::GetKyEncoding(name.c_str());
  Check(encoding >= 0 && encoding < 42, "encodings stay in the table");
  Check(encoding == 0 || name == KyLocale::GetEncodingName(encoding), "an encoding is found by its own name");
  Descriptors(name, data[0]);

  bool ascii = true;
  for (unsigned char c : name) ascii = ascii && c < 0x80;
  if (ascii) {
    std::setlocale(LC_ALL, utf8 ? "C" : "C.UTF-8");
    Check(StdName(name) == standard, "ASCII names read the same under both locales");
  }
  std::setlocale(LC_ALL, "C");
  return 0;
}
