// KyTimeZone: a raw offset from UTC and a rule for the start and end of daylight time,
// evaluated for a local date by getOffset. Every zone starts as the default zone (raw
// offset 0, no rule), so calendars compute in UTC; clone() makes a default zone, not a
// copy, and operator== and useDaylightTime() answer true whatever the zones hold.
//
// The rule setters are this library's way to give a zone real daylight time. They
// refuse (false) values outside their ranges and any change to the shared default
// instance, which therefore stays a plain UTC zone for the life of the process.
//
// Failure goes through the status: bad arguments give kIllegalArgument and -1.
// Threads: the shared instance is built once, safely, and only read afterwards; other
// zones belong to one thread at a time.
#ifndef KYBASE_CALENDAR_TIME_ZONE_H
#define KYBASE_CALENDAR_TIME_ZONE_H

#include "kybase/calendar/date_status.h"
#include "kybase/core/export.h"

/// A raw offset and a daylight rule; see the family page.
class KY_EXPORT KyTimeZone {
 public:
  /// How a rule names its day: a day of the month, the nth weekday, or the weekday on or
  /// after, or on or before, a day.
  enum EMode : int {
    kDayOfMonthMode = 1,
    kDayOfWeekInMonthMode = 2,
    kDayOfWeekOnOrAfterMode = 3,
    kDayOfWeekOnOrBeforeMode = 4,
  };
  /// What a rule's time of day is measured in.
  enum ETimeMode : int {
    kWallTime = 0,
    kStandardTime = 1,
    kUtcTime = 2,
  };

  /// A zone of offset 0 and no rule.
  KyTimeZone() = default;
  /// A copy of offset and rule.
  KyTimeZone(const KyTimeZone&) = default;
  /// Copies offset and rule.
  KyTimeZone& operator=(const KyTimeZone&) = default;
  /// Copies offset and rule.
  KyTimeZone& operator=(KyTimeZone&&) = default;

  /// True, whatever the zones hold.
  bool operator==(const KyTimeZone&) const { return true; }
  /// A new default zone for the caller to delete; null when memory runs out.
  KyTimeZone* clone() const;
  /// The one shared default zone; never freed, never to be deleted by a caller.
  static KyTimeZone* createDefault();

  /// The offset from UTC in milliseconds, without daylight time.
  long getRawOffset() const { return _rawOffset; }
  /// True, whatever the zone holds (see hasDaylightRule()).
  bool useDaylightTime() const { return true; }
  /// True once a rule was put in force with setUseDaylight (useDaylightTime() answers
  /// true for every zone and so cannot tell).
  bool hasDaylightRule() const { return _useDaylight; }
  /// The first year the rule applies.
  long getStartYear() const { return _startYear; }
  /// True when a wall-clock time of day lies at least the savings and two hours away
  /// from both rule times, so that it exists exactly once on every date.
  bool isClearOfTransitions(long wallMillisInDay) const;

  /// The offset in milliseconds at a local date and time of day; -1 with kIllegalArgument
  /// for a month outside 0..11 or another bad argument.
  long getOffset(unsigned char era, long year, long month, long day, unsigned char dayOfWeek, long millis,
                 long monthLength, KyDateErrorCode& status) const;
  /// getOffset() with the previous month's length given.
  long getOffset(unsigned char era, long year, long month, long day, unsigned char dayOfWeek, long millis,
                 long monthLength, long prevMonthLength, KyDateErrorCode& status) const;
  /// -1, 0 or 1 as the moment lies before, at or after the rule's moment in its month.
  /// Whole days of millis + millisDelta move the date first, as a day-by-day walk would.
  long compareToRule(char month, char monthLength, char prevMonthLength, char dayOfMonth, char dayOfWeek, long millis,
                     long millisDelta, EMode ruleMode, char ruleMonth, char ruleDayOfWeek, char ruleDay,
                     long ruleMillis) const;

  // Rule setters. Offsets lie within a day (savings 0 to a day), months 0..11, days of
  // the week 1..7, times within a day, days -5..31 (negative and 0 count from the end
  // in kDayOfWeekInMonthMode).
  /// Sets the raw offset (within a day).
  bool setRawOffset(long offset);
  /// Sets the daylight saving (0 to a day); an hour at first.
  bool setDSTSavings(long savings);
  /// Sets the first year the rule applies.
  bool setStartYear(long year);
  /// Sets when daylight time starts.
  bool setStartRule(int month, int day, int dayOfWeek, long time, EMode mode, ETimeMode timeMode);
  /// Sets when daylight time ends.
  bool setEndRule(int month, int day, int dayOfWeek, long time, EMode mode, ETimeMode timeMode);
  /// Puts the rule in force, or out of it.
  bool setUseDaylight(bool useDaylight);

  /// The month lengths of a common year.
  static const signed char staticMonthLength[12];

 private:
  bool isShared() const { return this == createDefault(); }
  static bool validRule(int month, int day, int dayOfWeek, long time, EMode mode, ETimeMode timeMode);

  signed char _startMonth = 0;
  signed char _startDay = 0;
  signed char _startDayOfWeek = 0;
  long _startTime = 0;
  int _startTimeMode = kWallTime;
  int _endTimeMode = kWallTime;
  signed char _endMonth = 0;
  signed char _endDay = 0;
  signed char _endDayOfWeek = 0;
  long _endTime = 0;
  long _startYear = 0;
  long _rawOffset = 0;
  bool _useDaylight = false;
  EMode _startMode = kDayOfMonthMode;
  EMode _endMode = kDayOfMonthMode;
  long _dstSavings = 3600000;
};

#endif  // KYBASE_CALENDAR_TIME_ZONE_H
