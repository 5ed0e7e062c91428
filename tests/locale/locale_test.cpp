#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "kybase/core/global_context.h"
#include "kybase/locale/kylocale.h"
#include "kybase/locale/locale_descriptor.h"
#include "kybase/locale/locale_tables_internal.h"

namespace {

std::string Take(char* text) {
  std::unique_ptr<char[]> owned(text);
  return text != nullptr ? text : "(null)";
}

struct TestExtension : KyLocaleExtension {
  TestExtension(KyLocale* locale, unsigned short type) : KyLocaleExtension(locale) { setType(type); }
  const char* getName() const override { return "test"; }
};

// The table of system names, as it is published for clients: pairs of a quoted key and
// its language and territory.
const char kPublishedNames[] =
    R"("C" en_US; "English_United States" en_US; "English_United Kingdom" en_GB; "Afrikaans_South Africa" af_ZA; "Albanian_Albania" sq_AL; "Arabic_Algeria" ar_DZ; "Arabic_Bahrain" ar_BH; "Arabic_Egypt" ar_EG; "Arabic_Iraq" ar_IQ; "Arabic_Jordan" ar_JO; "Arabic_Kuwait" ar_KW; "Arabic_Lebanon" ar_LB; "Arabic_Libya" ar_LY; "Arabic_Morocco" ar_MA; "Arabic_Oman" ar_OM; "Arabic_Qatar" ar_QA; "Arabic_Saudi Arabia" ar_SA; "Arabic_Syria" ar_SY; "Arabic_Tunisia" ar_TN; "Arabic_U.A.E." ar_AE; "Arabic_Yemen" ar_YE; "Azeri (Cyrillic)_Azerbaijan" az_AZ; "Azeri (Latin)_Azerbaijan" az_AZ; "Basque_Spain" eu_ES; "Bulgarian_Bulgaria" bg_BG; "Belarusian_Belarus" be_BY; "Catalan_Spain" ca_ES; "Chinese_Hong Kong" zh_HK; "Chinese_Macau" zh_MO; "Chinese (Traditional)_Taiwan" zh_TW; "Chinese (Simplified)_People's Republic of China" zh_CN; "Chinese (PRC)_People's Republic of China" zh_CN; "Chinese(PRC)_People's Republic of China" zh_CN; "Chinese_People's Republic of China" zh_CN; "Chinese_Singapore" zh_SG; "Chinese_Taiwan" zh_TW; "Chinese_Hong Kong S.A.R." zh_HK; "Croatian_Croatia" hr_HR; "Czech_Czech Republic" cs_CZ; "Danish_Denmark" da_DK; "Dutch_Belgium" nl_BE; "Dutch_Netherlands" nl_NL; "English_Australia" en_AU; "English_Belize" en_BZ; "English_Canada" en_CA; "English_Ireland" en_IE; "English_Jamaica" en_JM; "English_New Zealand" en_NZ; "English_Republic of the Philippines" en_PH; "English_South Africa" en_ZA; "English_Trinidad y Tobago" en_TT; "English_Zimbabwe" en_ZW; "Estonian_Estonia" et_EE; "Farsi_Iran" fa_IR; "Faeroese_Faeroe Islands" fo_FO; "Finnish_Finland" fi_FI; "French_Belgium" fr_BE; "French_Canada" fr_CA; "French_France" fr_FR; "French_Luxembourg" fr_LU; "French_Principality of Monaco" fr_MC; "French_Switzerland" fr_CH; "German_Austria" de_AT; "German_Germany" de_DE; "German_Liechtenstein" de_LI; "German_Luxembourg" de_LU; "German_Switzerland" de_CH; "Greek_Greece" el_GR; "Hebrew_Israel" iw_IL; "Hungarian_Hungary" hu_HU; "Icelandic_Iceland" is_IS; "Indonesian_Indonesia" in_ID; "Italian_Italy" it_IT; "Italian_Switzerland" it_CH; "Japanese_Japan" ja_JP; "Kazakh_Kazakstan" kk_KZ; "Korean_Korea" ko_KR; "Korean (Johab)_Korea" ko_KR; "Latvian_Latvia" lv_LV; "Lithuanian_Lithuania" bo_LT; "Macedonian_Former Yugoslav Republic of Macedonia" mk_MK; "Malay_Brunei Darussalam" ms_BN; "Malay_Malaysia" ms_MY; "Norwegian (Bokmål)_Norway" no_NO; "Norwegian (Nynorsk)_Norway" no_NO; "Norwegian_Norway" no_NO; "Polish_Poland" pl_PL; "Portuguese_Brazil" pt_BR; "Portuguese_Portugal" pt_PT; "Romanian_Romania" ro_RO; "Russian_Russia" ru_RU; "Serbian (Latin)_Serbia" sh_YU; "Serbian (Cyrillic)_Serbia" sr_YU; "Slovak_Slovakia" sk_SK; "Slovene_Slovenia" sl_SI; "Slovenian_Slovenia" sl_SI; "Spanish_Argentina" es_AR; "Spanish_Bolivia" es_BO; "Spanish_Chile" es_CL; "Spanish_Colombia" es_CO; "Spanish_Costa Rica" es_CR; "Spanish_Dominican Republic" es_DO; "Spanish_Ecuador" es_EC; "Spanish_El Salvador" es_SV; "Spanish_Guatemala" es_GT; "Spanish_Mexico" es_MX; "Spanish_Honduras" es_HN; "Spanish_Nicaragua" es_NI; "Spanish_Panama" es_PA; "Spanish_Paraguay" es_PY; "Spanish_Peru" es_PE; "Spanish (Modern Sort)_Spain" es_ES; "Spanish - Modern Sort_Spain" es_ES; "Spanish_Puerto Rico" es_PR; "Spanish (Traditional Sort)_Spain" es_ES; "Spanish - Traditional Sort_Spain" es_ES; "Spanish_Spain" es_ES; "Spanish_Uruguay" es_UY; "Spanish_Venezuela" es_VE; "Swahili_Kenya" sw_KE; "Swedish_Finland" sv_FI; "Swedish_Sweden" sv_SE; "Tatar_Tatarstan" tt_TS; "Thai_Thailand" th_TH; "Turkish_Turkey" tr_TR; "Ukrainian_Ukraine" uk_UA; "Urdu_Islamic Republic of Pakistan" ur_PK; "Uzbek_Republic of Uzbekistan" uz_UZ)";

TEST(LocaleTables, NameTableHoldsEveryPublishedRowInOrder) {
  int i = 0;
  for (const char* p = kPublishedNames; (p = std::strchr(p, '"')) != nullptr; ++i) {
    const char* end = std::strchr(p + 1, '"');
    std::string key(p + 1, end);
    std::size_t ring = key.find("\xC3\xA5");  // the published text is UTF-8
    if (ring != std::string::npos) key.replace(ring, 2, "\xE5");
    ASSERT_NE(KyLocaleTables::localeNameTable[i].key, nullptr) << i;
    EXPECT_EQ(KyLocaleTables::localeNameTable[i].key, key) << i;
    EXPECT_EQ(KyLocaleTables::localeNameTable[i].value, std::string(end + 2, end + 7)) << i;
    p = end + 7;
  }
  EXPECT_EQ(i, 128);
  EXPECT_EQ(KyLocaleTables::localeNameTable[128].key, nullptr);
  EXPECT_EQ(Take(KyLocaleTables::lookupStdLangTerr("Norwegian (Bokm\xE5l)_Norway")), "no_NO");
}

TEST(LocaleTables, CodesetChain) {
  struct Row { const char* codeset; const char* langTerr; int encoding; } rows[] = {
      {"ISO_646.irv", nullptr, 1}, {"646", nullptr, 1}, {"xISO_646", nullptr, 0}, {"ISO8859-1", nullptr, 2},
      {"iso88591", nullptr, 2}, {"xISO8859-1", nullptr, 2}, {"ISO8859-1x", nullptr, 2}, {"ISO8859-12", nullptr, 2},
      {"ISO8859-15", nullptr, 34}, {"ISO-8859-15", nullptr, 34}, {"iso885915x", nullptr, 34},
      {"ISO-8859-2", nullptr, 3}, {"iso88599", nullptr, 10}, {"ISO8859-10", nullptr, 11}, {"TACTIS", nullptr, 31},
      {"xTIS620", nullptr, 31}, {"ISO8859-13", nullptr, 32}, {"iso885914", nullptr, 33}, {"EUCJP", nullptr, 12},
      {"ujis", nullptr, 12}, {"PCK", nullptr, 13}, {"SJIS", nullptr, 13}, {"KSC5601", nullptr, 14},
      {"hp15CN", nullptr, 15}, {"xeucCN", nullptr, 15}, {"BIG5HK", nullptr, 17}, {"xhkscs", nullptr, 17},
      {"Big5", nullptr, 16}, {"ucns", nullptr, 18}, {"gbk", nullptr, 37}, {"deckanji", nullptr, 38},
      {"xdeckanji", nullptr, 38}, {"sdeckanji", nullptr, 0}, {"deckorean", nullptr, 39}, {"dechanzi", nullptr, 40},
      {"DECHANYU", nullptr, 41}, {"ROMAN8", nullptr, 19}, {"IBM850", nullptr, 20}, {"1250", nullptr, 21},
      {"1252", nullptr, 23}, {"x1252", nullptr, 0}, {"1258", nullptr, 29}, {"x932", nullptr, 13}, {"936", nullptr, 15},
      {"950", "zh_HK", 17}, {"950", "zh_TW", 16}, {"950", nullptr, 16}, {"UTF-8", nullptr, 30}, {"Utf-8", nullptr, 30},
      {"xutf8", nullptr, 30}, {"949", nullptr, 35}, {"874", nullptr, 36}, {"euc", "ja_JP", 12}, {"EUC", "ko_KR", 14},
      {"EUC", "zh_CN", 15}, {"EUC", "zh_TW", 18}, {"EUC", "fr_FR", 0}, {"EUC", nullptr, 0}, {"Shift_JIS", nullptr, 0},
      {"EUC-KR", nullptr, 0}, {"windows-1252", nullptr, 0}, {"hp-roman8", nullptr, 0}, {"", nullptr, 0}};
  for (const Row& row : rows)
    EXPECT_EQ(KyLocaleTables::encodingFromCodeset(KyString(row.codeset), row.langTerr), row.encoding)
        << row.codeset << " " << (row.langTerr ? row.langTerr : "null");
}

TEST(LocaleTables, NameServices) {
  EXPECT_EQ(KyLocale::GetKyEncoding("iso88591"), 0);
  EXPECT_EQ(KyLocale::GetKyEncoding("DEC-Hanyu"), 41);
  EXPECT_STREQ(KyLocale::GetEncodingName(static_cast<KyEncoding>(30)), "UTF-8");
  EXPECT_STREQ(KyLocale::GetEncodingName(static_cast<KyEncoding>(0)), "");
  EXPECT_EQ(KyLocale::GetEncodingName(static_cast<KyEncoding>(42)), nullptr);
  EXPECT_EQ(KyLocale::GetEncodingName(static_cast<KyEncoding>(-1)), nullptr);
  for (int i = 0; i < 42; ++i)
    EXPECT_EQ(KyLocale::GetKyEncoding(KyLocale::GetEncodingName(static_cast<KyEncoding>(i))), i);

  const int compat[][3] = {{2, 2, 1},  {2, 23, 1}, {23, 2, 2},  {2, 34, 0},  {34, 2, 2},  {37, 15, 2},
                           {15, 37, 1}, {0, 1, 0},  {1, 2, 0},   {17, 16, 1}, {36, 31, 2}, {31, 36, 1}};
  for (const auto& [own, other, result] : compat)
    EXPECT_EQ(KyLocaleTables::isEncodingCompatible(KyEncoding(own), KyEncoding(other)), result) << own << " " << other;
}

TEST(LocaleTables, StdLocaleNames) {
  std::setlocale(LC_ALL, "C");
  const std::pair<const char*, const char*> rows[] = {
      {"C", "en_US.US-ASCII"},          {"C.UTF-8", "en_US.UTF-8"},    {"French_France.1252", "fr_FR.windows-1252"},
      {"English_United States.65001", "en_US."},                       {"Nowhere_Land.1252", "(null)"},
      {"fr_FR.UTF-8", "fr_FR.UTF-8"},   {"kok_IN.UTF-8", "kok_IN.UTF-8"}, {"ko_KR.EUC-KR", "ko_KR."},
      {"de_DE.ISO-8859-15@euro", "de_DE.ISO-8859-15"}, {"fr_fr.UTF-8", "(null)"}, {"", "(null)"}};
  for (const auto& [system, standard] : rows) EXPECT_EQ(Take(KyLocale::GetStdLocaleName(system)), standard) << system;
  EXPECT_EQ(KyLocale::GetStdLocaleName(nullptr), nullptr);
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
  // A mixed process locale comes back whole after a lookup that made a locale.
  std::setlocale(LC_CTYPE, "C.UTF-8");
  EXPECT_EQ(Take(KyLocale::GetStdLocaleName("POSIX")), "en_US.US-ASCII");
  EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8");
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}

TEST(LocaleTables, HostileNames) {
  std::string huge(1 << 20, 'x');
  huge.replace(0, 6, "fr_FR.");
  EXPECT_EQ(Take(KyLocale::GetStdLocaleName(huge.c_str())), "fr_FR.");
  testing::internal::CaptureStderr();
  KyLocale bad(huge.c_str());
  EXPECT_TRUE(bad.isBad());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "KyLocale::KyLocale " + huge + " locale not supported by the system.\n");
  // Under UTF-8 the codeset stops at an invalid byte: "646\xFF" reads "646".
  EXPECT_EQ(Take(KyLocale::GetStdLocaleName("C.646\xFF")), "en_US.");
  std::setlocale(LC_ALL, "C.UTF-8");
  EXPECT_EQ(Take(KyLocale::GetStdLocaleName("C.646\xFF")), "en_US.US-ASCII");
  EXPECT_EQ(KyLocaleTables::encodingFromCodeset(KyString("\xFFUTF-8"), nullptr), 0);
}

