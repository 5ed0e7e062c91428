// KyGregorianCalendar: the one concrete calendar. Dates before the cutover (by default
// 15 October 1582) follow the Julian leap rule, dates from it on the Gregorian rule,
// with the ten-day jump between them. Turns the time into the 19 fields and the fields
// that won by their stamps back into time; add, roll and the actual limits change one
// field and keep the rest coherent.
//
// Contract as for KyCalendar: failure only through the status (kIllegalArgument for a
// refused field combination, an era other than 0 or 1, a time outside the supported
// range); nothing throws; one calendar belongs to one thread. Copies follow the base
// class's lopsided rule, then copy the cutover normally.
#ifndef KYBASE_CALENDAR_GREGORIAN_CALENDAR_H
#define KYBASE_CALENDAR_GREGORIAN_CALENDAR_H

#include "kybase/calendar/calendar.h"

/// The Julian and Gregorian calendar with a cutover; see the family page.
class KY_EXPORT KyGregorianCalendar : public KyCalendar {
 public:
  /// The earliest time the calendar computes: -(2^52 - 1) ms.
  static const double EARLIEST_SUPPORTED_MILLIS;
  /// The latest time the calendar computes: 2^52 - 1 ms.
  static const double LATEST_SUPPORTED_MILLIS;
  /// The default cutover, 15 October 1582 00:00 UTC, in milliseconds.
  static const double kPapalCutover;
  /// The Julian day number of 1 January of year 1.
  static const long kJan1_1JulianDay;
  /// The Julian day number of 1 January 1970.
  static const long kEpochStartAsJulianDay;
  /// 1970.
  static const long kEpochYear;
  /// A second in milliseconds.
  static const long kOneSecond;
  /// A minute in milliseconds.
  static const long kOneMinute;
  /// An hour in milliseconds.
  static const long kOneHour;
  /// A day in milliseconds.
  static const double kOneDay;
  /// A week in milliseconds.
  static const double kOneWeek;
  /// A Julian day at which the cutover test is skipped, kept as the computation has it.
  static const double kJulianDayGuard;
  /// Days of a common year before each month.
  static const long kNumDays[12];
  /// Days of a leap year before each month.
  static const long kLeapNumDays[12];
  /// The month lengths of a common year.
  static const long kMonthLength[12];
  /// The month lengths of a leap year.
  static const long kLeapMonthLength[12];
  /// getMinimum() of each field.
  static const long kMinValues[kFieldCount];
  /// getLeastMaximum() of each field.
  static const long kLeastMaxValues[kFieldCount];
  /// getMaximum() of each field.
  static const long kMaxValues[kFieldCount];

  /// All set the present moment (whole seconds), except the three field forms, which
  /// read no clock and leave the time pending.
  explicit KyGregorianCalendar(KyDateErrorCode& status);
  /// In the shared default zone, with the locale's week settings.
  KyGregorianCalendar(const KyLocale& locale, KyDateErrorCode& status);
  /// In a clone of `zone`, with the default locale's week settings.
  KyGregorianCalendar(const KyTimeZone& zone, KyDateErrorCode& status);
  /// In a clone of `zone`, with the locale's week settings.
  KyGregorianCalendar(const KyTimeZone& zone, const KyLocale& locale, KyDateErrorCode& status);
  /// In a clone of `zone`, with the default locale's week settings.
  KyGregorianCalendar(KyTimeZone* zone, KyDateErrorCode& status);
  /// In a clone of `zone`, with the locale's week settings.
  KyGregorianCalendar(KyTimeZone* zone, const KyLocale& locale, KyDateErrorCode& status);
  /// At the date given (month from 0), midnight, in the default zone.
  KyGregorianCalendar(long year, long month, long day, KyDateErrorCode& status);
  /// At the date, hour of the day and minute given, in the default zone.
  KyGregorianCalendar(long year, long month, long day, long hour, long minute, KyDateErrorCode& status);
  /// At the date, hour of the day, minute and second given, in the default zone.
  KyGregorianCalendar(long year, long month, long day, long hour, long minute, long second,
                      KyDateErrorCode& status);
  /// The lopsided copy of KyCalendar, then the cutover.
  KyGregorianCalendar(const KyGregorianCalendar& source);
  /// The lopsided assignment of KyCalendar, then the cutover.
  KyGregorianCalendar& operator=(const KyGregorianCalendar& source);
  /// As KyCalendar's.
  ~KyGregorianCalendar() override;

