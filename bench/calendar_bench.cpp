// The calendar against ICU's GregorianCalendar, both in a zero-offset zone with the
// cutover of 15 October 1582 and Monday as the first day: setTime followed by a read
// of all 19 fields, and a date and time of day set as fields followed by getTime, over
// 4096 instants from 1600 to 2400 and one in eight before the cutover. Before timing,
// both must agree on every instant's date and time of day in both directions, or the
// program exits with a failure.
#include <benchmark/benchmark.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

#include "kybase/calendar/gregorian_calendar.h"
#include "kybase/locale/kylocale.h"

namespace {

constexpr int kCount = 4096;
constexpr KyDateFields kKyDate[] = {kEra, kYear, kMonth, kDayOfMonth, kHourOfDay, kMinute, kSecond, kMillisecond};
constexpr UCalendarDateFields kIcuDate[] = {UCAL_ERA,         UCAL_YEAR,   UCAL_MONTH,  UCAL_DATE,
                                            UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND};
constexpr UCalendarDateFields kIcuAll[] = {
    UCAL_ERA,    UCAL_YEAR,    UCAL_MONTH,       UCAL_WEEK_OF_YEAR, UCAL_WEEK_OF_MONTH, UCAL_DATE,        UCAL_DAY_OF_YEAR,
    UCAL_DAY_OF_WEEK,          UCAL_DAY_OF_WEEK_IN_MONTH,           UCAL_AM_PM,         UCAL_HOUR,        UCAL_HOUR_OF_DAY,
    UCAL_MINUTE, UCAL_SECOND,  UCAL_MILLISECOND, UCAL_ZONE_OFFSET,  UCAL_DST_OFFSET,    UCAL_YEAR_WOY,    UCAL_DOW_LOCAL};

const std::vector<double>& Instants() {
  static const std::vector<double> instants = [] {
    std::mt19937_64 random(2400);
    const double y1600 = -11676096000000.0, y2400 = 13569465600000.0, y1000 = -30610224000000.0;
    std::uniform_real_distribution<double> modern(y1600, y2400), early(y1000, -12219292800000.0);
    std::vector<double> result;
    for (int i = 0; i < kCount; ++i)
      result.push_back(static_cast<double>(static_cast<long>(i % 8 ? modern(random) : early(random))));
    return result;
  }();
  return instants;
}

std::unique_ptr<KyGregorianCalendar> KyCalendarForBench() {
  KySetLocale("C");
  KyDateErrorCode status = kNoError;
  return std::make_unique<KyGregorianCalendar>(1970, 0, 1, status);  // UTC, Monday first
}

std::unique_ptr<icu::GregorianCalendar> IcuCalendar() {
  UErrorCode status = U_ZERO_ERROR;
  auto calendar = std::make_unique<icu::GregorianCalendar>(icu::TimeZone::createTimeZone("Etc/GMT"),
                                                           icu::Locale::getRoot(), status);
  calendar->setFirstDayOfWeek(UCAL_MONDAY);
  // Its default cutover is the same instant; setting it again is left out on purpose,
  // since the ICU 72 calendar then reads earlier dates by the Gregorian rule.
  if (U_FAILURE(status) || calendar->getGregorianChange() != KyGregorianCalendar::kPapalCutover) {
    std::fprintf(stderr, "calendar_bench: ICU calendar failed: %s\n", u_errorName(status));
    std::exit(1);
  }
  return calendar;
}

// Both calendars read every instant the same way, and build it back from its fields.
void RequireAgreement() {
  static const bool agreed = [] {
    auto ours = KyCalendarForBench();
    auto theirs = IcuCalendar();
    KyDateErrorCode status = kNoError;
    UErrorCode icuStatus = U_ZERO_ERROR;
    for (double t : Instants()) {
      ours->setTime(t, status);
      theirs->setTime(t, icuStatus);
      for (int i = 0; i < 8; ++i)
        if (ours->get(kKyDate[i], status) != theirs->get(kIcuDate[i], icuStatus)) {
          std::fprintf(stderr, "calendar_bench: field %d of %.0f differs\n", i, t);
          std::exit(1);
        }
      long fields[8];
      for (int i = 0; i < 8; ++i) fields[i] = ours->get(kKyDate[i], status);
      ours->clear();
      theirs->clear();
      for (int i = 0; i < 8; ++i) {
        ours->set(kKyDate[i], fields[i]);
        theirs->set(kIcuDate[i], static_cast<int32_t>(fields[i]));
      }
      if (ours->getTime(status) != t || theirs->getTime(icuStatus) != t) {
        std::fprintf(stderr, "calendar_bench: the fields of %.0f do not come back\n", t);
        std::exit(1);
      }
    }
    if (KyDateFailed(status) || U_FAILURE(icuStatus)) std::exit(1);
    return true;
  }();
  benchmark::DoNotOptimize(agreed);
}

void SetTimeReadAll_Ky(benchmark::State& state) {
  RequireAgreement();
  auto calendar = KyCalendarForBench();
  KyDateErrorCode status = kNoError;
  for (auto _ : state) {
    long sum = 0;
    for (double t : Instants()) {
      calendar->setTime(t, status);
      for (int field = 0; field < KyCalendar::kFieldCount; ++field)
        sum += calendar->get(static_cast<KyDateFields>(field), status);
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

void SetTimeReadAll_Base_ICU(benchmark::State& state) {
  RequireAgreement();
  auto calendar = IcuCalendar();
  UErrorCode status = U_ZERO_ERROR;
  for (auto _ : state) {
    long sum = 0;
    for (double t : Instants()) {
      calendar->setTime(t, status);
      for (UCalendarDateFields field : kIcuAll) sum += calendar->get(field, status);
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

// The date and time of day of every instant, as the fields both sides set.
const std::vector<long>& InstantFields() {
  static const std::vector<long> fields = [] {
    auto calendar = KyCalendarForBench();
    KyDateErrorCode status = kNoError;
    std::vector<long> result;
    for (double t : Instants()) {
      calendar->setTime(t, status);
      for (KyDateFields field : kKyDate) result.push_back(calendar->get(field, status));
    }
    return result;
  }();
  return fields;
}

void FieldsToTime_Ky(benchmark::State& state) {
  RequireAgreement();
  auto calendar = KyCalendarForBench();
  const std::vector<long>& fields = InstantFields();
  KyDateErrorCode status = kNoError;
  for (auto _ : state) {
    double sum = 0;
    for (std::size_t at = 0; at < fields.size(); at += 8) {
      calendar->clear();
      for (int i = 0; i < 8; ++i) calendar->set(kKyDate[i], fields[at + i]);
      sum += calendar->getTime(status);
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

void FieldsToTime_Base_ICU(benchmark::State& state) {
  RequireAgreement();
  auto calendar = IcuCalendar();
  const std::vector<long>& fields = InstantFields();
  UErrorCode status = U_ZERO_ERROR;
  for (auto _ : state) {
    double sum = 0;
    for (std::size_t at = 0; at < fields.size(); at += 8) {
      calendar->clear();
      for (int i = 0; i < 8; ++i) calendar->set(kIcuDate[i], static_cast<int32_t>(fields[at + i]));
      sum += calendar->getTime(status);
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

}  // namespace

BENCHMARK(SetTimeReadAll_Ky)->Unit(benchmark::kMicrosecond);
BENCHMARK(SetTimeReadAll_Base_ICU)->Unit(benchmark::kMicrosecond);
BENCHMARK(FieldsToTime_Ky)->Unit(benchmark::kMicrosecond);
BENCHMARK(FieldsToTime_Base_ICU)->Unit(benchmark::kMicrosecond);
