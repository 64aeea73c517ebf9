#include "database/embedded/dates.h"
#include "stored_values.h"

namespace vellum250::database::embedded {
namespace {

DatePart Part(const char* name) { return FindDatePart(name).value(); }

TEST(Calendar, CountsDaysFrom1900) {
  EXPECT_EQ(DayOf({1900, 1, 1}), 0);
  EXPECT_EQ(DayOf({1899, 12, 30}), -2);
  EXPECT_EQ(DayOf({2004, 2, 29}), 38044);
  // Every day of 10,000 years follows the one before it.
  Calendar before = CalendarOf(DayOf({1, 1, 1}) - 1);
  EXPECT_EQ(before.year, 0);
  for (int32_t day = DayOf({1, 1, 1}); day <= DayOf({9999, 12, 31}); ++day) {
    const Calendar date = CalendarOf(day);
    const bool sameMonth = date.month == before.month;
    ASSERT_EQ(date.day, sameMonth ? before.day + 1 : 1) << day;
    ASSERT_EQ(sameMonth || before.day == DaysOfMonth(before.year, before.month), true) << day;
    ASSERT_EQ(DayOf(date), day);
    before = date;
  }
}

TEST(Moments, KeepEveryTick) {
  for (int32_t tick = 0; tick < kTicksOfDay; tick += 7) {
    const Moment moment{38044, tick};
    ASSERT_EQ(StoredMoment(*Store(moment, SqlType::DateTime)), moment) << tick;
  }
  EXPECT_EQ(Store({DayOf({1752, 12, 31}), 0}, SqlType::DateTime), std::nullopt);
  EXPECT_EQ(Store({DayOf({9999, 12, 31}), kTicksOfDay - 1}, SqlType::DateTime),
            "9999-12-31 23:59:59.997");
  EXPECT_EQ(Store({-1, kTicksOfDay - 1}, SqlType::SmallDateTime), "1900-01-01 00:00:00.000");
}

TEST(DateAdd, StaysWithinTheMonth) {
  struct Case {
    const char* part;
    int64_t count;
    const char* from;
    const char* type;
    const char* expected;
  };
  for (const Case& c : std::vector<Case>{
           {"day", 1, "2004-02-28 00:00:00.000", "datetime", "2004-02-29 00:00:00.000"},
           {"MM", 1, "2004-01-31 00:00:00.000", "datetime", "2004-02-29 00:00:00.000"},
           {"month", -1, "2004-03-31 13:00:00.000", "datetime", "2004-02-29 13:00:00.000"},
           {"yy", 1, "2004-02-29 00:00:00.000", "datetime", "2005-02-28 00:00:00.000"},
           {"qq", 1, "2004-11-30 00:00:00.000", "datetime", "2005-02-28 00:00:00.000"},
           {"week", -1, "2004-03-01 00:00:00.000", "datetime", "2004-02-23 00:00:00.000"},
           {"hour", -1, "2004-03-01 00:30:00.000", "datetime", "2004-02-29 23:30:00.000"},
           {"ms", 2, "2004-03-01 00:00:00.000", "datetime", "2004-03-01 00:00:00.003"},
           {"ss", 40, "2004-03-01 00:00:00.000", "smalldatetime", "2004-03-01 00:01:00.000"},
           {"dd", 1, "2004-02-28", "date", "2004-02-29"},
           {"hour", 1, "2004-02-28", "date", "!9810"},
           {"year", 8000, "2004-02-28 00:00:00.000", "datetime", "!517"},
           {"day", 2147483647, "2004-02-28 00:00:00.000", "datetime", "!517"},
           {"week", 2147483647, "2004-02-28 00:00:00.000", "datetime", "!517"},
           {"month", -2147483648, "2004-02-28 00:00:00.000", "datetime", "!517"},
           {"day", 2147483648, "2004-02-28 00:00:00.000", "datetime", "!8115"},
       }) {
    EXPECT_EQ(Shown([&]() -> Value {
                return DateAdd(Part(c.part), c.count, StoredMoment(c.from), T(c.type).type);
              }),
              c.expected)
        << c.part << " " << c.count << " " << c.from;
  }
}

TEST(DateDiff, CountsBoundaries) {
  struct Case {
    const char* part;
    const char* from;
    const char* to;
    int32_t expected;
  };
  for (const Case& c : std::vector<Case>{
           {"year", "2003-12-31", "2004-01-01", 1},
           {"quarter", "2004-03-31", "2004-04-01", 1},
           {"month", "2004-01-31", "2004-02-01", 1},
           {"month", "2004-02-01", "2003-01-31", -13},
           {"day", "2004-01-01 23:59:00.000", "2004-01-02 00:01:00.000", 1},
           {"week", "2004-02-28", "2004-02-29", 1},  // a Saturday and a Sunday
           {"week", "1899-12-30", "1899-12-31", 1},
           {"hour", "2004-01-01 00:59:00.000", "2004-01-01 01:00:00.000", 1},
           {"minute", "1899-12-31 23:59:59.997", "1900-01-01 00:00:00.000", 1},
           {"second", "2004-01-01 00:00:00.997", "2004-01-01 00:00:01.000", 1},
           {"ms", "2004-01-01 00:00:00.000", "2004-01-01 00:00:00.997", 997},
       }) {
    EXPECT_EQ(DateDiff(Part(c.part), StoredMoment(c.from), StoredMoment(c.to)), c.expected)
        << c.part << " " << c.from;
  }
  EXPECT_EQ(Shown([]() -> Value {
              return int64_t{DateDiff(DatePart::Second, StoredMoment("1753-01-01"),
                                      StoredMoment("9999-12-31"))};
            }),
            "!535");
}

TEST(DateParts, AreNumbersAndNames) {
  const Moment moment = StoredMoment("2004-02-29 13:45:30.997");  // a Sunday
  for (const auto& [part, number, name] :
       std::vector<std::tuple<const char*, int, const char*>>{{"yyyy", 2004, "2004"},
                                                              {"q", 1, "1"},
                                                              {"m", 2, "February"},
                                                              {"y", 60, "60"},
                                                              {"d", 29, "29"},
                                                              {"ww", 10, "10"},
                                                              {"iso_week", 9, "9"},
                                                              {"dw", 1, "Sunday"},
                                                              {"hh", 13, "13"},
                                                              {"n", 45, "45"},
                                                              {"s", 30, "30"},
                                                              {"millisecond", 997, "997"}}) {
    EXPECT_EQ(DatePartOf(Part(part), moment), number) << part;
    EXPECT_EQ(DateName(Part(part), moment), name) << part;
  }
  EXPECT_EQ(DatePartOf(DatePart::IsoWeek, StoredMoment("2005-01-01")), 53);
  EXPECT_EQ(DatePartOf(DatePart::IsoWeek, StoredMoment("2004-12-27")), 53);
  EXPECT_EQ(DatePartOf(DatePart::IsoWeek, StoredMoment("2007-12-31")), 1);
  EXPECT_EQ(FindDatePart("fortnight"), std::nullopt);
}

}  // namespace
}  // namespace vellum250::database::embedded
