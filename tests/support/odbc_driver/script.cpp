#include "support/odbc_driver/script.h"

#include <utility>

namespace vellum250::support {

namespace {

ScriptResult Types() {
  ScriptResult result;
  const std::pair<ScriptColumn, ScriptValue> columns[] = {
      {{u"b", SQL_BIT, 1, 0, u"bit"}, u"1"},
      {{u"ti", SQL_TINYINT, 3, 0, u"tinyint"}, u"255"},
      {{u"si", SQL_SMALLINT, 5, 0, u"smallint"}, u"-32768"},
      {{u"i", SQL_INTEGER, 10, 0, u"int"}, u"-2147483648"},
      {{u"bi", SQL_BIGINT, 19, 0, u"bigint"}, u"-9223372036854775808"},
      {{u"d", SQL_DECIMAL, 10, 2, u"decimal"}, u"-.50"},
      {{u"n", SQL_NUMERIC, 38, 0, u"numeric"}, u"12345678901234567890123456789012345678"},
      {{u"m", SQL_DECIMAL, 19, 4, u"money"}, u"-922337203685477.5808"},
      {{u"sm", SQL_DECIMAL, 10, 4, u"smallmoney"}, u"3.5"},
      {{u"f", SQL_FLOAT, 53, 0, u"float"}, u"0.1"},
      {{u"r", SQL_REAL, 24, 0, u"real"}, u"0.5"},
      {{u"dt", SQL_TYPE_TIMESTAMP, 23, 3, u"datetime"}, u"2024-02-29 13:45:30.123"},
      {{u"sdt", SQL_TYPE_TIMESTAMP, 16, 0, u"smalldatetime"}, u"1900-01-01 00:01:00.000"},
      {{u"da", SQL_TYPE_DATE, 10, 0, u"date"}, u"9999-12-31 00:00:00.000"},
      {{u"c", SQL_CHAR, 5, 0, u"char"}, u"ab   "},
      {{u"vc", SQL_VARCHAR, 20, 0, u"varchar"}, u"Zoë"},
      {{u"max", SQL_WVARCHAR, 0, 0, u"nvarchar"}, u""},
      {{u"tx", SQL_LONGVARCHAR, 2147483647, 0, u"text"}, u"text"},
      {{u"nc", SQL_WCHAR, 5, 0, u"nchar"}, u"\U0001F600   "},
      {{u"nt", SQL_WLONGVARCHAR, 1073741823, 0, u"ntext"}, u"\xD800"},
      {{u"id", SQL_GUID, 36, 0, u"uniqueidentifier"}, u"6F9619FF-8B86-D011-B42D-00C04FC964FF"},
      {{u"vb", SQL_VARBINARY, 8, 0, u"varbinary"}, u"0AFF"},
      {{u"variant", -150, 8000, 0, u"sql_variant"}, u"7"},
      {{u"", SQL_INTEGER, 10, 0, u"int"}, std::nullopt},
      {{u"", SQL_VARCHAR, 20, 0, u"varchar"}, std::nullopt},
  };
  result.rows.emplace_back();
  for (const auto& [column, value] : columns) {
    result.columns.push_back(column);
    result.rows[0].push_back(value);
  }
  return result;
}

ScriptResult Numbers(std::vector<std::u16string> values) {
  ScriptResult result{.columns = {{.name = u"n"}}};
  for (auto& value : values) result.rows.push_back({std::move(value)});
  return result;
}

ScriptResult Long(bool withoutTotal) {
  const ScriptColumn text{u"v", SQL_WLONGVARCHAR, 1073741823, 0, u"ntext"};
  return {.columns = {{.name = u"a"}, text, text, {.name = u"b"}},
          .rows = {{u"1", LongText(), u"", u"2"}, {u"3", std::nullopt, LongText(), u"4"}},
          .withoutTotal = withoutTotal};
}

// "fail 42S02 208" fails so, with the password in its words.
ScriptAnswer Failing(std::u16string_view arguments) {
  ScriptAnswer answer{.executed = SQL_ERROR, .state = std::u16string(arguments.substr(0, 5))};
  for (char16_t digit : arguments.substr(6)) answer.native = answer.native * 10 + (digit - u'0');
  answer.message = u"[Test][Server]It fails for PWD=s3cret;";
  return answer;
}

}  // namespace

ScriptAnswer Answer(std::u16string_view sql) {
  if (sql.starts_with(u"fail ")) return Failing(sql.substr(5));
  if (sql == u"types") return {.results = {Types()}};
  if (sql == u"long") return {.results = {Long(false)}};
  if (sql == u"long without total") return {.results = {Long(true)}};
  if (sql == u"no data") return {.executed = SQL_NO_DATA, .results = {{.rowCount = 0}}};
  if (sql == u"batch") {
    return {.results = {{.rowCount = 2},
                        Numbers({u"1", u"2"}),
                        {},
                        {.rowCount = 0},
                        Numbers({}),
                        Numbers({u"3"})}};
  }
  if (sql == u"half") {
    ScriptResult half = Numbers({u"2", u"3"});
    half.failsInRow = true;
    return {.results = {Numbers({u"1"}), {.rowCount = 5}, half, Numbers({u"4"})}};
  }
  if (sql == u"strange date") {
    return {.results = {{.columns = {{u"dt", SQL_TYPE_TIMESTAMP, 23, 3, u"datetime"}},
                         .rows = {{u"2023-02-29 00:00:00.000"}}}}};
  }
  if (sql == u"strange number") {
    return {.results = {{.columns = {{u"ti", SQL_TINYINT, 3, 0, u"tinyint"}}, .rows = {{u"256"}}}}};
  }
  if (sql == u"strange decimal") {
    return {.results = {{.columns = {{u"d", SQL_DECIMAL, 9, 2, u"decimal"}}, .rows = {{u"1e5"}}}}};
  }
  if (sql.starts_with(u"{? = call")) return {.results = {{.rowCount = 1}, Numbers({u"7"})}};
  return {.results = {{}}};
}

}  // namespace vellum250::support
