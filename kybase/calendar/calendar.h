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

/// A point in time as milliseconds and as calendar fields; see the family page.
class KY_EXPORT KyCalendar : public KyDaysOfWeek {
 public:
  /// The number of calendar fields.
  static constexpr int kFieldCount = 19;

  /// Deletes the zone unless it is the shared default zone.
  virtual ~KyCalendar();
  /// A new calendar of the same kind, time and settings, for the caller to delete.
  virtual KyCalendar* clone() const = 0;
  /// True for the same time and equivalent settings.
  virtual bool operator==(const KyCalendar& other) const;
  /// True when leniency, week settings and zone agree; the time is not compared.
  virtual bool equivalentTo(const KyCalendar& other) const;
  /// Adds `amount` to `field`, carrying into the larger fields.
  virtual void add(KyDateFields field, long amount, KyDateErrorCode& status) = 0;
  /// Adds `amount` to `field` within its range, without touching the larger fields.
  virtual void roll(KyDateFields field, long amount, KyDateErrorCode& status) = 0;
  /// Whole steps of `field` from the time held to `when`, signed; the calendar moves to
  /// the last step not past `when`. A step that cannot move the time fails the walk.
  virtual long fieldDifference(double when, KyDateFields field, KyDateErrorCode& status);
  /// True when the time held falls in the zone's daylight time.
  virtual bool inDaylightTime(KyDateErrorCode& status) const = 0;
  /// The smallest value `field` ever takes.
  virtual long getMinimum(KyDateFields field) const = 0;
  /// The largest value `field` ever takes.
  virtual long getMaximum(KyDateFields field) const = 0;
  /// The largest of the field's minimum values over all dates.
  virtual long getGreatestMinimum(KyDateFields field) const = 0;
  /// The smallest of the field's maximum values over all dates.
  virtual long getLeastMaximum(KyDateFields field) const = 0;

  /// Each returns a KyGregorianCalendar at the present moment for the caller to delete,
  /// or null. A zone given by pointer is cloned: after a success it is still the
  /// caller's; after a failure it has been deleted.
  static KyCalendar* createInstance(KyDateErrorCode& status);
  /// \copydoc createInstance(KyDateErrorCode&)
  static KyCalendar* createInstance(const KyLocale& locale, KyDateErrorCode& status);
  /// \copydoc createInstance(KyDateErrorCode&)
  static KyCalendar* createInstance(const KyTimeZone& zone, KyDateErrorCode& status);
  /// \copydoc createInstance(KyDateErrorCode&)
  static KyCalendar* createInstance(const KyTimeZone& zone, const KyLocale& locale, KyDateErrorCode& status);
  /// \copydoc createInstance(KyDateErrorCode&)
  static KyCalendar* createInstance(KyTimeZone* zone, KyDateErrorCode& status);
  /// \copydoc createInstance(KyDateErrorCode&)
  static KyCalendar* createInstance(KyTimeZone* zone, const KyLocale& locale, KyDateErrorCode& status);

  /// The time in milliseconds since 1 January 1970 UTC, computed from the fields if they
  /// changed; 0 for a failed status.
  double getTime(KyDateErrorCode& status) const {
    if (KyDateFailed(status)) return 0.0;
    if (!_isTimeSet) updateTime(status);
    return _time;
  }
  /// Refuses NaN, infinities and times outside the supported range (kIllegalArgument).
  void setTime(double time, KyDateErrorCode& status);
  /// Reads of an index outside 0..18 give 0.
  long get(KyDateFields field, KyDateErrorCode& status) const;
  /// Values beyond 32 bits are clamped to the nearest 32-bit value; an index outside
  /// 0..18 is ignored.
  void set(KyDateFields field, long value) {
    if (!validField(field)) return;
    if (_nextStamp == INT32_MAX) renumberStamps();
    _fields[field] = static_cast<std::int32_t>(value < INT32_MIN ? INT32_MIN : value > INT32_MAX ? INT32_MAX : value);
    _stamp[field] = _nextStamp++;
    _isSet[field] = true;
    _isTimeSet = false;
    _areFieldsSet = false;
  }
  /// Sets year, month (from 0) and day of the month.
  void set(long year, long month, long day);
  /// Sets the date, the hour of the day and the minute.
  void set(long year, long month, long day, long hour, long minute);
  /// Sets the date, the hour of the day, the minute and the second.
  void set(long year, long month, long day, long hour, long minute, long second);
  /// Clears every field and its stamp; the time is computed again from nothing.
  void clear();
  /// Clears one field and its stamp.
  void clear(KyDateFields field);
  /// True when the field was set or computed.
  bool isSet(KyDateFields field) const;
  /// The present moment in milliseconds, in whole seconds.
  static double getNow();

