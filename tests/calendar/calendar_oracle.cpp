// Every day from the year -5000 to 10000, each at a time of day of its own, against a
// calendar walked a day at a time from first principles, in the hybrid rule and, with
// the cutover moved out of the range, pure Gregorian and pure Julian; fields back to the
// time; weeks under all first days for minimal days 1 and 7. Under the sanitizers and
// in the coverage build (KY_TEST_SAMPLED) only every 97th day is checked.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kybase/calendar/gregorian_calendar.h"
#include "kybase/locale/kylocale.h"
#include "support/sanitizer.h"

namespace {

#if defined(KY_TEST_ASAN) || defined(KY_TEST_SAMPLED)
constexpr long kStride = 97;
#else
constexpr long kStride = 1;
#endif
constexpr double kDay = 86400000.0;

enum Mode { kHybrid, kGregorian, kJulian };

// A date of the walk: proleptic year (0 is 1 BC), month from 0, day of the year from 1,
// day of the week 1 (Sunday) to 7.
struct Day { long year, month, day, doy, dow; };

bool Leap(Mode mode, long year) {
  if (mode == kJulian || (mode == kHybrid && year < 1582)) return year % 4 == 0;
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

long MonthLength(Mode mode, long year, long month) {
  static const long kLengths[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 1 && Leap(mode, year) ? 29 : kLengths[month];
}

long YearLength(Mode mode, long year) {
  return (Leap(mode, year) ? 366 : 365) - (mode == kHybrid && year == 1582 ? 10 : 0);
}

void Forward(Mode mode, Day& d) {
  d.dow = d.dow % 7 + 1;
  ++d.doy;
  if (mode == kHybrid && d.year == 1582 && d.month == 9 && d.day == 4) {
    d.day = 15;  // Thursday 4 October is followed by Friday 15 October
  } else if (++d.day > MonthLength(mode, d.year, d.month)) {
    d.day = 1;
    if (++d.month == 12) {
      d.month = 0;
      ++d.year;
      d.doy = 1;
    }
  }
}

void Backward(Mode mode, Day& d) {
  d.dow = (d.dow + 5) % 7 + 1;
  --d.doy;
  if (mode == kHybrid && d.year == 1582 && d.month == 9 && d.day == 15) {
    d.day = 4;
  } else if (--d.day < 1) {
    if (--d.month < 0) {
      d.month = 11;
      --d.year;
      d.doy = YearLength(mode, d.year);
    }
    d.day = MonthLength(mode, d.year, d.month);
  }
}

// Week and week-based year by the plain rule: week 1 is the first week, starting on
// `first`, with at least `minimal` days of the year.
std::pair<long, long> Week(Mode mode, const Day& d, long first, long minimal) {
  auto start = [minimal](long jan1) { return 7 - jan1 >= minimal ? 1 - jan1 : 8 - jan1; };
  const long rel = (d.dow - first + 7) % 7;
  const long jan1 = ((rel - (d.doy - 1)) % 7 + 7) % 7;
  const long length = YearLength(mode, d.year);
  if (d.doy < start(jan1)) {
    const long previous = YearLength(mode, d.year - 1);
    const long prevJan1 = ((jan1 - previous) % 7 + 7) % 7;
    return {(d.doy + previous - start(prevJan1)) / 7 + 1, d.year - 1};
  }
  if (d.doy >= length + start((jan1 + length) % 7)) return {1, d.year + 1};
  return {(d.doy - start(jan1)) / 7 + 1, d.year};
}

struct Mismatches {
  long count = 0;
  void note(bool ok, const Day& d, const char* what) {
    if (!ok && count++ == 0) ADD_FAILURE() << what << " at " << d.year << "-" << d.month + 1 << "-" << d.day;
  }
};

class CalendarOracle : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { KySetLocale("C"); }
};

void Sweep(Mode mode) {
  KyDateErrorCode s = kNoError;
  KyGregorianCalendar cal(1970, 0, 1, s), back(1970, 0, 1, s);
  if (mode != kHybrid) {
    const double cutover = mode == kGregorian ? KyGregorianCalendar::EARLIEST_SUPPORTED_MILLIS
                                              : KyGregorianCalendar::LATEST_SUPPORTED_MILLIS;
    cal.setGregorianChange(cutover, s);
    back.setGregorianChange(cutover, s);
  }
  std::vector<KyGregorianCalendar> weeks(14, cal);  // all first days, minimal days 1 then 7
  for (int i = 0; i < 14; ++i) {
    weeks[i].setFirstDayOfWeek(static_cast<KyCalendar::EDaysOfWeek>(i % 7 + 1));
    weeks[i].setMinimalDaysInFirstWeek(i < 7 ? 1 : 7);
  }
  ASSERT_EQ(s, kNoError);

  Mismatches bad;
  auto check = [&](const Day& d, long index) {
    if (index % kStride != 0) return;
    const long ms = ((index * 7919) % 86400000 + 86400000) % 86400000;  // a time of day of its own
    const double t = index * kDay + static_cast<double>(ms);
    cal.setTime(t, s);
    const long era = d.year >= 1 ? 1 : 0;
    const long year = d.year >= 1 ? d.year : 1 - d.year;
    bad.note(cal.get(kEra, s) == era && cal.get(kYear, s) == year, d, "era or year");
    bad.note(cal.get(kMonth, s) == d.month && cal.get(kDayOfMonth, s) == d.day, d, "month or day");
    bad.note(cal.get(kDayOfYear, s) == d.doy && cal.get(kDayOfWeek, s) == d.dow, d, "day of year or week");
    const KyDateFields clock[] = {kHourOfDay, kMinute, kSecond, kMillisecond};
    const long clockMs = ((cal.get(kHourOfDay, s) * 60 + cal.get(kMinute, s)) * 60 + cal.get(kSecond, s)) * 1000;
    bad.note(clockMs + cal.get(kMillisecond, s) == ms, d, "time of day");
    // Back from the year with month and day, then with the day of the year; in 1582 the
    // ten skipped days are taken off twice from day 298 on.
    for (int byDayOfYear = 0; byDayOfYear < 2; ++byDayOfYear) {
      back.clear();
      back.set(kEra, era);
      back.set(kYear, year);
      byDayOfYear ? back.set(kDayOfYear, d.doy) : back.set(year, d.month, d.day);
      for (KyDateFields field : clock) back.set(field, cal.get(field, s));
      const bool twice = byDayOfYear && mode == kHybrid && d.year == 1582 && d.doy >= 298;
      bad.note(back.getTime(s) == t - (twice ? 20 * kDay : 0), d, byDayOfYear ? "time from the day of year" : "time");
    }
    if (mode != kHybrid || d.year < 2 || d.year == 1582 || d.year == 1583) return;
    for (int i = 0; i < 14; ++i) {
      weeks[i].setTime(t, s);
      const auto expected = Week(mode, d, i % 7 + 1, i < 7 ? 1 : 7);
      bad.note(weeks[i].get(kWeekOfYear, s) == expected.first && weeks[i].get(kYearOfWeek, s) == expected.second,
               d, i < 7 ? "week, minimal days 1" : "week, minimal days 7");
    }
  };

  // The epoch is Thursday 1 January 1970, or 19 December 1969 by the Julian rule.
  const Day epoch = mode == kJulian ? Day{1969, 11, 19, 353, 5} : Day{1970, 0, 1, 1, 5};
  Day d = epoch;
  for (long index = 0; d.year >= -5000; --index, Backward(mode, d)) check(d, index);
  d = epoch;
  for (long index = 0; d.year <= 10000; ++index, Forward(mode, d)) check(d, index);
  EXPECT_EQ(s, kNoError);
  EXPECT_EQ(bad.count, 0);
}

TEST_F(CalendarOracle, HybridEveryDay) { Sweep(kHybrid); }
TEST_F(CalendarOracle, PureGregorianEveryDay) { Sweep(kGregorian); }
TEST_F(CalendarOracle, PureJulianEveryDay) { Sweep(kJulian); }

}  // namespace
