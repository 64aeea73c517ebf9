#include "database/embedded/dates.h"

#include <algorithm>
#include <limits>

#include "database/embedded/ascii.h"
#include "database/embedded/messages.h"

namespace vellum250::database::embedded {
namespace {

constexpr int32_t kDaysFrom1900To1970 = 25567;

constexpr std::string_view kWeekDays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                          "Thursday", "Friday", "Saturday"};

// Floor division: counts boundaries also before day 0.
int64_t FloorDivide(int64_t value, int64_t by) { return value / by - (value % by < 0 ? 1 : 0); }

// 0 Sunday to 6 Saturday.
int32_t WeekDayOf(int32_t day) { return static_cast<int32_t>((day % 7 + 8) % 7); }

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
  // Years that begin in March, in eras of 400 years.
  const int64_t shifted = int64_t{day} - kDaysFrom1900To1970 + 719468;
  const int64_t era = FloorDivide(shifted, 146097);
  const int64_t dayOfEra = shifted - era * 146097;
  const int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int64_t march = (5 * dayOfYear + 2) / 153;
  const int64_t month = march < 10 ? march + 3 : march - 9;
  return {static_cast<int32_t>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0)),
          static_cast<int32_t>(month), static_cast<int32_t>(dayOfYear - (153 * march + 2) / 5 + 1)};
}

int32_t DayOf(Calendar calendar) {
  const int64_t year = int64_t{calendar.year} - (calendar.month <= 2 ? 1 : 0);
  const int64_t era = FloorDivide(year, 400);
  const int64_t yearOfEra = year - era * 400;
  const int64_t march = calendar.month > 2 ? calendar.month - 3 : calendar.month + 9;
  const int64_t dayOfYear = (153 * march + 2) / 5 + calendar.day - 1;
  const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return static_cast<int32_t>(era * 146097 + dayOfEra - 719468 + kDaysFrom1900To1970);
}

int32_t DaysOfMonth(int32_t year, int32_t month) {
  static constexpr int32_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return month == 2 && leap ? 29 : kDays[month - 1];
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
  struct Range {
    int32_t first;
    int32_t last;
  };
  static const Range kDateTimes{DayOf({1753, 1, 1}), DayOf({9999, 12, 31})};
  static const Range kSmallDateTimes{0, DayOf({2079, 6, 6})};
  static const Range kDates{DayOf({1, 1, 1}), DayOf({9999, 12, 31})};
  const Range& range = type == SqlType::Date            ? kDates
                       : type == SqlType::SmallDateTime ? kSmallDateTimes
                                                        : kDateTimes;
  if (moment.day < range.first || moment.day > range.last) return std::nullopt;

  char text[] = "0000-00-00 00:00:00.000";
  const Calendar date = CalendarOf(moment.day);
  PutDigits(text, date.year, 4);
  PutDigits(text + 5, date.month, 2);
  PutDigits(text + 8, date.day, 2);
  if (type == SqlType::Date) return std::string(text, 10);
  const Clock clock = ClockOf(moment.tick);
  PutDigits(text + 11, clock.hour, 2);
  PutDigits(text + 14, clock.minute, 2);
  PutDigits(text + 17, clock.second, 2);
  PutDigits(text + 20, clock.millisecond, 3);
  return std::string(text, 23);
}

std::optional<DatePart> FindDatePart(std::string_view name) {
  struct Name {
    std::string_view name;
    DatePart part;
  };
  static constexpr Name kNames[] = {
      {"year", DatePart::Year},
      {"yy", DatePart::Year},
      {"yyyy", DatePart::Year},
      {"quarter", DatePart::Quarter},
      {"qq", DatePart::Quarter},
      {"q", DatePart::Quarter},
      {"month", DatePart::Month},
      {"mm", DatePart::Month},
      {"m", DatePart::Month},
      {"dayofyear", DatePart::DayOfYear},
      {"dy", DatePart::DayOfYear},
      {"y", DatePart::DayOfYear},
      {"day", DatePart::Day},
      {"dd", DatePart::Day},
      {"d", DatePart::Day},
      {"week", DatePart::Week},
      {"wk", DatePart::Week},
      {"ww", DatePart::Week},
      {"iso_week", DatePart::IsoWeek},
      {"isowk", DatePart::IsoWeek},
      {"isoww", DatePart::IsoWeek},
      {"weekday", DatePart::WeekDay},
      {"dw", DatePart::WeekDay},
      {"w", DatePart::WeekDay},
      {"hour", DatePart::Hour},
      {"hh", DatePart::Hour},
      {"minute", DatePart::Minute},
      {"mi", DatePart::Minute},
      {"n", DatePart::Minute},
      {"second", DatePart::Second},
      {"ss", DatePart::Second},
      {"s", DatePart::Second},
      {"millisecond", DatePart::Millisecond},
      {"ms", DatePart::Millisecond},
  };
  for (const Name& entry : kNames) {
    if (EqualsAscii(name, entry.name)) return entry.part;
  }
  return std::nullopt;
}

