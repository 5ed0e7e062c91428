// The calendar's shared vocabulary: the 19 field indices and the status that every
// fallible calendar operation takes by reference. A status above 0 is a failure; an
// operation handed a failure does nothing and returns 0, false or null.
#ifndef KYBASE_CALENDAR_DATE_STATUS_H
#define KYBASE_CALENDAR_DATE_STATUS_H

/// The 19 calendar fields, by their indices in a calendar.
enum KyDateFields : int {
  kEra = 0,
  kYear = 1,
  kMonth = 2,
  kWeekOfYear = 3,
  kWeekOfMonth = 4,
  kDayOfMonth = 5,
  kDayOfYear = 6,
  kDayOfWeek = 7,
  kDayOfWeekInMonth = 8,
  kAmPm = 9,
  kHour = 10,
  kHourOfDay = 11,
  kMinute = 12,
  kSecond = 13,
  kMillisecond = 14,
  kZoneOffset = 15,
  kDstOffset = 16,
  kYearOfWeek = 17,
  kLocalDayOfWeek = 18,
};

/// The status of a calendar operation; above 0 is a failure.
enum KyDateErrorCode : int {
  kNoError = 0,
  kIllegalArgument = 1,
  kInvalidFormat = 3,
  kMemoryAllocationError = 7,
};

/// True for a status that reports a failure.
inline bool KyDateFailed(KyDateErrorCode status) { return status > kNoError; }

#endif  // KYBASE_CALENDAR_DATE_STATUS_H
