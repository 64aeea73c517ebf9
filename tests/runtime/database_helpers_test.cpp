#include "runtime/database_helpers.h"

#include "automation/conversion.h"
#include "runtime/trap.h"
#include "support/component_test.h"

namespace vellum250 {
namespace {

using DatabaseHelpers = support::ComponentTest;

TEST_F(DatabaseHelpers, ReadTheFirstFieldAsTrimmedText) {
  const struct {
    TextView sql;
    TextView text;  // "" where GetScalar gives false
  } cases[] = {
      {u"SELECT count(*) FROM individual WHERE individual_ref = 99", u"0"},
      {u"SELECT count(*) FROM individual", u"2"},
      {u"SELECT surname, individual_ref FROM individual ORDER BY individual_ref", u"Smith"},
      {u"SELECT individual_ref FROM individual WHERE surname = 'Jones'", u"2"},
      {u"SELECT surname FROM individual WHERE individual_ref = 99", u""},
      {u"SELECT title FROM individual WHERE individual_ref = 1", u""},
      {u"SELECT '   '", u""},
      {u"SELECT '  a b  '", u"a b"},
      {u"SELECT convert(bit, 1)", u"True"},
      {u"SELECT -5", u"-5"},
      {u"UPDATE individual SET title = 'Dr' WHERE individual_ref = 99", u""},
  };
  for (const auto& c : cases) {
    const Variant scalar = GetScalar(c.sql);
    EXPECT_EQ(scalar, c.text.empty() ? Variant(false) : Variant(c.text)) << ToUtf8(c.sql);
    EXPECT_EQ(GetScalarText(c.sql), c.text) << ToUtf8(c.sql);
  }
  EXPECT_EQ(GetScalarNumber(cases[1].sql), 2);
  EXPECT_EQ(GetScalarNumber(cases[4].sql), 0);
}

TEST_F(DatabaseHelpers, RememberAConnectionStringThatIsNotEmpty) {
  support::ReferenceDatabase other(support::Contents::Schema);
  const TextView sql = u"SELECT count(*) FROM individual";
  EXPECT_EQ(GetScalar(sql), Variant(u"2"));
  EXPECT_EQ(GetScalar(sql, other.ConnectionString()), Variant(u"0"));
  EXPECT_EQ(GetConnectionString(), other.ConnectionString());
  ExecuteSql(u"INSERT INTO individual (surname) VALUES ('New')");
  EXPECT_EQ(GetScalarText(sql), u"1");
  InsertAndGetIdentity(u"INSERT INTO individual (surname) VALUES ('B')",
                       database.ConnectionString());
  EXPECT_EQ(GetScalarText(sql), u"3");
  // Also one that does not work is remembered.
  EXPECT_THROW(ExecuteSql(sql, u"Driver=Vellum250;Database=/no/such/file;PWD=hunter2;"), Failure);
  EXPECT_THROW(GetScalar(sql), Failure);
}

TEST_F(DatabaseHelpers, WithoutAConnectionStringFailInWords) {
  context.connectionString.clear();
  EXPECT_THROW(ExecuteSql(u"SELECT 1"), Failure);
  EXPECT_THROW(GetScalar(u"SELECT 1"), Failure);
  EXPECT_THROW(GetScalarText(u"SELECT 1"), Failure);
  // Only what comes after the connection is swallowed.
  EXPECT_THROW(InsertAndGetIdentity(u"INSERT INTO individual (surname) VALUES ('B')"), Failure);
}

TEST_F(DatabaseHelpers, GiveTheIdentityOfANewRowOrFalse) {
  EXPECT_EQ(ToInt32(InsertAndGetIdentity(u"INSERT INTO individual (surname) VALUES ('New')")), 3);
  EXPECT_EQ(GetScalarText(u"SELECT surname FROM individual WHERE individual_ref = 3"), u"New");
  for (TextView sql : {
           u"INSERT INTO individual_loc (individual_ref, location_ref) VALUES (1, 0)",
           u"INSERT INTO individual (no_such) VALUES (1)",
           u"INSERT INTO individual (surname) VALUES (",
       }) {
    EXPECT_EQ(InsertAndGetIdentity(sql), Variant(false)) << ToUtf8(sql);
  }
  EXPECT_EQ(GetScalarText(u"SELECT count(*) FROM individual_loc"), u"0");
}

TEST_F(DatabaseHelpers, QuoteForSql) {
  EXPECT_EQ(SqlQuote(u"O'Neil"), u"O''Neil");
  EXPECT_EQ(SqlQuote(u"'''"), u"''''''");
  EXPECT_EQ(SqlQuote(u"plain \"text\" \u2019"), u"plain \"text\" \u2019");
  EXPECT_EQ(SqlQuote(u""), u"");
}

TEST_F(DatabaseHelpers, TheTrapReportsOnlyWhileDebuggingIsOn) {
  const auto fail = [&] {
    int32_t result = 0;
    return Trapped(report, u" of 9", result, [&](Step& step) {
      result = 4;
      step.Next();
      ExecuteSql(step.Running(u"UPDATE no_such SET a = 1"));
      result = 5;
    });
  };
  EXPECT_THROW(fail(), Failure);
  EXPECT_EQ(lastError, u"");
  EXPECT_EQ(lastSql, u"");

  DebugOn(true);
  EXPECT_EQ(fail(), 4);
  EXPECT_TRUE(lastError.starts_with(u"Description: ")) << ToUtf8(lastError);
  EXPECT_NE(lastError.find(u"no_such"), Text::npos) << ToUtf8(lastError);
  EXPECT_NE(lastError.find(u"<br>Source: "), Text::npos) << ToUtf8(lastError);
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 2 of 9")) << ToUtf8(lastError);
  EXPECT_EQ(lastSql, u"UPDATE no_such SET a = 1");

  // Anything that is thrown, also what is no failure of a script.
  int32_t result = 1;
  Trapped(report, u"", result, [](Step&) { throw std::bad_alloc(); });
  EXPECT_EQ(lastError, u"Description: Out of memory<br>Source: vellum250<br>Step: 1");
  EXPECT_EQ(result, 1);
}

}  // namespace
}  // namespace vellum250