TEST(LocaleDescriptor, StandardFormAndCopies) {
  KyLocaleCatDescriptor descriptor;
  EXPECT_EQ(descriptor.getStdLocaleName(), nullptr);
  descriptor.setStdLangTerr("fr_FR", kISO8859_1);
  EXPECT_EQ(Take(descriptor.getStdLocaleName()), "fr_FR.ISO-8859-1");
  EXPECT_EQ(descriptor.getSystemLocaleName(), nullptr);
  descriptor.setStdLangTerr("fr_FR", kUTF8);  // the same pair: nothing changes
  EXPECT_EQ(descriptor.getEncoding(), kISO8859_1);

  KyLocaleCatDescriptor copy;
  copy.setSystemLocaleName("C");
  copy = descriptor;
  const KyLocaleCatDescriptor& same = copy;
  copy = same;  // self-assignment keeps the texts
  descriptor.setStdLangTerr("french", kISO8859_1);
  EXPECT_FALSE(descriptor.isStandard());
  EXPECT_STREQ(descriptor.getSystemLocaleName(), "french");
  EXPECT_EQ(descriptor.getStdLangTerr(), nullptr);
  EXPECT_EQ(Take(copy.getStdLocaleName()), "fr_FR.ISO-8859-1");

  EXPECT_FALSE(copy.setSystemLocaleName(nullptr));
  EXPECT_FALSE(copy.isStandard());
  EXPECT_TRUE(copy.setSystemLocaleName("English_United Kingdom.850"));
  EXPECT_EQ(Take(copy.getStdLocaleName()), "en_GB.IBM850");
}

