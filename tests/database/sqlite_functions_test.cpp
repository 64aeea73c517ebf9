#include <sqlite3.h>

#include <memory>
#include <utility>

#include "database/embedded/functions.h"
#include "stored_values.h"

namespace vellum250::database::embedded {
namespace {

class SqliteFunctions : public testing::Test {
 protected:
  SqliteFunctions() {
    sqlite3* opened = nullptr;
    EXPECT_EQ(sqlite3_open(":memory:", &opened), SQLITE_OK);
    database_.reset(opened);
    RegisterFunctions(opened, context_);
  }

  // The first value of the first row; `{type}` in the statement stands for its code.
  std::string Run(std::string sql) {
    for (size_t begin = 0; (begin = sql.find('{')) != std::string::npos;) {
      const size_t end = sql.find('}', begin);
      const TypeInfo type = T(sql.substr(begin + 1, end - begin - 1));
      sql.replace(begin, end - begin + 1, std::to_string(Encode(type)));
    }
    return Shown([&]() -> Value {
      sqlite3_stmt* prepared = nullptr;
      EXPECT_EQ(sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &prepared, nullptr), SQLITE_OK)
          << sql << ": " << sqlite3_errmsg(database_.get());
      const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared,
                                                                            &sqlite3_finalize);
      const int code = sqlite3_step(prepared);
      if (context_.failure) throw *std::exchange(context_.failure, std::nullopt);
      EXPECT_EQ(code, SQLITE_ROW) << sql << ": " << sqlite3_errmsg(database_.get());
      switch (sqlite3_column_type(prepared, 0)) {
        case SQLITE_NULL:
          return {};
        case SQLITE_INTEGER:
          return int64_t{sqlite3_column_int64(prepared, 0)};
        case SQLITE_FLOAT:
          return sqlite3_column_double(prepared, 0);
        default: {
          const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(prepared, 0));
          return std::string(text, static_cast<size_t>(sqlite3_column_bytes(prepared, 0)));
        }
      }
    });
  }

  FunctionContext context_;
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_{nullptr, &sqlite3_close};
};

TEST_F(SqliteFunctions, TakeAndGiveValues) {
  for (const auto& [sql, expected] : std::vector<std::pair<const char*, std::string>>{
           {"v_convert('12', {varchar(2)}, {int})", "12"},
           {"v_convert('2004-02-29 13:45:30.000', {datetime}, {varchar(30)}, 103)", "29/02/2004"},
           {"v_convert('abc', {varchar(3)}, {char(5)})", "abc  "},
           {"v_convert(NULL, {varchar(3)}, {int})", "NULL"},
           {"v_convert('x', {varchar(1)}, {int})", "!245"},
           {"v_assign('abc', {varchar(3)}, {varchar}, 'c', 't')", "abc"},
           {"v_assign('abcd', {varchar(4)}, {varchar(3)}, 'c', 't')", "!2628"},
           {"v_assign('abc', {varchar(4)}, {char(4)}, 'c', 't')", "abc "},
           {"v_assign(300, {int}, {tinyint}, 'c', 't')", "!220"},
           {"v_add(1, 2, {int})", "3"},
           {"v_add('1', 2, {int}, {varchar(1)}, {int})", "3"},
           {"v_add(2147483647, 1, {int})", "!8115"},
           {"v_div(7, 20, {decimal(8,6)}, {int}, {decimal(2,1)})", "3500000"},
           {"v_mod(7, 0, {int})", "!8134"},
           {"v_neg(1.5, {float})", "-1.5"},
           {"v_neg(NULL, {int})", "NULL"},
           {"v_len('abc  ')", "3"},
           {"v_len(char(97, 0, 98))", "3"},
           {"v_datalength('abc', {nvarchar(3)})", "6"},
           {"v_left('abcdef', 2)", "ab"},
           {"v_left('abc', -1)", "!537"},
           {"v_right('abcdef', 2)", "ef"},
           {"v_right('abc', 10)", "abc"},
           {"v_right('abc', -1)", "!536"},
           {"v_right('abc', 9223372036854775807)", "abc"},
           {"v_substring('abcdef', 2, 3)", "bcd"},
           {"v_substring('abc', 4, 2)", ""},
           {"v_substring('abc', 1, -1)", "!537"},
           {"v_substring('abc', -9223372036854775808, 9223372036854775807)", ""},
           {"v_charindex('C', 'abcabc', 4)", "6"},
           {"v_patindex('%[0-9]%', 'M0001')", "2"},
           {"v_replace('a.b', '.', NULL)", "NULL"},
           {"v_stuff('abc', 1, 1, NULL)", "bc"},
           {"v_stuff('abc', NULL, 1, 'x')", "NULL"},
           {"v_ltrim('  a ')", "a "},
           {"v_rtrim('  a ')", "  a"},
           {"v_upper('a')", "A"},
           {"v_str(123.6)", "       124"},
           {"v_space(2)", "  "},
           {"v_space(-1)", "NULL"},
           {"v_replicate('ab', 2, {varchar(2)})", "abab"},
           {"v_char(8364)", "NULL"},
           {"v_nchar(8364)", "\xE2\x82\xAC"},
           {"v_quotename('a]')", "[a]]]"},
           {"v_like('50%', '50!%', '!')", "1"},
           {"v_like('50%', '50!%', '!!')", "!506"},
           {"v_like('a ', 'a')", "1"},
           {"v_nlike('a ', 'a')", "0"},
           {"v_dateadd('dd', 1, '2004-02-29 13:45:30.000', {datetime})", "2004-03-01 13:45:30.000"},
           {"v_datediff('day', '2004-02-29', '2004-02-29 13:45:30.000')", "0"},
           {"v_datediff('fortnight', '2004-02-29', '2004-02-29 13:45:30.000')", "!155"},
           {"v_datename('dw', '2004-02-29 13:45:30.000')", "Sunday"},
           {"v_isdate('2004-02-30')", "0"},
           {"v_isdate('20040229')", "1"},
           {"v_isdate(NULL)", "0"},
           {"v_abs(-5, {int})", "5"},
           {"v_round(123456, 1, {decimal(6,3)})", "123500"},
           {"v_round(25, 0, 1, {decimal(2,1)})", "20"},
           {"v_sqrt(-1.0)", "!3623"},
           {"v_isnumeric('1x', {varchar(2)})", "0"},
           {"v_isnumeric(NULL, {int})", "0"},
           {"length(v_newid())", "36"},
           {"v_newid() = v_newid()", "0"},
           {"'abc' = 'ABC  ' COLLATE TSQL", "1"},
           {"v_left(x'FFF0', 2) IS NOT NULL", "1"},
       }) {
    EXPECT_EQ(Run(std::string("SELECT ") + sql), expected) << sql;
  }
}

