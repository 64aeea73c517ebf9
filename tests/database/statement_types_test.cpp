// Types of expressions in whole statements.

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace vellum250::database
