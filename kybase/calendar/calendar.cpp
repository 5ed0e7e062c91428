#include "kybase/calendar/calendar.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <ctime>
#include <new>

#include "kybase/calendar/gregorian_calendar.h"
#include "kybase/locale/kylocale.h"

namespace {

// The bytes of the stamp table that a copy carries: four stamps and the low three
// bytes of the fifth.
constexpr std::size_t kCopiedStampBytes = 19;

template <typename Calendar>
KyCalendar* Finish(Calendar* calendar, KyDateErrorCode& status) {
  if (calendar != nullptr && KyDateFailed(status)) {
    delete calendar;
    return nullptr;
  }
  return calendar;
}

// The zone handed to a failed createInstance is deleted, never the shared one.
void DropZone(KyTimeZone* zone) {
  if (zone != KyTimeZone::createDefault()) delete zone;
}

}  // namespace

KyCalendar::KyCalendar(KyDateErrorCode& status) {
  status = kNoError;
  _zone = KyTimeZone::createDefault();
  setWeekCountData(KyLocale::Get(false, nullptr));
}

KyCalendar::KyCalendar(const KyTimeZone& zone, const KyLocale& locale, KyDateErrorCode& status)
    : KyCalendar(zone, &locale, status) {}

KyCalendar::KyCalendar(KyTimeZone* zone, const KyLocale& locale, KyDateErrorCode& status)
    : KyCalendar(zone, &locale, status) {}

KyCalendar::KyCalendar(const KyTimeZone& zone, const KyLocale* locale, KyDateErrorCode& status) {
  status = kNoError;
  initZone(&zone, status);
  setWeekCountData(locale);
}

KyCalendar::KyCalendar(KyTimeZone* zone, const KyLocale* locale, KyDateErrorCode& status) {
  status = kNoError;
  if (zone == nullptr) {
    // The calendar still needs a zone to be safe to use: the shared one.
    status = kIllegalArgument;
    _zone = KyTimeZone::createDefault();
    return;
  }
  initZone(zone, status);
  setWeekCountData(locale);
}

KyCalendar::KyCalendar(const KyCalendar& source) { *this = source; }

KyCalendar& KyCalendar::operator=(const KyCalendar& source) {
  if (this == &source) return *this;
  std::memcpy(source._fields, _fields, sizeof _fields);
  std::memcpy(source._isSet, _isSet, sizeof _isSet);
  std::memcpy(source._stamp, _stamp, kCopiedStampBytes);
  _time = source._time;
  _isTimeSet = source._isTimeSet;
  _areAllFieldsSet = source._areAllFieldsSet;
  _areFieldsSet = source._areFieldsSet;
  _lenient = source._lenient;
  if (ownsZone()) delete _zone;
  _zone = source._zone->clone();
  if (_zone == nullptr) _zone = KyTimeZone::createDefault();
  _firstDayOfWeek = source._firstDayOfWeek;
  _minimalDaysInFirstWeek = source._minimalDaysInFirstWeek;
  _nextStamp = source._nextStamp;
  return *this;
}

KyCalendar::~KyCalendar() {
  if (ownsZone()) delete _zone;
}

void KyCalendar::initZone(const KyTimeZone* zone, KyDateErrorCode& status) {
  _zone = zone->clone();
  if (_zone == nullptr) {
    status = kMemoryAllocationError;
    _zone = KyTimeZone::createDefault();
  }
}

void KyCalendar::setWeekCountData(const KyLocale* locale) {
  if (locale == nullptr) return;  // Monday and 0 stay
  _firstDayOfWeek = locale->getFirstDayOfWeek();
  _minimalDaysInFirstWeek = locale->getMinimalDaysInFirstWeek();
}

KyCalendar* KyCalendar::createInstance(KyDateErrorCode& status) {
  if (KyDateFailed(status)) return nullptr;
  return Finish(new (std::nothrow) KyGregorianCalendar(status), status);
}

KyCalendar* KyCalendar::createInstance(const KyLocale& locale, KyDateErrorCode& status) {
  if (KyDateFailed(status)) return nullptr;
  return Finish(new (std::nothrow) KyGregorianCalendar(*KyTimeZone::createDefault(), &locale, status), status);
}

KyCalendar* KyCalendar::createInstance(const KyTimeZone& zone, KyDateErrorCode& status) {
  if (KyDateFailed(status)) return nullptr;
  return Finish(new (std::nothrow) KyGregorianCalendar(zone, KyLocale::Get(false, nullptr), status), status);
}

