// Dates and times as SQL Server keeps them: days, and 1/300 seconds of the day.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "database/embedded/value.h"

namespace vellum250::database::embedded {

// A moment; day 0 is 1 January 1900.
struct Moment {
  int32_t day = 0;
  int32_t tick = 0;  // 1/300 s since midnight, 0 to 25,919,999
  auto operator<=>(const Moment&) const = default;
};
// A moment of a day, rounded to its 1/300 s; may round up to the next day.
Moment MomentAt(int32_t day, int32_t milliseconds);

constexpr int32_t kTicksOfSecond = 300;
constexpr int32_t kTicksOfDay = 86400 * kTicksOfSecond;

struct Calendar {
  int32_t year = 1900;
  int32_t month = 1;  // 1-12
  int32_t day = 1;    // 1-31
};
struct Clock {
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;
  int32_t millisecond = 0;
};
Calendar CalendarOf(int32_t day);
Clock ClockOf(int32_t tick);
std::string_view MonthName(int32_t month);
// Days since 1 January 1900.
constexpr int32_t DayOf(Calendar calendar) {
  using namespace std::chrono;
  const year_month_day date(year(calendar.year), month(static_cast<unsigned>(calendar.month)),
                            day(static_cast<unsigned>(calendar.day)));
  return static_cast<int32_t>((sys_days(date) - sys_days(year(1900) / 1 / 1)).count());
}
int32_t DaysOfMonth(int32_t year, int32_t month);

// A stored datetime, smalldatetime or date. The text is one that these functions made.
Moment StoredMoment(std::string_view value);
// The stored form of a moment in a date type: seconds rounded for smalldatetime, the time left out
// for date. nullopt when it is out of the type's range.
std::optional<std::string> Store(Moment moment, SqlType type);

// A text in the forms SQL Server takes: 20040229, 2004-02-29, 2/29/2004, 29 Feb 2004, each with or
// without a time, 2004-02-29T13:45:30, a time alone, the empty text (1 January 1900). `style` gives
// the order of day, month and year (103: day first); the default is month first.
enum class DateError : uint8_t { None, Syntax, Range };
struct ParsedDate {
  Moment moment;
  DateError error = DateError::None;
};
ParsedDate ParseDateText(std::string_view text, int32_t style);

// A date as text in one of CONVERT's styles; false when there is no such style. `type` decides what
// style 0 is, and leaves the time out for date.
bool AppendDate(std::string& out, Moment moment, SqlType type, int32_t style);

enum class DatePart : uint8_t {
  Year,
  Quarter,
  Month,
  DayOfYear,
  Day,
  Week,
  IsoWeek,
  WeekDay,
  Hour,
  Minute,
  Second,
  Millisecond
};
// By name or abbreviation ("yy", "mm", "d" ...), without regard to case.
std::optional<DatePart> FindDatePart(std::string_view name);

// `count` parts later, in the date type `type`; the day stays within its month. Raises 517, and
// 9810 when a date has no such part.
std::string DateAdd(DatePart part, int64_t count, Moment moment, SqlType type);
// The boundaries between two moments. Raises 535.
int32_t DateDiff(DatePart part, Moment from, Moment to);
int32_t DatePartOf(DatePart part, Moment moment);
// Month and weekday by their English names, the rest as digits.
std::string DateName(DatePart part, Moment moment);

}  // namespace vellum250::database::embedded