TEST(Locale, BadAndStandardLocales) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(KySetLocale("no-such-locale"), nullptr);
  EXPECT_EQ(KyLocale::Get(false, nullptr), nullptr);
  KyLocale bad("no-such-locale");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "KyLocale::KyLocale no-such-locale locale not supported by the system.\n"
                "KyLocale::KyLocale no-such-locale locale not supported by the system.\n");
  EXPECT_TRUE(bad.isBad());
  EXPECT_STREQ(bad.getSystemLocaleName(kCategoryCType), "C");
  EXPECT_STREQ(bad.getSystemLocaleName(kCategoryMessages), "C");
  EXPECT_EQ(bad.getEncoding(), 1);
  EXPECT_EQ(KyLocale::Get(false, nullptr), nullptr);

  KyLocale* c = KySetLocale("C");
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(KySetLocale("C"), c);
  EXPECT_EQ(KyLocale::Get(false, nullptr), c);
  EXPECT_EQ(Take(c->getStdLocaleName(kCategoryCType)), "en_US.US-ASCII");
  EXPECT_STREQ(c->getStdLangTerr(kCategoryMessages), "en_US");
  EXPECT_EQ(c->getCategory(static_cast<KyCategory>(3)), nullptr);
  EXPECT_EQ(c->getSystemLocaleName(kCategoryAll), nullptr);
  EXPECT_FALSE(c->isStandardLocale(static_cast<KyCategory>(1)));
  EXPECT_EQ(c->getFirstDayOfWeek(), KyDaysOfWeek::kMonday);
  EXPECT_EQ(c->getMinimalDaysInFirstWeek(), 0);

  // A second object of the same name is found by Get without moving the process.
  KyLocale* utf8 = KySetLocale("C.UTF-8");
  EXPECT_EQ(utf8->getEncoding(), kUTF8);
  EXPECT_GT(utf8->getMaxCharSize(), 1);
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(KySetLocale("C.UTF-8"), utf8);
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
  EXPECT_EQ(KyLocale::Get(false, nullptr), utf8);

  // "POSIX" is listed as "C", so every lookup by it makes one more object.
  EXPECT_EQ(Take(KyLocale::GetStdLocaleName("POSIX")), "en_US.US-ASCII");
  EXPECT_EQ(KyLocale::Get(false, "C"), c);
  delete utf8;
  EXPECT_EQ(KyLocale::Get(false, nullptr), nullptr);
  EXPECT_EQ(KyLocale::Get(false, "C.UTF-8"), nullptr);

  // A refused environment locale: the line stops at the missing name, with the stream
  // failed rather than fed a null pointer.
  setenv("LC_ALL", "no-such-locale", 1);
  testing::internal::CaptureStderr();
  KyLocale fromEnvironment(nullptr);
  EXPECT_TRUE(std::cerr.fail());
  std::cerr.clear();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "KyLocale::KyLocale ");
  EXPECT_TRUE(fromEnvironment.isBad());
  unsetenv("LC_ALL");
}

