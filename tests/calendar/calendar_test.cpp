#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kybase/calendar/gregorian_calendar.h"
#include "kybase/calendar/time_unit.h"
#include "kybase/locale/kylocale.h"

namespace {

using Cal = KyGregorianCalendar;
constexpr double kDay = 86400000.0;

// Every calendar here starts from the "C" locale, not from the environment.
class Calendar : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { KySetLocale("C"); }
};

std::unique_ptr<Cal> At(long y, long m, long d, long h = 0, long min = 0) {
  KyDateErrorCode status = kNoError;
  return std::make_unique<Cal>(y, m, d, h, min, status);
}

double TimeOf(long y, long m, long d, long h = 0, long min = 0) {
  KyDateErrorCode status = kNoError;
  return At(y, m, d, h, min)->getTime(status);
}

std::unique_ptr<Cal> AtTime(double time) {
  auto c = At(1970, 0, 1);
  KyDateErrorCode status = kNoError;
  c->setTime(time, status);
  return c;
}

// "era year-month-day hh:mm", the month counted from 1.
std::string Show(KyCalendar& c) {
  KyDateErrorCode s = kNoError;
  char text[96];
  std::snprintf(text, sizeof text, "%ld %ld-%02ld-%02ld %02ld:%02ld", c.get(kEra, s), c.get(kYear, s),
                c.get(kMonth, s) + 1, c.get(kDayOfMonth, s), c.get(kHourOfDay, s), c.get(kMinute, s));
  return KyDateFailed(s) ? "failed" : text;
}

TEST_F(Calendar, TimeToFields) {
  struct Row { double time; const char* date; long dow, doy, woy, yow, localDow; } rows[] = {
      {0, "1 1970-01-01 00:00", 5, 1, 1, 1970, 4},        {-1, "1 1969-12-31 23:59", 4, 365, 1, 1970, 3},
      {Cal::kPapalCutover, "1 1582-10-15 00:00", 6, 278, 40, 1582, 5},
      {Cal::kPapalCutover - 1, "1 1582-10-04 23:59", 5, 277, 40, 1582, 4},
      {1735603200000.0, "1 2024-12-31 00:00", 3, 366, 1, 2025, 2},
      {1672531200000.0, "1 2023-01-01 00:00", 1, 1, 1, 2023, 7},
      {1703462400000.0, "1 2023-12-25 00:00", 2, 359, 53, 2023, 1},  // the kept week oddity
      {1703548800000.0, "1 2023-12-26 00:00", 3, 360, 1, 2024, 2},
      {-62135769600000.0, "1 1-01-01 00:00", 7, 1, 1, 1, 6},
      {-62135769600000.0 - 366 * kDay, "0 1-01-01 00:00", 5, 1, 1, 1, 4},
  };
  for (const Row& row : rows) {
    auto c = AtTime(row.time);
    KyDateErrorCode s = kNoError;
    EXPECT_EQ(Show(*c), row.date) << row.time;
    const std::vector<long> fields = {c->get(kDayOfWeek, s), c->get(kDayOfYear, s), c->get(kWeekOfYear, s),
                                      c->get(kYearOfWeek, s), c->get(kLocalDayOfWeek, s)};
    EXPECT_EQ(fields, std::vector<long>({row.dow, row.doy, row.woy, row.yow, row.localDow})) << row.date;
  }
}

