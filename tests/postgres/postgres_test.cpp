// ODBC against PostgreSQL through its Unicode driver: a server with sessions, batches, time-outs
// and passwords, that can be stopped under a connection.
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <memory>

#include "automation/locale.h"
#include "database/connection.h"
#include "database/odbc/pool.h"
#include "support/postgres_server.h"

namespace vellum250::database {
namespace {

class Postgres : public testing::Test {
 protected:
  static void SetUpTestSuite() { server_ = std::make_unique<support::PostgresServer>(); }
  static void TearDownTestSuite() { server_.reset(); }

  static std::unique_ptr<Connection> Open(TextView further = u"UID=web;") {
    return Connection::Open(server_->ConnectionString() + Text(further));
  }

  inline static std::unique_ptr<support::PostgresServer> server_;
};

Variant Scalar(Connection& connection, TextView sql, std::vector<Variant> parameters = {}) {
  return connection.Execute(sql, parameters).Field(0);
}

constexpr char16_t kSession[] = u"select pg_backend_pid()";

std::string Told(const Failure& failure) {
  char number[10];
  std::snprintf(number, sizeof number, "%08X ", static_cast<unsigned>(failure.Number()));
  return number + std::string(failure.what());
}

// What becomes of it: "ok", or the number and the words of the failure.
std::string Outcome(TextView further, TextView sql = u"select 1") {
  try {
    const Batch batch = Connection::Open(further)->Run(sql);
    return batch.failure ? Told(*batch.failure) : "ok";
  } catch (const Failure& failure) {
    return Told(failure);
  }
}

TEST_F(Postgres, TakesAndGivesEachType) {
  Text longText(5 << 20, u'x');
  for (size_t i = 0; i + 1 < longText.size(); i += 7) longText[i] = u'\u4E2D';
  for (size_t i = 1; i + 2 < longText.size(); i += 1001) longText.replace(i, 2, u"\U0001F600");
  const Date moment = FromCivil({2024, 2, 29, 13, 45, 30, 123});
  const struct {
    const char16_t* declared;
    Variant given;
    SqlType type;
    Variant read;
  } cases[] = {
      {u"boolean", true, SqlType::Bit, true},
      {u"boolean", false, SqlType::Bit, false},
      {u"smallint", int16_t{-32768}, SqlType::SmallInt, int16_t{-32768}},
      {u"smallint", uint8_t{255}, SqlType::SmallInt, int16_t{255}},
      {u"int", int32_t{-2147483647 - 1}, SqlType::Int, int32_t{-2147483647 - 1}},
      {u"bigint", Decimal{u"-9223372036854775808"}, SqlType::BigInt,
       Decimal{u"-9223372036854775808"}},
      {u"numeric(38,4)", Decimal{u"-12345678901234567890.5000"}, SqlType::Decimal,
       Decimal{u"-12345678901234567890.5000"}},
      {u"numeric(10,2)", Currency{125000}, SqlType::Decimal, Decimal{u"12.50"}},
      {u"double precision", 0.1, SqlType::Float, 0.1},
      {u"double precision", -1e300, SqlType::Float, -1e300},
      {u"real", 0.5, SqlType::Real, 0.5},
      {u"date", FromCivil({9999, 12, 31}), SqlType::Date, FromCivil({9999, 12, 31})},
      {u"timestamp", moment, SqlType::DateTime, moment},
      {u"timestamp", FromCivil({1753, 1, 1}), SqlType::DateTime, FromCivil({1753, 1, 1})},
      {u"char(5)", u"ab", SqlType::NChar, u"ab   "},
      {u"varchar(20)", u"Zoë \u4E2D\u6587 \U0001F600", SqlType::NVarChar,
       u"Zoë \u4E2D\u6587 \U0001F600"},
      {u"varchar(20)", u"", SqlType::NVarChar, u""},
      {u"varchar(20)", u"it's ? \\ {x}", SqlType::NVarChar, u"it's ? \\ {x}"},
      {u"text", longText, SqlType::NText, longText},
      {u"int", Null{}, SqlType::Int, Null{}},
      {u"boolean", Null{}, SqlType::Bit, Null{}},
      {u"timestamp", Variant(), SqlType::DateTime, Null{}},
      {u"text", Null{}, SqlType::NText, Null{}},
  };
  const auto connection = Open();
  for (const auto& c : cases) {
    SCOPED_TRACE(ToUtf8(c.declared));
    connection->Execute(Text(u"create temporary table types (a int, v ") + c.declared +
                        u", z int)");
    connection->Execute(u"insert into types values (1, ?, 2)", std::vector<Variant>{c.given});
    const Recordset rows = connection->Execute(u"select a, v, z from types");
    connection->Execute(u"drop table types");
    ASSERT_EQ(rows.RowCount(), 1u);
    EXPECT_EQ(SqlTypeName(rows.Columns()[1].type), SqlTypeName(c.type));
    EXPECT_TRUE(rows.At(0, 1) == c.read);
    EXPECT_EQ(rows.At(0, 2), Variant(int32_t{2}));
  }
}

TEST_F(Postgres, RunsBatchesWithResultsOfAllKinds) {
  const auto connection = Open();
  const Batch batch = connection->Run(
      u"create temporary table größe (länge int primary key, n text);"
      u"insert into größe values (1, 'é'), (2, 'x'); select länge, n from größe order by 1;"
      u"update größe set n = 'y'; select n from größe where länge = 77; delete from größe");
  ASSERT_FALSE(batch.failure) << batch.failure->what();
  EXPECT_EQ(batch.rowCounts, (std::vector<int64_t>{0, 2, 2, 2}));
  ASSERT_EQ(batch.results.size(), 2u);
  EXPECT_EQ(batch.results[0].Columns()[0].name, u"länge");
  EXPECT_EQ(batch.results[0].RowCount(), 2u);
  EXPECT_EQ(batch.results[0].At(0, 1), Variant(u"é"));
  EXPECT_TRUE(batch.results[1].Eof());
  EXPECT_EQ(connection->Run(u"delete from größe").rowCounts, std::vector<int64_t>{0});
  EXPECT_EQ(
      Scalar(*connection, u"select ? || cast(? as int) - ?", {u"a?'", int32_t{40}, int32_t{-2}}),
      Variant(u"a?'42"));
}

TEST_F(Postgres, CallsFunctionsByName) {
  const auto connection = Open();
  connection->Execute(
      u"create function pg_temp.weigh(a int, b text, c numeric) returns int language sql as"
      u" 'select a + length(b) + case when c = 1.50 then 100 else 0 end'");
  const std::vector<ProcedureParameter> parameters = {
      {u"@a", SqlType::Int, int32_t{7}},
      {u"@b", SqlType::NVarChar, u"Zo\u00EB \u4E2D"},
      {u"@c", SqlType::Decimal, Decimal{u"1.50"}}};
  EXPECT_EQ(connection->Call(u"pg_temp.weigh", parameters).returnValue, 112);
  EXPECT_THROW(connection->Call(u"pg_temp.nosuch", parameters), DatabaseFailure);
}

TEST_F(Postgres, NumbersFailures) {
  const Text web = server_->ConnectionString() + u"UID=web;";
  Open()->Execute(u"create table kept (i int primary key, n int not null check (n < 100))");
  Open()->Execute(u"insert into kept values (1, 1)");
  const struct {
    const char16_t* sql;
    const char* outcome;
  } cases[] = {
      {u"selec 1", "80040E14 ERROR: syntax error"},
      {u"select * from nosuch", "80040E14 ERROR: relation \"nosuch\" does not exist"},
      {u"select größe from kept", "80040E14 ERROR: column \"größe\" does not exist"},
      {u"insert into kept values (1, 2)", "80040E2F ERROR: duplicate key"},
      {u"insert into kept values (2, null)", "80040E2F ERROR: null value"},
      {u"insert into kept values (2, 100)", "80040E2F ERROR: new row for relation"},
      {u"insert into kept values (2, 2); select 1/0", "80004005 ERROR: division by zero"},
      {u"begin; insert into kept values (3, 3)", "ok"},
      {u"select 'x'::int", "80004005 ERROR: invalid input syntax"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Outcome(web, c.sql).rfind(c.outcome, 0), 0u) << Outcome(web, c.sql);
  }
  // Neither a failed batch nor a transaction that nobody has ended leaves anything.
  EXPECT_EQ(Scalar(*Open(), u"select count(*)::int from kept"), Variant(int32_t{1}));
  EXPECT_EQ(Outcome(web + u"Command Timeout=1", u"select pg_sleep(20)").rfind("80040E31", 0), 0u);
}

TEST_F(Postgres, TellsWhyItCannotConnectAndNeverThePassword) {
  const struct {
    const char16_t* further;
    const char* words;
  } cases[] = {
      {u"UID=locked;PWD={s3;c}}ret};", "ok"},
      {u"UID=locked;pwd = {s3;c}}ret} ;", "ok"},
      {u"UID=locked;Password=wr0ng;", "password authentication failed for user \"locked\""},
      {u"uid=locked;password={wr0ng}", "password authentication failed"},
      {u"UID=wr0ng;PWD=wr0ng", "role \"***\" does not exist"},
      {u"UID=web;PWD=wr0ng;Database=nosuch", "database \"nosuch\" does not exist"},
      {u"UID=web;PWD={wr0ng};Server=/nonexistent/wr0", "Is the server running"},
  };
  for (const auto& c : cases) {
    // Of two values the driver takes the last.
    const std::string outcome = Outcome(server_->ConnectionString() + c.further);
    EXPECT_NE(outcome.find(c.words), std::string::npos) << outcome;
    EXPECT_EQ(outcome.find("wr0ng"), std::string::npos) << outcome;
  }
}

TEST_F(Postgres, LeavesASessionToTheProcessThatBeganIt) {
  const Variant session = Scalar(*Open(), kSession);
  const pid_t child = fork();
  if (child == 0) {
    const bool isOther = Scalar(*Open(), kSession) != session;
    odbc::CloseExpired(std::chrono::steady_clock::time_point::max());
    _exit(isOther ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Scalar(*Open(), kSession), session);
}

TEST_F(Postgres, KeepsItsMemoryHoweverManyAreOpened) {
  const auto growth = [](int times, bool anew) {
    const auto cycle = [anew] {
      EXPECT_EQ(Scalar(*Open(), u"select 7"), Variant(int32_t{7}));
      if (anew) odbc::CloseExpired(std::chrono::steady_clock::time_point::max());
    };
    for (int i = 0; i < 20; ++i) cycle();
    const size_t before = mallinfo2().uordblks;
    for (int i = 0; i < times; ++i) cycle();
    return static_cast<int64_t>(mallinfo2().uordblks - before);
  };
  EXPECT_LT(growth(2000, false), 50'000);
  EXPECT_LT(growth(100, true), 50'000);
}

TEST_F(Postgres, ReplacesIdleConnectionsThatDied) {
  const Variant session = Scalar(*Open(), kSession);
  EXPECT_EQ(Scalar(*Open(), kSession), session) << "no connection was kept";
  usleep(150'000);
  EXPECT_EQ(Scalar(*Open(), kSession), session) << "a live connection was replaced";

  const auto leaveSeveral = [] {
    std::vector<std::unique_ptr<Connection>> several;
    for (int i = 0; i < 3; ++i) several.push_back(Open());
  };
  // So long that each is asked before it is used, and so shortly that the first to fail tells of
  // the others.
  for (const useconds_t rest : {150'000, 0}) {
    leaveSeveral();
    const auto held = Open();
    server_->Stop();
    // What was open cannot go on, and does not begin anew by itself: its state is gone.
    EXPECT_TRUE(held->Run(kSession).failure);
    usleep(rest);
    if (rest == 0) Open()->Run(kSession);
    const std::string outcome = Outcome(server_->ConnectionString() + u"UID=web;");
    EXPECT_NE(outcome.find("Is the server running"), std::string::npos) << outcome;
    server_->Start();
    EXPECT_TRUE(held->Run(kSession).failure);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Outcome(server_->ConnectionString() + u"UID=web;"), "ok");
  }
}

}  // namespace
}  // namespace vellum250::database
