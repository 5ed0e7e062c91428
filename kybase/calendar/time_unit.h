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

class KY_EXPORT KyTimeUnit {
 public:
  KyTimeUnit() = default;
  KyTimeUnit(const KyTimeUnit&) = default;
  KyTimeUnit& operator=(const KyTimeUnit&) = default;
  virtual ~KyTimeUnit();
  virtual void snapToPreviousTimeUnit(KyCalendar& calendar) const = 0;
  virtual void addTimeUnit(KyCalendar& calendar) const = 0;
  virtual double getMillis() const = 0;
  virtual char* toString(double time) const = 0;
  virtual KyTimeUnit* copy() const = 0;
};

#define KY_DECLARE_TIME_UNIT(Name)                                \
  class KY_EXPORT Name : public KyTimeUnit {                      \
   public:                                                        \
    void snapToPreviousTimeUnit(KyCalendar& calendar) const override; \
    void addTimeUnit(KyCalendar& calendar) const override;        \
    double getMillis() const override;                            \
    char* toString(double time) const override;                   \
    KyTimeUnit* copy() const override;                            \
  }

KY_DECLARE_TIME_UNIT(KyTimeUnitMilliSecond);
KY_DECLARE_TIME_UNIT(KyTimeUnitSecond);
KY_DECLARE_TIME_UNIT(KyTimeUnitMinute);
KY_DECLARE_TIME_UNIT(KyTimeUnitHour);
KY_DECLARE_TIME_UNIT(KyTimeUnitDay);
KY_DECLARE_TIME_UNIT(KyTimeUnitWeek);
KY_DECLARE_TIME_UNIT(KyTimeUnitMonth);
KY_DECLARE_TIME_UNIT(KyTimeUnitQuarter);
KY_DECLARE_TIME_UNIT(KyTimeUnitYear);

#undef KY_DECLARE_TIME_UNIT

class KY_EXPORT KyPredefinedUnits {
 public:
  KyPredefinedUnits();
  KyTimeUnit* operator[](unsigned long i) const;
  // The units in order; the tenth call gives null, every later one the year.
  KyTimeUnit* getNextUnit();
  void reset() { _index = 0; }
  static unsigned int nbUnits() { return _nbUnits; }

 private:
  static const unsigned int _nbUnits = 9;
  std::uint32_t _index = 0;
  KyTimeUnit** _units = nullptr;
};

#endif  // KYBASE_CALENDAR_TIME_UNIT_H