  /// The opposite of operator==.
  bool operator!=(const KyCalendar& other) const { return !(*this == other); }
  /// True when both hold the same time.
  bool equals(const KyCalendar& other, KyDateErrorCode& status) const;
  /// True when this time is earlier than the other's.
  bool before(const KyCalendar& other, KyDateErrorCode& status) const;
  /// True when this time is later than the other's.
  bool after(const KyCalendar& other, KyDateErrorCode& status) const;

  /// The day that starts a week.
  EDaysOfWeek getFirstDayOfWeek() const { return _firstDayOfWeek; }
  /// Sets the day that starts a week.
  void setFirstDayOfWeek(EDaysOfWeek value) { _firstDayOfWeek = value; }
  /// The days of a year's first week that must fall in the year.
  unsigned char getMinimalDaysInFirstWeek() const { return _minimalDaysInFirstWeek; }
  /// Sets the days of a year's first week that must fall in the year.
  void setMinimalDaysInFirstWeek(unsigned char value) { _minimalDaysInFirstWeek = value; }
  /// True when out-of-range fields carry over instead of failing.
  bool isLenient() const { return _lenient; }
  /// Chooses whether out-of-range fields carry over.
  void setLenient(bool lenient) { _lenient = lenient; }

  /// The zone the fields are computed in.
  const KyTimeZone& getTimeZone() const { return *_zone; }
  /// Takes ownership of `zone` (null is ignored) in place of the zone held.
  void adoptTimeZone(KyTimeZone* zone);
  /// Takes a clone of `zone`.
  void setTimeZone(const KyTimeZone& zone);
  /// The caller's to delete. When the calendar holds the shared zone, a clone of it.
  KyTimeZone* orphanTimeZone();

  /// Rolls one step up or down.
  void roll(KyDateFields field, bool up, KyDateErrorCode& status) { roll(field, up ? 1L : -1L, status); }
  /// An int amount would be ambiguous between the two forms above.
  void roll(KyDateFields field, int amount, KyDateErrorCode& status) { roll(field, static_cast<long>(amount), status); }

  /// The largest value `field` takes around the date held, found on a lenient clone.
  long getActualMaximum(KyDateFields field, KyDateErrorCode& status) const;
  /// The smallest value `field` takes around the date held, found on a lenient clone.
  long getActualMinimum(KyDateFields field, KyDateErrorCode& status) const;

 protected:
  /// A calendar in the shared default zone with week settings from the default locale.
  explicit KyCalendar(KyDateErrorCode& status);
  /// A calendar in a clone of `zone`, with the locale's week settings.
  KyCalendar(const KyTimeZone& zone, const KyLocale& locale, KyDateErrorCode& status);
  /// A calendar in a clone of `zone` (see createInstance for who owns it), with the
  /// locale's week settings.
  KyCalendar(KyTimeZone* zone, const KyLocale& locale, KyDateErrorCode& status);
  /// The same with a locale that may be null: weeks then start on Monday, minimum 0.
  KyCalendar(const KyTimeZone& zone, const KyLocale* locale, KyDateErrorCode& status);
  /// \copydoc KyCalendar(const KyTimeZone&, const KyLocale*, KyDateErrorCode&)
  KyCalendar(KyTimeZone* zone, const KyLocale* locale, KyDateErrorCode& status);
  /// The lopsided copy of the family page.
  KyCalendar(const KyCalendar& source);
  /// The lopsided assignment of the family page.
  KyCalendar& operator=(const KyCalendar& source);