namespace {

TextView PartWord(DatePart part) {
  static constexpr TextView kWords[] = {u"year", u"quarter", u"month",    u"dayofyear",
                                        u"day",  u"week",    u"iso_week", u"weekday",
                                        u"hour", u"minute",  u"second",   u"millisecond"};
  return kWords[static_cast<size_t>(part)];
}

// Years, quarters and months as months; 0 for the other parts.
int32_t MonthsIn(DatePart part) {
  switch (part) {
    case DatePart::Year:
      return 12;
    case DatePart::Quarter:
      return 3;
    case DatePart::Month:
      return 1;
    default:
      return 0;
  }
}

// Parts of a fixed length in milliseconds.
int64_t MillisecondsIn(DatePart part) {
  switch (part) {
    case DatePart::Week:
    case DatePart::IsoWeek:
      return 7 * int64_t{86400000};
    case DatePart::Hour:
      return 3600000;
    case DatePart::Minute:
      return 60000;
    case DatePart::Second:
      return 1000;
    case DatePart::Millisecond:
      return 1;
    default:
      return 86400000;
  }
}

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
    throw PartNotSupported(PartWord(part), u"dateadd", typeName);
  }
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  if (count > kMost || count < -kMost - 1) throw ExpressionOverflow(u"int");

  if (const int32_t months = MonthsIn(part)) {
    Calendar date = CalendarOf(moment.day);
    const int64_t month = MonthNumber(date) + count * months;
    if (month < 12 || month >= int64_t{10000} * 12) throw DateAddOverflow(typeName);
    date.year = static_cast<int32_t>(month / 12);
    date.month = static_cast<int32_t>(month % 12 + 1);
    date.day = std::min(date.day, DaysOfMonth(date.year, date.month));
    moment.day = DayOf(date);
  } else {
    constexpr int64_t kDay = 86400000;
    const int64_t time = MillisecondsOf(moment.tick) + count * MillisecondsIn(part);
    const int64_t day = moment.day + FloorDivide(time, kDay);
    if (day > kMost || day < -kMost) throw DateAddOverflow(typeName);
    const auto rest = static_cast<int32_t>(time - FloorDivide(time, kDay) * kDay);
    moment = MomentAt(static_cast<int32_t>(day), rest);
  }
  auto stored = Store(moment, type);
  if (!stored) throw DateAddOverflow(typeName);
  return std::move(*stored);
}

int32_t DateDiff(DatePart part, Moment from, Moment to) {
  int64_t difference = 0;
  if (const int32_t months = MonthsIn(part)) {
    difference =
        MonthNumber(CalendarOf(to.day)) / months - MonthNumber(CalendarOf(from.day)) / months;
  } else if (part == DatePart::Week || part == DatePart::IsoWeek) {
    // Day -1 was a Sunday, where weeks begin.
    difference = FloorDivide(int64_t{to.day} + 1, 7) - FloorDivide(int64_t{from.day} + 1, 7);
  } else if (part < DatePart::Hour) {
    difference = int64_t{to.day} - from.day;
  } else {
    const int64_t unit = MillisecondsIn(part);
    const auto at = [&](Moment moment) {
      return moment.day * (86400000 / unit) + MillisecondsOf(moment.tick) / unit;
    };
    difference = at(to) - at(from);
  }
  if (difference != static_cast<int32_t>(difference)) throw DateDiffOverflow();
  return static_cast<int32_t>(difference);
}

int32_t DatePartOf(DatePart part, Moment moment) {
  const Calendar date = CalendarOf(moment.day);
  const Clock clock = ClockOf(moment.tick);
  switch (part) {
    case DatePart::Year:
      return date.year;
    case DatePart::Quarter:
      return (date.month + 2) / 3;
    case DatePart::Month:
      return date.month;
    case DatePart::DayOfYear:
      return DayOfYear(moment.day);
    case DatePart::Day:
      return date.day;
    case DatePart::Week:
      return (DayOfYear(moment.day) - 1 + WeekDayOf(DayOf({date.year, 1, 1}))) / 7 + 1;
    case DatePart::IsoWeek:
      return IsoWeek(moment.day);
    case DatePart::WeekDay:
      return WeekDayOf(moment.day) + 1;
    case DatePart::Hour:
      return clock.hour;
    case DatePart::Minute:
      return clock.minute;
    case DatePart::Second:
      return clock.second;
    case DatePart::Millisecond:
      return clock.millisecond;
  }
  return 0;
}

std::string DateName(DatePart part, Moment moment) {
  if (part == DatePart::Month) return std::string(MonthName(CalendarOf(moment.day).month));
  if (part == DatePart::WeekDay) return std::string(kWeekDays[WeekDayOf(moment.day)]);
  return std::to_string(DatePartOf(part, moment));
}

}  // namespace vellum250::database::embedded
