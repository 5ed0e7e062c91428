#include "kybase/calendar/time_zone.h"

#include <algorithm>
#include <new>

namespace {

constexpr long kMillisPerDay = 86400000;

// The date that compareToRule walks a day at a time. The walk keeps the month length
// it was given for every month it enters, so whole runs of days fold into a few
// divisions: n steps give what n single steps give, in bounded time.
struct WalkDate {
  long month;
  long dayOfMonth;
  long dayOfWeek;
};

void WalkDays(WalkDate& date, long n, long monthLength, long prevMonthLength) {
  if (n > 0) {
    // A single step maps any day of the week into -5..7; from there it climbs into
    // 1..7 within six more steps and then cycles.
    long left = n;
    while (left > 0 && (date.dayOfWeek < 1 || date.dayOfWeek > 7)) {
      date.dayOfWeek = 1 + date.dayOfWeek % 7;
      --left;
    }
    if (left > 0) date.dayOfWeek = 1 + (date.dayOfWeek - 1 + left % 7) % 7;

    left = n;
    if (date.dayOfMonth < monthLength) {
      const long run = std::min(left, monthLength - date.dayOfMonth);
      date.dayOfMonth += run;
      left -= run;
    }
    if (left == 0) return;
    date.dayOfMonth = 1;  // the step past the month's length
    date.month += 1;
    --left;
    if (monthLength <= 1) {
      date.month += left;
      return;
    }
    date.month += left / monthLength;
    date.dayOfMonth = 1 + left % monthLength;
  } else if (n < 0) {
    long left = -n;
    while (left > 0 && (date.dayOfWeek < 1 || date.dayOfWeek > 7)) {
      date.dayOfWeek = 1 + (date.dayOfWeek + 5) % 7;
      --left;
    }
    if (left > 0) date.dayOfWeek = 1 + ((date.dayOfWeek - 1 - left % 7) % 7 + 7) % 7;

    left = -n;
    if (date.dayOfMonth > 1) {
      const long run = std::min(left, date.dayOfMonth - 1);
      date.dayOfMonth -= run;
      left -= run;
    }
    if (left == 0) return;
    date.dayOfMonth = prevMonthLength;  // the step below day 1
    date.month -= 1;
    --left;
    if (prevMonthLength <= 1) {
      date.month -= left;
      return;
    }
    date.month -= left / prevMonthLength;
    date.dayOfMonth = prevMonthLength - left % prevMonthLength;
  }
}

}  // namespace