TEST(Locale, ExtensionsAndLocks) {
  KyLocale* locale = new KyLocale("C");
  auto* a = new TestExtension(locale, 1);
  auto* b = new TestExtension(locale, 2);
  auto* c = new TestExtension(locale, 1);
  for (TestExtension* extension : {a, b, c, static_cast<TestExtension*>(nullptr)}) locale->addExtension(extension);
  EXPECT_EQ(locale->getExtension(1), a);
  locale->removeExtension(b);
  EXPECT_EQ(locale->getExtension(2), nullptr);
  delete a;  // unlists itself: the next of its type is found
  EXPECT_EQ(locale->getExtension(1), c);
  EXPECT_STREQ(c->getSystemLocaleName(kCategoryCType), "C");
  EXPECT_EQ(c->isEncodingCompatible(kUSASCII), kCompatible);
  delete b;
  c->lock();
  c->unlock();  // the last extension takes the locale with it
  EXPECT_EQ(KyLocale::Get(false, "C"), nullptr);

  TestExtension orphan(nullptr, 3);
  EXPECT_EQ(orphan.getEncoding(), 0);
  EXPECT_EQ(orphan.getStdLocaleName(kCategoryCType), nullptr);
  EXPECT_FALSE(orphan.setEncoding());
}

TEST(Locale, CountsBeyondSixteenBits) {
  KyLocale* locale = new KyLocale("C");
  std::vector<TestExtension*> extensions;
  for (int i = 0; i < 70000; ++i) {
    extensions.push_back(new TestExtension(locale, i == 69999 ? 7 : 0));
    locale->addExtension(extensions.back());
  }
  EXPECT_EQ(locale->getExtension(7), extensions.back());
  for (std::size_t i = extensions.size(); i-- > 1;) delete extensions[i];
  EXPECT_EQ(KyLocale::Get(false, "C"), locale);
  std::vector<std::unique_ptr<KyLocale>> many;
  for (int i = 0; i < 70000; ++i) many.emplace_back(new KyLocale("C"));
  many.clear();
  EXPECT_EQ(KyLocale::Get(false, "C"), locale);
  delete extensions[0];
  EXPECT_EQ(KyLocale::Get(false, "C"), nullptr);
}