KyCalendar* KyCalendar::createInstance(const KyTimeZone& zone, const KyLocale& locale, KyDateErrorCode& status) {
  if (KyDateFailed(status)) return nullptr;
  return Finish(new (std::nothrow) KyGregorianCalendar(zone, &locale, status), status);
}

KyCalendar* KyCalendar::createInstance(KyTimeZone* zone, KyDateErrorCode& status) {
  if (KyDateFailed(status)) {
    DropZone(zone);
    return nullptr;
  }
  auto* calendar = new (std::nothrow) KyGregorianCalendar(zone, KyLocale::Get(false, nullptr), status);
  if (calendar == nullptr) status = kMemoryAllocationError;
  if (KyDateFailed(status)) DropZone(zone);
  return Finish(calendar, status);
}

KyCalendar* KyCalendar::createInstance(KyTimeZone* zone, const KyLocale& locale, KyDateErrorCode& status) {
  if (KyDateFailed(status)) {
    DropZone(zone);
    return nullptr;
  }
  auto* calendar = new (std::nothrow) KyGregorianCalendar(zone, &locale, status);
  if (calendar == nullptr) status = kMemoryAllocationError;
  if (KyDateFailed(status)) DropZone(zone);
  return Finish(calendar, status);
}

void KyCalendar::setTime(double time, KyDateErrorCode& status) {
  if (KyDateFailed(status)) return;
  if (!isSupportedTime(time)) {
    status = kIllegalArgument;
    return;
  }
  _isTimeSet = true;
  _areFieldsSet = false;
  _time = time;
  computeFields(status);
  _areFieldsSet = true;
  _areAllFieldsSet = true;
}

long KyCalendar::get(KyDateFields field, KyDateErrorCode& status) const {
  if (KyDateFailed(status)) return 0;
  complete(status);
  if (KyDateFailed(status) || !validField(field)) return 0;
  return _fields[field];
}

// Caller stamps keep their order (and their ties) under new numbers from 2 up, so
// that the counter never overflows.
void KyCalendar::renumberStamps() {
  std::int32_t order[kFieldCount];
  int count = 0;
  for (std::int32_t stamp : _stamp)
    if (stamp >= 2) order[count++] = stamp;
  std::sort(order, order + count);
  count = static_cast<int>(std::unique(order, order + count) - order);
  for (std::int32_t& stamp : _stamp)
    if (stamp >= 2) stamp = static_cast<std::int32_t>(2 + (std::lower_bound(order, order + count, stamp) - order));
  _nextStamp = 2 + count;
}

void KyCalendar::set(long year, long month, long day) {
  set(kYear, year);
  set(kMonth, month);
  set(kDayOfMonth, day);
}

void KyCalendar::set(long year, long month, long day, long hour, long minute) {
  set(year, month, day);
  set(kHourOfDay, hour);
  set(kMinute, minute);
}

void KyCalendar::set(long year, long month, long day, long hour, long minute, long second) {
  set(year, month, day, hour, minute);
  set(kSecond, second);
}

void KyCalendar::clear() {
  std::memset(_fields, 0, sizeof _fields);
  std::memset(_isSet, 0, sizeof _isSet);
  std::memset(_stamp, 0, sizeof _stamp);
  _isTimeSet = false;
  _areFieldsSet = false;
  _areAllFieldsSet = false;
}

void KyCalendar::clear(KyDateFields field) {
  if (!validField(field)) return;
  _fields[field] = 0;
  _isSet[field] = false;
  _stamp[field] = 0;
  _isTimeSet = false;
  _areFieldsSet = false;
  _areAllFieldsSet = false;
}

bool KyCalendar::isSet(KyDateFields field) const { return validField(field) && _stamp[field] != 0; }

double KyCalendar::getNow() { return static_cast<double>(std::time(nullptr)) * 1000.0; }

void KyCalendar::markAllComputed() {
  for (int i = 0; i < kFieldCount; ++i) {
    _stamp[i] = 1;
    _isSet[i] = true;
  }
}

void KyCalendar::updateTime(KyDateErrorCode& status) const {
  const_cast<KyCalendar*>(this)->computeTime(status);
  if (KyDateFailed(status)) return;
  if (_lenient || !_areAllFieldsSet) _areFieldsSet = false;
  _isTimeSet = true;
}