TEST_F(Calendar, FieldsToTime) {
  EXPECT_EQ(TimeOf(1582, 9, 5), Cal::kPapalCutover);  // the skipped days read as Julian
  EXPECT_EQ(TimeOf(1582, 9, 14), Cal::kPapalCutover + 9 * kDay);
  EXPECT_EQ(TimeOf(2000, -1, 1), TimeOf(1999, 11, 1));
  KyDateErrorCode s = kNoError;
  EXPECT_TRUE(At(1, 0, 1)->isLeapYear(1500) && !At(1, 0, 1)->isLeapYear(1700));

  // Fields set in order on a calendar, and the date they give: the last Sunday of March
  // 2024 by a negative ordinal; the week-based year wins when set last; the clock.
  struct Row { std::unique_ptr<Cal> c; std::vector<std::pair<KyDateFields, long>> sets; const char* date; } rows[] = {
      {At(2024, 2, 1), {{kDayOfWeek, Cal::kSunday}, {kDayOfWeekInMonth, -1}}, "1 2024-03-31 00:00"},
      {At(2024, 0, 1), {{kWeekOfYear, 1}, {kYearOfWeek, 2025}, {kDayOfWeek, Cal::kTuesday}}, "1 2024-12-31 00:00"},
      {AtTime(TimeOf(2024, 4, 15, 9, 30)), {{kHourOfDay, 5}}, "1 2024-05-15 05:30"},
      {AtTime(TimeOf(2024, 4, 15, 9, 30)), {{kHourOfDay, 5}, {kAmPm, 1}, {kHour, 3}}, "1 2024-05-15 15:30"}};
  for (const auto& [c, sets, date] : rows) {
    for (const auto& [field, value] : sets) c->set(field, value);
    EXPECT_EQ(Show(*c), date);
  }

  auto c = At(2024, 0, 1);
  c->set(kZoneOffset, 3600000);
  EXPECT_EQ(c->getTime(s), TimeOf(2024, 0, 1) - 3600000);

  for (KyDateFields field : {kDayOfMonth, kDayOfWeekInMonth}) {  // 31 April, the 0th week day
    c = At(2024, 3, 1);
    c->setLenient(false);
    c->set(field, field == kDayOfMonth ? 31 : 0);
    s = kNoError;
    EXPECT_EQ(c->get(kYear, s), 0);
    EXPECT_EQ(s, kIllegalArgument);
  }
}

TEST_F(Calendar, AddAndRoll) {
  struct Row { bool roll; KyDateFields field; long amount; std::unique_ptr<Cal> start; const char* result; };
  Row rows[] = {
      {false, kMonth, 1, At(2001, 0, 31), "1 2001-02-28 00:00"},
      {false, kMonth, -14, At(2001, 0, 31), "1 1999-11-30 00:00"},
      {false, kYear, 1, At(2000, 1, 29), "1 2001-02-28 00:00"},
      {false, kYear, -2000, At(1970, 5, 5), "0 31-06-05 00:00"}, {false, kEra, 5, At(1970, 5, 5), "1 1970-06-05 00:00"},
      {false, kEra, -5, At(1970, 5, 5), "0 1970-06-05 00:00"},
      {false, kDayOfMonth, 1, At(1582, 9, 4), "1 1582-10-15 00:00"},
      {false, kHourOfDay, 25, At(2024, 1, 28, 23), "1 2024-03-01 00:00"},
      {true, kMonth, 1, At(2024, 0, 31), "1 2024-02-29 00:00"},
      {true, kMonth, 12, At(2024, 0, 31), "1 2024-01-31 00:00"},
      {true, kMonth, LONG_MAX, At(2024, 0, 10), "1 2024-08-10 00:00"},
      {true, kDayOfMonth, 1, At(2024, 3, 30), "1 2024-04-01 00:00"},
      {true, kDayOfMonth, 1, At(1582, 9, 4), "1 1582-10-15 00:00"},
      {true, kDayOfMonth, -1, At(1582, 9, 15), "1 1582-10-04 00:00"},
      {true, kDayOfMonth, 1, At(1582, 9, 31), "1 1582-10-01 00:00"},
      {true, kWeekOfMonth, 1, At(1582, 9, 1), "1 1582-10-18 00:00"},
      {true, kWeekOfMonth, 1, At(2024, 4, 29), "1 2024-05-01 00:00"},
      {true, kHourOfDay, 1, At(2024, 4, 15, 23), "1 2024-05-15 00:00"},
      {true, kHour, -1, At(2024, 4, 15, 0), "1 2024-05-15 11:00"},
      {true, kDayOfWeek, 1, At(2024, 4, 19), "1 2024-05-13 00:00"},
      {true, kDayOfYear, -1, At(2024, 0, 1), "1 2024-12-31 00:00"},
      {true, kWeekOfYear, 1, At(2023, 11, 25), "1 2023-01-02 00:00"},
      {true, kDayOfWeekInMonth, 1, At(2024, 4, 29), "1 2024-05-01 00:00"},
  };
  for (Row& row : rows) {
    KyDateErrorCode s = kNoError;
    const std::string before = Show(*row.start);
    row.roll ? row.start->roll(row.field, row.amount, s) : row.start->add(row.field, row.amount, s);
    EXPECT_EQ(s, kNoError) << before;
    EXPECT_EQ(Show(*row.start), row.result) << (row.roll ? "roll " : "add ") << row.field << " from " << before;
  }
  auto c = At(2024, 0, 1);
  KyDateErrorCode s = kNoError;
  c->add(kZoneOffset, 0, s);
  EXPECT_EQ(s, kNoError);
  c->add(kZoneOffset, 1, s);
  EXPECT_EQ(s, kIllegalArgument);
  EXPECT_EQ(At(2000, 1, 1)->getActualMaximum(kDayOfMonth), 29);
  EXPECT_EQ(At(2000, 1, 1)->getActualMaximum(kYear), 0);
}