const signed char KyTimeZone::staticMonthLength[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

KyTimeZone* KyTimeZone::clone() const { return new (std::nothrow) KyTimeZone(); }

KyTimeZone* KyTimeZone::createDefault() {
  static KyTimeZone shared;
  return &shared;
}

long KyTimeZone::getOffset(unsigned char era, long year, long month, long day, unsigned char dayOfWeek, long millis,
                           long monthLength, KyDateErrorCode& status) const {
  // The month is tested before the status: an index out of the table fails whatever
  // came in.
  if (static_cast<unsigned long>(month) > 11) {
    status = kIllegalArgument;
    return -1;
  }
  const long prevMonthLength = month == 0 ? 31 : staticMonthLength[month - 1];
  return getOffset(era, year, month, day, dayOfWeek, millis, monthLength, prevMonthLength, status);
}

long KyTimeZone::getOffset(unsigned char era, long year, long month, long day, unsigned char dayOfWeek, long millis,
                           long monthLength, long prevMonthLength, KyDateErrorCode& status) const {
  if (KyDateFailed(status)) return 0;
  if (era > 1 || static_cast<unsigned long>(month) > 11 || day < 1 || day > monthLength || dayOfWeek < 1 ||
      dayOfWeek > 7 || millis < 0 || millis >= kMillisPerDay || monthLength < 28 || monthLength > 31) {
    status = kIllegalArgument;
    return -1;
  }
  long result = _rawOffset;
  if (!_useDaylight || year < _startYear || era != 1) return result;

  const bool southern = _startMonth > _endMonth;
  // The previous month's length is not checked; beyond a signed byte it saturates.
  const char prev = static_cast<char>(std::clamp(prevMonthLength, -128L, 127L));
  const long startCompare =
      compareToRule(static_cast<char>(month), static_cast<char>(monthLength), prev, static_cast<char>(day),
                    static_cast<char>(dayOfWeek), millis, _startTimeMode == kUtcTime ? -_rawOffset : 0, _startMode,
                    _startMonth, _startDayOfWeek, _startDay, _startTime);
  long endCompare = 0;
  if (southern != (startCompare >= 0)) {
    const long delta = _endTimeMode == kWallTime ? _dstSavings : _endTimeMode == kUtcTime ? -_rawOffset : 0;
    endCompare = compareToRule(static_cast<char>(month), static_cast<char>(monthLength), prev, static_cast<char>(day),
                               static_cast<char>(dayOfWeek), millis, delta, _endMode, _endMonth, _endDayOfWeek,
                               _endDay, _endTime);
  }
  if ((!southern && startCompare >= 0 && endCompare < 0) || (southern && (startCompare >= 0 || endCompare < 0)))
    result += _dstSavings;
  return result;
}

long KyTimeZone::compareToRule(char month, char monthLength, char prevMonthLength, char dayOfMonth, char dayOfWeek,
                               long millis, long millisDelta, EMode ruleMode, char ruleMonth, char ruleDayOfWeek,
                               char ruleDay, long ruleMillis) const {
  // The sum is taken wide, so that no pair of longs overflows.
  const __int128 sum = static_cast<__int128>(millis) + millisDelta;
  __int128 days = sum / kMillisPerDay;
  if (sum % kMillisPerDay < 0) --days;
  const long m = static_cast<long>(sum - days * kMillisPerDay);
  WalkDate date{month, dayOfMonth, dayOfWeek};
  WalkDays(date, static_cast<long>(days), monthLength, prevMonthLength);

  if (date.month < ruleMonth) return -1;
  if (date.month > ruleMonth) return 1;

  const long d = date.dayOfMonth;
  const long w = date.dayOfWeek;
  long r = 0;
  switch (ruleMode) {
    case kDayOfMonthMode:
      r = ruleDay;
      break;
    case kDayOfWeekInMonthMode:
      if (ruleDay > 0)
        r = 7 * ruleDay - 6 + (ruleDayOfWeek + 6 + d - w) % 7;
      else
        r = monthLength + 7 * (ruleDay + 1) - (monthLength + 7 + w - d - ruleDayOfWeek) % 7;
      break;
    case kDayOfWeekOnOrAfterMode:
      r = ruleDay + (49 + ruleDayOfWeek + d - w - ruleDay) % 7;
      break;
    case kDayOfWeekOnOrBeforeMode:
      r = ruleDay - (49 + ruleDay + w - d - ruleDayOfWeek) % 7;
      break;
  }
  if (d < r) return -1;
  if (d > r) return 1;
  if (m < ruleMillis) return -1;
  if (m > ruleMillis) return 1;
  return 0;
}

bool KyTimeZone::isClearOfTransitions(long wallMillisInDay) const {
  if (!_useDaylight) return true;
  const long startWall = _startTime + (_startTimeMode == kUtcTime ? _rawOffset : 0);
  const long endWall = _endTime + (_endTimeMode == kWallTime  ? 0
                                   : _endTimeMode == kUtcTime ? _rawOffset + _dstSavings
                                                              : _dstSavings);
  const long margin = _dstSavings + 7200000;
  for (long transition : {startWall, endWall}) {
    long distance = ((wallMillisInDay - transition) % kMillisPerDay + kMillisPerDay) % kMillisPerDay;
    distance = std::min(distance, kMillisPerDay - distance);
    if (distance < margin) return false;
  }
  return true;
}

bool KyTimeZone::validRule(int month, int day, int dayOfWeek, long time, EMode mode, ETimeMode timeMode) {
  return month >= 0 && month <= 11 && day >= -5 && day <= 31 && dayOfWeek >= 1 && dayOfWeek <= 7 && time >= 0 &&
         time <= kMillisPerDay && mode >= kDayOfMonthMode && mode <= kDayOfWeekOnOrBeforeMode &&
         timeMode >= kWallTime && timeMode <= kUtcTime;
}

bool KyTimeZone::setRawOffset(long offset) {
  if (isShared() || offset < -kMillisPerDay || offset > kMillisPerDay) return false;
  _rawOffset = offset;
  return true;
}

bool KyTimeZone::setDSTSavings(long savings) {
  if (isShared() || savings < 0 || savings > kMillisPerDay) return false;
  _dstSavings = savings;
  return true;
}

bool KyTimeZone::setStartYear(long year) {
  if (isShared()) return false;
  _startYear = year;
  return true;
}

bool KyTimeZone::setStartRule(int month, int day, int dayOfWeek, long time, EMode mode, ETimeMode timeMode) {
  if (isShared() || !validRule(month, day, dayOfWeek, time, mode, timeMode)) return false;
  _startMonth = static_cast<signed char>(month);
  _startDay = static_cast<signed char>(day);
  _startDayOfWeek = static_cast<signed char>(dayOfWeek);
  _startTime = time;
  _startMode = mode;
  _startTimeMode = timeMode;
  return true;
}

bool KyTimeZone::setEndRule(int month, int day, int dayOfWeek, long time, EMode mode, ETimeMode timeMode) {
  if (isShared() || !validRule(month, day, dayOfWeek, time, mode, timeMode)) return false;
  _endMonth = static_cast<signed char>(month);
  _endDay = static_cast<signed char>(day);
  _endDayOfWeek = static_cast<signed char>(dayOfWeek);
  _endTime = time;
  _endMode = mode;
  _endTimeMode = timeMode;
  return true;
}

bool KyTimeZone::setUseDaylight(bool useDaylight) {
  if (isShared()) return false;
  _useDaylight = useDaylight;
  return true;
}
