// Field arithmetic of KyGregorianCalendar: add, roll, the actual limits, and the jumps
// that keep fieldDifference prompt. Amounts are whole longs; the sums that could leave
// a long are taken in 128 bits, and amounts are reduced by the period first wherever
// the result is a remainder.
#include <algorithm>
#include <climits>
#include <cmath>
#include <new>

#include "kybase/calendar/gregorian_calendar.h"

namespace {

using Wide = __int128;

// The millisecond step of a field that add moves by time, 0 for the others.
double StepOf(KyDateFields field, bool* keepWallClock) {
  *keepWallClock = true;
  switch (field) {
    case kWeekOfYear:
    case kWeekOfMonth:
    case kDayOfWeekInMonth:
      return 604800000.0;
    case kDayOfMonth:
    case kDayOfYear:
    case kDayOfWeek:
    case kLocalDayOfWeek:
      return 86400000.0;
    case kAmPm:
      return 43200000.0;
    default:
      break;
  }
  *keepWallClock = false;
  switch (field) {
    case kHour:
    case kHourOfDay:
      return 3600000.0;
    case kMinute:
      return 60000.0;
    case kSecond:
      return 1000.0;
    case kMillisecond:
      return 1.0;
    default:
      return 0.0;
  }
}

// The C remainder (sign of the dividend), then moved into 0..period-1.
long Wrap(Wide value, long period) {
  Wide rem = value % period;
  if (rem < 0) rem += period;
  return static_cast<long>(rem);
}

}  // namespace

void KyGregorianCalendar::pinDayOfMonth() {
  const long length = monthLength(_fields[kMonth]);
  if (_fields[kDayOfMonth] > length) set(kDayOfMonth, length);
}

bool KyGregorianCalendar::beginChange(KyDateFields field, long amount, KyDateErrorCode& status) {
  if (KyDateFailed(status) || amount == 0) return false;
  if (!validField(field)) {
    status = kIllegalArgument;
    return false;
  }
  complete(status);
  return !KyDateFailed(status);
}

void KyGregorianCalendar::add(KyDateFields field, long amount, KyDateErrorCode& status) {
  if (!beginChange(field, amount, status)) return;
  switch (field) {
    case kYear:
    case kYearOfWeek: {
      const long era = internalGetEra();
      const Wide value = static_cast<Wide>(_fields[field]) + (era != 1 ? -static_cast<Wide>(amount) : amount);
      // A year that a field cannot hold fails the whole step.
      if (value > INT32_MAX || 1 - value > INT32_MAX) {
        status = kIllegalArgument;
        return;
      }
      if (value > 0) {
        set(field, static_cast<long>(value));
      } else {
        set(field, static_cast<long>(1 - value));
        set(kEra, 1 - era);
      }
      pinDayOfMonth();
      return;
    }
    case kMonth: {
      const Wide m = static_cast<Wide>(_fields[kMonth]) + amount;
      const long years = static_cast<long>(m >= 0 ? m / 12 : (m + 1) / 12 - 1);
      add(kYear, years, status);
      if (KyDateFailed(status)) return;
      set(kMonth, Wrap(m, 12));
      pinDayOfMonth();
      return;
    }
    case kEra: {
      const Wide era = static_cast<Wide>(_fields[kEra]) + amount;
      set(kEra, era < 0 ? 0 : era > 1 ? 1 : static_cast<long>(era));
      return;
    }
    case kZoneOffset:
    case kDstOffset:
      status = kIllegalArgument;
      return;
    default:
      break;
  }
  bool keepWallClock;
  const double delta = static_cast<double>(amount) * StepOf(field, &keepWallClock);
  const long before = keepWallClock ? _fields[kDstOffset] : 0;
  setTime(_time + delta, status);
  if (keepWallClock && !KyDateFailed(status) && before != _fields[kDstOffset])
    setTime(_time + static_cast<double>(before - _fields[kDstOffset]), status);
}