TEST_F(Calendar, FailedStatusStopsEveryOperation) {
  using Op = std::function<double(Cal&, KyDateErrorCode&)>;
  KyTimeZone zone;
  const std::vector<std::pair<const char*, Op>> ops = {
      {"getTime", [](Cal& c, KyDateErrorCode& s) { return c.getTime(s); }},
      {"setTime", [](Cal& c, KyDateErrorCode& s) { return c.setTime(5, s), 0.0; }},
      {"get", [](Cal& c, KyDateErrorCode& s) { return double(c.get(kYear, s)); }},
      {"add", [](Cal& c, KyDateErrorCode& s) { return c.add(kDayOfMonth, 1, s), 0.0; }},
      {"roll", [](Cal& c, KyDateErrorCode& s) { return c.roll(kMonth, 1L, s), 0.0; }},
      {"fieldDifference", [](Cal& c, KyDateErrorCode& s) { return double(c.fieldDifference(1e12, kDayOfMonth, s)); }},
      {"inDaylightTime", [](Cal& c, KyDateErrorCode& s) { return double(c.inDaylightTime(s)); }},
      {"getActualMaximum", [](Cal& c, KyDateErrorCode& s) { return double(c.getActualMaximum(kWeekOfYear, s)); }},
      {"getActualMinimum", [](Cal& c, KyDateErrorCode& s) { return double(c.getActualMinimum(kYear, s)); }},
      {"setGregorianChange", [](Cal& c, KyDateErrorCode& s) { return c.setGregorianChange(0, s), 0.0; }},
      {"before", [](Cal& c, KyDateErrorCode& s) { return double(At(1, 0, 1)->before(c, s)); }},
      {"getOffset", [&](Cal&, KyDateErrorCode& s) { return double(zone.getOffset(1, 2024, 0, 1, 2, 0, 31, 31, s)); }},
      {"getOffset 8", [&](Cal&, KyDateErrorCode& s) { return double(zone.getOffset(1, 2024, 0, 1, 2, 0, 31, s)); }},
      {"create", [](Cal&, KyDateErrorCode& s) { return double(KyCalendar::createInstance(s) != nullptr); }},
      {"create zone*", [](Cal&, KyDateErrorCode& s) { return double(!!KyCalendar::createInstance(new KyTimeZone, s)); }},
      {"create locale", [](Cal&, KyDateErrorCode& s) { return double(!!KyCalendar::createInstance(KyLocale("C"), s)); }},
  };
  for (const auto& [name, op] : ops) {
    auto c = At(2024, 4, 15);
    KyDateErrorCode s = kNoError;
    const double time = c->getTime(s);
    s = kInvalidFormat;
    EXPECT_EQ(op(*c, s), 0.0) << name;
    EXPECT_EQ(s, kInvalidFormat) << name;
    s = kNoError;
    EXPECT_EQ(c->getTime(s), time) << name;
  }
  KyDateErrorCode s = kInvalidFormat;  // the month is tested first in the short form
  EXPECT_EQ(zone.getOffset(1, 2024, 12, 1, 2, 0, 31, s), -1);
  EXPECT_EQ(s, kIllegalArgument);
  s = kMemoryAllocationError;  // a constructor writes success whatever came in
  Cal fresh(s);
  EXPECT_EQ(s, kNoError);
}

