// Locale helpers of the KyString tests. A string's kind follows MB_CUR_MAX when it is
// made, so each case runs under "C" (single byte) and "C.UTF-8" (multi byte), sets the
// locale before making strings and puts the previous one back after.
#ifndef KYBASE_TESTS_TEXT_KYSTRING_LOCALE_H
#define KYBASE_TESTS_TEXT_KYSTRING_LOCALE_H

#include <gtest/gtest.h>

#include <clocale>
#include <memory>
#include <string>

#include "kybase/text/kystring.h"
#include "kybase/text/mb_string.h"
#include "kybase/text/sb_string.h"

// Switches LC_ALL for its lifetime.
class ScopedLocale {
 public:
  explicit ScopedLocale(const char* name) : saved_(std::setlocale(LC_ALL, nullptr)) {
    entered_ = std::setlocale(LC_ALL, name) != nullptr;
  }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;
  ~ScopedLocale() { std::setlocale(LC_ALL, saved_.c_str()); }
  bool entered() const { return entered_; }

 private:
  std::string saved_;
  bool entered_;
};

inline bool IsMultiByteString(const KyString& s) {
  return dynamic_cast<KyMBString*>(s.getInternalString()) != nullptr;
}

inline bool IsSingleByteString(const KyString& s) {
  return dynamic_cast<KySBString*>(s.getInternalString()) != nullptr;
}

inline int RefCount(const KyString& s) { return s.getInternalString()->getRefCount(); }

// Parameter: the locale name. Cases skip when the locale is missing.
class KyStringKindTest : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    locale_.reset(new ScopedLocale(GetParam()));
    if (!locale_->entered()) GTEST_SKIP() << "locale " << GetParam() << " is not installed";
  }
  void TearDown() override { locale_.reset(); }
  bool multiByte() const { return std::string(GetParam()) != "C"; }

 private:
  std::unique_ptr<ScopedLocale> locale_;
};

inline std::string KindName(const testing::TestParamInfo<const char*>& info) {
  return std::string(info.param) == "C" ? "SingleByte" : "MultiByte";
}

#define KY_INSTANTIATE_KINDS(suite) \
  INSTANTIATE_TEST_SUITE_P(Kinds, suite, testing::Values("C", "C.UTF-8"), KindName)

#endif  // KYBASE_TESTS_TEXT_KYSTRING_LOCALE_H