void KyGregorianCalendar::roll(KyDateFields field, long amount, KyDateErrorCode& status) {
  if (!beginChange(field, amount, status)) return;
  const long min = getMinimum(field);
  long max = getMaximum(field);

  // The month that holds the cutover counts 21 days in the rolls by day and by week
  // of the month.
  double monthStart = 0;
  long monthLen2 = 0;
  long dom = 0;
  bool inCutoverMonth = false;
  if (field == kDayOfMonth || field == kWeekOfMonth) {
    max = monthLength(_fields[kMonth]);
    dom = _fields[kDayOfMonth] - (_time >= _gregorianCutover ? 10 : 0);
    monthStart = _time - (dom - 1) * kOneDay;
    if (_gregorianCutover > monthStart) {
      monthLen2 = max - 10;
      inCutoverMonth = monthStart + monthLen2 * kOneDay >= _gregorianCutover;
    }
  }

  switch (field) {
    case kEra:
    case kYear:
    case kAmPm:
    case kMinute:
    case kSecond:
    case kMillisecond:
    case kYearOfWeek:
      set(field, Wrap(static_cast<Wide>(_fields[field]) - min + amount, max - min + 1) + min);
      return;
    case kMonth: {
      const long month = Wrap(static_cast<Wide>(_fields[kMonth]) + amount, 12);
      set(kMonth, month);
      const long length = monthLength(month);
      if (_fields[kDayOfMonth] > length) set(kDayOfMonth, length);
      return;
    }
    case kDayOfMonth:
      if (inCutoverMonth) {
        const double length = monthLen2 * kOneDay;
        double ms = std::fmod(_time - monthStart + (amount % monthLen2) * kOneDay, length);
        if (ms < 0) ms += length;
        setTime(ms + monthStart, status);
      } else {
        set(kDayOfMonth, Wrap(static_cast<Wide>(_fields[kDayOfMonth]) - min + amount, max - min + 1) + min);
      }
      return;
    case kWeekOfMonth: {
      long dow = _fields[kDayOfWeek] - static_cast<long>(_firstDayOfWeek);
      if (dow < 0) dow += 7;
      const long day0 = inCutoverMonth ? dom : _fields[kDayOfMonth];
      long fdm = (dow - day0 + 1) % 7;
      if (fdm < 0) fdm += 7;
      const long start = 7 - fdm < _minimalDaysInFirstWeek ? 8 - fdm : 1 - fdm;
      const long length = inCutoverMonth ? monthLen2 : monthLength(_fields[kMonth]);
      const long gap = length - ((length - day0 + dow) % 7) - start + 7;
      long day = Wrap(static_cast<Wide>(7) * amount - start + day0, gap) + start;
      day = std::clamp(day, 1L, length);
      if (inCutoverMonth)
        setTime(monthStart + (day - 1) * kOneDay, status);
      else
        set(kDayOfMonth, day);
      return;
    }
    case kWeekOfYear:
      rollWeekOfYear(amount, status);
      return;
    case kDayOfYear: {
      const double min2 = _time - (_fields[kDayOfYear] - 1L) * kOneDay;
      const long days = yearLength();
      const double span = days * kOneDay;
      double ms = std::fmod(_time + (amount % days) * kOneDay - min2, span);
      if (ms < 0) ms += span;
      setTime(ms + min2, status);
      return;
    }
    case kDayOfWeek:
    case kLocalDayOfWeek: {
      long lead = field == kDayOfWeek ? _fields[kDayOfWeek] - static_cast<long>(_firstDayOfWeek)
                                      : _fields[kLocalDayOfWeek] - 1L;
      if (lead < 0) lead += 7;
      const double min2 = _time - lead * kOneDay;
      double ms = std::fmod(_time + (amount % 7) * kOneDay - min2, kOneWeek);
      if (ms < 0) ms += kOneWeek;
      setTime(ms + min2, status);
      return;
    }
    case kDayOfWeekInMonth: {
      const long pre = (_fields[kDayOfMonth] - 1L) / 7;
      const long post = (monthLength(_fields[kMonth]) - _fields[kDayOfMonth]) / 7;
      const double min2 = _time - pre * kOneWeek;
      const long weeks = pre + post + 1;
      const double span = weeks * kOneWeek;
      double ms = std::fmod(_time + (amount % weeks) * kOneWeek - min2, span);
      if (ms < 0) ms += span;
      setTime(ms + min2, status);
      return;
    }
    case kHour:
    case kHourOfDay: {
      // Working on the time, not the field, keeps daylight changes right.
      const double start = getTimeInMillis(status);
      const long old = _fields[field];
      const long now = Wrap(static_cast<Wide>(old) + amount, max + 1);
      setTime(start + static_cast<double>(now - old) * kOneHour, status);
      return;
    }
    case kZoneOffset:
    case kDstOffset:
      status = kIllegalArgument;
      return;
  }
}