TEST(Locale, ContextReference) {
  KyGlobalContext& context = KyGlobalContext::GetInstance();
  EXPECT_EQ(context.getLocale(), nullptr);
  ASSERT_NE(KyLocale::Get(false, nullptr), nullptr);
  EXPECT_STREQ(KyLocale::Get(false, nullptr)->getSystemLocaleName(kCategoryCType), "C");
  auto* first = new TestExtension(KyLocale::Get(false, nullptr), 1);
  context.setLocale(first);
  context.setLocale(first);  // locks before unlocking: still alive
  context.setLocale(nullptr);
  EXPECT_EQ(context.getLocale(), first);
  EXPECT_TRUE(context.hasLocale());
  context.setLocale(new TestExtension(first->getLocale(), 2));
  EXPECT_EQ(context.getLocale()->getType(), 2);
}

// Cases on locales built by localedef; LOCPATH points at them.
class BuiltLocale : public testing::Test {
 protected:
  void SetUp() override {
    if (std::getenv("KY_TEST_BUILT_LOCALES") == nullptr) GTEST_SKIP() << "runs with LOCPATH only";
  }
  static bool Have(const char* name) {
    std::string saved = std::setlocale(LC_ALL, nullptr);
    bool have = std::setlocale(LC_ALL, name) != nullptr;
    std::setlocale(LC_ALL, saved.c_str());
    return have;
  }
};

