// The database layer through ODBC, against the same statements by bare ODBC calls that know their
// columns: the same driver, UTF-16 on both sides, one connection kept open by each.

#include <benchmark/benchmark.h>
#ifdef _WIN32
#include <windows.h>
#endif
#include <sql.h>
#include <sqlext.h>

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "automation/locale.h"
#include "database/connection.h"
#include "texts.h"

namespace vellum250 {
namespace {

constexpr char16_t kScalar[] = u"SELECT name FROM member WHERE member_ref = 77";
constexpr char16_t kRows[] =
    u"SELECT member_ref, name, joined, fee FROM member WHERE member_ref <= 100";
constexpr char16_t kInsert[] = u"INSERT INTO visit (member_ref, note) VALUES (?, ?)";
constexpr char16_t kNote[] = u"Zoë's visit, by the harbour";

Text ConnectionStringFor(const std::string& file) {
  return u"Driver=SQLite3;Database=" + FromUtf8(file) + u";SyncPragma=OFF;JournalMode=WAL;";
}

// Both sides give everything that they have read, one after another.
using Values = std::vector<Variant>;

class Layer {
 public:
  explicit Layer(const std::string& file)
      : connection_(database::Connection::Open(ConnectionStringFor(file))) {}

  Values Scalar() { return {connection_->Execute(kScalar).Field(0)}; }

  Values Rows() {
    Values values;
    for (auto rows = connection_->Execute(kRows); !rows.Eof(); rows.MoveNext()) {
      for (size_t i = 0; i < 4; ++i) values.push_back(rows.Field(i));
    }
    return values;
  }

  Values Insert() {
    const std::array<Variant, 2> parameters = {int32_t{77}, Variant(kNote)};
    return {Decimal{NumberText(connection_->Run(kInsert, parameters).rowCounts.at(0))}};
  }

