#include "kybase/calendar/time_unit.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include "kybase/calendar/gregorian_calendar.h"

namespace {

// Room for any label: "%f" of the largest double needs about 320 bytes.
constexpr std::size_t kLabelSize = 1024;

char* CopyLabel(const char* text) {
  char* result = new char[std::strlen(text) + 1];
  std::strcpy(result, text);
  return result;
}

char* Label(const char* format, long a, long b) {
  char buffer[kLabelSize];
  std::snprintf(buffer, sizeof buffer, format, a, b);
  return CopyLabel(buffer);
}

char* Label(const char* format, long a) {
  char buffer[kLabelSize];
  std::snprintf(buffer, sizeof buffer, format, a);
  return CopyLabel(buffer);
}

char* Number(double value) {
  char buffer[kLabelSize];
  std::snprintf(buffer, sizeof buffer, "%f", value);
  return CopyLabel(buffer);
}

// The fields of `time` in a fresh default calendar; zeros when the time is refused.
struct Fields {
  explicit Fields(double time) : calendar(status) { calendar.setTime(time, status); }
  long operator[](KyDateFields field) { return calendar.get(field, status); }
  KyDateErrorCode status = kNoError;
  KyGregorianCalendar calendar;
};

void Add(KyCalendar& calendar, KyDateFields field, long amount) {
  KyDateErrorCode status = kNoError;
  calendar.add(field, amount, status);
}

void SnapBelowMinute(KyCalendar& calendar) {
  calendar.set(kMillisecond, 0);
  calendar.set(kSecond, 0);
}

void SnapBelowHour(KyCalendar& calendar) {
  SnapBelowMinute(calendar);
  calendar.set(kMinute, 0);
}

// kHour, not kHourOfDay: with kAmPm left alone an afternoon snaps to 12:00.
void SnapBelowDay(KyCalendar& calendar) {
  SnapBelowHour(calendar);
  calendar.set(kHour, 0);
}

long Quarter(long month) { return month < 3 ? 1 : month < 6 ? 2 : month < 9 ? 3 : 4; }

std::vector<KyTimeUnit**>& KeptArrays() {
  static auto* arrays = new std::vector<KyTimeUnit**>();
  return *arrays;
}

}  // namespace

KyTimeUnit::~KyTimeUnit() = default;

void KyTimeUnitMilliSecond::snapToPreviousTimeUnit(KyCalendar&) const {}
void KyTimeUnitMilliSecond::addTimeUnit(KyCalendar& calendar) const { Add(calendar, kMillisecond, 1); }
double KyTimeUnitMilliSecond::getMillis() const { return 1.0; }
char* KyTimeUnitMilliSecond::toString(double time) const { return Number(time); }
KyTimeUnit* KyTimeUnitMilliSecond::copy() const { return new (std::nothrow) KyTimeUnitMilliSecond(*this); }

void KyTimeUnitSecond::snapToPreviousTimeUnit(KyCalendar& calendar) const { calendar.set(kMillisecond, 0); }
void KyTimeUnitSecond::addTimeUnit(KyCalendar& calendar) const { Add(calendar, kSecond, 1); }
double KyTimeUnitSecond::getMillis() const { return 1000.0; }
char* KyTimeUnitSecond::toString(double time) const { return Number(time / getMillis()); }
KyTimeUnit* KyTimeUnitSecond::copy() const { return new (std::nothrow) KyTimeUnitSecond(*this); }

void KyTimeUnitMinute::snapToPreviousTimeUnit(KyCalendar& calendar) const { SnapBelowMinute(calendar); }
void KyTimeUnitMinute::addTimeUnit(KyCalendar& calendar) const { Add(calendar, kMinute, 1); }
double KyTimeUnitMinute::getMillis() const { return 60000.0; }
char* KyTimeUnitMinute::toString(double time) const { return Number(time / getMillis()); }
KyTimeUnit* KyTimeUnitMinute::copy() const { return new (std::nothrow) KyTimeUnitMinute(*this); }

void KyTimeUnitHour::snapToPreviousTimeUnit(KyCalendar& calendar) const { SnapBelowHour(calendar); }
void KyTimeUnitHour::addTimeUnit(KyCalendar& calendar) const { Add(calendar, kHour, 1); }
double KyTimeUnitHour::getMillis() const { return 3600000.0; }
char* KyTimeUnitHour::toString(double time) const {
  Fields fields(time);
  return Label("%ld:%ld", fields[kHourOfDay], fields[kMinute]);
}
KyTimeUnit* KyTimeUnitHour::copy() const { return new (std::nothrow) KyTimeUnitHour(*this); }