TEST_F(Calendar, CopyMovesZeroedFieldsIntoTheSource) {
  for (int trial = 0; trial < 2; ++trial) {
    auto c = AtTime(TimeOf(2024, 4, 15));
    KyDateErrorCode s = kNoError;
    EXPECT_EQ(c->get(kYear, s), 2024);
    std::unique_ptr<KyCalendar> copy(trial == 0 ? c->clone() : nullptr);  // or a copy inside getActualMaximum
    if (trial == 1) { EXPECT_EQ(c->getActualMaximum(kWeekOfYear), 52); }
    EXPECT_EQ(c->get(kYear, s), 0);  // zeroed fields that the flags call current
    EXPECT_EQ(c->get(kDayOfMonth, s), 0);
    EXPECT_FALSE(c->isSet(kEra));
    EXPECT_FALSE(c->isSet(kWeekOfMonth));  // the low bytes of the fifth stamp went too
    EXPECT_TRUE(c->isSet(kDayOfMonth));
    EXPECT_EQ(c->getTime(s), TimeOf(2024, 4, 15));
    if (copy) { EXPECT_EQ(copy->getTime(s), TimeOf(2024, 4, 15)); }
  }
}

TEST_F(Calendar, FieldDifference) {
  struct Row { std::unique_ptr<Cal> start; double when; KyDateFields field; long count; const char* end; } rows[] = {
      {At(2000, 0, 31), TimeOf(2000, 11, 31), kMonth, 11, "1 2000-12-29 00:00"},
      {At(1900, 0, 31), TimeOf(2000, 0, 31), kMonth, 1200, "1 2000-01-28 00:00"},
      {At(1582, 0, 31), TimeOf(1583, 0, 31), kMonth, 12, "1 1583-01-28 00:00"},
      {At(2000, 0, 1), TimeOf(1900, 0, 1), kDayOfMonth, -36524, "1 1900-01-01 00:00"},
      {At(2024, 0, 1), TimeOf(2024, 0, 8), kDayOfMonth, 7, "1 2024-01-08 00:00"},
      {At(2024, 0, 1), TimeOf(2024, 0, 8) - 1, kDayOfMonth, 6, "1 2024-01-07 00:00"},
      {At(1900, 0, 1), TimeOf(2000, 0, 1), kMillisecond, 3155673600000, "1 2000-01-01 00:00"},
      {At(-4000, 0, 1), TimeOf(9000, 0, 1), kYear, 13000, "1 9000-01-01 00:00"},
      {At(2024, 0, 1), TimeOf(2024, 0, 1), kYear, 0, "1 2024-01-01 00:00"},
  };
  for (Row& row : rows) {
    KyDateErrorCode s = kNoError;
    const std::string from = Show(*row.start);
    EXPECT_EQ(row.start->fieldDifference(row.when, row.field, s), row.count) << from;
    EXPECT_EQ(s, kNoError) << from;
    EXPECT_EQ(Show(*row.start), row.end) << from;
  }
  auto c = AtTime(0.5);  // a fraction of a millisecond is carried exactly
  KyDateErrorCode s = kNoError;
  EXPECT_EQ(c->fieldDifference(1e15, kMillisecond, s), 999999999999999);
  EXPECT_EQ(c->getTime(s), 999999999999999.5);
}

KyTimeZone* RuleZone(bool southern) {
  auto* zone = new KyTimeZone;
  zone->setRawOffset(3600000);
  zone->setUseDaylight(true);
  const int week = southern ? 1 : -1;
  const auto mode = KyTimeZone::kDayOfWeekInMonthMode;
  zone->setStartRule(southern ? 9 : 2, week, KyCalendar::kSunday, 7200000, mode, KyTimeZone::kWallTime);
  zone->setEndRule(southern ? 3 : 9, week, KyCalendar::kSunday, 10800000, mode, KyTimeZone::kWallTime);
  return zone;
}

