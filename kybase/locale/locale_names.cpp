// Lookups over the locale layer's tables: system base names to language and territory,
// codeset spellings to encodings, and the current code page.
#include <langinfo.h>

#include <cctype>
#include <clocale>
#include <cstring>

#include "kybase/locale/locale_tables_internal.h"

namespace {

// A row of the codeset chain: any equal (without case) or exact (with case) spelling
// wins, as does any contained one unless the text also contains one of `except`.
constexpr int kFromTerritory950 = -1;
struct ChainRow {
  int value;
  const char* equal[7];
  const char* contains[3];
  const char* except[6];
  const char* exact[2];
};

const ChainRow kChain[] = {
    {2, {"iso88591", "ISO8859-1", "ISO-8859-1", nullptr}, {"ISO8859-1", nullptr}, {"ISO8859-10", "ISO8859-11", "ISO8859-13", "ISO8859-14", "ISO8859-15", nullptr}, {nullptr}},
    {3, {"iso88592", "ISO8859-2", "ISO-8859-2", nullptr}, {"ISO8859-2", nullptr}, {nullptr}, {nullptr}},
    {4, {"iso88593", "ISO8859-3", "ISO-8859-3", nullptr}, {"ISO8859-3", nullptr}, {nullptr}, {nullptr}},
    {5, {"iso88594", "ISO8859-4", "ISO-8859-4", nullptr}, {"ISO8859-4", nullptr}, {nullptr}, {nullptr}},
    {6, {"iso88595", "ISO8859-5", "ISO-8859-5", nullptr}, {"ISO8859-5", nullptr}, {nullptr}, {nullptr}},
    {7, {"iso88596", "ISO8859-6", "ISO-8859-6", nullptr}, {"ISO8859-6", nullptr}, {nullptr}, {nullptr}},
    {8, {"iso88597", "ISO8859-7", "ISO-8859-7", nullptr}, {"ISO8859-7", nullptr}, {nullptr}, {nullptr}},
    {9, {"iso88598", "ISO8859-8", "ISO-8859-8", nullptr}, {"ISO8859-8", nullptr}, {nullptr}, {nullptr}},
    {10, {"iso88599", "ISO8859-9", "ISO-8859-9", nullptr}, {"ISO8859-9", nullptr}, {nullptr}, {nullptr}},
    {11, {"iso885910", "ISO8859-10", "ISO-8859-10", nullptr}, {"ISO8859-10", nullptr}, {nullptr}, {nullptr}},
    {31, {"iso885911", "ISO8859-11", "ISO-8859-11", "tis620", "TIS-620", "TACTIS", nullptr}, {"TIS620", "ISO8859-11", nullptr}, {nullptr}, {nullptr}},
    {32, {"iso885913", "ISO8859-13", "ISO-8859-13", nullptr}, {"ISO8859-13", nullptr}, {nullptr}, {nullptr}},
    {33, {"iso885914", "ISO8859-14", "ISO-8859-14", nullptr}, {"ISO8859-14", nullptr}, {nullptr}, {nullptr}},
    {34, {"iso885915", "ISO8859-15", "ISO-8859-15", nullptr}, {"iso885915", "ISO8859-15", nullptr}, {nullptr}, {nullptr}},
    {12, {"eucJP", "EUC-JP", "ujis", nullptr}, {"eucJP", nullptr}, {nullptr}, {nullptr}},
    {13, {"SJIS", "PCK", nullptr}, {"SJIS", nullptr}, {nullptr}, {nullptr}},
    {14, {"eucKR", "5601", nullptr}, {"eucKR", "5601", nullptr}, {nullptr}, {nullptr}},
    {15, {"gb2312", "hp15CN", "ugb", nullptr}, {"eucCN", nullptr}, {nullptr}, {nullptr}},
    {17, {"big5hkscs", "Big5-HKSCS", "hkbig5", "big5hk", nullptr}, {"HKSCS", "hkscs", nullptr}, {nullptr}, {nullptr}},
    {16, {"big5", nullptr}, {"big5", nullptr}, {nullptr}, {nullptr}},
    {18, {"eucTW", "cns11643", "ucns", nullptr}, {"eucTW", nullptr}, {nullptr}, {nullptr}},
    {37, {"GBK", nullptr}, {nullptr}, {nullptr}, {nullptr}},
    {38, {"deckanji", nullptr}, {"deckanji", nullptr}, {"sdeckanji", nullptr}, {nullptr}},
    {39, {"deckorean", nullptr}, {"deckorean", nullptr}, {nullptr}, {nullptr}},
    {40, {"dechanzi", nullptr}, {"dechanzi", nullptr}, {nullptr}, {nullptr}},
    {41, {"dechanyu", nullptr}, {"dechanyu", nullptr}, {nullptr}, {nullptr}},
    {19, {"roman8", nullptr}, {nullptr}, {nullptr}, {nullptr}},
    {20, {nullptr}, {"850", nullptr}, {nullptr}, {"850", nullptr}},
    {21, {nullptr}, {nullptr}, {nullptr}, {"1250", nullptr}},
    {22, {nullptr}, {nullptr}, {nullptr}, {"1251", nullptr}},
    {23, {nullptr}, {nullptr}, {nullptr}, {"1252", nullptr}},
    {24, {nullptr}, {nullptr}, {nullptr}, {"1253", nullptr}},
    {25, {nullptr}, {nullptr}, {nullptr}, {"1254", nullptr}},
    {26, {nullptr}, {nullptr}, {nullptr}, {"1255", nullptr}},
    {27, {nullptr}, {nullptr}, {nullptr}, {"1256", nullptr}},
    {28, {nullptr}, {nullptr}, {nullptr}, {"1257", nullptr}},
    {29, {nullptr}, {nullptr}, {nullptr}, {"1258", nullptr}},
    {13, {nullptr}, {"932", nullptr}, {nullptr}, {"932", nullptr}},
    {15, {nullptr}, {nullptr}, {nullptr}, {"936", nullptr}},
    {kFromTerritory950, {nullptr}, {nullptr}, {nullptr}, {"950", nullptr}},
    {30, {"utf8", "utf-8", nullptr}, {"utf8", "UTF-8", nullptr}, {nullptr}, {nullptr}},
    {35, {nullptr}, {nullptr}, {nullptr}, {"949", nullptr}},
    {36, {nullptr}, {nullptr}, {nullptr}, {"874", nullptr}},
};

bool Equal(const KyString& codeset, const char* text) { return codeset.caseCompare(KyString(text)) == 0; }
bool Contains(const KyString& codeset, const char* text) { return codeset.getIndexOf(KyString(text)) != -1; }
bool Exact(const KyString& codeset, const char* text) { return codeset.compare(KyString(text)) == 0; }

bool AnyOf(const char* const* texts, const KyString& codeset, bool (*test)(const KyString&, const char*)) {
  for (; *texts != nullptr; ++texts)
    if (test(codeset, *texts)) return true;
  return false;
}

bool Matches(const ChainRow& row, const KyString& codeset) {
  if (AnyOf(row.equal, codeset, Equal) || AnyOf(row.exact, codeset, Exact)) return true;
  return AnyOf(row.contains, codeset, Contains) && !AnyOf(row.except, codeset, Contains);
}

// glibc's spellings of codesets that the chain knows under another name.
const char* const kCodesetSpellings[][2] = {
    {"ANSI_X3.4-1968", "646"}, {"EUC-KR", "eucKR"},  {"EUC-TW", "eucTW"},  {"SHIFT_JIS", "SJIS"},
    {"CP1250", "1250"},        {"CP1251", "1251"},   {"CP1252", "1252"},   {"CP1253", "1253"},
    {"CP1254", "1254"},        {"CP1255", "1255"},   {"CP1256", "1256"},   {"CP1257", "1257"},
    {"CP1258", "1258"},        {"CP949", "949"},     {"HP-ROMAN8", "roman8"},
};

// This platform's own names: "ll_TT" or "lll_TT" stand for themselves.
bool IsLangTerr(const char* base) {
  std::size_t lang = 0;
  while (lang < 3 && std::islower(static_cast<unsigned char>(base[lang]))) ++lang;
  if (lang < 2 || base[lang] != '_') return false;
  const char* terr = base + lang + 1;
  return std::isupper(static_cast<unsigned char>(terr[0])) && std::isupper(static_cast<unsigned char>(terr[1])) &&
         terr[2] == '\0';
}

}  // namespace