void KyGregorianCalendar::rollWeekOfYear(long amount, KyDateErrorCode&) {
  const long year = _fields[kYearOfWeek];
  long doy = _fields[kDayOfYear];
  const long woy = _fields[kWeekOfYear];
  if (_fields[kMonth] == 0 && woy >= 52)
    doy += yearLength(year);
  else if (_fields[kMonth] != 0 && woy == 1)
    doy -= yearLength(year - 1);
  Wide week = static_cast<Wide>(woy) + amount;
  if (week < 1 || week > 52) {
    long lastDoy = yearLength(year);
    long last = (_fields[kDayOfWeek] - doy + lastDoy - _firstDayOfWeek) % 7;
    if (last < 0) last += 7;
    if (6 - last >= _minimalDaysInFirstWeek) lastDoy -= 7;
    const long lastWoy = weekNumber(lastDoy, last + 1);
    // The remainder keeps the sign of the sum, so a far negative amount leaves a week
    // below 1 for the next computation to carry.
    week = (week + lastWoy - 1) % lastWoy + 1;
  }
  set(kWeekOfYear, static_cast<long>(week));
  set(kYearOfWeek, year);
}

long KyGregorianCalendar::getActualMaximum(KyDateFields field) const {
  KyDateErrorCode status = kNoError;
  switch (field) {
    case kDayOfMonth:
      return monthLength(get(kMonth, status));
    case kDayOfYear:
      return yearLength(_fields[kYear]);
    case kWeekOfYear:
    case kWeekOfMonth:
    case kDayOfWeekInMonth:
      return KyCalendar::getActualMaximum(field, status);
    case kYear:
    case kYearOfWeek: {
      // The search runs for its side effects on the trial copy and the source; what it
      // finds is dropped.
      KyCalendar* trial = clone();
      if (trial == nullptr) return 0;
      trial->setLenient(true);
      const long era = trial->get(kEra, status);
      const double start = trial->getTime(status);
      long low = kLeastMaxValues[field];
      long high = kMaxValues[field] + 1;
      while (!KyDateFailed(status) && low + 1 < high) {
        const long mid = (low + high) / 2;
        trial->set(field, mid);
        if (trial->get(field, status) == mid && trial->get(kEra, status) == era) {
          low = mid;
        } else {
          trial->setTime(start, status);
          high = mid;
        }
      }
      delete trial;
      return 0;
    }
    default:
      return getMaximum(field);
  }
}

long KyGregorianCalendar::getActualMinimum(KyDateFields field) const { return getMinimum(field); }

long KyGregorianCalendar::skipSteps(double when, KyDateFields field, KyDateErrorCode& status) {
  if (KyDateFailed(status)) return 0;
  complete(status);
  if (KyDateFailed(status)) return 0;
  // Only fields that the calendar computed from its time (every stamp 1) move the same
  // way under one jump as under single steps.
  for (std::int32_t stamp : _stamp)
    if (stamp != 1) return 0;
  const double ms = _time;
  const double direction = when > ms ? 1.0 : -1.0;
  // Under a daylight rule a wall-clock time near a change may not exist on every date;
  // any other keeps its place through single steps and jumps alike.
  const long wallClock =
      ((_fields[kHourOfDay] * 60L + _fields[kMinute]) * 60 + _fields[kSecond]) * 1000 + _fields[kMillisecond];
  // Steps of half a day visit the other half of the clock too.
  bool clear = _zone->isClearOfTransitions(wallClock) &&
               (field != kAmPm || _zone->isClearOfTransitions((wallClock + 43200000) % 86400000));
  // Before the rule's first year (and before the year 1) no daylight time applies: any
  // wall clock is clear there, for jumps that stay there.
  double reach = when;
  if (!clear) {
    bool leap;
    const long ruleYear = std::clamp(_zone->getStartYear(), 1L, 200000L);
    const double ruleStart =
        julianDayToMillis(computeJulianDayOfYear(ruleYear >= _gregorianCutoverYear, ruleYear, leap) + 1) -
        40 * kOneDay;
    if (ms < ruleStart) {
      clear = true;
      if (direction > 0) reach = std::min(when, ruleStart);
    }
  }

  bool keepWallClock;
  const double step = StepOf(field, &keepWallClock);
  if (step > 0) {
    if (keepWallClock && !clear) return skipPeriods(when, field, status);
    double n = std::floor((reach - ms) * direction / step) - 2;
    if (ms != std::floor(ms)) {
      // A fraction stays exact while the magnitude stays below the next power of two.
      const double limit = std::ldexp(1.0, std::ilogb(ms) + 1);
      n = std::min(n, std::floor((limit - direction * ms) / step) - 1);
    }
    if (n < 1) return 0;
    add(field, static_cast<long>(direction * n), status);
    return KyDateFailed(status) ? 0 : static_cast<long>(direction * n);
  }

  if (field != kMonth && field != kYear) return 0;
  // Months and years keep the day once it is 28 or less, and away from the cutover
  // every date maps to itself.
  if (!clear) return skipPeriods(when, field, status);
  if (_fields[kDayOfMonth] > 28) return 0;
  // The jump stays on the side of the cutover where the calendar stands; the steps
  // across it are taken one by one.
  const double before = std::min(_gregorianCutover, _normalizedGregorianCutover) - 2 * kOneDay;
  const double after = std::max(_gregorianCutover, _normalizedGregorianCutover) + 40 * kOneDay;
  double limit = reach;
  if (ms < before)
    limit = std::min(reach, before);
  else if (ms >= after)
    limit = std::max(reach, after);
  else
    return 0;
  const double n = std::floor((limit - ms) * direction / ((field == kMonth ? 31 : 366) * kOneDay)) - 2;
  if (n < 1) return 0;
  add(field, static_cast<long>(direction * n), status);
  return KyDateFailed(status) ? 0 : static_cast<long>(direction * n);
}