TEST_F(Calendar, ZoneRules) {
  KyTimeZone zone;
  const auto last = KyTimeZone::kDayOfWeekInMonthMode;
  // The last Sunday of March 2024 is the 31st; whole days of millis move the date.
  EXPECT_EQ(zone.compareToRule(2, 31, 29, 31, 1, 3600000, 0, last, 2, 1, -1, 3600000), 0);
  EXPECT_EQ(zone.compareToRule(2, 31, 29, 30, 7, 3600000, 0, last, 2, 1, -1, 3600000), -1);
  EXPECT_EQ(zone.compareToRule(2, 31, 29, 30, 7, 3600000, 86400000, last, 2, 1, -1, 3600000), 0);
  EXPECT_EQ(zone.compareToRule(2, 31, 29, 1, 6, 3600000, -86400000, last, 1, 5, -1, 3600000), 0);
  EXPECT_EQ(zone.compareToRule(2, 31, 29, 31, 1, 86400000, 0, KyTimeZone::kDayOfMonthMode, 3, 0, 1, 0), 0);
  EXPECT_EQ(zone.compareToRule(2, 31, 29, 31, 1, LONG_MAX, LONG_MAX, last, 2, 1, -1, 0), 1);
  EXPECT_EQ(zone.compareToRule(2, 31, 29, 31, 1, LONG_MIN, LONG_MIN, last, 2, 1, -1, 0), -1);

  struct Row { bool southern; long month, day, dow; long hour; long offset; } rows[] = {
      {false, 0, 15, 2, 12, 3600000},  {false, 6, 15, 2, 12, 7200000}, {false, 2, 31, 1, 1, 3600000},
      {false, 2, 31, 1, 2, 7200000},   {false, 9, 27, 1, 1, 7200000},  {false, 9, 27, 1, 2, 3600000},
      {true, 0, 15, 2, 12, 7200000},   {true, 6, 15, 2, 12, 3600000},  {true, 9, 6, 1, 2, 7200000},
      {true, 3, 7, 1, 1, 7200000},     {true, 3, 7, 1, 2, 3600000},
  };
  for (const Row& row : rows) {
    std::unique_ptr<KyTimeZone> rule(RuleZone(row.southern));
    KyDateErrorCode s = kNoError;
    EXPECT_EQ(rule->getOffset(1, 2024, row.month, row.day, row.dow, row.hour * 3600000, 31, s), row.offset)
        << row.southern << " " << row.month << "/" << row.day << " " << row.hour;
  }
  for (long bad : {0L, 1L, 2L, 3L, 4L}) {
    KyDateErrorCode s = kNoError;
    const long month = bad == 1 ? 12 : 0, day = bad == 0 ? 0 : 1, dow = bad == 2 ? 8 : 1;
    EXPECT_EQ(zone.getOffset(1, 2024, month, day, dow, bad == 3 ? -1 : 0, bad == 4 ? 32 : 31, s), -1) << bad;
    EXPECT_EQ(s, kIllegalArgument);
  }
  EXPECT_FALSE(KyTimeZone::createDefault()->setRawOffset(1));  // rules never reach the shared zone
  EXPECT_FALSE(KyTimeZone().setRawOffset(LONG_MAX));
  std::unique_ptr<KyTimeZone> ruled(RuleZone(false)), copy(ruled->clone());
  EXPECT_EQ(copy->getRawOffset(), 0);  // a clone is a default zone
  EXPECT_TRUE(copy->useDaylightTime());

  // A day added across the spring change keeps the wall clock: 23 hours pass.
  auto c = At(2024, 2, 30, 12);
  c->adoptTimeZone(RuleZone(false));
  KyDateErrorCode s = kNoError;
  const double before = c->getTime(s);
  c->add(kDayOfMonth, 1, s);
  EXPECT_EQ(Show(*c), "1 2024-03-31 12:00");
  EXPECT_EQ(c->getTime(s) - before, 23 * 3600000.0);
  EXPECT_TRUE(c->inDaylightTime(s));
  EXPECT_EQ(c->fieldDifference(TimeOf(2024, 3, 30, 12), kDayOfMonth, s), 30);

  // Long walks at 02:30, inside the spring gap, end where single steps end.
  for (KyDateFields field : {kMonth, kDayOfMonth}) {
    auto fast = At(1700, 2, 26, 2, 30), slow = At(1700, 2, 26, 2, 30);
    fast->adoptTimeZone(RuleZone(false));
    slow->adoptTimeZone(RuleZone(false));
    const double when = TimeOf(3400, 5, 1);
    double last = slow->getTime(s);
    long count = 0;
    for (; slow->add(field, 1, s), slow->getTime(s) <= when; ++count) last = slow->getTime(s);
    EXPECT_EQ(fast->fieldDifference(when, field, s), count) << field;
    EXPECT_EQ(fast->getTime(s), last) << field;
  }
}

struct SundayLocale : KyLocale {
  SundayLocale() : KyLocale("C") {}
  KyDaysOfWeek::EDaysOfWeek getFirstDayOfWeek() const override { return KyDaysOfWeek::kSunday; }
  unsigned char getMinimalDaysInFirstWeek() const override { return 4; }
};

