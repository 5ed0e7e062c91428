// Runs number tests under "C" and under the locales named in KY_TEST_LOCALES (comma
// separated). The number_text_locales and numeric_locales tests set it, together with a
// LOCPATH that holds locales built by localedef at test time; a locale that could not be
// built makes its cases skip and say why.
#ifndef KYBASE_TESTS_TEXT_NUMBER_LOCALE_H
#define KYBASE_TESTS_TEXT_NUMBER_LOCALE_H

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>
#include <vector>

inline std::vector<std::string> NumberTestLocales() {
  std::vector<std::string> names{"C"};
  const char* listed = std::getenv("KY_TEST_LOCALES");
  std::string rest = listed != nullptr ? listed : "";
  while (!rest.empty()) {
    const std::size_t comma = rest.find(',');
    names.push_back(rest.substr(0, comma));
    rest = comma == std::string::npos ? "" : rest.substr(comma + 1);
  }
  return names;
}

inline std::string LocaleTestName(const testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  for (char& c : name)
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  return name;
}

// Sets the whole locale for one case and puts "C" back after it.
inline bool EnterLocale(const std::string& name) { return std::setlocale(LC_ALL, name.c_str()) != nullptr; }

class NumberLocaleTest : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (!EnterLocale(GetParam()))
      GTEST_SKIP() << "locale " << GetParam() << " is not available (localedef could not build it into LOCPATH)";
  }
  void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

#endif  // KYBASE_TESTS_TEXT_NUMBER_LOCALE_H
