#include "vellum250-sql/results.h"

#include <gtest/gtest.h>

#include "automation/locale.h"

namespace vellum250::sqltool {
namespace {

using database::Column;
using database::Recordset;
using database::SqlType;

Column Of(const char16_t* name, SqlType type) {
  Column column;
  column.name = name;
  column.type = type;
  return column;
}

Recordset One(SqlType type, Variant value) {
  return Recordset({Of(u"x", type)}, {std::move(value)});
}

// The value alone, as each format writes it.
std::string TableValue(SqlType type, Variant value) {
  std::string out;
  AppendTable(out, One(type, std::move(value)));
  return out.substr(2, out.size() - 3);
}

std::string JsonValue(SqlType type, Variant value) {
  Outcome outcome;
  outcome.results.push_back(One(type, std::move(value)));
  std::string out;
  AppendDocument(out, outcome);
  const size_t begin = out.find("[[") + 2;
  return out.substr(begin, out.rfind("]]}") - begin);
}

TEST(Results, WriteEveryTypeOfValue) {
  const Date leapNight = FromCivil({2004, 2, 29, 23, 59, 59, 997});
  const Date old = FromCivil({1753, 1, 1, 6, 0, 0, 3});
  const struct {
    SqlType type;
    Variant value;
    const char* table;
    const char* json;
  } cases[] = {
      {SqlType::Int, Null(), "NULL", "null"},
      {SqlType::Bit, Null(), "NULL", "null"},
      {SqlType::VarChar, Null(), "NULL", "null"},
      {SqlType::Int, -2147483647, "-2147483647", "-2147483647"},
      {SqlType::SmallInt, int16_t{-7}, "-7", "-7"},
      {SqlType::TinyInt, uint8_t{255}, "255", "255"},
      {SqlType::BigInt, Decimal{u"9223372036854775807"}, "9223372036854775807",
       "9223372036854775807"},
      {SqlType::Bit, true, "1", "true"},
      {SqlType::Bit, false, "0", "false"},
      {SqlType::Float, 0.1, "0.1", "0.1"},
      {SqlType::Float, 1e300, "1e+300", "1e+300"},
      {SqlType::Decimal, Decimal{u"12.50"}, "12.50", "\"12.50\""},
      {SqlType::Money, Currency{-5}, "-0.0005", "\"-0.0005\""},
      {SqlType::Money, Currency{12345678}, "1234.5678", "\"1234.5678\""},
      {SqlType::DateTime, leapNight, "2004-02-29 23:59:59.997", "\"2004-02-29 23:59:59.997\""},
      {SqlType::DateTime, old, "1753-01-01 06:00:00.003", "\"1753-01-01 06:00:00.003\""},
      {SqlType::SmallDateTime, Date{2.5}, "1900-01-01 12:00:00.000", "\"1900-01-01 12:00:00.000\""},
      {SqlType::Date, Date{2}, "1900-01-01", "\"1900-01-01\""},
      {SqlType::Char, u"ab  ", "ab  ", "\"ab  \""},
      {SqlType::VarChar, u"", "", "\"\""},
      {SqlType::VarChar, u"a\tb\r\nc\\", "a\\tb\\r\\nc\\\\", "\"a\\u0009b\\u000d\\u000ac\\\\\""},
      {SqlType::VarChar, Text(u"a\0b", 3), "a\\0b", "\"a\\u0000b\""},
      {SqlType::VarChar, u"say \"é\" \U0001F600", "say \"é\" \U0001F600",
       "\"say \\\"é\\\" \U0001F600\""},
      {SqlType::NVarChar, Text{u'a', 0xD83D, u'b', 0xDE00}, nullptr, "\"a\\ud83db\\ude00\""},
  };
  for (const auto& c : cases) {
    if (c.table) {
      EXPECT_EQ(TableValue(c.type, c.value), c.table);
    }
    EXPECT_EQ(JsonValue(c.type, c.value), c.json);
  }
}

TEST(Results, WriteHeadersRowsAndFailures) {
  const Recordset rows({Of(u"a\tb", SqlType::Int), Of(u"", SqlType::VarChar)},
                       {1, u"x", 2, Null()});
  std::string table;
  AppendTable(table, rows);
  EXPECT_EQ(table, "a\\tb\t\n1\tx\n2\tNULL\n");

  Outcome outcome;
  std::string document;
  AppendDocument(document, outcome);
  EXPECT_EQ(document, "{\"results\": [], \"rowcounts\": [], \"error\": null}\n");

  outcome.results = {rows, Recordset({Of(u"n", SqlType::Decimal)}, {})};
  outcome.rowCounts = {3, 0};
  outcome.failure = Failure(5, u"source", u"no \"x\"");
  outcome.number = 208;
  outcome.line = 7;
  document.clear();
  AppendDocument(document, outcome);
  EXPECT_EQ(document,
            "{\"results\": [{\"columns\": [{\"name\": \"a\\u0009b\", \"type\": \"int\"}, "
            "{\"name\": \"\", \"type\": \"varchar\"}], \"rows\": [[1, \"x\"], [2, null]]}, "
            "{\"columns\": [{\"name\": \"n\", \"type\": \"decimal\"}], \"rows\": []}], "
            "\"rowcounts\": [3, 0], "
            "\"error\": {\"number\": 208, \"message\": \"no \\\"x\\\"\", \"line\": 7}}\n");
}

}  // namespace
}  // namespace vellum250::sqltool