void KyCalendar::complete(KyDateErrorCode& status) const {
  if (!_isTimeSet) updateTime(status);
  if (!_areFieldsSet) {
    const_cast<KyCalendar*>(this)->computeFields(status);
    _areFieldsSet = true;
    _areAllFieldsSet = true;
  }
}

bool KyCalendar::operator==(const KyCalendar& other) const {
  KyDateErrorCode status = kNoError;
  const double mine = getTime(status);
  const double theirs = other.getTime(status);
  return mine == theirs && equivalentTo(other);
}

bool KyCalendar::equivalentTo(const KyCalendar& other) const {
  return _lenient == other._lenient && _firstDayOfWeek == other._firstDayOfWeek &&
         _minimalDaysInFirstWeek == other._minimalDaysInFirstWeek && *_zone == *other._zone;
}

bool KyCalendar::equals(const KyCalendar& other, KyDateErrorCode& status) const {
  if (this == &other) return true;
  const double mine = getTime(status);
  return mine == other.getTime(status);
}

bool KyCalendar::before(const KyCalendar& other, KyDateErrorCode& status) const {
  if (this == &other) return false;
  const double mine = getTime(status);
  return mine < other.getTime(status);
}

bool KyCalendar::after(const KyCalendar& other, KyDateErrorCode& status) const {
  if (this == &other) return false;
  const double mine = getTime(status);
  return mine > other.getTime(status);
}

void KyCalendar::adoptTimeZone(KyTimeZone* zone) {
  if (zone == nullptr) return;
  if (zone != _zone) {
    if (ownsZone()) delete _zone;
    _zone = zone;
  }
  _areFieldsSet = false;
}

void KyCalendar::setTimeZone(const KyTimeZone& zone) { adoptTimeZone(zone.clone()); }

KyTimeZone* KyCalendar::orphanTimeZone() {
  KyTimeZone* shared = KyTimeZone::createDefault();
  if (_zone == shared) return shared->clone();
  KyTimeZone* zone = _zone;
  _zone = shared;
  return zone;
}

long KyCalendar::getActualMaximum(KyDateFields field, KyDateErrorCode& status) const {
  if (KyDateFailed(status) || !validField(field)) return 0;
  const long low = getLeastMaximum(field);
  const long high = getMaximum(field);
  if (low == high) return low;
  KyCalendar* trial = clone();
  if (trial == nullptr) return low;
  trial->setLenient(true);
  if (field == kWeekOfYear || field == kWeekOfMonth) trial->set(kDayOfWeek, _firstDayOfWeek);
  long result = low;
  for (long value = low; value <= high; ++value) {
    trial->set(field, value);
    if (trial->get(field, status) != value) break;
    result = value;
  }
  delete trial;
  return result;
}

long KyCalendar::getActualMinimum(KyDateFields field, KyDateErrorCode& status) const {
  if (KyDateFailed(status) || !validField(field)) return 0;
  const long high = getGreatestMinimum(field);
  const long low = getMinimum(field);
  if (low == high) return low;
  KyCalendar* trial = clone();
  if (trial == nullptr) return high;
  trial->setLenient(true);
  long result = high;
  for (long value = high; value >= low; --value) {
    trial->set(field, value);
    if (trial->get(field, status) != value) break;
    result = value;
  }
  delete trial;
  return result;
}

long KyCalendar::skipSteps(double, KyDateFields, KyDateErrorCode&) { return 0; }

long KyCalendar::fieldDifference(double when, KyDateFields field, KyDateErrorCode& status) {
  if (KyDateFailed(status)) return 0;
  if (!validField(field) || !isSupportedTime(when)) {
    status = kIllegalArgument;
    return 0;
  }
  if (!_isTimeSet) updateTime(status);
  if (KyDateFailed(status)) return 0;
  double ms = _time;
  long count = 0;
  if (when == ms) return 0;
  const long direction = when > ms ? 1 : -1;
  for (;;) {
    const long skipped = skipSteps(when, field, status);
    if (skipped != 0) {
      count += skipped;
      ms = getTime(status);
    }
    add(field, direction, status);
    const double t = getTime(status);
    if (direction > 0 ? t > when : t < when) break;
    if (!KyDateFailed(status) && (direction > 0 ? t <= ms : t >= ms)) {
      // The step did not move the time toward `when` (an era at its clamp): the walk
      // would never end.
      setTime(ms, status);
      status = kIllegalArgument;
      return count;
    }
    count += direction;
    ms = t;
    if (KyDateFailed(status)) return count;
  }
  setTime(ms, status);
  return count;
}
