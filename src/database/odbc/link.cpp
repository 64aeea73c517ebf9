#include "database/odbc/link.h"

#include <chrono>
#include <limits>
#include <mutex>
#include <unordered_map>

namespace vellum250::database::odbc {

namespace {

SQLHANDLE DriverHandle(SQLHANDLE link) {
  SQLHANDLE driver = nullptr;
  SQLSMALLINT bytes = 0;
  const bool told = SQL_SUCCEEDED(SQLGetInfoW(link, SQL_DRIVER_HDBC, static_cast<void*>(&driver),
                                              SQLSMALLINT{sizeof driver}, &bytes));
  return told ? driver : nullptr;
}

// When connections were used last, by the driver's handle, which stays the same in the pool.
class Uses {
 public:
  // Whether a connection that is opened has been in the pool for so long that its server may have
  // been started anew. Between the statements of one page nothing is asked.
  bool HasRested(SQLHANDLE driver) {
    constexpr std::chrono::milliseconds kRest(100);
    const auto now = Clock::now();
    const std::lock_guard lock(mutex_);
    const auto [use, isFirst] = last_.try_emplace(driver, now);
    return !isFirst && now - use->second > kRest;
  }

  void End(SQLHANDLE driver) {
    const std::lock_guard lock(mutex_);
    if (const auto use = last_.find(driver); use != last_.end()) use->second = Clock::now();
  }

  // From now on all count as rested: where one has lost its server, so have the others.
  void Doubt() {
    const std::lock_guard lock(mutex_);
    for (auto& use : last_) use.second = {};
  }

 private:
  using Clock = std::chrono::steady_clock;

  std::mutex mutex_;
  std::unordered_map<SQLHANDLE, Clock::time_point> last_;
};

Uses& LastUses() {
  static Uses uses;
  return uses;
}

void Run(const Statement& statement, TextView sql) {
  statement.Check(
      SQLExecDirectW(statement.get(), Wide(sql.data()), static_cast<SQLINTEGER>(sql.size())));
}

}  // namespace

Link::Link(const ConnectionString& connectionString, SQLULEN timeout)
    : passwords_(connectionString.Passwords()), handle_(Environment()) {
  if (!handle_) throw FailureOf(SQL_HANDLE_ENV, Environment(), passwords_);
  // Drivers without it, those of local files for one, connect all the same.
  SQLSetConnectAttrW(handle_.get(), SQL_ATTR_LOGIN_TIMEOUT, AttributeValue(timeout),
                     SQL_IS_UINTEGER);

  const Text text = connectionString.ToText();
  if (text.size() > size_t{std::numeric_limits<SQLSMALLINT>::max()}) {
    Fail(u"The connection string is longer than ODBC takes");
  }
  SQLSMALLINT length = 0;
  const SQLRETURN result = SQLDriverConnectW(handle_.get(), nullptr, Wide(text.data()),
                                             static_cast<SQLSMALLINT>(text.size()), nullptr, 0,
                                             &length, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(result)) throw FailureOf(SQL_HANDLE_DBC, handle_.get(), passwords_);
}

Link::~Link() {
  if (!handle_) return;
  if (isDoubtful_) {
    LastUses().Doubt();
  } else {
    LastUses().End(DriverHandle(handle_.get()));
  }
  if (SQL_SUCCEEDED(SQLDisconnect(handle_.get()))) return;
  // A driver refuses while a transaction is open.
  SQLEndTran(SQL_HANDLE_DBC, handle_.get(), SQL_ROLLBACK);
  SQLDisconnect(handle_.get());
}

bool Link::IsDead() const {
  SQLUINTEGER dead = SQL_CD_FALSE;
  if (SQL_SUCCEEDED(SQLGetConnectAttrW(handle_.get(), SQL_ATTR_CONNECTION_DEAD, &dead,
                                       SQL_IS_UINTEGER, nullptr)) &&
      dead == SQL_CD_TRUE) {
    return true;
  }
  if (!LastUses().HasRested(DriverHandle(handle_.get()))) return false;
  constexpr SQLULEN kTimeout = 5;
  try {
    Run(Statement(*this, kTimeout), u"SELECT 1");
    return false;
  } catch (const DatabaseFailure& failure) {
    // A server to which this is no statement is there all the same.
    return failure.Number() != kSyntaxFailure;
  }
}

void Link::RollBack() noexcept {
  // In auto-commit mode ODBC's own way does not reach a transaction that a batch has begun in SQL.
  SQLEndTran(SQL_HANDLE_DBC, handle_.get(), SQL_ROLLBACK);
  constexpr SQLULEN kTimeout = 30;
  // SQL Server's, to which nothing to take back is no failure, and everybody's.
  for (TextView sql : {u"IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION", u"ROLLBACK"}) {
    try {
      return Run(Statement(*this, kTimeout), sql);
    } catch (const DatabaseFailure&) {
      // Of the last one most often because there was nothing.
    }
  }
}

Statement::Statement(const Link& link, SQLULEN timeout) : link_(link), handle_(link.get()) {
  if (!handle_) throw FailureOf(SQL_HANDLE_DBC, link.get(), link.Passwords());
  SQLSetStmtAttrW(handle_.get(), SQL_ATTR_QUERY_TIMEOUT, AttributeValue(timeout), SQL_IS_UINTEGER);
}

void Statement::Raise(SQLRETURN result) const {
  const DatabaseFailure failure = FailureOf(SQL_HANDLE_STMT, handle_.get(), link_.Passwords());
  if (failure.Number() == kUnspecifiedFailure || failure.Number() == kTimeoutFailure) link_.Doubt();
  // A statement that waits for data, which nothing here sends, could not be freed.
  if (result == SQL_NEED_DATA) SQLCancel(handle_.get());
  throw failure;
}

}  // namespace vellum250::database::odbc
