// KyTimeUnit: one step of a time scale (a millisecond up to a year). A unit snaps a
// calendar back to the start of its own step, advances a calendar by one step, gives
// the average length of a step and labels an instant. Units hold no state; the
// calendar passed in is the caller's and must belong to the calling thread.
//
// Quirks kept on purpose: snaps from the day up clear kHour, not kHourOfDay, so an
// afternoon snaps to 12:00; the year snaps to 1 February; the week snap moves the day
// only when a week field was the last date field set. toString returns a new[] text
// for the caller to delete[]; copy() a new unit, or null when memory runs out. Status
// values inside the units are local: a failed add is silent.
//
// KyPredefinedUnits: the nine units, finest first, with a cursor. Copies share one
// array. The units live as long as the process (every array made stays listed, so
// nothing is lost to a leak checker); operator[] beyond 8 and the tenth getNextUnit
// give null.
#ifndef KYBASE_CALENDAR_TIME_UNIT_H
#define KYBASE_CALENDAR_TIME_UNIT_H

#include <cstdint>

#include "kybase/core/export.h"

class KyCalendar;

/// One step of a time scale; see the family page.
class KY_EXPORT KyTimeUnit {
 public:
  /// A unit; units hold no state.
  KyTimeUnit() = default;
  /// A unit; there is no state to copy.
  KyTimeUnit(const KyTimeUnit&) = default;
  /// There is no state to assign.
  KyTimeUnit& operator=(const KyTimeUnit&) = default;
  /// Nothing to free.
  virtual ~KyTimeUnit();
  /// Moves the calendar back to the start of the step it stands in.
  virtual void snapToPreviousTimeUnit(KyCalendar& calendar) const = 0;
  /// Moves the calendar one step on.
  virtual void addTimeUnit(KyCalendar& calendar) const = 0;
  /// The average length of a step in milliseconds.
  virtual double getMillis() const = 0;
  /// A label of `time` at this unit's grain, for the caller to delete[].
  virtual char* toString(double time) const = 0;
  /// A new unit of the same kind for the caller to delete; null when memory runs out.
  virtual KyTimeUnit* copy() const = 0;
};

/// Declares one concrete unit: the five operations of KyTimeUnit.
#define KY_DECLARE_TIME_UNIT(Name)                                \
  class KY_EXPORT Name : public KyTimeUnit {                      \
   public:                                                        \
    void snapToPreviousTimeUnit(KyCalendar& calendar) const override; \
    void addTimeUnit(KyCalendar& calendar) const override;        \
    double getMillis() const override;                            \
    char* toString(double time) const override;                   \
    KyTimeUnit* copy() const override;                            \
  }

/// The unit of one millisecond.
KY_DECLARE_TIME_UNIT(KyTimeUnitMilliSecond);
/// The unit of one second.
KY_DECLARE_TIME_UNIT(KyTimeUnitSecond);
/// The unit of one minute.
KY_DECLARE_TIME_UNIT(KyTimeUnitMinute);
/// The unit of one hour.
KY_DECLARE_TIME_UNIT(KyTimeUnitHour);
/// The unit of one day.
KY_DECLARE_TIME_UNIT(KyTimeUnitDay);
/// The unit of one week.
KY_DECLARE_TIME_UNIT(KyTimeUnitWeek);
/// The unit of one month.
KY_DECLARE_TIME_UNIT(KyTimeUnitMonth);
/// The unit of one quarter.
KY_DECLARE_TIME_UNIT(KyTimeUnitQuarter);
/// The unit of one year.
KY_DECLARE_TIME_UNIT(KyTimeUnitYear);

#undef KY_DECLARE_TIME_UNIT

/// The nine units, finest first, with a cursor; see the family page.
class KY_EXPORT KyPredefinedUnits {
 public:
  /// The units, the cursor on the first.
  KyPredefinedUnits();
  /// The unit `i` (0 the millisecond, 8 the year); null beyond 8.
  KyTimeUnit* operator[](unsigned long i) const;
  /// The units in order; the tenth call gives null, every later one the year.
  KyTimeUnit* getNextUnit();
  /// Puts the cursor back on the first unit.
  void reset() { _index = 0; }
  /// 9.
  static unsigned int nbUnits() { return _nbUnits; }

 private:
  static const unsigned int _nbUnits = 9;
  std::uint32_t _index = 0;
  KyTimeUnit** _units = nullptr;
};

#endif  // KYBASE_CALENDAR_TIME_UNIT_H
