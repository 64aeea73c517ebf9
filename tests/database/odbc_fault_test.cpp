// ODBC against a driver that speaks like SQL Server's, and fails or lies wherever it is told to.
#include <dlfcn.h>

#include <cstring>
#include <functional>
#include <set>
#include <thread>

#include "automation/locale.h"
#include "database/connection.h"
#include "database/odbc/pool.h"
#include "database/provider.h"
#include "support/odbc_driver/driver.h"
#include "support/odbc_driver/script.h"

namespace vellum250::database {
namespace {

using support::Fault;
using Clock = std::chrono::steady_clock;

// All that the layer calls and the driver manager does not answer itself, as it does SQLGetInfoW
// and, while each statement commits by itself, SQLEndTran.
const std::set<std::string> kFunctions = {
    "SQLAllocHandle",     "SQLBindParameter",  "SQLColAttributeW", "SQLDescribeColW",
    "SQLDisconnect",      "SQLDriverConnectW", "SQLExecDirectW",   "SQLFetch",
    "SQLGetConnectAttrW", "SQLGetData",        "SQLGetDiagFieldW", "SQLGetDiagRecW",
    "SQLMoreResults",     "SQLNumResultCols",  "SQLRowCount",      "SQLSetConnectAttrW",
    "SQLSetEnvAttr",      "SQLSetStmtAttrW"};

class OdbcServer : public testing::Test {
 protected:
  void SetUp() override {
    library_ = dlopen(VELLUM250_TEST_ODBC_DRIVER, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    ASSERT_NE(library_, nullptr) << dlerror();
    void* function = dlsym(library_, support::kControlFunction);
    ASSERT_NE(function, nullptr);
    control_ = reinterpret_cast<support::OdbcDriverControlFunction>(function)();
    *control_ = {};
  }
  void TearDown() override {
    odbc::CloseExpired(Clock::time_point::max());
    ExpectNothingLeft();
    dlclose(library_);
  }

  std::unique_ptr<Connection> Open(TextView further = {}) const {
    return odbc::Open(ConnectionString::Parse(u"Driver=" + FromUtf8(VELLUM250_TEST_ODBC_DRIVER) +
                                              u";PWD=s3cret;" + Text(further)));
  }

  void ExpectNothingLeft() const {
    EXPECT_EQ(control_->openConnections, 0);
    EXPECT_EQ(control_->openTransactions, 0);
    EXPECT_EQ(control_->openHandles, 0);
  }

  // Runs the scenario with the fault at the first call, the second and so on, until it passes by.
  void ForEachCall(Fault fault, const std::function<void()>& scenario) {
    for (int call = 1;; ++call) {
      *control_ = {.fault = fault, .faultAt = call};
      std::thread(scenario).join();  // its end closes what it has kept
      ExpectNothingLeft();
      if (testing::Test::HasFailure()) {
        FAIL() << "at call " << call << " in "
               << (control_->faultedIn == nullptr ? "none" : control_->faultedIn);
      }
      if (control_->faultedIn == nullptr) {
        RecordProperty("calls", call - 1);
        break;
      }
      faulted_.insert(control_->faultedIn);
      ASSERT_LT(call, 10'000);
    }
    for (const std::string& function : kFunctions) {
      EXPECT_TRUE(faulted_.contains(function)) << function;
    }
  }

  std::set<std::string> faulted_;
  void* library_ = nullptr;
  support::OdbcDriverControl* control_ = nullptr;
};

std::vector<ProcedureParameter> AllDirections() {
  return {{u"@i", SqlType::Int, int32_t{7}},
          {u"@o", SqlType::Int, {}, Direction::Out},
          {u"@t", SqlType::NVarChar, u"Zoë", Direction::InOut, 20},
          {u"@n", SqlType::VarChar, Null{}}};
}

// Everything that the layer does with a server, checked.
void WholeScenario(Connection& connection) {
  connection.Execute(u"BEGIN TRANSACTION");
  EXPECT_EQ(connection.Execute(u"types").RowCount(), 1u);
  EXPECT_TRUE(connection.Execute(u"long").At(1, 2) == Variant(support::LongText()));
  EXPECT_TRUE(connection.Execute(u"long without total").At(0, 1) == Variant(support::LongText()));
  EXPECT_EQ(connection.Execute(u"batch", std::vector<Variant>{1.5, u"é"}).RowCount(), 2u);
  const std::vector<ProcedureParameter> parameters = AllDirections();
  EXPECT_EQ(connection.Call(u"usp_all", parameters).returnValue, -3);
  const Batch failing = connection.Run(u"fail 23000 2627");
  ASSERT_TRUE(failing.failure);
  if (failing.failure->Number() != kConstraintFailure) throw *failing.failure;
}

TEST_F(OdbcServer, GivesEachTypeItsValue) {
  const struct {
    SqlType type;
    Variant value;
    int32_t length = 0;
    int32_t precision = 0;
    int32_t scale = 0;
  } expected[] = {
      {SqlType::Bit, true},
      {SqlType::TinyInt, uint8_t{255}},
      {SqlType::SmallInt, int16_t{-32768}},
      {SqlType::Int, int32_t{-2147483647 - 1}},
      {SqlType::BigInt, Decimal{u"-9223372036854775808"}, 19},
      {SqlType::Decimal, Decimal{u"-0.50"}, 0, 10, 2},
      {SqlType::Decimal, Decimal{u"12345678901234567890123456789012345678"}, 0, 38, 0},
      {SqlType::Money, Currency{-9223372036854775807 - 1}, 19},
      {SqlType::SmallMoney, Currency{35000}, 10},
      {SqlType::Float, 0.1},
      {SqlType::Real, 0.5},
      {SqlType::DateTime, FromCivil({2024, 2, 29, 13, 45, 30, 123})},
      {SqlType::SmallDateTime, FromCivil({1900, 1, 1, 0, 1})},
      {SqlType::Date, FromCivil({9999, 12, 31})},
      {SqlType::Char, u"ab   ", 5},
      {SqlType::VarChar, u"Zoë", 20},
      {SqlType::NVarChar, u"", -1},
      {SqlType::Text, u"text", -1},
      {SqlType::NChar, u"\U0001F600   ", 5},
      {SqlType::NText, u"\xD800", -1},
      {SqlType::UniqueIdentifier, u"6F9619FF-8B86-D011-B42D-00C04FC964FF", 36},
      {SqlType::VarBinary, u"0AFF", 8},
      {SqlType::VarChar, u"7", 8000},
      {SqlType::Int, Null{}},
      {SqlType::VarChar, Null{}, 20},
  };
  const Recordset rows = Open()->Execute(u"types");
  ASSERT_EQ(rows.Columns().size(), std::size(expected));
  for (size_t i = 0; i < std::size(expected); ++i) {
    const Column& column = rows.Columns()[i];
    SCOPED_TRACE(ToUtf8(column.name));
    EXPECT_EQ(SqlTypeName(column.type), SqlTypeName(expected[i].type));
    EXPECT_TRUE(rows.At(0, i) == expected[i].value);
    EXPECT_EQ(column.length, expected[i].length);
    EXPECT_EQ(column.precision, expected[i].precision);
    EXPECT_EQ(column.scale, expected[i].scale);
  }
}

TEST_F(OdbcServer, ReadsLongTextsInPieces) {
  for (const char16_t* sql : {u"long", u"long without total"}) {
    const Recordset rows = Open()->Execute(sql);
    ASSERT_EQ(rows.RowCount(), 2u);
    EXPECT_TRUE(rows.At(0, 1) == Variant(support::LongText())) << ToUtf8(sql);
    EXPECT_EQ(rows.At(0, 2), Variant(u""));
    EXPECT_EQ(rows.At(0, 3), Variant(int32_t{2}));
    EXPECT_TRUE(rows.At(1, 1).IsNull());
    EXPECT_TRUE(rows.At(1, 2) == Variant(support::LongText())) << ToUtf8(sql);
    EXPECT_EQ(rows.At(1, 3), Variant(int32_t{4}));
  }
}

TEST_F(OdbcServer, SkipsResultsWithoutColumns) {
  const auto connection = Open();
  const Batch batch = connection->Run(u"batch");
  EXPECT_FALSE(batch.failure);
  EXPECT_EQ(batch.rowCounts, (std::vector<int64_t>{2, 0}));
  ASSERT_EQ(batch.results.size(), 3u);
  EXPECT_EQ(batch.results[0].RowCount(), 2u);
  EXPECT_EQ(batch.results[1].RowCount(), 0u);
  EXPECT_EQ(batch.results[2].At(0, 0), Variant(int32_t{3}));
  EXPECT_EQ(connection->Execute(u"batch").RowCount(), 2u);

  const Batch noData = connection->Run(u"no data");
  EXPECT_FALSE(noData.failure);
  EXPECT_EQ(noData.rowCounts, std::vector<int64_t>{0});
}

TEST_F(OdbcServer, KeepsWhatCameBeforeAFailure) {
  const auto connection = Open();
  const Batch batch = connection->Run(u"half");
  ASSERT_TRUE(batch.failure);
  EXPECT_EQ(batch.failure->NativeNumber(), 1205);
  EXPECT_EQ(batch.rowCounts, std::vector<int64_t>{5});
  ASSERT_EQ(batch.results.size(), 1u);  // the half result is none
  EXPECT_EQ(batch.results[0].At(0, 0), Variant(int32_t{1}));
  EXPECT_THROW(connection->Execute(u"half"), DatabaseFailure);
}

TEST_F(OdbcServer, NumbersFailuresByTheirState) {
  const struct {
    const char16_t* sql;
    int32_t number;
    int32_t native;
  } cases[] = {
      {u"fail 42000 102", kSyntaxFailure, 102},
      {u"fail 42S02 208", kSyntaxFailure, 208},
      {u"fail 23000 2627", kConstraintFailure, 2627},
      {u"fail 28000 18456", kLogonFailure, 18456},
      {u"fail HYT00 0", kTimeoutFailure, 0},
      {u"fail 22003 8115", kUnspecifiedFailure, 8115},
      {u"fail 08S01 0", kUnspecifiedFailure, 0},
  };
  const auto connection = Open();
  for (const auto& c : cases) {
    const Batch batch = connection->Run(c.sql);
    ASSERT_TRUE(batch.failure) << ToUtf8(c.sql);
    EXPECT_EQ(batch.failure->Number(), c.number) << ToUtf8(c.sql);
    EXPECT_EQ(batch.failure->NativeNumber(), c.native);
    EXPECT_EQ(batch.failure->Line(), support::kFailureLine);
    EXPECT_NE(batch.failure->Description().find(u"It fails for PWD=***;"), Text::npos)
        << batch.failure->what();
  }
}

TEST_F(OdbcServer, RefusesValuesThatAreNone) {
  const auto connection = Open();
  for (const char16_t* sql : {u"strange date", u"strange number", u"strange decimal"}) {
    EXPECT_THROW(connection->Execute(sql), Failure) << ToUtf8(sql);
  }
}

TEST_F(OdbcServer, CallsProceduresWithTypedParameters) {
  const auto connection = Open();
  const std::vector<ProcedureParameter> parameters = AllDirections();
  const ProcedureResult result = connection->Call(u"dbo.usp_all", parameters);
  EXPECT_EQ(result.returnValue, -3);
  ASSERT_EQ(result.results.size(), 1u);
  EXPECT_EQ(result.results[0].At(0, 0), Variant(int32_t{7}));
  EXPECT_EQ(result.outputs, (std::vector<Variant>{int32_t{42}, u"Zoë42"}));

  const auto failureOf = [&](ProcedureParameter parameter) {
    try {
      connection->Call(u"usp_all", std::vector<ProcedureParameter>{std::move(parameter)});
      return std::string("none");
    } catch (const Failure& failure) {
      return std::to_string(failure.Number()) + " " + failure.what();
    }
  };
  EXPECT_EQ(failureOf({u"@b", SqlType::TinyInt, int32_t{256}}), "6 Overflow: @b");
  EXPECT_EQ(failureOf({u"@d", SqlType::DateTime, u"no date"}), "13 Type mismatch: @d");
  EXPECT_EQ(failureOf({u"@m", SqlType::Money, u"1,5"}),
            "13 Type mismatch: not a decimal number: @m");
  // "Zoë42" does not fit.
  EXPECT_NE(failureOf({u"@t", SqlType::NVarChar, u"Zoë", Direction::InOut, 1}).find("longer than"),
            std::string::npos);
}

TEST_F(OdbcServer, KeepsIdleConnections) {
  for (int i = 0; i < 5; ++i) EXPECT_EQ(Open()->Execute(u"batch").RowCount(), 2u);
  EXPECT_EQ(control_->connects, 1);
  EXPECT_EQ(control_->resets, 4);
  Open(u"APP=other;");
  Open(u"Connect Timeout=3;");
  EXPECT_EQ(control_->connects, 3) << "connections that are not alike";

  // Those of another thread are its own, and end with it.
  std::thread([this] {
    for (int i = 0; i < 2; ++i) Open();
  }).join();
  EXPECT_EQ(control_->connects, 4);
  EXPECT_EQ(control_->openConnections, 3);

  odbc::CloseExpired(Clock::now() + std::chrono::seconds(58));
  EXPECT_EQ(control_->openConnections, 3);
  odbc::CloseExpired(Clock::now() + std::chrono::seconds(61));
  EXPECT_EQ(control_->openConnections, 0);
}

TEST_F(OdbcServer, KeepsNoMoreThanEight) {
  std::vector<std::unique_ptr<Connection>> several;
  for (int i = 0; i < 12; ++i) several.push_back(Open());
  several.clear();
  EXPECT_EQ(control_->openConnections, 8);
  for (int i = 0; i < 9; ++i) several.push_back(Open());
  EXPECT_EQ(control_->connects, 13);
}

TEST_F(OdbcServer, ClosesAConnectionThatOutlivesItsThreadsPool) {
  std::thread([this] {
    thread_local std::unique_ptr<Connection> last;  // ends behind the pool, which is made later
    last.reset();
    last = Open();
  }).join();
  EXPECT_EQ(control_->connects, 1);
}

TEST_F(OdbcServer, ReplacesDeadConnections) {
  {
    const auto first = Open();
    const auto second = Open();
  }
  control_->died = 2;
  EXPECT_EQ(Open()->Execute(u"batch").RowCount(), 2u);
  EXPECT_EQ(control_->connects, 3);
  EXPECT_EQ(control_->openConnections, 1);
}

TEST_F(OdbcServer, PassesTimeOutsOn) {
  const struct {
    const char16_t* keywords;
    unsigned long login;
    unsigned long query;
  } cases[] = {{u"", 15, 30}, {u"Connect Timeout=3;CommandTimeout=0;", 3, 0}};
  for (const auto& c : cases) {
    const auto connection = Open(c.keywords);
    connection->Execute(u"batch");
    EXPECT_EQ(control_->loginTimeout, c.login);
    EXPECT_EQ(control_->queryTimeout, c.query);
  }
}

TEST_F(OdbcServer, TakesATransactionBackThatABatchLeft) {
  for (const char16_t* sql : {u"BEGIN TRANSACTION", u"update_and_leave_open"}) {
    const auto connection = Open();
    connection->Execute(sql);
    EXPECT_EQ(control_->openTransactions, 1);
  }
  EXPECT_EQ(control_->openTransactions, 0);
  EXPECT_EQ(control_->abandonedTransactions, 0);
  EXPECT_EQ(control_->connects, 1);
}

TEST_F(OdbcServer, TurnsEveryFailingCallIntoAFailure) {
  // Optional attributes, without which the rest goes on.
  const std::set<std::string> harmless = {"SQLSetEnvAttr", "SQLSetConnectAttrW",
                                          "SQLGetConnectAttrW", "SQLSetStmtAttrW",
                                          "SQLGetDiagFieldW"};
  for (Fault fault : {Fault::Error, Fault::SilentError, Fault::StrangeResult}) {
    ForEachCall(fault, [&] {
      try {
        const auto connection = Open();
        WholeScenario(*connection);
        // A fault from here on is one of giving the connection back, which nobody waits for.
        if (control_->faultedIn != nullptr) {
          EXPECT_TRUE(harmless.contains(control_->faultedIn)) << control_->faultedIn;
        }
      } catch (const Failure& failure) {
        EXPECT_NE(control_->faultedIn, nullptr) << failure.what();
        EXPECT_EQ(std::strstr(failure.what(), "s3cret"), nullptr) << failure.what();
        EXPECT_EQ(control_->abandonedTransactions, 0);
      }
      // What it leaves to the next one works, or is replaced.
      const bool isOver = control_->faultedIn != nullptr;
      try {
        EXPECT_EQ(Open()->Execute(u"batch").RowCount(), 2u);
      } catch (const Failure& failure) {
        EXPECT_FALSE(isOver) << failure.what();
      }
      EXPECT_EQ(control_->openTransactions, 0);
    });
  }
}

TEST_F(OdbcServer, SurvivesEveryLie) {
  for (Fault fault : {Fault::SmallLie, Fault::LargeLie}) {
    ForEachCall(fault, [&] {
      try {
        auto connection = Open();
        connection->Execute(u"BEGIN TRANSACTION");
        for (const char16_t* sql : {u"types", u"long", u"long without total", u"batch"}) {
          connection->Execute(sql);
        }
        const std::vector<ProcedureParameter> parameters = AllDirections();
        connection->Call(u"usp_all", parameters);
        EXPECT_TRUE(connection->Run(u"fail 23000 2627").failure);
        connection.reset();
        Open();
      } catch (const Failure& failure) {
        EXPECT_NE(control_->faultedIn, nullptr) << failure.what();
      }
    });
  }
}

}  // namespace
}  // namespace vellum250::database