// Under a daylight rule a walk near a change may shift its wall clock, but the calendar
// and the rule repeat: every 146097 days (400 years) under the Gregorian rule and every
// 10227 days (28 years) under the Julian one, once the rule applies in every year. A
// scratch calendar walks step by step for up to two periods; when a walk of c steps
// lands exactly one period on, every later period takes c steps too, and whole periods
// are jumped.
long KyGregorianCalendar::skipPeriods(double when, KyDateFields field, KyDateErrorCode& status) {
  const double ms = _time;
  const double direction = when > ms ? 1.0 : -1.0;
  const double cutoverHigh = std::max(_gregorianCutover, _normalizedGregorianCutover) + 40 * kOneDay;
  const double cutoverLow = std::min(_gregorianCutover, _normalizedGregorianCutover) - 40 * kOneDay;
  const bool gregorian = ms >= cutoverHigh;
  if (!gregorian && ms >= cutoverLow) return 0;
  const double period = (gregorian ? 146097.0 : 10227.0) * kOneDay;
  bool leap;
  const long fromYear = std::clamp(_zone->getStartYear(), 1L, 200000L) + 1;
  const double low = std::max(gregorian ? cutoverHigh : EARLIEST_SUPPORTED_MILLIS,
                              julianDayToMillis(computeJulianDayOfYear(gregorian, fromYear, leap) + 1) + 2 * kOneDay);
  const double high = gregorian ? LATEST_SUPPORTED_MILLIS : cutoverLow;
  const double end = direction > 0 ? std::min(when, high) : std::max(when, low);
  if (ms < low || ms > high || (end - ms) * direction < 4 * period) return 0;

  KyDateErrorCode scratchStatus = kNoError;
  KyGregorianCalendar scratch(*_zone, static_cast<const KyLocale*>(nullptr), scratchStatus);
  KyTimeZone* zone = new (std::nothrow) KyTimeZone(*_zone);  // the rule itself, not a default clone
  if (zone == nullptr) return 0;
  scratch.adoptTimeZone(zone);
  scratch._firstDayOfWeek = _firstDayOfWeek;
  scratch._minimalDaysInFirstWeek = _minimalDaysInFirstWeek;
  scratch._lenient = _lenient;
  scratch._gregorianCutover = _gregorianCutover;
  scratch._normalizedGregorianCutover = _normalizedGregorianCutover;
  scratch._gregorianCutoverYear = _gregorianCutoverYear;
  scratch.setTime(ms, scratchStatus);

  double start = ms;
  long before = 0;  // steps from ms to start
  // The scratch walk is the walk itself, so what it covered is kept even without a jump.
  auto settle = [&]() -> long {
    if (before == 0) return 0;
    setTime(start, status);
    return KyDateFailed(status) ? 0 : static_cast<long>(direction * before);
  };
  for (int round = 0; round < 2; ++round) {
    const double target = start + direction * period;
    double last = start;
    long steps = 0;
    for (;;) {
      scratch.add(field, static_cast<long>(direction), scratchStatus);
      const double next = scratch.getTime(scratchStatus);
      if (KyDateFailed(scratchStatus) || (next - last) * direction <= 0) return settle();
      if ((next - target) * direction > 0) break;
      ++steps;
      last = next;
    }
    if (last == target) {
      const double cycles = std::floor((end - start) * direction / period) - 1;
      if (cycles < 1) return settle();
      setTime(start + direction * cycles * period, status);
      return KyDateFailed(status) ? 0 : static_cast<long>(direction * (before + cycles * steps));
    }
    scratch.setTime(last, scratchStatus);
    start = last;
    before += steps;
  }
  return settle();
}