char* KyLocaleTables::copyText(const char* text) {
  if (text == nullptr) return nullptr;
  std::size_t size = std::strlen(text) + 1;
  char* copy = new char[size];
  std::memcpy(copy, text, size);
  return copy;
}

void KyLocaleTables::splitName(const char* name, char*& base, char*& codeset) {
  base = nullptr;
  codeset = nullptr;
  if (name == nullptr) return;
  const char* at = std::strchr(name, '@');
  std::size_t length = at != nullptr ? static_cast<std::size_t>(at - name) : std::strlen(name);
  const char* dot = nullptr;
  for (const char* p = name; p != name + length; ++p)
    if (*p == '.') dot = p;
  std::size_t baseLength = dot != nullptr ? static_cast<std::size_t>(dot - name) : length;
  base = new char[baseLength + 1];
  std::memcpy(base, name, baseLength);
  base[baseLength] = '\0';
  if (dot != nullptr) {
    std::size_t codesetLength = length - baseLength - 1;
    codeset = new char[codesetLength + 1];
    std::memcpy(codeset, dot + 1, codesetLength);
    codeset[codesetLength] = '\0';
  }
}

char* KyLocaleTables::lookupStdLangTerr(const char* base) {
  if (base == nullptr) return nullptr;
  for (const NameRow* row = localeNameTable; row->key != nullptr; ++row)
    if (std::strcmp(row->key, base) == 0) return row->value[0] != '\0' ? copyText(row->value) : nullptr;
  if (std::strcmp(base, "POSIX") == 0) return copyText("en_US");
  const char* at = std::strchr(base, '@');
  if (at == nullptr) return IsLangTerr(base) ? copyText(base) : nullptr;
  char* plain = copyText(base);
  plain[at - base] = '\0';
  char* result = IsLangTerr(plain) ? plain : nullptr;
  if (result == nullptr) delete[] plain;
  return result;
}