  KyCalendar* clone() const override;
  bool operator==(const KyCalendar& other) const override;
  bool equivalentTo(const KyCalendar& other) const override;
  void add(KyDateFields field, long amount, KyDateErrorCode& status) override;
  using KyCalendar::roll;
  void roll(KyDateFields field, long amount, KyDateErrorCode& status) override;
  bool inDaylightTime(KyDateErrorCode& status) const override;
  long getMinimum(KyDateFields field) const override;
  long getMaximum(KyDateFields field) const override;
  long getGreatestMinimum(KyDateFields field) const override;
  long getLeastMaximum(KyDateFields field) const override;

  /// The cutover in milliseconds.
  double getGregorianChange() const { return _gregorianCutover; }
  /// Refuses NaN, infinities and dates outside the supported range (kIllegalArgument).
  void setGregorianChange(double date, KyDateErrorCode& status);
  /// True for a leap year under the rule in force for that year.
  bool isLeapYear(long year) const;

  /// Without a status; they hide the status-taking forms of KyCalendar. The maximum of
  /// kYear and kYearOfWeek is 0 (the search's finding is dropped).
  long getActualMaximum(KyDateFields field) const;
  /// The smallest value `field` takes around the date held.
  long getActualMinimum(KyDateFields field) const;
  using KyCalendar::getActualMaximum;
  using KyCalendar::getActualMinimum;

 protected:
  void computeTime(KyDateErrorCode& status) override;
  void computeFields(KyDateErrorCode& status) override;
  bool isSupportedTime(double time) const override;
  long skipSteps(double when, KyDateFields field, KyDateErrorCode& status) override;

 private:
  friend class KyCalendar;
  KyGregorianCalendar(const KyTimeZone& zone, const KyLocale* locale, KyDateErrorCode& status);
  KyGregorianCalendar(KyTimeZone* zone, const KyLocale* locale, KyDateErrorCode& status);

  long internalGetEra() const;
  long monthLength(long month) const;
  long monthLength(long month, long year) const;
  long yearLength(long year) const;
  long yearLength() const;
  long eraYear() const;
  void pinDayOfMonth();
  void timeToFields(double theTime, bool quick, KyDateErrorCode& status);
  // The date that a month and day of the month name, when they won, lie in range and
  // needed no folding: the date fields are then already what a conversion of the time
  // would store.
  struct ResolvedDate {
    bool plain = false;
    long year = 0;
    long month = 0;
    long day = 0;
    bool leap = false;
  };
  double computeJulianDay(bool isGregorian, long year, ResolvedDate* resolved = nullptr);
  long computeRelativeDOW(double julianDay) const;
  long computeRelativeDOW() const;
  long computeDOYfromWOY(double julianDayOfYear) const;
  long weekNumber(long dayOfPeriod, long dayOfWeek) const;
  bool validateFields() const;
  /// The checks add and roll share: false (nothing to do) for a failed status or a zero
  /// amount, and for a bad field after setting kIllegalArgument; otherwise the fields
  /// are made current, and true when that succeeded.
  bool beginChange(KyDateFields field, long amount, KyDateErrorCode& status);
  void addByMillis(KyDateFields field, long amount, KyDateErrorCode& status);
  void rollWeekOfYear(long amount, KyDateErrorCode& status);
  long skipPeriods(double when, KyDateFields field, KyDateErrorCode& status);

  static double computeJulianDayOfYear(bool isGregorian, long year, bool& isLeap);
  static double julianDayToMillis(double julianDay);
  static long julianDayToDayOfWeek(double julianDay);
  static long floorDivide(long numerator, long denominator) {
    return numerator >= 0 ? numerator / denominator : (numerator + 1) / denominator - 1;
  }
  static long floorDivide(long numerator, long denominator, long* remainder) {
    const long quotient = floorDivide(numerator, denominator);
    *remainder = numerator - quotient * denominator;
    return quotient;
  }
  static long floorDivide(double numerator, long denominator, long* remainder);

  double _gregorianCutover = kPapalCutover;
  double _normalizedGregorianCutover = kPapalCutover;
  std::int32_t _gregorianCutoverYear = 1582;
};

#endif  // KYBASE_CALENDAR_GREGORIAN_CALENDAR_H