  /// Computes the time from the fields that won by their stamps.
  virtual void computeTime(KyDateErrorCode& status) = 0;
  /// Computes every field from the time.
  virtual void computeFields(KyDateErrorCode& status) = 0;

  /// The same as getTime().
  double getTimeInMillis(KyDateErrorCode& status) const { return getTime(status); }
  /// The same as setTime().
  void setTimeInMillis(double time, KyDateErrorCode& status) { setTime(time, status); }
  /// The field as stored, without computing; 0 for an index outside 0..18.
  long internalGet(KyDateFields field) const { return validField(field) ? _fields[field] : 0; }
  /// Stores a field, clamped to 32 bits, without a stamp; an index outside 0..18 is
  /// ignored.
  void internalSet(KyDateFields field, long value) {
    if (validField(field)) _fields[field] = static_cast<std::int32_t>(value < INT32_MIN ? INT32_MIN : value > INT32_MAX ? INT32_MAX : value);
  }
  /// The time as stored, without computing.
  double internalGetTime() const { return _time; }
  /// Stores the time, without computing.
  void internalSetTime(double time) { _time = time; }
  /// The stamp of a field: 0 unset, 1 computed, 2 and up set by the caller.
  std::int32_t stampOf(KyDateFields field) const { return _stamp[field]; }
  /// Marks every field computed (stamp 1, flag set).
  void markAllComputed();
  /// Brings time and fields in step.
  void complete(KyDateErrorCode& status) const;
  /// Finite and within the range the derived calendar supports.
  virtual bool isSupportedTime(double time) const = 0;
  /// For fieldDifference: moves the calendar toward `when` by as many steps of `field`
  /// as provably land where that many single add steps would, stopping at least one
  /// step short of `when`, and returns the signed count (0: walk step by step).
  virtual long skipSteps(double when, KyDateFields field, KyDateErrorCode& status);
  /// True for a field index in 0..18.
  static bool validField(int field) { return field >= 0 && field < kFieldCount; }

  /// True when the time is in step with the fields.
  mutable bool _isTimeSet = false;
  /// True when the fields are in step with the time.
  mutable bool _areFieldsSet = false;
  /// True when every field was computed.
  mutable bool _areAllFieldsSet = false;
  /// The field values.
  mutable std::int32_t _fields[kFieldCount] = {};
  /// Which fields hold a value.
  mutable bool _isSet[kFieldCount] = {};
  /// The stamp of each field.
  mutable std::int32_t _stamp[kFieldCount] = {};
  /// The stamp the next set() gives.
  std::int32_t _nextStamp = 2;
  /// The time in milliseconds.
  mutable double _time = 0.0;
  /// Whether out-of-range fields carry over.
  bool _lenient = true;
  /// The zone; the shared default zone or one the calendar owns.
  KyTimeZone* _zone = nullptr;
  /// The day that starts a week.
  EDaysOfWeek _firstDayOfWeek = kMonday;
  /// The days of a year's first week that must fall in the year.
  unsigned char _minimalDaysInFirstWeek = 0;

 private:
  void updateTime(KyDateErrorCode& status) const;
  void setWeekCountData(const KyLocale* locale);
  void initZone(const KyTimeZone* zone, KyDateErrorCode& status);
  void renumberStamps();
  bool ownsZone() const { return _zone != nullptr && _zone != KyTimeZone::createDefault(); }
};

#endif  // KYBASE_CALENDAR_CALENDAR_H
