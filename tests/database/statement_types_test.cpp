// Types of expressions in whole statements.

#include <gtest/gtest.h>

#include "scratch.h"
#include "support/reference_database.h"

namespace vellum250::database {
namespace {

// SQL Server's number of the failure, 0 for none.
int32_t NumberOf(Connection& connection, const char16_t* sql) {
  const Batch batch = connection.Run(sql);
  return batch.failure ? batch.failure->NativeNumber() : 0;
}

TEST(StatementTypes, LongTextsAreRefusedWhereTheServerRefusesThem) {
  const support::ReferenceDatabase reference(support::Contents::Schema);
  const auto connection = Connection::Open(reference.ConnectionString());
  ASSERT_EQ(NumberOf(*connection, u"CREATE TABLE note (body text, subject varchar(20))"), 0);
  for (const auto& [sql, number] : std::vector<std::pair<const char16_t*, int32_t>>{
           {u"SELECT body FROM note WHERE body = 'x'", 402},
           {u"SELECT body + 'x' FROM note", 402},
           {u"SELECT body FROM note ORDER BY body", 306},
           {u"SELECT body AS b FROM note ORDER BY 1", 306},
           {u"SELECT count(*) FROM note GROUP BY body", 306},
           {u"SELECT DISTINCT body FROM note", 421},
           {u"SELECT body FROM note UNION SELECT subject FROM note", 5335},
           {u"SELECT max(body) FROM note", 8117},
           {u"SELECT count(body) FROM note", 8117},
           {u"SELECT len(body) FROM note", 8116},
           {u"SELECT replace(body, 'a', 'b') FROM note", 8116},
           {u"SELECT cast(body AS int) FROM note", 529},
           {u"SELECT body FROM note UNION ALL SELECT subject FROM note", 0},
           {u"SELECT substring(body, 1, 5), datalength(body) FROM note WHERE body LIKE 'a%'", 0},
           {u"SELECT isNull(body, ''), charindex('a', body), cast(body AS varchar(9)) FROM note",
            0},
       }) {
    EXPECT_EQ(NumberOf(*connection, sql), number) << ToUtf8(sql);
  }
}

TEST(StatementTypes, NumericFunctionsWidenSmallTypes) {
  const support::ReferenceDatabase reference(support::Contents::Schema);
  const auto connection = Connection::Open(reference.ConnectionString());
  const Recordset result = connection->Execute(
      u"DECLARE @t tinyint, @m smallmoney, @d decimal(5,2) SELECT @t = 250, @m = 2, @d = 2.5 "
      u"SELECT abs(@t), round(@m, 0), power(@d, 2), floor(@d), sign('-3'), power(2, 0.5)");
  std::string types;
  for (const Column& column : result.Columns()) types += ToUtf8(SqlTypeName(column.type)) + " ";
  EXPECT_EQ(types, "int money decimal decimal float int ");
  EXPECT_EQ(result.Columns()[2].precision, 38);
  EXPECT_EQ(result.Columns()[3].scale, 0);
  EXPECT_EQ(result.At(0, 2), Variant(Decimal{u"6.25"}));
}

// "int 5"; "!245" for a failure.
std::string Outcome(Scratch& scratch, const Text& sql) {
  const Batch batch = scratch.Get().Run(sql);
  if (batch.failure) return "!" + std::to_string(batch.failure->NativeNumber());
  const Recordset& result = batch.results.at(0);
  return ToUtf8(SqlTypeName(result.Columns()[0].type)) + " " + Scratch::RowsOf(result);
}

TEST(StatementTypes, ExpressionsHaveTypeAndValueOrFailure) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE t (k int, n int, s varchar(9), c char(3)) INSERT INTO t "
                           u"VALUES (1, NULL, NULL, 'a'), (2, 10, 'Zo\u00EB', NULL)"),
            "");
  for (const auto& [expression, outcome] : std::vector<std::pair<const char16_t*, const char*>>{
           // What NULL alone cannot be.
           {u"count(NULL)", "!8117"},
           {u"max(NULL)", "!8117"},
           {u"coalesce(NULL, NULL)", "!4127"},
           {u"nullif(NULL, 1)", "!4151"},
           {u"CASE WHEN 1 = 1 THEN NULL END", "!8133"},
           {u"substring(NULL, 1, 1)", "!8116"},
           {u"substring(12345, 2, 2)", "!8116"},
           {u"left(12345, 2)", "varchar 12"},
           // A branch that is not taken is not converted.
           {u"CASE WHEN 1 = 1 THEN 1 ELSE 'x' END", "int 1"},
           {u"CASE WHEN 1 = 0 THEN 1 ELSE 'x' END", "!245"},
           {u"(SELECT isNull(n, 'x') FROM t WHERE k = 2)", "int 10"},
           {u"(SELECT isNull(n, 'x') FROM t WHERE k = 1)", "!245"},
           {u"coalesce(1, 'x')", "int 1"},
           {u"(SELECT isNull(left(s, 1), 'none') FROM t WHERE k = 1)", "varchar n"},
           {u"(SELECT isNull(c, 'none') FROM t WHERE k = 2)", "char non"},
           {u"(SELECT coalesce(c, 'none') FROM t WHERE k = 2)", "varchar none"},
           // Grouping names the clause.
           {u"k FROM t GROUP BY s", "!8120"},
           {u"s FROM t GROUP BY s HAVING k > 1", "!8121"},
           {u"s FROM t GROUP BY s ORDER BY k", "!8127"},
           // Characters and the code page of varchar.
           {u"char(65)", "char A"},
           {u"char(65) + char(66)", "char AB"},
           {u"nchar(1046)", "nchar \xD0\x96"},
           {u"'\u0416\u0141\u20AC\uFF21\u0159\u0111'",
            "varchar ?L\xE2\x82\xAC"
            "Ard"},
           {u"cast(N'\U0001F600' AS varchar(9))", "varchar ??"},
           {u"N'\u0416' + '\u0416'", "nvarchar \xD0\x96?"},
           {u"datalength(N'\u0416')", "int 2"},
           {u"ascii(N'\u0141')", "int 76"},
           {u"1 WHERE N'a ' LIKE N'a'", "int (none)"},
           {u"1 WHERE 'a ' LIKE 'a'", "int 1"},
           {u"patindex('%', 'abc')", "int 1"},
           // A backslash joins lines, ODBC's escapes are dates.
           {u"'a\\\r\nb\\\nc\\d\\' + 'e'", "varchar abc\\d\\e"},
           {u"datalength(N'a\\\n')", "int 2"},
           {u"datediff(minute, {d '2004-02-29'}, {ts '2004-02-29 13:45:30'})", "int 825"},
           {u"cast(N'\u0416bcd' AS national character varying(2))",
            "nvarchar \xD0\x96"
            "b"},
           // Numbers and types as they are written.
           {u"cast('1d3' AS float)", "float 1000"},
           {u"isnumeric('1D3')", "int 1"},
           {u"$-1.5", "decimal -1.5000"},
           {u"cast('x' AS varchar(0))", "!1001"},
           {u"cast('x' AS nonsense)", "!243"},
       }) {
    EXPECT_EQ(Outcome(scratch, Text(u"SELECT ") + expression), outcome) << ToUtf8(expression);
  }
}

}  // namespace
}  // namespace vellum250::database