TEST_F(Calendar, WeekSettingsComeFromTheLocaleOnce) {
  SundayLocale locale;
  KyDateErrorCode s = kNoError;
  std::unique_ptr<KyCalendar> c(KyCalendar::createInstance(locale, s));
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->getFirstDayOfWeek(), KyCalendar::kSunday);
  EXPECT_EQ(c->getMinimalDaysInFirstWeek(), 4);
  c->setTime(1672531200000.0, s);  // Sunday 1 January 2023
  EXPECT_EQ(c->get(kLocalDayOfWeek, s), 1);
  c->setFirstDayOfWeek(KyCalendar::kMonday);  // fields already computed stay
  EXPECT_EQ(c->get(kLocalDayOfWeek, s), 1);
  c->setTime(1672531200000.0, s);
  EXPECT_EQ(c->get(kLocalDayOfWeek, s), 7);
}

TEST_F(Calendar, TimeUnits) {
  KyPredefinedUnits units;
  const char* labels0[] = {"0.000000", "0.000000", "0.000000", "0:0", "1/01", "W1", "01/1970", "Q1 1970", "1970"};
  const char* snaps[][2] = {
      {"1 2024-05-15 15:30", "1 2024-05-15 09:30"}, {"1 2024-05-15 15:30", "1 2024-05-15 09:30"},
      {"1 2024-05-15 15:30", "1 2024-05-15 09:30"}, {"1 2024-05-15 15:00", "1 2024-05-15 09:00"},
      {"1 2024-05-15 12:00", "1 2024-05-15 00:00"}, {"1 2024-05-15 12:00", "1 2024-05-15 00:00"},
      {"1 2024-05-01 12:00", "1 2024-05-01 00:00"}, {"1 2024-04-01 12:00", "1 2024-04-01 00:00"},
      {"1 2024-02-01 12:00", "1 2024-02-01 00:00"}};
  double previous = 0;
  for (unsigned long i = 0; i < KyPredefinedUnits::nbUnits(); ++i) {
    KyTimeUnit* unit = units[i];
    std::unique_ptr<char[]> label(unit->toString(0.0));
    EXPECT_STREQ(label.get(), labels0[i]);
    EXPECT_GT(unit->getMillis(), previous);
    previous = unit->getMillis();
    for (int morning = 0; morning < 2; ++morning) {
      auto c = AtTime(TimeOf(2024, 4, 15, morning ? 9 : 15, 30));
      unit->snapToPreviousTimeUnit(*c);
      EXPECT_EQ(Show(*c), snaps[i][morning]) << i;
    }
  }
  std::unique_ptr<char[]> seconds(units[1]->toString(1500.0)), millis(units[0]->toString(1500.0));
  EXPECT_STREQ(seconds.get(), "1.500000");
  EXPECT_STREQ(millis.get(), "1500.000000");

  auto week = At(2024, 4, 15);  // the day moves when a week field was set last
  week->set(kWeekOfYear, 20);
  units[5]->snapToPreviousTimeUnit(*week);
  EXPECT_EQ(Show(*week), "1 2024-05-13 00:00");

  KyPredefinedUnits walk;
  for (unsigned long i = 0; i < 9; ++i) EXPECT_EQ(walk.getNextUnit(), walk[i]);
  EXPECT_EQ(walk.getNextUnit(), nullptr);  // the tenth reads behind the list
  EXPECT_EQ(walk.getNextUnit(), walk[8]);
  EXPECT_EQ(walk[9], nullptr);
  walk.reset();
  EXPECT_EQ(walk.getNextUnit(), walk[0]);
  units = walk;  // the array is shared, not copied
  EXPECT_EQ(units[8], walk[8]);
}

// A calendar whose stamp counter a test may move near its limit.
KyDateErrorCode stampedStatus;
struct StampedCalendar : Cal {
  StampedCalendar() : Cal(1970, 0, 1, stampedStatus) {}
  using Cal::_nextStamp;
};