void KyTimeUnitDay::snapToPreviousTimeUnit(KyCalendar& calendar) const { SnapBelowDay(calendar); }
void KyTimeUnitDay::addTimeUnit(KyCalendar& calendar) const { Add(calendar, kDayOfMonth, 1); }
double KyTimeUnitDay::getMillis() const { return 86400000.0; }
char* KyTimeUnitDay::toString(double time) const {
  Fields fields(time);
  return Label("%ld/%2.2ld", fields[kDayOfMonth], fields[kMonth] + 1);
}
KyTimeUnit* KyTimeUnitDay::copy() const { return new (std::nothrow) KyTimeUnitDay(*this); }

void KyTimeUnitWeek::snapToPreviousTimeUnit(KyCalendar& calendar) const {
  SnapBelowDay(calendar);
  calendar.set(kDayOfWeek, calendar.getFirstDayOfWeek());
}
void KyTimeUnitWeek::addTimeUnit(KyCalendar& calendar) const { Add(calendar, kDayOfMonth, 7); }
double KyTimeUnitWeek::getMillis() const { return 604800000.0; }
char* KyTimeUnitWeek::toString(double time) const {
  Fields fields(time);
  return Label("W%ld", fields[kWeekOfYear]);
}
KyTimeUnit* KyTimeUnitWeek::copy() const { return new (std::nothrow) KyTimeUnitWeek(*this); }

void KyTimeUnitMonth::snapToPreviousTimeUnit(KyCalendar& calendar) const {
  SnapBelowDay(calendar);
  calendar.set(kDayOfMonth, 1);
}
void KyTimeUnitMonth::addTimeUnit(KyCalendar& calendar) const { Add(calendar, kMonth, 1); }
double KyTimeUnitMonth::getMillis() const { return 2592000000.0; }
char* KyTimeUnitMonth::toString(double time) const {
  Fields fields(time);
  return Label("%2.2ld/%ld", fields[kMonth] + 1, fields[kYear]);
}
KyTimeUnit* KyTimeUnitMonth::copy() const { return new (std::nothrow) KyTimeUnitMonth(*this); }

void KyTimeUnitQuarter::snapToPreviousTimeUnit(KyCalendar& calendar) const {
  SnapBelowDay(calendar);
  calendar.set(kDayOfMonth, 1);
  KyDateErrorCode status = kNoError;
  calendar.set(kMonth, 3 * (Quarter(calendar.get(kMonth, status)) - 1));
}
void KyTimeUnitQuarter::addTimeUnit(KyCalendar& calendar) const { Add(calendar, kMonth, 3); }
double KyTimeUnitQuarter::getMillis() const { return 7776000000.0; }
char* KyTimeUnitQuarter::toString(double time) const {
  Fields fields(time);
  const long quarter = Quarter(fields[kMonth]);
  return Label("Q%ld %ld", quarter, fields[kYear]);
}
KyTimeUnit* KyTimeUnitQuarter::copy() const { return new (std::nothrow) KyTimeUnitQuarter(*this); }

void KyTimeUnitYear::snapToPreviousTimeUnit(KyCalendar& calendar) const {
  SnapBelowDay(calendar);
  calendar.set(kDayOfMonth, 1);
  calendar.set(kMonth, 1);  // February, as the unit always did
}
void KyTimeUnitYear::addTimeUnit(KyCalendar& calendar) const { Add(calendar, kYear, 1); }
double KyTimeUnitYear::getMillis() const { return 31536000000.0; }
char* KyTimeUnitYear::toString(double time) const {
  Fields fields(time);
  return Label("%ld", fields[kYear]);
}
KyTimeUnit* KyTimeUnitYear::copy() const { return new (std::nothrow) KyTimeUnitYear(*this); }

KyPredefinedUnits::KyPredefinedUnits() {
  _units = new (std::nothrow) KyTimeUnit*[_nbUnits];
  if (_units == nullptr) return;
  _units[0] = new (std::nothrow) KyTimeUnitMilliSecond();
  _units[1] = new (std::nothrow) KyTimeUnitSecond();
  _units[2] = new (std::nothrow) KyTimeUnitMinute();
  _units[3] = new (std::nothrow) KyTimeUnitHour();
  _units[4] = new (std::nothrow) KyTimeUnitDay();
  _units[5] = new (std::nothrow) KyTimeUnitWeek();
  _units[6] = new (std::nothrow) KyTimeUnitMonth();
  _units[7] = new (std::nothrow) KyTimeUnitQuarter();
  _units[8] = new (std::nothrow) KyTimeUnitYear();
  KeptArrays().push_back(_units);
}

KyTimeUnit* KyPredefinedUnits::operator[](unsigned long i) const {
  return _units != nullptr && i < _nbUnits ? _units[i] : nullptr;
}

KyTimeUnit* KyPredefinedUnits::getNextUnit() {
  if (_index > _nbUnits) return (*this)[_nbUnits - 1];
  return (*this)[_index++];
}
