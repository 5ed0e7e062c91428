// localize under no locale, then under a locale built by localedef (LOCPATH), whose
// messages name becomes a directory "locale/<name>/" before the file.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "kybase/locale/kylocale.h"
#include "kybase/locale/locale_descriptor.h"
#include "kybase/paths/path_name.h"

TEST(PathLocalize, AddsTheMessagesLocaleDirectory) {
  EXPECT_EQ(std::string(KyPathName::Localize("a/b.txt").getValue()), "a/b.txt");  // no locale yet
  KyLocale* locale = KySetLocale("fr_FR.ISO-8859-1");
  if (locale == nullptr) GTEST_SKIP() << "fr_FR.ISO-8859-1 could not be built by localedef";
  std::unique_ptr<char[]> name(locale->getCategory(kCategoryMessages)->getStdLocaleName());
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(std::string(KyPathName::Localize("a/b.txt").getValue()), "a/locale/" + std::string(name.get()) + "/b.txt");
  KyPathName directory("/d/");
  directory.localize();
  EXPECT_EQ(std::string(directory.getUnixValue().getValue()), "/d/locale/" + std::string(name.get()) + "/");
}
