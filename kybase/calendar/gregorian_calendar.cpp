#include "kybase/calendar/gregorian_calendar.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "kybase/locale/kylocale.h"

const double KyGregorianCalendar::EARLIEST_SUPPORTED_MILLIS = -4503599627370495.0;
const double KyGregorianCalendar::LATEST_SUPPORTED_MILLIS = 4503599627370495.0;
const double KyGregorianCalendar::kPapalCutover = -12219292800000.0;
const long KyGregorianCalendar::kJan1_1JulianDay = 1721426;
const long KyGregorianCalendar::kEpochStartAsJulianDay = 2440588;
const long KyGregorianCalendar::kEpochYear = 1970;
const long KyGregorianCalendar::kOneSecond = 1000;
const long KyGregorianCalendar::kOneMinute = 60000;
const long KyGregorianCalendar::kOneHour = 3600000;
const double KyGregorianCalendar::kOneDay = 86400000.0;
const double KyGregorianCalendar::kOneWeek = 604800000.0;
const double KyGregorianCalendar::kJulianDayGuard = -106749550580.0;
const long KyGregorianCalendar::kNumDays[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
const long KyGregorianCalendar::kLeapNumDays[12] = {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335};
const long KyGregorianCalendar::kMonthLength[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
const long KyGregorianCalendar::kLeapMonthLength[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
const long KyGregorianCalendar::kMinValues[kFieldCount] = {0, 1, 0, 1, 0, 1, 1, 1, -1, 0,
                                                           0, 0, 0, 0, 0, -43200000, 0, 1, 1};
const long KyGregorianCalendar::kLeastMaxValues[kFieldCount] = {
    1, 140742, 11, 52, 4, 28, 365, 7, 4, 1, 11, 23, 59, 59, 999, 43200000, 3600000, 140742, 7};
const long KyGregorianCalendar::kMaxValues[kFieldCount] = {
    1, 144683, 11, 53, 6, 31, 366, 7, 6, 1, 11, 23, 59, 59, 999, 43200000, 3600000, 144683, 7};

namespace {

// Folds a month index that a lenient caller left outside 0..11 into the table.
long MonthIndex(long month) { return ((month % 12) + 12) % 12; }

// The floor of a double that callers keep well within a long: exact, and without a
// call into the maths library.
long FloorToLong(double x) {
  const long truncated = static_cast<long>(x);
  return static_cast<double>(truncated) > x ? truncated - 1 : truncated;
}

// Beyond this distance from the supported range no field combination is worth a
// conversion: the result cannot be held.
constexpr double kComputeLimit = 4503599627370495.0 + 2 * 86400000.0;

}  // namespace

KyGregorianCalendar::KyGregorianCalendar(KyDateErrorCode& status)
    : KyCalendar(*KyTimeZone::createDefault(), KyLocale::Get(true, nullptr), status) {
  setTime(getNow(), status);
}

KyGregorianCalendar::KyGregorianCalendar(const KyLocale& locale, KyDateErrorCode& status)
    : KyCalendar(*KyTimeZone::createDefault(), &locale, status) {
  setTime(getNow(), status);
}

KyGregorianCalendar::KyGregorianCalendar(const KyTimeZone& zone, KyDateErrorCode& status)
    : KyCalendar(zone, KyLocale::Get(true, nullptr), status) {
  setTime(getNow(), status);
}

KyGregorianCalendar::KyGregorianCalendar(const KyTimeZone& zone, const KyLocale& locale, KyDateErrorCode& status)
    : KyCalendar(zone, &locale, status) {
  setTime(getNow(), status);
}

KyGregorianCalendar::KyGregorianCalendar(KyTimeZone* zone, KyDateErrorCode& status)
    : KyCalendar(zone, KyLocale::Get(true, nullptr), status) {
  setTime(getNow(), status);
}

KyGregorianCalendar::KyGregorianCalendar(KyTimeZone* zone, const KyLocale& locale, KyDateErrorCode& status)
    : KyCalendar(zone, &locale, status) {
  setTime(getNow(), status);
}

KyGregorianCalendar::KyGregorianCalendar(const KyTimeZone& zone, const KyLocale* locale, KyDateErrorCode& status)
    : KyCalendar(zone, locale, status) {
  setTime(getNow(), status);
}

KyGregorianCalendar::KyGregorianCalendar(KyTimeZone* zone, const KyLocale* locale, KyDateErrorCode& status)
    : KyCalendar(zone, locale, status) {
  setTime(getNow(), status);
}

KyGregorianCalendar::KyGregorianCalendar(long year, long month, long day, KyDateErrorCode& status)
    : KyCalendar(*KyTimeZone::createDefault(), KyLocale::Get(true, nullptr), status) {
  set(kEra, 1);
  set(year, month, day);
}

KyGregorianCalendar::KyGregorianCalendar(long year, long month, long day, long hour, long minute,
                                         KyDateErrorCode& status)
    : KyGregorianCalendar(year, month, day, status) {
  set(kHourOfDay, hour);
  set(kMinute, minute);
}

KyGregorianCalendar::KyGregorianCalendar(long year, long month, long day, long hour, long minute, long second,
                                         KyDateErrorCode& status)
    : KyGregorianCalendar(year, month, day, hour, minute, status) {
  set(kSecond, second);
}

KyGregorianCalendar::KyGregorianCalendar(const KyGregorianCalendar& source)
    : KyCalendar(source),
      _gregorianCutover(source._gregorianCutover),
      _normalizedGregorianCutover(source._normalizedGregorianCutover),
      _gregorianCutoverYear(source._gregorianCutoverYear) {}

KyGregorianCalendar& KyGregorianCalendar::operator=(const KyGregorianCalendar& source) {
  if (this == &source) return *this;
  KyCalendar::operator=(source);
  _gregorianCutover = source._gregorianCutover;
  _normalizedGregorianCutover = source._normalizedGregorianCutover;
  _gregorianCutoverYear = source._gregorianCutoverYear;
  return *this;
}

KyGregorianCalendar::~KyGregorianCalendar() = default;

KyCalendar* KyGregorianCalendar::clone() const { return new (std::nothrow) KyGregorianCalendar(*this); }

bool KyGregorianCalendar::operator==(const KyCalendar& other) const {
  if (this == &other) return true;
  const auto* gregorian = dynamic_cast<const KyGregorianCalendar*>(&other);
  return gregorian != nullptr && KyCalendar::operator==(other) && _gregorianCutover == gregorian->_gregorianCutover;
}

bool KyGregorianCalendar::equivalentTo(const KyCalendar& other) const {
  const auto* gregorian = dynamic_cast<const KyGregorianCalendar*>(&other);
  return gregorian != nullptr && KyCalendar::equivalentTo(other) && _gregorianCutover == gregorian->_gregorianCutover;
}

bool KyGregorianCalendar::inDaylightTime(KyDateErrorCode& status) const {
  if (KyDateFailed(status)) return false;
  complete(status);
  return !KyDateFailed(status) && _fields[kDstOffset] != 0;
}

long KyGregorianCalendar::getMinimum(KyDateFields field) const { return validField(field) ? kMinValues[field] : 0; }
long KyGregorianCalendar::getMaximum(KyDateFields field) const { return validField(field) ? kMaxValues[field] : 0; }
long KyGregorianCalendar::getGreatestMinimum(KyDateFields field) const { return getMinimum(field); }
long KyGregorianCalendar::getLeastMaximum(KyDateFields field) const {
  return validField(field) ? kLeastMaxValues[field] : 0;
}

bool KyGregorianCalendar::isSupportedTime(double time) const {
  return time >= EARLIEST_SUPPORTED_MILLIS && time <= LATEST_SUPPORTED_MILLIS;  // false for NaN
}

void KyGregorianCalendar::setGregorianChange(double date, KyDateErrorCode& status) {
  if (KyDateFailed(status)) return;
  if (!isSupportedTime(date)) {
    status = kIllegalArgument;
    return;
  }
  _gregorianCutover = date;
  _normalizedGregorianCutover = std::floor(date / kOneDay) * kOneDay;
  KyGregorianCalendar probe(getTimeZone(), status);
  if (KyDateFailed(status)) return;
  probe.setTime(date, status);
  _gregorianCutoverYear = probe._fields[kYear];
  if (probe._fields[kEra] == 0) _gregorianCutoverYear = 1 - _gregorianCutoverYear;
}

bool KyGregorianCalendar::isLeapYear(long year) const {
  if (year < _gregorianCutoverYear) return year % 4 == 0;
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

long KyGregorianCalendar::internalGetEra() const { return _stamp[kEra] != 0 ? _fields[kEra] : 1; }

long KyGregorianCalendar::eraYear() const {
  const long year = _fields[kYear];
  return _stamp[kEra] != 0 && _fields[kEra] == 0 ? 1 - year : year;
}

long KyGregorianCalendar::monthLength(long month) const { return monthLength(month, eraYear()); }

long KyGregorianCalendar::monthLength(long month, long year) const {
  return (isLeapYear(year) ? kLeapMonthLength : kMonthLength)[MonthIndex(month)];
}

long KyGregorianCalendar::yearLength(long year) const { return isLeapYear(year) ? 366 : 365; }
long KyGregorianCalendar::yearLength() const { return yearLength(_fields[kYear]); }

double KyGregorianCalendar::julianDayToMillis(double julianDay) {
  return (julianDay - kEpochStartAsJulianDay) * kOneDay;
}

long KyGregorianCalendar::julianDayToDayOfWeek(double julianDay) {
  const long whole = static_cast<long>(julianDay);
  // Whole days, the only kind the calendar makes, need no floating remainder.
  const long r = static_cast<double>(whole) == julianDay ? (whole + 1) % 7
                                                         : static_cast<long>(std::fmod(julianDay + 1, 7));
  return r < 0 ? r + 8 : r + 1;
}

long KyGregorianCalendar::floorDivide(double numerator, long denominator, long* remainder) {
  const long whole = static_cast<long>(numerator);
  if (static_cast<double>(whole) == numerator) return floorDivide(whole, denominator, remainder);
  if (numerator >= 0) {
    *remainder = static_cast<long>(std::fmod(numerator, static_cast<double>(denominator)));
    return static_cast<long>(std::trunc(numerator / denominator));
  }
  const long quotient = static_cast<long>(std::trunc((numerator + 1) / denominator)) - 1;
  *remainder = static_cast<long>(numerator - static_cast<double>(quotient) * denominator);
  return quotient;
}

double KyGregorianCalendar::computeJulianDayOfYear(bool isGregorian, long year, bool& isLeap) {
  isLeap = year % 4 == 0;
  const long y = year - 1;
  double julianDay = 365.0 * y + floorDivide(y, 4) + (kJan1_1JulianDay - 3);
  if (isGregorian) {
    isLeap = isLeap && (year % 100 != 0 || year % 400 == 0);
    julianDay += floorDivide(y, 400) - floorDivide(y, 100) + 2;
  }
  return julianDay;
}

long KyGregorianCalendar::computeRelativeDOW(double julianDay) const {
  const long relative = julianDayToDayOfWeek(julianDay) - _firstDayOfWeek;
  return relative < 0 ? relative + 7 : relative;
}

long KyGregorianCalendar::computeRelativeDOW() const {
  if (_stamp[kDayOfWeek] < _stamp[kLocalDayOfWeek]) return _fields[kLocalDayOfWeek] - 1L;
  if (_stamp[kDayOfWeek] == 0) return 0;
  const long relative = static_cast<long>(_fields[kDayOfWeek]) - _firstDayOfWeek;
  return relative < 0 ? relative + 7 : relative;
}

long KyGregorianCalendar::computeDOYfromWOY(double julianDayOfYear) const {
  long d = julianDayToDayOfWeek(julianDayOfYear + 1) - _firstDayOfWeek;
  if (d < 0) d += 7;
  const long start = 7 - d >= _minimalDaysInFirstWeek ? 1 - d : 8 - d;
  return 7L * _fields[kWeekOfYear] - 7 + start + computeRelativeDOW();
}

long KyGregorianCalendar::weekNumber(long dayOfPeriod, long dayOfWeek) const {
  long s = (dayOfWeek - dayOfPeriod - _firstDayOfWeek + 1) % 7;
  if (s < 0) s += 7;
  const long week = (dayOfPeriod - 1 + s) / 7;
  return 7 - s >= _minimalDaysInFirstWeek ? week + 1 : week;
}

void KyGregorianCalendar::timeToFields(double theTime, bool quick, KyDateErrorCode& status) {
  if (KyDateFailed(status)) return;
  long rawYear;
  long dayOfYear;
  long dow;
  bool isLeap;
  if (theTime >= _normalizedGregorianCutover) {
    const long day = FloorToLong(theTime / kOneDay) + (kEpochStartAsJulianDay - kJan1_1JulianDay);
    long rem;
    const long n400 = floorDivide(day, 146097, &rem);
    const long n100 = floorDivide(rem, 36524, &rem);
    const long n4 = floorDivide(rem, 1461, &rem);
    const long n1 = floorDivide(rem, 365, &rem);
    rawYear = 400 * n400 + 100 * n100 + 4 * n4 + n1;
    dayOfYear = rem;
    if (n100 == 4 || n1 == 4)
      dayOfYear = 365;  // the last day of a leap year
    else
      ++rawYear;
    isLeap = (rawYear & 3) == 0 && (rawYear % 100 != 0 || rawYear % 400 == 0);
    dow = (day + 1) % 7;
  } else {
    // Whole days, so the floors and the remainder are exact in integers.
    const long day = FloorToLong(theTime / kOneDay) + (kEpochStartAsJulianDay - 1721424);
    rawYear = floorDivide(4 * day + 1464, 1461);
    isLeap = (rawYear & 3) == 0;
    dayOfYear = day - (floorDivide(rawYear - 1, 4) + 365 * (rawYear - 1));
    dow = (day - 1) % 7;
  }

  long correction = 0;
  if (dayOfYear >= (isLeap ? 60 : 59)) correction = isLeap ? 1 : 2;
  const long month = (12 * (dayOfYear + correction) + 6) / 367;
  const long dayOfMonth = dayOfYear - (isLeap ? kLeapNumDays : kNumDays)[month] + 1;
  const long dayOfWeek = dow < 0 ? dow + 8 : dow + 1;
  const long era = rawYear >= 1 ? 1 : 0;
  const long year = rawYear >= 1 ? rawYear : 1 - rawYear;
  if (rawYear == _gregorianCutoverYear && theTime >= _normalizedGregorianCutover) dayOfYear -= 10;
  ++dayOfYear;

  internalSet(kEra, era);
  internalSet(kYear, year);
  internalSet(kMonth, month);
  internalSet(kDayOfMonth, dayOfMonth);
  internalSet(kDayOfWeek, dayOfWeek);
  internalSet(kDayOfYear, dayOfYear);
  if (quick) return;

  const long relDow = (dayOfWeek - _firstDayOfWeek + 7) % 7;
  const long relDowJan1 = (dayOfWeek - dayOfYear - _firstDayOfWeek + 701) % 7;
  long woy = (relDowJan1 - 1 + dayOfYear) / 7;
  long yearOfWeek = year;
  if (7 - relDowJan1 >= _minimalDaysInFirstWeek) ++woy;
  if (dayOfYear > 359) {
    // The year-end days may open the first week of the next year. The leap test is
    // taken on the era-relative field.
    const long lastDoy = yearLength(_fields[kYear]);
    long lastRelDow = (lastDoy - dayOfYear + relDow) % 7;
    if (lastRelDow < 0) lastRelDow += 7;
    if (6 - lastRelDow >= _minimalDaysInFirstWeek && dayOfYear - relDow + 7 > lastDoy) {
      ++yearOfWeek;
      woy = 1;
    }
  } else if (woy == 0) {
    woy = weekNumber(dayOfYear + yearLength(rawYear - 1), dayOfWeek);
    --yearOfWeek;
  }
  internalSet(kWeekOfYear, woy);
  internalSet(kYearOfWeek, yearOfWeek);
  internalSet(kWeekOfMonth, weekNumber(dayOfMonth, dayOfWeek));
  internalSet(kDayOfWeekInMonth, (dayOfMonth - 1) / 7 + 1);
  long local = dayOfWeek - _firstDayOfWeek + 1;
  if (local < 1) local += 7;
  internalSet(kLocalDayOfWeek, local);
}

void KyGregorianCalendar::computeFields(KyDateErrorCode& status) {
  if (KyDateFailed(status)) return;
  const long raw = _zone->getRawOffset();
  const double local = _time + raw;
  timeToFields(local, false, status);

  const long era = internalGetEra();
  const long year = _fields[kYear];
  const long month = _fields[kMonth];
  const long dayOfMonth = _fields[kDayOfMonth];
  const long dayOfWeek = _fields[kDayOfWeek];
  long millisInDay = static_cast<long>(local - static_cast<double>(FloorToLong(local / kOneDay)) * kOneDay);
  if (millisInDay < 0) millisInDay += static_cast<long>(kOneDay);
  // No leap year in this table: February counts 28 here in all years.
  const long prevMonthLength = month == 0 ? 31 : KyTimeZone::staticMonthLength[month - 1];
  const long dst = _zone->getOffset(static_cast<unsigned char>(era), year, month, dayOfMonth,
                                    static_cast<unsigned char>(dayOfWeek), millisInDay, monthLength(month),
                                    prevMonthLength, status) -
                   raw;
  if (KyDateFailed(status)) return;
  millisInDay += dst;
  if (millisInDay >= static_cast<long>(kOneDay)) {
    millisInDay -= static_cast<long>(kOneDay);
    timeToFields(local + dst, false, status);
  }
  internalSet(kDstOffset, dst);
  internalSet(kZoneOffset, raw);
  internalSet(kMillisecond, millisInDay % 1000);
  internalSet(kSecond, (millisInDay / 1000) % 60);
  internalSet(kMinute, (millisInDay / 60000) % 60);
  internalSet(kHourOfDay, millisInDay / 3600000);
  internalSet(kAmPm, millisInDay / 3600000 / 12);
  internalSet(kHour, millisInDay / 3600000 % 12);
  markAllComputed();
}

double KyGregorianCalendar::computeJulianDay(bool isGregorian, long year, ResolvedDate* resolved) {
  const long monthStamp = _stamp[kMonth];
  const long domStamp = _stamp[kDayOfMonth];
  const long womStamp = _stamp[kWeekOfMonth];
  const long dowimStamp = _stamp[kDayOfWeekInMonth];
  const long doyStamp = _stamp[kDayOfYear];
  long woyStamp = _stamp[kWeekOfYear];
  long best = std::max({monthStamp, domStamp, womStamp, dowimStamp, doyStamp});
  long y = year;

  // The week-based year, when the week of the year was set no earlier than the rest.
  if (woyStamp >= best) {
    const long ywStamp = _stamp[kYearOfWeek];
    const long yStamp = _stamp[kYear];
    if (ywStamp > yStamp) {
      y = _fields[kYearOfWeek];
      if (_stamp[kEra] != 0 && _fields[kEra] == 0) y = 1 - y;
      ++woyStamp;
      best = woyStamp;
    } else if (woyStamp != best) {
      best = woyStamp;
      if (ywStamp != 0 && ywStamp >= yStamp) {
        y = _fields[kYearOfWeek];
      } else if (_fields[kWeekOfYear] == 1) {
        bool leap;
        const long j = computeRelativeDOW(computeJulianDayOfYear(isGregorian, y, leap) + 1);
        const long start = 7 - j < _minimalDaysInFirstWeek ? 8 - j : 1 - j;
        if (start < 1) {
          const long d = computeRelativeDOW();
          if (d < j || d > j + 5 + start) ++y;
        }
      } else if (_fields[kWeekOfYear] >= 52) {
        bool leap;
        if (computeDOYfromWOY(computeJulianDayOfYear(isGregorian, y, leap)) > yearLength(y)) --y;
      }
    }
  }

  bool useMonth = false;
  bool folded = false;
  long month = 0;
  if (best != 0 && (best == monthStamp || best == domStamp || best == womStamp || best == dowimStamp)) {
    useMonth = true;
    month = monthStamp != 0 ? _fields[kMonth] : 0;
    folded = month < 0 || month > 11;
    if (month < 0) {
      const long q = (month + 1) / 12 - 1;
      month -= 12 * q;
      y += q;
    } else if (month > 11) {
      y += month / 12;
      month %= 12;
    }
  }

  bool isLeap;
  double julianDay = computeJulianDayOfYear(isGregorian, y, isLeap);
  long date;
  if (useMonth) {
    julianDay += (isLeap ? kLeapNumDays : kNumDays)[month];
    if (best == domStamp || best == monthStamp) {
      date = domStamp != 0 ? _fields[kDayOfMonth] : 1;
    } else {
      const long fdm = computeRelativeDOW(julianDay + 1);
      date = 1 - fdm;
      if (_stamp[kDayOfWeek] != 0) date += _fields[kDayOfWeek] - static_cast<long>(_firstDayOfWeek);
      if (best == womStamp) {
        if (7 - fdm < _minimalDaysInFirstWeek) date += 7;
        date += 7 * (_fields[kWeekOfMonth] - 1L);
      } else {
        if (date < 1) date += 7;
        const long n = _fields[kDayOfWeekInMonth];
        if (n >= 0)
          date += 7 * (n - 1);
        else  // the month as stored, not the folded one
          date += 7 * ((monthLength(_fields[kMonth], y) - date) / 7 + n + 1);
      }
    }
  } else if (best == 0) {
    date = 1;
  } else {
    date = best == doyStamp ? _fields[kDayOfYear] : computeDOYfromWOY(julianDay);
    if (y == _gregorianCutoverYear && isGregorian) date -= 10;
  }
  if (resolved != nullptr) {
    resolved->plain = useMonth && !folded && (best == domStamp || best == monthStamp) && date >= 1 &&
                      date <= (isLeap ? kLeapMonthLength : kMonthLength)[month];
    resolved->year = y;
    resolved->month = month;
    resolved->day = date;
    resolved->leap = isLeap;
  }
  return julianDay + date;
}

bool KyGregorianCalendar::validateFields() const {
  for (int i = 0; i < kFieldCount; ++i) {
    if (i == kDayOfMonth || i == kDayOfYear || _stamp[i] == 0) continue;
    const auto field = static_cast<KyDateFields>(i);
    if (_fields[i] < getMinimum(field) || _fields[i] > getMaximum(field)) return false;
  }
  if (_stamp[kDayOfMonth] != 0 &&
      (_fields[kDayOfMonth] < getMinimum(kDayOfMonth) || _fields[kDayOfMonth] > monthLength(_fields[kMonth])))
    return false;
  if (_stamp[kDayOfYear] != 0 && (_fields[kDayOfYear] < 1 || _fields[kDayOfYear] > yearLength()))
    return false;
  return _stamp[kDayOfWeekInMonth] == 0 || _fields[kDayOfWeekInMonth] != 0;
}

void KyGregorianCalendar::computeTime(KyDateErrorCode& status) {
  if (KyDateFailed(status)) return;
  if (!_lenient && !validateFields()) {
    status = kIllegalArgument;
    return;
  }
  long year = _stamp[kYear] != 0 ? _fields[kYear] : kEpochYear;
  long era = 1;
  if (_stamp[kEra] != 0) {
    era = _fields[kEra];
    if (era == 0) {
      year = 1 - year;
    } else if (era != 1) {
      status = kIllegalArgument;
      return;
    }
  }

  const bool isGregorian = year >= _gregorianCutoverYear;
  ResolvedDate resolved;
  double julianDay = computeJulianDay(isGregorian, year, &resolved);
  double millis = julianDayToMillis(julianDay);
  if (isGregorian != (millis >= _normalizedGregorianCutover) && julianDay != kJulianDayGuard) {
    // The second pass puts the days skipped at the cutover under the Julian rule.
    julianDay = computeJulianDay(!isGregorian, year);
    millis = julianDayToMillis(julianDay);
    resolved.plain = false;
  }

  const long hourOfDayStamp = _stamp[kHourOfDay];
  const long hourStamp = _stamp[kHour];
  long hours = 0;
  if (hourOfDayStamp != 0 || hourStamp != 0)
    hours = hourOfDayStamp >= hourStamp ? _fields[kHourOfDay] : _fields[kHour] + 12L * _fields[kAmPm];
  const long millisInDay = ((hours * 60 + _fields[kMinute]) * 60 + _fields[kSecond]) * 1000 + _fields[kMillisecond];
  millis += millisInDay;
  if (!(std::fabs(millis) <= kComputeLimit)) {
    status = kIllegalArgument;
    return;
  }

  long zoneOffset;
  long dst;
  if (_stamp[kZoneOffset] >= 2) {
    zoneOffset = _fields[kZoneOffset];
    dst = _fields[kDstOffset];
  } else {
    zoneOffset = _zone->getRawOffset();
    long rem;
    floorDivide(millis, static_cast<long>(kOneDay), &rem);
    long dow;
    if (!_lenient && _stamp[kMonth] != 0 && _stamp[kDayOfMonth] != 0 && rem == millisInDay) {
      dow = julianDayToDayOfWeek(julianDay);
    } else if (resolved.plain && resolved.year != _gregorianCutoverYear && rem == millisInDay) {
      // A date in range, away from the cutover year, on the day it names: these are the
      // fields that the conversion of the time below would store, found without it.
      dow = julianDayToDayOfWeek(julianDay);
      internalSet(kEra, resolved.year >= 1 ? 1 : 0);
      internalSet(kYear, resolved.year >= 1 ? resolved.year : 1 - resolved.year);
      internalSet(kMonth, resolved.month);
      internalSet(kDayOfMonth, resolved.day);
      internalSet(kDayOfWeek, dow);
      internalSet(kDayOfYear, (resolved.leap ? kLeapNumDays : kNumDays)[resolved.month] + resolved.day);
    } else {
      timeToFields(millis, true, status);
      dow = _fields[kDayOfWeek];
    }
    dst = _zone->getOffset(static_cast<unsigned char>(era), _fields[kYear], _fields[kMonth], _fields[kDayOfMonth],
                           static_cast<unsigned char>(dow), rem, monthLength(_fields[kMonth]), status) -
          zoneOffset;
  }
  if (KyDateFailed(status)) return;
  const double time = millis - zoneOffset - dst;
  if (!isSupportedTime(time)) {
    status = kIllegalArgument;
    return;
  }
  _time = time;
}
