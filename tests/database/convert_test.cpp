#include "database/embedded/convert.h"

#include "stored_values.h"

namespace vellum250::database::embedded {
namespace {

struct Case {
  Value value;
  const char* from;
  const char* to;
  std::string expected;
  int style = 0;
};

void Check(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    const auto convert = [&] { return Convert(c.value, T(c.from), T(c.to), c.style); };
    EXPECT_EQ(Shown(convert), c.expected) << c.from << " to " << c.to << " style " << c.style
                                          << ": " << Shown([&] { return c.value; });
  }
}

Value Whole(int64_t value) { return value; }
Value Words(const char* value) { return std::string(value); }

TEST(Convert, TextsToNumbers) {
  Check({
      {Words(" 12 "), "varchar(9)", "int", "12"},
      {Words("+5"), "varchar(9)", "int", "5"},
      {Words("-007"), "varchar(9)", "int", "-7"},
      {Words("  "), "varchar(9)", "int", "0"},
      {Words(""), "varchar(9)", "bigint", "0"},
      {Words("abc"), "varchar(9)", "int", "!245"},
      {Words("12.5"), "varchar(9)", "int", "!245"},
      {Words("1 2"), "varchar(9)", "int", "!245"},
      {Words("\xC3\xA9"), "nvarchar(9)", "int", "!245"},
      {Words("99999999999"), "varchar(20)", "int", "!248"},
      {Words("999999999999999999999999999999999999999999999999"), "varchar", "int", "!248"},
      {Words("99999999999999999999999999999999999999999999999x"), "varchar", "int", "!245"},
      {Words("40000"), "varchar(9)", "smallint", "!244"},
      {Words("-1"), "varchar(9)", "tinyint", "!244"},
      {Words("x"), "varchar(9)", "bigint", "!8114"},
      {Words("9223372036854775807"), "varchar", "bigint", "9223372036854775807"},
      {Words("-9223372036854775808"), "varchar", "bigint", "-9223372036854775808"},
      {Words("9223372036854775808"), "varchar", "bigint", "!8115"},
      {Words("TRUE"), "varchar(9)", "bit", "1"},
      {Words("false"), "varchar(9)", "bit", "0"},
      {Words("-3"), "varchar(9)", "bit", "1"},
      {Words("yes"), "varchar(9)", "bit", "!245"},
      {Words("-12.346"), "varchar(9)", "decimal(9,2)", "-1235"},
      {Words(" 7 "), "varchar(9)", "decimal(5,1)", "70"},
      {Words(".5"), "varchar(9)", "decimal(5,1)", "5"},
      {Words("0.04999"), "varchar(9)", "decimal(5,1)", "0"},
      {Words(""), "varchar(9)", "decimal(5,1)", "!8114"},
      {Words("."), "varchar(9)", "decimal(5,1)", "!8114"},
      {Words("1.2.3"), "varchar(9)", "decimal(5,1)", "!8114"},
      {Words("1e3"), "varchar(9)", "decimal(5,1)", "!8114"},
      {Words("12345"), "varchar(9)", "decimal(5,1)", "!8115"},
      {Words("12345678901234567890"), "varchar", "decimal(38,0)", "!unsupported"},
      {Words("1e3"), "varchar(9)", "float", "1000"},
      {Words(""), "varchar(9)", "float", "0"},
      {Words("inf"), "varchar(9)", "float", "!8114"},
      {Words("0x10"), "varchar(9)", "float", "!8114"},
      {Words("1e400"), "varchar(9)", "float", "!8115"},
      {Words("$1,234.50"), "varchar(9)", "money", "12345000"},
      {Words("-$2"), "varchar(9)", "money", "-20000"},
      {Words("\xC2\xA3"
             "3.00005"),
       "varchar(9)", "money", "30001"},
      {Words(""), "varchar(9)", "money", "0"},
      {Words("ten"), "varchar(9)", "money", "!235"},
      {Words("1000000"), "varchar(9)", "smallmoney", "!236"},
  });
}

TEST(Convert, NumbersToNumbers) {
  Check({
      {Whole(300), "int", "tinyint", "!220"},
      {Whole(-1), "int", "tinyint", "!220"},
      {Whole(3000000000), "bigint", "int", "!8115"},
      {Whole(-5), "int", "bit", "1"},
      {Whole(129), "decimal(3,1)", "int", "12"},
      {Whole(-129), "decimal(3,1)", "int", "-12"},
      {Whole(5), "decimal(3,1)", "bit", "1"},
      {Whole(1005), "decimal(4,3)", "decimal(5,2)", "101"},
      {Whole(-1005), "decimal(4,3)", "decimal(5,2)", "-101"},
      {Whole(2345), "decimal(4,3)", "decimal(5,1)", "23"},
      {Whole(123456), "int", "decimal(5,2)", "!8115"},
      {Whole(1), "int", "decimal(38,30)", "!unsupported"},
      {Whole(129000), "money", "int", "13"},
      {Whole(12345), "money", "decimal(9,2)", "123"},
      {Whole(3), "int", "money", "30000"},
      {Whole(300000), "int", "smallmoney", "!8115"},
      {Whole(9223372036854775807), "bigint", "money", "!8115"},
      {12.5, "float", "int", "12"},
      {-12.5, "float", "int", "-12"},
      {3e9, "float", "int", "!232"},
      {9.3e18, "float", "bigint", "!232"},
      {0.1, "float", "decimal(9,2)", "10"},
      {1e30, "float", "decimal(9,2)", "!8115"},
      {0.1, "float", "real", "0.100000001490116"},
      {1e300, "float", "real", "!232"},
      {Whole(15), "decimal(3,1)", "float", "1.5"},
  });
}

TEST(Convert, NumbersToTexts) {
  Check({
      {Whole(-150), "decimal(5,2)", "varchar(10)", "-1.50"},
      {Whole(5), "decimal(5,2)", "varchar(10)", "0.05"},
      {Whole(-5), "decimal(5,2)", "varchar(10)", "-0.05"},
      {Whole(0), "decimal(5,2)", "varchar(10)", "0.00"},
      {Whole(std::numeric_limits<int64_t>::min()), "bigint", "varchar(20)", "-9223372036854775808"},
      {Whole(1), "bit", "varchar(10)", "1"},
      {Whole(12345), "int", "varchar(3)", "*"},
      {Whole(12345), "int", "char(3)", "*  "},
      {Whole(12345), "int", "nvarchar(3)", "!8115"},
      {Whole(12345), "bigint", "varchar(3)", "!8115"},
      {Whole(12345), "decimal(5,2)", "varchar(3)", "!8115"},
      {Whole(12345675000), "money", "varchar(20)", "1234567.50"},
      {Whole(12345675050), "money", "varchar(20)", "1,234,567.51", 1},
      {Whole(-9995000), "money", "varchar(20)", "-999.50", 1},
      {Whole(12345675050), "money", "varchar(20)", "1234567.5050", 2},
      {Whole(12345675000), "money", "varchar(3)", "!234"},
      {1.5, "float", "varchar(30)", "1.5"},
      {1234567.0, "float", "varchar(30)", "1.23457e+006"},
      {123456.0, "float", "varchar(30)", "123456"},
      {0.00001, "float", "varchar(30)", "1e-005"},
      {1e200, "float", "varchar(30)", "1e+200"},
      {1.5, "float", "varchar(30)", "1.5000000e+000", 1},
      {1.5, "float", "varchar(30)", "1.500000000000000e+000", 2},
      {1.25, "float", "varchar(2)", "!232"},
  });
}

TEST(Convert, TextsAreCutAndPaddedInUtf16Units) {
  const std::string face = "\xF0\x9F\x99\x82";
  Check({
      {Words("abcdef"), "varchar(9)", "varchar(3)", "abc"},
      {Words("xyz"), "varchar(9)", "char(2)", "xy"},
      {Words("x"), "varchar(9)", "char(3)", "x  "},
      {Words("\xC3\xA9"), "varchar(9)", "nchar(3)", "\xC3\xA9  "},
      {Words("\xC3\xA9\xC3\xA9"), "varchar(9)", "varchar(1)", "\xC3\xA9"},
      {"a" + face, "nvarchar(9)", "nvarchar(3)", "a" + face},
      {"a" + face, "nvarchar(9)", "nvarchar(2)", "a\xED\xA0\xBD"},
      {std::string("a\0bc", 4), "varchar(9)", "varchar(3)", std::string("a\0b", 3)},
      {Words("6f9619ff-8b86-d011-b42d-00c04fc964ff"), "varchar", "uniqueidentifier",
       "6F9619FF-8B86-D011-B42D-00C04FC964FF"},
      {Words("6f9619ff8b86"), "varchar", "uniqueidentifier", "!8169"},
      {Words("6F9619FF-8B86-D011-B42D-00C04FC964FF"), "uniqueidentifier", "varchar(9)", "!8170"},
  });
}

TEST(Convert, DatesToTextsInEveryStyle) {
  const Value moment = Words("2004-02-05 13:45:30.997");
  for (const auto& [style, expected] :
       std::vector<std::pair<int, const char*>>{{0, "Feb  5 2004  1:45PM"},
                                                {100, "Feb  5 2004  1:45PM"},
                                                {1, "02/05/04"},
                                                {101, "02/05/2004"},
                                                {102, "2004.02.05"},
                                                {3, "05/02/04"},
                                                {103, "05/02/2004"},
                                                {104, "05.02.2004"},
                                                {105, "05-02-2004"},
                                                {106, "05 Feb 2004"},
                                                {107, "Feb 05, 2004"},
                                                {108, "13:45:30"},
                                                {109, "Feb  5 2004  1:45:30:997PM"},
                                                {110, "02-05-2004"},
                                                {111, "2004/02/05"},
                                                {12, "040205"},
                                                {112, "20040205"},
                                                {113, "05 Feb 2004 13:45:30:997"},
                                                {114, "13:45:30:997"},
                                                {120, "2004-02-05 13:45:30"},
                                                {121, "2004-02-05 13:45:30.997"},
                                                {126, "2004-02-05T13:45:30.997"},
                                                {130, "!unsupported"},
                                                {99, "!281"}}) {
    Check({{moment, "datetime", "varchar(40)", expected, style}});
  }
  Check({
      {Words("2004-02-05 00:07:00.000"), "datetime", "varchar(40)", "Feb  5 2004 12:07AM"},
      {Words("2004-02-05 12:00:00.000"), "datetime", "varchar(40)", "Feb  5 2004 12:00PM"},
      {Words("2004-02-05 12:00:00.000"), "datetime", "varchar(40)", "2004-02-05T12:00:00", 126},
      {Words("2004-02-05 12:00:00.000"), "datetime", "varchar(6)", "05 Feb", 106},
      {Words("2004-02-05"), "date", "varchar(40)", "2004-02-05"},
      {Words("2004-02-05"), "date", "varchar(40)", "Feb  5 2004", 100},
  });
}

TEST(Convert, TextsToDates) {
  Check({
      {Words(""), "varchar", "datetime", "1900-01-01 00:00:00.000"},
      {Words("20040229"), "varchar", "datetime", "2004-02-29 00:00:00.000"},
      {Words("040229"), "varchar", "datetime", "2004-02-29 00:00:00.000"},
      {Words("500101"), "varchar", "datetime", "1950-01-01 00:00:00.000"},
      {Words("2004"), "varchar", "datetime", "2004-01-01 00:00:00.000"},
      {Words("2004-02-29 13:45:30"), "varchar", "datetime", "2004-02-29 13:45:30.000"},
      {Words("2004-02-29T13:45:30.5"), "varchar", "datetime", "2004-02-29 13:45:30.500"},
      {Words("2004-02-29T13:45:30"), "varchar", "datetime", "2004-02-29 13:45:30.000", 103},
      {Words("2004-02-29T13:45"), "varchar", "datetime", "!241"},
      {Words("1/1/1425"), "varchar", "datetime", "!unsupported", 131},
      {Words("20040229 13:45"), "varchar", "datetime", "2004-02-29 13:45:00.000"},
      {Words("13:45 20040229"), "varchar", "datetime", "2004-02-29 13:45:00.000"},
      {Words("2/29/2004"), "varchar", "datetime", "2004-02-29 00:00:00.000"},
      {Words("2.9.04 1:05 pm"), "varchar", "datetime", "2004-02-09 13:05:00.000"},
      {Words("12am"), "varchar", "datetime", "1900-01-01 00:00:00.000"},
      {Words("29/02/2004"), "varchar", "datetime", "2004-02-29 00:00:00.000", 103},
      {Words("1-2-2004"), "varchar", "datetime", "2004-02-01 00:00:00.000", 103},
      {Words("29 Feb 2004"), "varchar", "datetime", "2004-02-29 00:00:00.000"},
      {Words("Feb 29, 2004"), "varchar", "datetime", "2004-02-29 00:00:00.000"},
      {Words("29-feb-2004"), "varchar", "datetime", "2004-02-29 00:00:00.000"},
      {Words("29 February 2004 13:45"), "varchar", "datetime", "2004-02-29 13:45:00.000"},
      {Words("Feb 2004"), "varchar", "datetime", "2004-02-01 00:00:00.000"},
      {Words("2004 Feb 29"), "varchar", "datetime", "2004-02-29 00:00:00.000"},
      {Words("2004-02-29 13:45:30.123"), "varchar", "datetime", "2004-02-29 13:45:30.123"},
      {Words("2004-02-29 13:45:30.001"), "varchar", "datetime", "2004-02-29 13:45:30.000"},
      {Words("2004-02-29 13:45:30.005"), "varchar", "datetime", "2004-02-29 13:45:30.007"},
      {Words("2004-02-29 23:59:59.999"), "varchar", "datetime", "2004-03-01 00:00:00.000"},
      {Words("2004-02-29 23:59:30"), "varchar", "smalldatetime", "2004-03-01 00:00:00.000"},
      {Words("2004-02-29 23:59:29"), "varchar", "smalldatetime", "2004-02-29 23:59:00.000"},
      {Words("0001-01-01"), "varchar", "date", "0001-01-01"},
      {Words("29/02/2004"), "varchar", "datetime", "!242"},
      {Words("2004-02-30"), "varchar", "datetime", "!242"},
      {Words("20040132"), "varchar", "datetime", "!242"},
      {Words("17521231"), "varchar", "datetime", "!242"},
      {Words("2004-02-29 24:00"), "varchar", "datetime", "!242"},
      {Words("0:30 PM"), "varchar", "datetime", "!242"},
      {Words("13:30 AM"), "varchar", "datetime", "!242"},
      {Words("20800101"), "varchar", "smalldatetime", "!242"},
      {Words("next week"), "varchar", "datetime", "!241"},
      {Words("next week"), "varchar", "smalldatetime", "!295"},
      {Words("29"), "varchar", "datetime", "!241"},
      {Words("1/2"), "varchar", "datetime", "!241"},
      {Words("1/2/3/4"), "varchar", "datetime", "!241"},
      {Words("2004-02-"), "varchar", "datetime", "!241"},
      {Words("2004 02 29"), "varchar", "datetime", "!241"},
      {Words("13:"), "varchar", "datetime", "!241"},
      {Words("13:45:30.1234"), "varchar", "datetime", "!241"},
      {Words("99999999999999999999"), "varchar", "datetime", "!241"},
      {Words("20040229 Z"), "varchar", "datetime", "!241"},
      {std::string("2004\0"
                   "0229",
                   9),
       "varchar", "datetime", "!241"},
  });
}

TEST(Convert, DatesAndNumbers) {
  Check({
      {Whole(1), "int", "datetime", "1900-01-02 00:00:00.000"},
      {Whole(-15), "decimal(3,1)", "datetime", "1899-12-30 12:00:00.000"},
      {1e12, "float", "datetime", "!8115"},
      {Words("1900-01-02 12:00:00.000"), "datetime", "int", "2"},
      {Words("1900-01-02 12:00:00.000"), "datetime", "float", "1.5"},
      {Words("2004-02-29 13:45:30.997"), "datetime", "date", "2004-02-29"},
      {Words("2004-02-29"), "date", "datetime", "2004-02-29 00:00:00.000"},
      {Words("0001-01-01"), "date", "datetime", "!242"},
      {Value(), "datetime", "int", "NULL"},
  });
}

TEST(Convert, FailuresSayWhatSqlServerSays) {
  const auto words = [](const char* text, const char* from, const char* to) {
    return embedded::Words([&] { Convert(std::string_view(text), T(from), T(to)); });
  };
  EXPECT_EQ(words("M1", "varchar(5)", "int"),
            "Conversion failed when converting the varchar value 'M1' to data type int.");
  EXPECT_EQ(words("x", "nvarchar(5)", "decimal(9,2)"),
            "Error converting data type nvarchar to numeric.");
  EXPECT_EQ(words("2004-02-30", "varchar(10)", "datetime"),
            "The conversion of a varchar data type to a datetime data type resulted in an "
            "out-of-range value.");
  try {
    Convert(std::string_view("x"), T("varchar(5)"), T("int"));
    FAIL();
  } catch (const DatabaseFailure& failure) {
    EXPECT_EQ(static_cast<uint32_t>(failure.Number()), 0x80040E07u);
  }
}

TEST(Assign, RefusesTextThatWouldBeCut) {
  const auto assign = [](const char* text, const char* to) {
    return Shown(
        [&] { return Assign(std::string_view(text), T("varchar(99)"), T(to), u"town", u"place"); });
  };
  EXPECT_EQ(assign("York", "varchar(4)"), "York");
  EXPECT_EQ(assign("York   ", "varchar(5)"), "York ");
  EXPECT_EQ(assign("York", "char(6)"), "York  ");
  EXPECT_EQ(assign("Leeds", "varchar(4)"), "!2628");
  EXPECT_EQ(assign("many", "int"), "!245");
  EXPECT_EQ(embedded::Words([&] {
              Assign(std::string_view("Leeds"), T("varchar(9)"), T("varchar(4)"), u"town",
                     u"place");
            }),
            "String or binary data would be truncated in table 'place', column 'town'. Truncated "
            "value: 'Leed'.");
}

TEST(IsNumeric, TakesWhatSomeNumberTypeTakes) {
  for (const char* text : {"12", " 12 ", "-1.5", "1e5", "$3", "1,000", ".5"}) {
    EXPECT_TRUE(IsNumeric(text)) << text;
  }
  for (const char* text : {"", " ", "abc", "1x", "1.2.3", "- -1", "nan"}) {
    EXPECT_FALSE(IsNumeric(text)) << text;
  }
}

TEST(Values, CrossToScriptsAndBack) {
  const auto roundTrip = [](Variant variant) {
    const TypedValue typed = FromVariant(variant);
    return ToVariant(typed.value, typed.type) == variant;
  };
  EXPECT_TRUE(roundTrip(true));
  EXPECT_TRUE(roundTrip(uint8_t{255}));
  EXPECT_TRUE(roundTrip(int16_t{-1}));
  EXPECT_TRUE(roundTrip(int32_t{-2147483647}));
  EXPECT_TRUE(roundTrip(0.1));
  EXPECT_TRUE(roundTrip(Currency{-5}));
  EXPECT_TRUE(roundTrip(Decimal{u"-0.050"}));
  EXPECT_TRUE(roundTrip(Decimal{u"9223372036854775807"}));
  EXPECT_TRUE(roundTrip(Date{38047.5}));
  EXPECT_TRUE(roundTrip(Text(u"\xD83D z\0\xDE42", 5)));
  EXPECT_TRUE(roundTrip(Null{}));
  EXPECT_TRUE(IsNull(FromVariant(Variant()).value));
  EXPECT_EQ(FromVariant(Text(u"abc")).type, T("nvarchar(3)"));
  EXPECT_EQ(FromVariant(Text(5000, u'x')).type, T("nvarchar"));
  EXPECT_EQ(FromVariant(Decimal{u"-12.50"}).type, T("decimal(4,2)"));
  EXPECT_THROW(FromVariant(Decimal{u"twelve"}), Failure);
  EXPECT_THROW(FromVariant(Date{-600000}), Failure);
}

}  // namespace
}  // namespace vellum250::database::embedded
