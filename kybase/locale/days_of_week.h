// KyDaysOfWeek: the days of the week as the calendar numbers them, Sunday 1 to
// Saturday 7. It sits in the locale layer because a locale answers which day starts
// its week; KyCalendar derives from it, so KyCalendar::EDaysOfWeek and
// KyCalendar::kMonday name the same values.
#ifndef KYBASE_LOCALE_DAYS_OF_WEEK_H
#define KYBASE_LOCALE_DAYS_OF_WEEK_H

/// The holder of the week-day numbers.
struct KyDaysOfWeek {
  /// The days of the week, Sunday 1 to Saturday 7.
  enum EDaysOfWeek {
    kSunday = 1,
    kMonday = 2,
    kTuesday = 3,
    kWednesday = 4,
    kThursday = 5,
    kFriday = 6,
    kSaturday = 7,
  };
};

#endif  // KYBASE_LOCALE_DAYS_OF_WEEK_H
