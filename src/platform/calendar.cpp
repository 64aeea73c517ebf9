// The calendar behind automation dates. Days by Howard Hinnant's method
// ("chrono-Compatible Low-Level Date Algorithms") as the standard library has it.

#include <chrono>
#include <cmath>

#include "automation/locale.h"

namespace vellum250 {

namespace {

using std::chrono::day;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr int64_t kMillisecondsPerDay = 86'400'000;
constexpr sys_days kEpoch = year(1899) / 12 / 30;

}  // namespace

Date FromCivil(const CivilTime& time) {
  const sys_days date = year_month_day(year(time.year), month(static_cast<unsigned>(time.month)),
                                       day(static_cast<unsigned>(time.day)));
  const auto whole = static_cast<double>((date - kEpoch).count());
  const int64_t ms =
      ((time.hour * 60LL + time.minute) * 60 + time.second) * 1000 + time.millisecond;
  const double fraction = static_cast<double>(ms) / kMillisecondsPerDay;
  // Before the epoch the fraction still counts forward in time, away from zero.
  return Date{whole < 0 ? whole - fraction : whole + fraction};
}

CivilTime ToCivil(Date date) {
  double whole = std::trunc(date.days);
  int64_t ms = std::llround(std::abs(date.days - whole) * kMillisecondsPerDay);
  if (ms == kMillisecondsPerDay) {
    ms = 0;
    whole += 1;
  }
  const year_month_day civil(kEpoch + std::chrono::days(static_cast<int64_t>(whole)));
  CivilTime time;
  time.year = static_cast<int>(civil.year());
  time.month = static_cast<int>(static_cast<unsigned>(civil.month()));
  time.day = static_cast<int>(static_cast<unsigned>(civil.day()));
  time.millisecond = static_cast<int>(ms % 1000);
  time.second = static_cast<int>(ms / 1000 % 60);
  time.minute = static_cast<int>(ms / 60'000 % 60);
  time.hour = static_cast<int>(ms / 3'600'000);
  return time;
}

int DaysInMonth(int yearNumber, int monthNumber) {
  const auto last =
      year(yearNumber) / month(static_cast<unsigned>(monthNumber)) / std::chrono::last;
  return static_cast<int>(static_cast<unsigned>(last.day()));
}

}  // namespace vellum250