KyEncoding KyLocaleTables::encodingFromCodeset(KyString codeset, const char* stdLangTerr) {
  if (codeset.getIndexOf(KyString("ISO_646")) == 0 || Equal(codeset, "646")) return kUSASCII;
  for (const ChainRow& row : kChain) {
    if (!Matches(row, codeset)) continue;
    if (row.value != kFromTerritory950) return static_cast<KyEncoding>(row.value);
    return stdLangTerr != nullptr && std::strcmp(stdLangTerr, "zh_HK") == 0 ? kBig5HKSCS : kBig5;
  }
  if (Equal(codeset, "EUC") && stdLangTerr != nullptr) {
    if (std::strcmp(stdLangTerr, "ja_JP") == 0) return kEUCJP;
    if (std::strcmp(stdLangTerr, "ko_KR") == 0) return kEUCKR;
    if (std::strcmp(stdLangTerr, "zh_CN") == 0) return kGB2312;
    if (std::strcmp(stdLangTerr, "zh_TW") == 0) return kEUCTW;
  }
  return kUnknownEncoding;
}

char* KyLocaleTables::currentCodePageName() {
  const char* codeset = nl_langinfo(CODESET);
  if (codeset == nullptr || codeset[0] == '\0') return nullptr;
  for (const auto& spelling : kCodesetSpellings)
    if (std::strcmp(codeset, spelling[0]) == 0) return copyText(spelling[1]);
  return copyText(codeset);
}

KyEncodingCompat KyLocaleTables::isEncodingCompatible(KyEncoding own, KyEncoding other) {
  if (other == own) return kCompatible;
  if (own < 0 || own >= kEncodingCount) return kNotCompatible;
  const EncodingRow& row = encodingTable[own];
  for (int i = 0; i < 3 && row.compatible[i] != -1; ++i)
    if (row.compatible[i] == other) return kCompatible;
  for (int i = 0; i < 3 && row.partlyCompatible[i] != -1; ++i)
    if (row.partlyCompatible[i] == other) return kPartlyCompatible;
  return kNotCompatible;
}
