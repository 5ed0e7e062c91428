// KyCalendar: a point in time held in two linked forms, milliseconds since 1 January
// 1970 UTC (a double) and 19 calendar fields, kept in step lazily. Per-field stamps tell
// which of several conflicting fields the caller set last: 0 unset, 1 computed, 2 and up
// set by the caller. The translation both ways, add, roll and the field limits belong
// to the derived calendar (KyGregorianCalendar, which every createInstance builds).
//
// Ownership: a calendar owns its zone (always a clone of what it is given); the shared
// default zone is never deleted. Failure: through the KyDateErrorCode passed in and out;
// nothing throws. Copying is lopsided on purpose: the new object's (zeroed) fields and
// stamps go into the const source, the source's time and settings into the new object.
// Threads: reads such as get change the object; one calendar belongs to one thread.
#ifndef KYBASE_CALENDAR_CALENDAR_H
#define KYBASE_CALENDAR_CALENDAR_H

#include <climits>
#include <cstdint>

#include "kybase/calendar/date_status.h"
#include "kybase/calendar/time_zone.h"
#include "kybase/core/export.h"
#include "kybase/locale/days_of_week.h"

class KyLocale;

class KY_EXPORT KyCalendar : public KyDaysOfWeek {
 public:
  static constexpr int kFieldCount = 19;

  virtual ~KyCalendar();
  virtual KyCalendar* clone() const = 0;
  virtual bool operator==(const KyCalendar& other) const;
  virtual bool equivalentTo(const KyCalendar& other) const;
  virtual void add(KyDateFields field, long amount, KyDateErrorCode& status) = 0;
  virtual void roll(KyDateFields field, long amount, KyDateErrorCode& status) = 0;
  // Whole steps of `field` from the time held to `when`, signed; the calendar moves to
  // the last step not past `when`. A step that cannot move the time fails the walk.
  virtual long fieldDifference(double when, KyDateFields field, KyDateErrorCode& status);
  virtual bool inDaylightTime(KyDateErrorCode& status) const = 0;
  virtual long getMinimum(KyDateFields field) const = 0;
  virtual long getMaximum(KyDateFields field) const = 0;
  virtual long getGreatestMinimum(KyDateFields field) const = 0;
  virtual long getLeastMaximum(KyDateFields field) const = 0;

  // Each returns a KyGregorianCalendar at the present moment for the caller to delete,
  // or null. A zone given by pointer is cloned: after a success it is still the
  // caller's; after a failure it has been deleted.
  static KyCalendar* createInstance(KyDateErrorCode& status);
  static KyCalendar* createInstance(const KyLocale& locale, KyDateErrorCode& status);
  static KyCalendar* createInstance(const KyTimeZone& zone, KyDateErrorCode& status);
  static KyCalendar* createInstance(const KyTimeZone& zone, const KyLocale& locale, KyDateErrorCode& status);
  static KyCalendar* createInstance(KyTimeZone* zone, KyDateErrorCode& status);
  static KyCalendar* createInstance(KyTimeZone* zone, const KyLocale& locale, KyDateErrorCode& status);

  double getTime(KyDateErrorCode& status) const {
    if (KyDateFailed(status)) return 0.0;
    if (!_isTimeSet) updateTime(status);
    return _time;
  }
  // Refuses NaN, infinities and times outside the supported range (kIllegalArgument).
  void setTime(double time, KyDateErrorCode& status);
  // Reads of an index outside 0..18 give 0.
  long get(KyDateFields field, KyDateErrorCode& status) const;
  // Values beyond 32 bits are clamped to the nearest 32-bit value; an index outside
  // 0..18 is ignored.
  void set(KyDateFields field, long value) {
    if (!validField(field)) return;
    if (_nextStamp == INT32_MAX) renumberStamps();
    _fields[field] = static_cast<std::int32_t>(value < INT32_MIN ? INT32_MIN : value > INT32_MAX ? INT32_MAX : value);
    _stamp[field] = _nextStamp++;
    _isSet[field] = true;
    _isTimeSet = false;
    _areFieldsSet = false;
  }
  void set(long year, long month, long day);
  void set(long year, long month, long day, long hour, long minute);
  void set(long year, long month, long day, long hour, long minute, long second);
  void clear();
  void clear(KyDateFields field);
  bool isSet(KyDateFields field) const;
  static double getNow();

  bool operator!=(const KyCalendar& other) const { return !(*this == other); }
  bool equals(const KyCalendar& other, KyDateErrorCode& status) const;
  bool before(const KyCalendar& other, KyDateErrorCode& status) const;
  bool after(const KyCalendar& other, KyDateErrorCode& status) const;