TEST_F(Calendar, SafetyRows) {
  auto c = At(2024, 4, 15);
  KyDateErrorCode s = kNoError;
  const double time = c->getTime(s);
  for (int index : {-1, 19, INT_MAX}) {
    const auto field = static_cast<KyDateFields>(index);
    s = kNoError;
    c->set(field, 5);
    c->clear(field);
    EXPECT_FALSE(c->isSet(field));
    EXPECT_EQ(c->get(field, s), 0);
    EXPECT_EQ(c->getActualMaximum(field, s), 0);
    for (int roll = 0; roll < 2; ++roll) {
      s = kNoError;
      roll ? c->roll(field, 1L, s) : c->add(field, 1, s);
      EXPECT_EQ(s, kIllegalArgument);
    }
  }
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  for (double bad : {nan, inf, -inf, Cal::LATEST_SUPPORTED_MILLIS + 1, Cal::EARLIEST_SUPPORTED_MILLIS - 1}) {
    s = kNoError;
    c->setTime(bad, s);
    EXPECT_EQ(s, kIllegalArgument);
    s = kNoError;
    EXPECT_EQ(c->getTime(s), time);
    c->fieldDifference(bad, kDayOfMonth, s);
    EXPECT_EQ(s, kIllegalArgument);
  }
  const std::vector<std::function<void(Cal&, KyDateErrorCode&)>> refused = {
      [](Cal& x, KyDateErrorCode&) { x.set(kYear, 200000); },
      [](Cal& x, KyDateErrorCode&) { x.set(kDayOfMonth, (1L << 32) + 5); },  // clamped, not cut to 5
      [](Cal& x, KyDateErrorCode& st) { x.add(kYear, LONG_MAX, st); },
      [](Cal& x, KyDateErrorCode& st) { x.add(kMonth, LONG_MIN, st); },
      [](Cal& x, KyDateErrorCode& st) { x.add(kDayOfMonth, LONG_MAX, st); },
      [](Cal& x, KyDateErrorCode& st) { x.add(kEra, 1, st), x.fieldDifference(1e15, kEra, st); },
  };
  for (const auto& op : refused) {
    auto x = At(2024, 4, 15);
    s = kNoError;
    op(*x, s);
    x->get(kYear, s);
    EXPECT_EQ(s, kIllegalArgument);
  }
  for (long amount : {LONG_MAX, LONG_MIN}) {
    for (int field = 0; field < 15; ++field) {
      auto x = At(2024, 4, 15);
      s = kNoError;
      x->roll(static_cast<KyDateFields>(field), amount, s);
      EXPECT_EQ(s, kNoError) << field;
      EXPECT_NE(Show(*x), "failed") << field;
    }
  }

  StampedCalendar stamped;  // the counter renumbers the live stamps in order
  stamped._nextStamp = INT32_MAX - 2;
  stamped.set(kDayOfYear, 100);
  stamped.set(kMonth, 5);
  stamped.set(kDayOfMonth, 10);
  EXPECT_LT(stamped._nextStamp, 10);
  EXPECT_EQ(Show(stamped), "1 1970-06-10 00:00");
  stamped.set(kDayOfYear, 1);
  EXPECT_EQ(Show(stamped), "1 1970-01-01 00:00");

  KyTimeZone* shared = KyTimeZone::createDefault();
  std::unique_ptr<KyTimeZone> orphan(c->orphanTimeZone());
  EXPECT_NE(orphan.get(), shared);
  EXPECT_EQ(&c->getTimeZone(), shared);
  std::unique_ptr<KyTimeZone> second(c->orphanTimeZone());  // never the shared one itself
  EXPECT_NE(second.get(), shared);
  s = kInvalidFormat;
  EXPECT_EQ(KyCalendar::createInstance(shared, s), nullptr);  // the shared zone survives
  s = kNoError;
  EXPECT_EQ(KyCalendar::createInstance(static_cast<KyTimeZone*>(nullptr), s), nullptr);
  EXPECT_EQ(s, kIllegalArgument);
  s = kNoError;
  auto* given = new KyTimeZone;
  std::unique_ptr<KyCalendar> created(KyCalendar::createInstance(given, s));
  EXPECT_NE(&created->getTimeZone(), given);  // cloned: the given zone is still ours
  delete given;
  EXPECT_EQ(KyCalendar::getNow() / 1000.0, std::floor(KyCalendar::getNow() / 1000.0));
}

TEST(CalendarWithoutLocale, NoDefaultLocaleGivesMondayAndZero) {
  if (KyLocale::Get(false, nullptr) != nullptr) GTEST_SKIP() << "a default locale exists in this process";
  KyDateErrorCode s = kNoError;
  std::unique_ptr<KyCalendar> c(KyCalendar::createInstance(*KyTimeZone::createDefault(), s));
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->getFirstDayOfWeek(), KyCalendar::kMonday);
  EXPECT_EQ(c->getMinimalDaysInFirstWeek(), 0);
}

}  // namespace
