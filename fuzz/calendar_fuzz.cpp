// Calendar operations driven by bytes: each step reads an opcode, a field index (any
// int, negative and beyond 18 too), a long and a double (any bit pattern: NaN,
// infinities, huge values) and applies one operation to a calendar, its copy, a zone
// with or without a daylight rule, or a time unit. UBSan finds overflow, libFuzzer's
// timeout a walk that does not end. Checks: every read of a good status lies in the
// supported range, and a failed status makes every operation return nothing.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "kybase/calendar/gregorian_calendar.h"
#include "kybase/calendar/time_unit.h"
#include "kybase/locale/kylocale.h"

namespace {

void Check(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "calendar_fuzz: %s\n", what);
    std::abort();
  }
}

struct Input {
  const std::uint8_t* data;
  std::size_t size;
  template <typename T>
  T take() {
    T value{};
    const std::size_t n = size < sizeof value ? size : sizeof value;
    std::memcpy(&value, data, n);
    data += n;
    size -= n;
    return value;
  }
};

KyTimeZone* MakeZone(Input& in) {
  auto* zone = new KyTimeZone;
  if ((in.take<std::uint8_t>() & 1) == 0) return zone;
  zone->setRawOffset(in.take<std::int32_t>() % 50000000);
  zone->setDSTSavings(in.take<std::uint16_t>() * 100L);
  zone->setStartYear(in.take<std::int16_t>());
  auto mode = [&] { return static_cast<KyTimeZone::EMode>(in.take<std::uint8_t>() % 4 + 1); };
  auto timeMode = [&] { return static_cast<KyTimeZone::ETimeMode>(in.take<std::uint8_t>() % 3); };
  zone->setStartRule(in.take<std::uint8_t>() % 12, in.take<std::int8_t>() % 32, in.take<std::uint8_t>() % 7 + 1,
                     in.take<std::uint32_t>() % 86400001, mode(), timeMode());
  zone->setEndRule(in.take<std::uint8_t>() % 12, in.take<std::int8_t>() % 32, in.take<std::uint8_t>() % 7 + 1,
                   in.take<std::uint32_t>() % 86400001, mode(), timeMode());
  zone->setUseDaylight(true);
  return zone;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) return 0;
  static KyLocale* locale = KySetLocale("C");
  (void)locale;
  Input in{data, size};
  KyDateErrorCode status = kNoError;
  KyGregorianCalendar calendar(1970, 0, 1, status);
  calendar.adoptTimeZone(MakeZone(in));
  calendar.setFirstDayOfWeek(static_cast<KyCalendar::EDaysOfWeek>(in.take<std::uint8_t>() % 7 + 1));
  calendar.setMinimalDaysInFirstWeek(in.take<std::uint8_t>() % 9);
  KyPredefinedUnits units;

  for (int steps = 0; in.size > 0 && steps < 64; ++steps) {
    const std::uint8_t op = in.take<std::uint8_t>();
    const auto field = static_cast<KyDateFields>(in.take<std::int8_t>() % 24);
    const long amount = in.take<std::int64_t>();
    const double value = in.take<double>();
    status = (op & 0x80) != 0 ? kIllegalArgument : kNoError;
    const KyDateErrorCode before = status;
    long result = 0;
    switch (op % 20) {
      case 0: calendar.setTime(value, status); break;
      case 1: calendar.set(field, amount); break;
      case 2: calendar.add(field, amount, status); break;
      case 3: calendar.roll(field, amount, status); break;
      case 4: result = calendar.fieldDifference(value, field, status); break;
      case 5: result = calendar.get(field, status); break;
      case 6: result = calendar.getActualMaximum(field); break;
      case 7: result = calendar.getActualMaximum(field, status) + calendar.getActualMinimum(field, status); break;
      case 8: calendar.clear(field); break;
      case 9: calendar.setLenient((amount & 1) != 0); break;
      case 10: calendar.setGregorianChange(value, status); break;
      case 11: {
        std::unique_ptr<KyCalendar> copy(calendar.clone());
        result = copy->get(field, status);
        break;
      }
      case 12: result = static_cast<long>(calendar.getTime(status)); break;
      case 13: calendar.set(amount, amount >> 20, amount >> 40); break;
      case 14: {
        KyTimeUnit* unit = units[static_cast<unsigned long>(amount) % 10];
        if (unit != nullptr) {
          unit->snapToPreviousTimeUnit(calendar);
          unit->addTimeUnit(calendar);
          if (std::isfinite(value) && std::fabs(value) < 1e300) delete[] unit->toString(value);
        }
        break;
      }
      case 15: {
        std::unique_ptr<KyTimeZone> zone(MakeZone(in));
        result = zone->getOffset(static_cast<unsigned char>(amount), amount >> 8, amount % 14, amount % 33,
                                 static_cast<unsigned char>(amount >> 16), static_cast<long>(std::isfinite(value) ? std::fmod(value, 9e7) : 0),
                                 28 + (amount & 3), status);
        break;
      }
      case 16: {
        KyTimeZone zone;
        result = zone.compareToRule(static_cast<char>(amount), static_cast<char>(amount >> 8),
                                    static_cast<char>(amount >> 16), static_cast<char>(amount >> 24),
                                    static_cast<char>(amount >> 32), amount, std::isfinite(value) ? 0 : amount,
                                    static_cast<KyTimeZone::EMode>((amount >> 40 & 3) + 1), static_cast<char>(op),
                                    static_cast<char>(amount >> 48), static_cast<char>(amount >> 56), amount >> 4);
        Check(result >= -1 && result <= 1, "compareToRule answers -1, 0 or 1");
        break;
      }
      case 17: calendar.roll(field, (amount & 1) != 0, status); break;
      case 18: delete calendar.orphanTimeZone(); break;
      default: calendar.adoptTimeZone(MakeZone(in)); break;
    }
    if (KyDateFailed(before) && op % 20 != 15 && op % 20 != 16) {
      Check(status == before, "a failure is never cleared");
      Check(result == 0 || op % 20 == 6, "a failed status gives 0");
    }
    KyDateErrorCode check = kNoError;
    const double time = calendar.getTime(check);
    Check(KyDateFailed(check) || (time >= KyGregorianCalendar::EARLIEST_SUPPORTED_MILLIS &&
                                  time <= KyGregorianCalendar::LATEST_SUPPORTED_MILLIS),
          "the time stays in the supported range");
  }
  return 0;
}