  EDaysOfWeek getFirstDayOfWeek() const { return _firstDayOfWeek; }
  void setFirstDayOfWeek(EDaysOfWeek value) { _firstDayOfWeek = value; }
  unsigned char getMinimalDaysInFirstWeek() const { return _minimalDaysInFirstWeek; }
  void setMinimalDaysInFirstWeek(unsigned char value) { _minimalDaysInFirstWeek = value; }
  bool isLenient() const { return _lenient; }
  void setLenient(bool lenient) { _lenient = lenient; }

  const KyTimeZone& getTimeZone() const { return *_zone; }
  void adoptTimeZone(KyTimeZone* zone);
  void setTimeZone(const KyTimeZone& zone);
  // The caller's to delete. When the calendar holds the shared zone, a clone of it.
  KyTimeZone* orphanTimeZone();

  void roll(KyDateFields field, bool up, KyDateErrorCode& status) { roll(field, up ? 1L : -1L, status); }
  // An int amount would be ambiguous between the two forms above.
  void roll(KyDateFields field, int amount, KyDateErrorCode& status) { roll(field, static_cast<long>(amount), status); }

  long getActualMaximum(KyDateFields field, KyDateErrorCode& status) const;
  long getActualMinimum(KyDateFields field, KyDateErrorCode& status) const;

 protected:
  explicit KyCalendar(KyDateErrorCode& status);
  KyCalendar(const KyTimeZone& zone, const KyLocale& locale, KyDateErrorCode& status);
  KyCalendar(KyTimeZone* zone, const KyLocale& locale, KyDateErrorCode& status);
  // The same with a locale that may be null: weeks then start on Monday, minimum 0.
  KyCalendar(const KyTimeZone& zone, const KyLocale* locale, KyDateErrorCode& status);
  KyCalendar(KyTimeZone* zone, const KyLocale* locale, KyDateErrorCode& status);
  KyCalendar(const KyCalendar& source);
  KyCalendar& operator=(const KyCalendar& source);

  virtual void computeTime(KyDateErrorCode& status) = 0;
  virtual void computeFields(KyDateErrorCode& status) = 0;

  double getTimeInMillis(KyDateErrorCode& status) const { return getTime(status); }
  void setTimeInMillis(double time, KyDateErrorCode& status) { setTime(time, status); }
  long internalGet(KyDateFields field) const { return validField(field) ? _fields[field] : 0; }
  void internalSet(KyDateFields field, long value) {
    if (validField(field)) _fields[field] = static_cast<std::int32_t>(value < INT32_MIN ? INT32_MIN : value > INT32_MAX ? INT32_MAX : value);
  }
  double internalGetTime() const { return _time; }
  void internalSetTime(double time) { _time = time; }
  std::int32_t stampOf(KyDateFields field) const { return _stamp[field]; }
  // Marks every field computed (stamp 1, flag set).
  void markAllComputed();
  void complete(KyDateErrorCode& status) const;
  // Finite and within the range the derived calendar supports.
  virtual bool isSupportedTime(double time) const = 0;
  // For fieldDifference: moves the calendar toward `when` by as many steps of `field`
  // as provably land where that many single add steps would, stopping at least one
  // step short of `when`, and returns the signed count (0: walk step by step).
  virtual long skipSteps(double when, KyDateFields field, KyDateErrorCode& status);
  static bool validField(int field) { return field >= 0 && field < kFieldCount; }

  mutable bool _isTimeSet = false;
  mutable bool _areFieldsSet = false;
  mutable bool _areAllFieldsSet = false;
  mutable std::int32_t _fields[kFieldCount] = {};
  mutable bool _isSet[kFieldCount] = {};
  mutable std::int32_t _stamp[kFieldCount] = {};
  std::int32_t _nextStamp = 2;
  mutable double _time = 0.0;
  bool _lenient = true;
  KyTimeZone* _zone = nullptr;
  EDaysOfWeek _firstDayOfWeek = kMonday;
  unsigned char _minimalDaysInFirstWeek = 0;

 private:
  void updateTime(KyDateErrorCode& status) const;
  void setWeekCountData(const KyLocale* locale);
  void initZone(const KyTimeZone* zone, KyDateErrorCode& status);
  void renumberStamps();
  bool ownsZone() const { return _zone != nullptr && _zone != KyTimeZone::createDefault(); }
};

#endif  // KYBASE_CALENDAR_CALENDAR_H