TEST_F(SqliteFunctions, SumAndAverage) {
  const auto over = [&](const char* aggregate, const char* values) {
    return Run(std::string("SELECT ") + aggregate + " FROM (" + values + ") ");
  };
  const char* numbers = "SELECT 2 AS x UNION ALL SELECT 5 UNION ALL SELECT NULL UNION ALL SELECT 5";
  EXPECT_EQ(over("v_sum_int(x)", numbers), "12");
  EXPECT_EQ(over("v_sum_int(DISTINCT x)", numbers), "7");
  EXPECT_EQ(over("v_avg_int(x)", numbers), "4");
  EXPECT_EQ(over("v_avg_int(DISTINCT x)", numbers), "3");
  EXPECT_EQ(over("v_sum_float(x)", "SELECT 0.5 AS x UNION ALL SELECT 1"), "1.5");
  EXPECT_EQ(over("v_sum_int(x)", "SELECT 1 AS x WHERE 0"), "NULL");
  EXPECT_EQ(over("v_avg_decimal(x)", "SELECT NULL AS x"), "NULL");
  EXPECT_EQ(over("v_sum_int(x)", "SELECT 2147483647 AS x UNION ALL SELECT 1"), "!8115");
  const char* large = "SELECT 9223372036854775807 AS x UNION ALL SELECT 1";
  EXPECT_EQ(over("v_sum_bigint(x)", large), "!8115");
  EXPECT_EQ(over("v_sum_decimal(x)", large), "!unsupported");
  EXPECT_STREQ(SumFunction(T("smallint")), "v_sum_int");
  EXPECT_STREQ(SumFunction(T("smallmoney")), "v_sum_bigint");
  EXPECT_STREQ(AverageFunction(T("decimal(9,2)")), "v_avg_decimal");
  EXPECT_STREQ(AverageFunction(T("real")), "v_avg_float");
}

TEST(CurrentMoment, IsADatetime) {
  const std::string now = CurrentMoment();
  EXPECT_EQ(now.size(), 23u);
  EXPECT_GT(now, "2020");
}

}  // namespace
}  // namespace vellum250::database::embedded