TEST_F(BuiltLocale, StandardNamesAndEncodings) {
  // Name, standard name of the character-type category, encoding (0 without a dot), warning.
  const std::tuple<const char*, const char*, int, const char*> rows[] = {
      {"fr_FR.ISO-8859-1", "fr_FR.ISO-8859-1", 2, ""}, {"fr_FR", "fr_FR.ISO-8859-1", 0, ""},
      {"ja_JP.EUC-JP", "ja_JP.EUC-JP", 12, ""},         {"ko_KR", "ko_KR.EUC-KR", 0, ""},
      {"ko_KR.EUC-KR", "(null)", 0, "Not a standard KBC locale ko_KR.EUC-KR\n"},
      {"de_DE.ISO-8859-15@euro", "de_DE.ISO-8859-15", 34, ""}};
  for (const auto& [name, standard, encoding, warning] : rows) {
    if (!Have(name)) {
      std::cout << "skipped " << name << ": localedef could not build it\n";
      continue;
    }
    testing::internal::CaptureStderr();
    KyLocale locale(name);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), warning) << name;
    EXPECT_EQ(Take(locale.getStdLocaleName(kCategoryCType)), standard) << name;
    EXPECT_EQ(locale.getEncoding(), encoding) << name;
    std::setlocale(LC_ALL, "C");
  }
  if (Have("fr_FR")) {
    EXPECT_EQ(Take(KyLocale::GetStdLocaleName("fr_FR")), "fr_FR.");
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    EXPECT_NE(KyLocale::Get(false, "fr_FR"), nullptr);
  }
}

}  // namespace
