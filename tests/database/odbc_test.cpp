// ODBC against the SQLite driver, a driver with narrow entry points: the driver manager converts
// statements and messages by the process's locale, while values are UTF-16 all the way.
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <filesystem>
#include <thread>

#include "automation/locale.h"
#include "database/connection.h"
#include "database/provider.h"

namespace vellum250::database {
namespace {

class Odbc : public testing::Test {
 protected:
  static void SetUpTestSuite() { std::setlocale(LC_CTYPE, "C.UTF-8"); }
  static void TearDownTestSuite() { std::setlocale(LC_CTYPE, "C"); }

  void SetUp() override {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    file_ = std::filesystem::temp_directory_path() /
            ("vellum250_odbc_" + std::to_string(getpid()) + "_" + test->name() + ".db");
    std::filesystem::remove(file_);
  }
  void TearDown() override { std::filesystem::remove(file_); }

  std::unique_ptr<Connection> Open(TextView further = {}) const {
    return odbc::Open(ConnectionString::Parse(u"Driver=SQLite3;Database=" +
                                              FromUtf8(file_.string()) + u";" + Text(further)));
  }

  std::filesystem::path file_;
};

Variant Scalar(Connection& connection, TextView sql, std::vector<Variant> parameters = {}) {
  const Recordset rows = connection.Execute(sql, parameters);
  return rows.Eof() ? Variant() : rows.Field(0);
}

TEST_F(Odbc, KeepsTheTypeOfAColumn) {
  const Date moment = FromCivil({2024, 2, 29, 13, 45, 30, 123});
  const struct {
    const char16_t* declared;
    Variant stored;
    SqlType type;
    Variant read;
  } cases[] = {
      {u"bit", true, SqlType::Bit, true},
      {u"bit", false, SqlType::Bit, false},
      {u"tinyint", uint8_t{127}, SqlType::TinyInt, uint8_t{127}},
      {u"smallint", int16_t{-32768}, SqlType::SmallInt, int16_t{-32768}},
      {u"int", int32_t{-2147483647 - 1}, SqlType::Int, int32_t{-2147483647 - 1}},
      {u"int", uint8_t{255}, SqlType::Int, int32_t{255}},
      {u"bigint", Decimal{u"-9007199254740993"}, SqlType::BigInt, Decimal{u"-9007199254740993"}},
      {u"float", 0.1, SqlType::Float, 0.1},
      {u"double", -1e300, SqlType::Float, -1e300},
      {u"datetime", moment, SqlType::DateTime, moment},
      {u"datetime", FromCivil({1753, 1, 1}), SqlType::DateTime, FromCivil({1753, 1, 1})},
      {u"date", FromCivil({9999, 12, 31}), SqlType::Date, FromCivil({9999, 12, 31})},
      {u"varchar(20)", u"Zoë", SqlType::VarChar, u"Zoë"},
      {u"varchar(20)", Decimal{u"12345678901234567890.50"}, SqlType::VarChar,
       u"12345678901234567890.50"},
      {u"varchar(20)", Currency{-12345}, SqlType::VarChar, u"-1.2345"},
      {u"text", u"Zoë", SqlType::Text, u"Zoë"},
      {u"int", Null{}, SqlType::Int, Null{}},
      {u"datetime", Variant(), SqlType::DateTime, Null{}},
      {u"varchar(20)", Null{}, SqlType::VarChar, Null{}},
  };
  const auto connection = Open();
  for (const auto& c : cases) {
    SCOPED_TRACE(ToUtf8(c.declared));
    connection->Execute(u"drop table if exists t");
    connection->Execute(Text(u"create table t (v ") + c.declared + u")");
    connection->Execute(u"insert into t values (?)", std::vector<Variant>{c.stored});
    const Recordset rows = connection->Execute(u"select v from t");
    ASSERT_EQ(rows.RowCount(), 1u);
    EXPECT_EQ(rows.Columns()[0].name, u"v");
    EXPECT_EQ(SqlTypeName(rows.Columns()[0].type), SqlTypeName(c.type));
    EXPECT_TRUE(rows.At(0, 0) == c.read);
  }
}

TEST_F(Odbc, CarriesTextsOfAnyLength) {
  const auto connection = Open();
  connection->Execute(u"create table t (short varchar(10), v text, i int)");
  Text megabyte(1 << 20, u'x');
  for (size_t i = 0; i < megabyte.size(); ++i) megabyte[i] = static_cast<char16_t>(0x100 + i % 999);
  std::vector<Text> texts = {u"", u" ", u"'", u"Zoë \u4E2D\u6587 \U0001F600", megabyte};
  // Around the first piece, and a pair that it would cut in two.
  for (size_t length : {1022, 1023, 1024, 1025, 2046, 2047, 4000, 4001}) {
    texts.push_back(Text(length - 2, u'é') + u"\U0001F600");
  }
  for (const Text& text : texts) {
    connection->Execute(u"delete from t");
    connection->Execute(u"insert into t values ('a', ?, 7)", std::vector<Variant>{text});
    const Recordset rows = connection->Execute(u"select short, v, i from t");
    ASSERT_TRUE(rows.At(0, 1).IsText()) << text.size();
    EXPECT_TRUE(rows.At(0, 1).As<Text>() == text) << text.size();
    // The neighbours of a long column are read as well.
    EXPECT_EQ(rows.At(0, 0), Variant(u"a"));
    EXPECT_EQ(rows.At(0, 2), Variant(int32_t{7}));
  }
}

TEST_F(Odbc, TakesStatementsInUtf16) {
  const auto connection = Open();
  connection->Execute(u"create table größe (länge varchar(20))");
  connection->Execute(u"insert into größe values ('Zoë \u4E2D\u6587')");
  const Recordset rows = connection->Execute(u"select länge from größe");
  EXPECT_EQ(rows.Columns()[0].name, u"länge");
  EXPECT_EQ(rows.Field(u"länge"), Variant(u"Zoë \u4E2D\u6587"));
}

TEST_F(Odbc, CountsChangedRowsAlsoWhenThereAreNone) {
  const auto connection = Open();
  connection->Execute(u"create table t (i int)");
  const auto changed = [&](TextView sql) {
    const Batch batch = connection->Run(sql);
    EXPECT_FALSE(batch.failure);
    EXPECT_TRUE(batch.results.empty());
    return batch.rowCounts;
  };
  EXPECT_EQ(changed(u"insert into t values (1), (2), (3)"), std::vector<int64_t>{3});
  EXPECT_EQ(changed(u"update t set i = 0 where i > 1"), std::vector<int64_t>{2});
  EXPECT_EQ(changed(u"delete from t where i = 99"), std::vector<int64_t>{0});

  const Batch batch = connection->Run(u"select i from t where i = 99");
  EXPECT_TRUE(batch.rowCounts.empty());
  ASSERT_EQ(batch.results.size(), 1u);
  EXPECT_TRUE(batch.results[0].Eof());
  EXPECT_EQ(batch.results[0].Columns().size(), 1u);
}

TEST_F(Odbc, TellsOfAFailedStatementInTheDriversWords) {
  const auto connection = Open();
  connection->Execute(u"create table t (i int primary key, n int not null)");
  connection->Execute(u"insert into t values (1, 1)");
  const struct {
    const char16_t* sql;
    std::vector<Variant> parameters;
    const char* words;
  } cases[] = {
      {u"selec 1", {}, "syntax error"},
      {u"select * from größe", {}, "no such table: größe"},
      {u"select nosuch from t", {}, "no such column: nosuch"},
      {u"insert into t values (1, 2)", {}, "UNIQUE constraint failed"},
      {u"insert into t values (?, ?)", {int32_t{2}, Null{}}, "NOT NULL constraint failed"},
      {u"insert into t values (3, 3) insert into t values (4, 4)", {}, "syntax error"},
      // This driver takes no batches. It must say so rather than run the half of one.
      {u"insert into t values (5, 5); select 1", {}, "only one SQL statement"},
      {u"", {}, "Invalid string or buffer length"},
  };
  for (const auto& c : cases) {
    const Batch batch = connection->Run(c.sql, c.parameters);
    ASSERT_TRUE(batch.failure) << ToUtf8(c.sql);
    EXPECT_NE(batch.failure->Description().find(FromUtf8(c.words)), Text::npos)
        << batch.failure->what();
    EXPECT_EQ(batch.failure->Description().find(u'\0'), Text::npos) << batch.failure->what();
    EXPECT_THROW(connection->Execute(c.sql, c.parameters), DatabaseFailure);
  }
  EXPECT_EQ(Scalar(*connection, u"select count(*) from t"), Variant(int32_t{1}));
}

TEST_F(Odbc, RefusesValuesThatNoColumnHolds) {
  const auto connection = Open();
  const auto number = [&](Variant value) {
    try {
      connection->Execute(u"select ?", std::vector<Variant>{std::move(value)});
      return 0;
    } catch (const Failure& failure) {
      return failure.Number();
    }
  };
  EXPECT_EQ(number(Missing{}), 449);
  EXPECT_EQ(number(ObjectRef()), 13);
  EXPECT_EQ(number(Decimal{u"12,5"}), 13);
}

TEST_F(Odbc, LeavesNoTransactionOpen) {
  Open()->Execute(u"create table t (i int)");
  {
    const auto connection = Open();
    connection->Execute(u"BEGIN IMMEDIATE");
    connection->Execute(u"insert into t values (1)");
  }
  const auto connection = Open();
  EXPECT_EQ(Scalar(*connection, u"select count(*) from t"), Variant(int32_t{0}));
  // Nobody holds the file's lock any more.
  connection->Execute(u"insert into t values (2)");
  EXPECT_EQ(Scalar(*connection, u"select count(*) from t"), Variant(int32_t{1}));
}

TEST_F(Odbc, TellsWhyItCannotConnectAndNeverThePassword) {
  const struct {
    const char16_t* connectionString;
    const char* words;
  } cases[] = {
      {u"Driver=SQLite3;Database=/nonexistent/x.db;PWD=s3cret", "connect failed"},
      {u"Driver=/nonexistent/driver.so;PWD=s3cret", "file not found"},
      {u"Driver=No such driver {s3cret};PWD={s3cret}", "file not found"},
      {u"DSN=nosuch;Password=s3cret", "Data source name not found"},
      {u"DSN=s3cret;Password=s3cret", "Data source name not found"},
      {u"Driver=SQLite3;Connect Timeout=s3cret", "no valid value for \"Connect Timeout\""},
      {u"Driver=SQLite3;Command Timeout=-1", "no valid value for \"Command Timeout\""},
      {u"Driver=SQLite3;Command Timeout=", "no valid value for \"Command Timeout\""},
  };
  for (const auto& c : cases) {
    try {
      odbc::Open(ConnectionString::Parse(c.connectionString));
      ADD_FAILURE() << "connected: " << ToUtf8(c.connectionString);
    } catch (const DatabaseFailure& failure) {
      const std::string words = failure.what();
      EXPECT_NE(words.find(c.words), std::string::npos) << words;
      EXPECT_EQ(words.find("s3cret"), std::string::npos) << words;
    }
  }
  const Text longest(40000, u'x');
  EXPECT_THROW(odbc::Open(ConnectionString::Parse(u"Driver=SQLite3;Database=" + longest)),
               DatabaseFailure);
}

TEST_F(Odbc, CallsNothingWhoseNameIsNone) {
  const auto connection = Open();
  for (TextView name : {TextView(), TextView(u"a}; drop table t --"), TextView(u"a(1)"),
                        TextView(u"a\0b", 3), TextView(u"a?")}) {
    EXPECT_THROW(connection->Call(name, {}), DatabaseFailure) << ToUtf8(name);
  }
  // A driver without procedures says so in its own way.
  EXPECT_THROW(connection->Call(u"usp_nosuch", {}), DatabaseFailure);
  EXPECT_EQ(Scalar(*connection, u"select 1"), Variant(int32_t{1}));
}

TEST_F(Odbc, ServesThreadsEachWithItsOwnConnection) {
  Open()->Execute(u"create table t (i int)");
  constexpr int kThreads = 8;
  constexpr int kRows = 10;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&] {
      for (int row = 0; row < kRows; ++row) {
        Open(u"Timeout=60000")->Execute(u"insert into t values (?)", std::vector<Variant>{row});
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Scalar(*Open(), u"select count(*) from t"), Variant(int32_t{kThreads * kRows}));
}

TEST(OdbcDrivers, AreListed) {
  const std::vector<Text> drivers = odbc::InstalledDrivers();
  EXPECT_TRUE(std::ranges::find(drivers, u"SQLite3") != drivers.end());
}

}  // namespace
}  // namespace vellum250::database
