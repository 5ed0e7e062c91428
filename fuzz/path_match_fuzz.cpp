// Matches a name against a pattern, both from arbitrary text separated by a zero byte,
// as Unix texts and as DOS texts. A pattern without "(" must answer as the plain
// wildcard match of the lowered parts; nothing may reach outside its text or hang.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "kybase/paths/path_name.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string all(reinterpret_cast<const char*>(data), size);
  const std::size_t zero = all.find('\0');
  const std::string name = all.substr(0, zero);
  const std::string pattern = zero == std::string::npos ? std::string() : all.substr(zero + 1);
  const KyPathName text(name.c_str());
  const KyPathName wildcards(pattern.c_str());
  const bool matched = text.match(wildcards);
  if (wildcards.getBaseName().getIndexOf("(") < 0) {
    KyString a = text.getUnixDirectory(true);
    KyString b = wildcards.getUnixDirectory(true);
    KyString c = text.getBaseName();
    KyString d = wildcards.getBaseName();
    const bool plain = a.toLower().matches(b.toLower()) && c.toLower().matches(d.toLower());
    if (plain != matched) std::abort();
  }
  KyPathName dosText;
  dosText.setDosValue(name.c_str());
  KyPathName dosPattern;
  dosPattern.setDosValue(pattern.c_str());
  dosText.match(dosPattern);
  return 0;
}