 private:
  std::unique_ptr<database::Connection> connection_;
};

class Bare {
 public:
  explicit Bare(const std::string& file) {
    SQLAllocHandle(SQL_HANDLE_ENV, nullptr, &environment_);
    SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3),
                  0);
    SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_);
    Text text = ConnectionStringFor(file);
    Check(SQLDriverConnectW(connection_, nullptr, Wide(text), SQL_NTS, nullptr, 0, nullptr,
                            SQL_DRIVER_NOPROMPT));
  }
  Bare(const Bare&) = delete;
  ~Bare() {
    SQLDisconnect(connection_);
    SQLFreeHandle(SQL_HANDLE_DBC, connection_);
    SQLFreeHandle(SQL_HANDLE_ENV, environment_);
  }

  Values Scalar() {
    Values values;
    const Statement statement(connection_);
    Execute(statement, kScalar);
    Check(SQLFetch(statement.handle));
    values.push_back(ReadText(statement, 1));
    Finish(statement);
    return values;
  }

  Values Rows() {
    Values values;
    const Statement statement(connection_);
    Execute(statement, kRows);
    SQLLEN indicator = 0;
    while (SQL_SUCCEEDED(SQLFetch(statement.handle))) {
      SQLINTEGER reference = 0;
      Check(SQLGetData(statement.handle, 1, SQL_C_SLONG, &reference, 0, &indicator));
      values.emplace_back(int32_t{reference});
      values.push_back(ReadText(statement, 2));
      SQL_TIMESTAMP_STRUCT t{};
      Check(SQLGetData(statement.handle, 3, SQL_C_TYPE_TIMESTAMP, &t, sizeof t, &indicator));
      values.emplace_back(FromCivil({t.year, t.month, t.day, t.hour, t.minute, t.second, 0}));
      double fee = 0;
      Check(SQLGetData(statement.handle, 4, SQL_C_DOUBLE, &fee, 0, &indicator));
      values.emplace_back(fee);
    }
    Finish(statement);
    return values;
  }

  Values Insert() {
    const Statement statement(connection_);
    SQLINTEGER reference = 77;
    SQLLEN referenceIndicator = 0;
    Text note = kNote;
    auto noteBytes = static_cast<SQLLEN>(note.size() * sizeof(char16_t));
    Check(SQLBindParameter(statement.handle, 1, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 10, 0,
                           &reference, 0, &referenceIndicator));
    Check(SQLBindParameter(statement.handle, 2, SQL_PARAM_INPUT, SQL_C_WCHAR, SQL_WVARCHAR,
                           note.size(), 0, note.data(), noteBytes, &noteBytes));
    Execute(statement, kInsert);
    SQLLEN count = 0;
    Check(SQLRowCount(statement.handle, &count));
    Finish(statement);
    return {Decimal{NumberText(count)}};
  }

 private:
  struct Statement {
    explicit Statement(SQLHANDLE connection) {
      SQLAllocHandle(SQL_HANDLE_STMT, connection, &handle);
    }
    Statement(const Statement&) = delete;
    ~Statement() { SQLFreeHandle(SQL_HANDLE_STMT, handle); }
    SQLHANDLE handle = nullptr;
  };

  static SQLWCHAR* Wide(Text& text) { return reinterpret_cast<SQLWCHAR*>(text.data()); }

  static void Check(SQLRETURN result) {
    if (!SQL_SUCCEEDED(result)) throw std::runtime_error("a bare ODBC call failed");
  }

  static void Execute(const Statement& statement, TextView sql) {
    Text text(sql);
    Check(SQLExecDirectW(statement.handle, Wide(text), SQL_NTS));
  }

  static Variant ReadText(const Statement& statement, SQLUSMALLINT column) {
    std::array<char16_t, 256> text;
    SQLLEN bytes = 0;
    Check(SQLGetData(statement.handle, column, SQL_C_WCHAR, text.data(), sizeof text, &bytes));
    if (bytes == SQL_NULL_DATA) return Null{};
    return Text(text.data(), static_cast<size_t>(bytes) / sizeof(char16_t));
  }

  static void Finish(const Statement& statement) {
    if (SQLMoreResults(statement.handle) != SQL_NO_DATA) throw std::runtime_error("more results");
  }

  SQLHANDLE environment_ = nullptr;
  SQLHANDLE connection_ = nullptr;
};

template <typename Side>
void Register(const std::string& name, const std::shared_ptr<Side>& side) {
  const std::pair<const char*, Values (Side::*)()> kinds[] = {
      {"scalar", &Side::Scalar}, {"rows", &Side::Rows}, {"insert", &Side::Insert}};
  for (const auto& [kind, run] : kinds) {
    benchmark::RegisterBenchmark((name + "/" + kind).c_str(), [side, run](benchmark::State& state) {
      for (auto _ : state) benchmark::DoNotOptimize(((*side).*run)());
    })->UseRealTime();
  }
}

}  // namespace

void RegisterOdbc(const std::string& folder) {
  const std::string file = folder + "/odbc.db";
  std::remove(file.c_str());
  const auto maker = database::Connection::Open(ConnectionStringFor(file));
  maker->Execute(
      u"CREATE TABLE member (member_ref integer PRIMARY KEY, name varchar(80),"
      u" joined datetime, fee double)");
  maker->Execute(
      u"INSERT INTO member WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM"
      u" n WHERE i < 1000) SELECT i, 'Zoë Member the ' || i, '2004-02-29 13:45:30',"
      u" i / 8.0 FROM n");
  maker->Execute(
      u"CREATE TABLE visit (visit_ref integer PRIMARY KEY, member_ref int,"
      u" note varchar(200))");

  const auto ours = std::make_shared<Layer>(file);
  const auto bare = std::make_shared<Bare>(file);
  if (ours->Scalar() != bare->Scalar() || ours->Rows() != bare->Rows() ||
      ours->Rows().size() != 400 || ours->Insert() != bare->Insert()) {
    throw std::runtime_error("the layer and bare ODBC calls differ");
  }
  Register("Odbc", ours);
  Register("BareOdbc", bare);
}

}  // namespace vellum250
