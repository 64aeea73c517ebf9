#include "database/embedded/dates.h"

#include <algorithm>
#include <limits>

#include "database/embedded/ascii.h"
#include "database/embedded/messages.h"

namespace vellum250::database::embedded {
namespace {

constexpr int32_t kMillisecondsOfDay = 86400000;

// In the order of DatePart.
struct PartTraits {
  std::string_view names[3];
  int32_t months;        // parts of some months; 0 for the others
  int32_t milliseconds;  // parts of a fixed length
};
constexpr PartTraits kParts[] = {
    {{"year", "yy", "yyyy"}, 12, 0},
    {{"quarter", "qq", "q"}, 3, 0},
    {{"month", "mm", "m"}, 1, 0},
    {{"dayofyear", "dy", "y"}, 0, kMillisecondsOfDay},
    {{"day", "dd", "d"}, 0, kMillisecondsOfDay},
    {{"week", "wk", "ww"}, 0, 7 * kMillisecondsOfDay},
    {{"iso_week", "isowk", "isoww"}, 0, 7 * kMillisecondsOfDay},
    {{"weekday", "dw", "w"}, 0, kMillisecondsOfDay},
    {{"hour", "hh", "hh"}, 0, 3600000},
    {{"minute", "mi", "n"}, 0, 60000},
    {{"second", "ss", "s"}, 0, 1000},
    {{"millisecond", "ms", "ms"}, 0, 1},
};
const PartTraits& TraitsOf(DatePart part) { return kParts[static_cast<size_t>(part)]; }

// Floor division: counts boundaries also before day 0.
int64_t FloorDivide(int64_t value, int64_t by) { return value / by - (value % by < 0 ? 1 : 0); }

std::chrono::sys_days SystemDay(int32_t day) {
  return std::chrono::sys_days(std::chrono::year(1900) / 1 / 1) + std::chrono::days(day);
}

// 0 Sunday to 6 Saturday.
int32_t WeekDayOf(int32_t day) {
  return static_cast<int32_t>(std::chrono::weekday(SystemDay(day)).c_encoding());
}

int32_t MillisecondsOf(int32_t tick) { return (tick * 10 + 1) / 3; }

}  // namespace

std::string_view MonthName(int32_t month) {
  static constexpr std::string_view kMonths[] = {"January",   "February", "March",    "April",
                                                 "May",       "June",     "July",     "August",
                                                 "September", "October",  "November", "December"};
  return kMonths[month - 1];
}

Clock ClockOf(int32_t tick) {
  const int32_t milliseconds = MillisecondsOf(tick);
  const int32_t seconds = milliseconds / 1000;
  return {seconds / 3600, seconds / 60 % 60, seconds % 60, milliseconds % 1000};
}

Calendar CalendarOf(int32_t day) {
  const std::chrono::year_month_day date(SystemDay(day));
  return {int{date.year()}, static_cast<int32_t>(unsigned{date.month()}),
          static_cast<int32_t>(unsigned{date.day()})};
}

int32_t DaysOfMonth(int32_t year, int32_t month) {
  const auto last = std::chrono::year(year) / month / std::chrono::last;
  return static_cast<int32_t>(unsigned{last.day()});
}

Moment MomentAt(int32_t day, int32_t milliseconds) {
  const int32_t tick = (milliseconds * 3 + 5) / 10;
  return tick < kTicksOfDay ? Moment{day, tick} : Moment{day + 1, 0};
}

Moment StoredMoment(std::string_view value) {
  const int32_t day =
      DayOf({GetDigits(value, 0, 4), GetDigits(value, 5, 2), GetDigits(value, 8, 2)});
  if (value.size() < 23) return {day, 0};
  const int32_t seconds =
      (GetDigits(value, 11, 2) * 60 + GetDigits(value, 14, 2)) * 60 + GetDigits(value, 17, 2);
  return MomentAt(day, seconds * 1000 + GetDigits(value, 20, 3));
}

std::optional<std::string> Store(Moment moment, SqlType type) {
  if (type == SqlType::SmallDateTime) {
    // Half a minute rounds up.
    const int32_t minutes = (moment.tick / kTicksOfSecond + 30) / 60;
    moment = {moment.day + minutes / 1440, minutes % 1440 * 60 * kTicksOfSecond};
  }
  const bool isSmall = type == SqlType::SmallDateTime;
  const int32_t first = isSmall                 ? 0
                        : type == SqlType::Date ? DayOf({1, 1, 1})
                                                : DayOf({1753, 1, 1});
  const int32_t last = isSmall ? DayOf({2079, 6, 6}) : DayOf({9999, 12, 31});
  if (moment.day < first || moment.day > last) return std::nullopt;
  std::string text;
  AppendDate(text, moment, type, 121);
  return text;
}

std::optional<DatePart> FindDatePart(std::string_view name) {
  for (size_t i = 0; i < std::size(kParts); ++i) {
    const auto named = [&](std::string_view known) { return EqualsAscii(name, known); };
    if (std::ranges::any_of(kParts[i].names, named)) return static_cast<DatePart>(i);
  }
  return std::nullopt;
}

namespace {

int64_t MonthNumber(Calendar date) { return int64_t{date.year} * 12 + date.month - 1; }

int32_t DayOfYear(int32_t day) { return day - DayOf({CalendarOf(day).year, 1, 1}) + 1; }

// The week that has the year's first Thursday is its first (ISO 8601).
int32_t IsoWeek(int32_t day) {
  const int32_t thursday = day - (WeekDayOf(day) + 6) % 7 + 3;
  return (DayOfYear(thursday) - 1) / 7 + 1;
}

}  // namespace

std::string DateAdd(DatePart part, int64_t count, Moment moment, SqlType type) {
  const TextView typeName = SqlTypeName(type);
  if (part == DatePart::IsoWeek || (type == SqlType::Date && part >= DatePart::Hour)) {
    throw PartNotSupported(FromUtf8(TraitsOf(part).names[0]), u"dateadd", typeName);
  }
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  if (count > kMost || count < -kMost - 1) throw ExpressionOverflow(u"int");

  if (const int32_t months = TraitsOf(part).months) {
    Calendar date = CalendarOf(moment.day);
    const int64_t month = MonthNumber(date) + count * months;
    if (month < 12 || month >= int64_t{10000} * 12) throw DateAddOverflow(typeName);
    date.year = static_cast<int32_t>(month / 12);
    date.month = static_cast<int32_t>(month % 12 + 1);
    date.day = std::min(date.day, DaysOfMonth(date.year, date.month));
    moment.day = DayOf(date);
  } else {
    const int64_t time = MillisecondsOf(moment.tick) + count * TraitsOf(part).milliseconds;
    const int64_t days = FloorDivide(time, kMillisecondsOfDay);
    const int64_t day = moment.day + days;
    if (day > kMost || day < -kMost) throw DateAddOverflow(typeName);
    const auto rest = static_cast<int32_t>(time - days * kMillisecondsOfDay);
    moment = MomentAt(static_cast<int32_t>(day), rest);
  }
  auto stored = Store(moment, type);
  if (!stored) throw DateAddOverflow(typeName);
  return std::move(*stored);
}

int32_t DateDiff(DatePart part, Moment from, Moment to) {
  int64_t difference = 0;
  if (const int32_t months = TraitsOf(part).months) {
    difference =
        MonthNumber(CalendarOf(to.day)) / months - MonthNumber(CalendarOf(from.day)) / months;
  } else if (part == DatePart::Week || part == DatePart::IsoWeek) {
    // Day -1 was a Sunday, where weeks begin.
    difference = FloorDivide(int64_t{to.day} + 1, 7) - FloorDivide(int64_t{from.day} + 1, 7);
  } else if (part < DatePart::Hour) {
    difference = int64_t{to.day} - from.day;
  } else {
    const int64_t unit = TraitsOf(part).milliseconds;
    const auto at = [&](Moment moment) {
      return moment.day * (kMillisecondsOfDay / unit) + MillisecondsOf(moment.tick) / unit;
    };
    difference = at(to) - at(from);
  }
  if (difference != static_cast<int32_t>(difference)) throw DateDiffOverflow();
  return static_cast<int32_t>(difference);
}

int32_t DatePartOf(DatePart part, Moment moment) {
  const Calendar date = CalendarOf(moment.day);
  const Clock clock = ClockOf(moment.tick);
  const int32_t dayOfYear = DayOfYear(moment.day);
  const int32_t week = (dayOfYear - 1 + WeekDayOf(moment.day - dayOfYear + 1)) / 7 + 1;
  const int32_t values[] = {date.year,
                            (date.month + 2) / 3,
                            date.month,
                            dayOfYear,
                            date.day,
                            week,
                            IsoWeek(moment.day),
                            WeekDayOf(moment.day) + 1,
                            clock.hour,
                            clock.minute,
                            clock.second,
                            clock.millisecond};
  static_assert(std::size(values) == std::size(kParts));
  return values[static_cast<size_t>(part)];
}

std::string DateName(DatePart part, Moment moment) {
  if (part == DatePart::Month) return std::string(MonthName(CalendarOf(moment.day).month));
  static constexpr std::string_view kWeekDays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                   "Thursday", "Friday", "Saturday"};
  if (part == DatePart::WeekDay) return std::string(kWeekDays[WeekDayOf(moment.day)]);
  return std::to_string(DatePartOf(part, moment));
}

}  // namespace vellum250::database::embedded
