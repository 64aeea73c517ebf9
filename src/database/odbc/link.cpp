#include "database/odbc/link.h"

#include <limits>

#include "platform/process.h"

namespace vellum250::database::odbc {

namespace {

void Run(const Statement& statement, TextView sql) {
  statement.Check(
      SQLExecDirectW(statement.get(), Wide(sql.data()), static_cast<SQLINTEGER>(sql.size())));
}

}  // namespace

Link::Link(const ConnectionString& connectionString, SQLULEN timeout)
    : source_(connectionString.Source()),
      timeout_(timeout),
      passwords_(connectionString.Passwords()),
      process_(platform::ProcessId()),
      handle_(Environment()) {
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
  // In a forked process the session is still its parent's, whom a farewell would cost it.
  if (process_ != platform::ProcessId()) {
    handle_.Forget();
    return;
  }
  if (SQL_SUCCEEDED(SQLDisconnect(handle_.get()))) return;
  // A driver refuses while a transaction is open.
  SQLEndTran(SQL_HANDLE_DBC, handle_.get(), SQL_ROLLBACK);
  SQLDisconnect(handle_.get());
}

bool Link::IsFor(const ConnectionString& connectionString, SQLULEN timeout) const {
  return timeout_ == timeout && SameText(source_, connectionString.Source());
}

bool Link::BeginAnew(bool hasRested) {
  if (process_ != platform::ProcessId()) return false;
  SQLUINTEGER dead = SQL_CD_FALSE;
  if (SQL_SUCCEEDED(SQLGetConnectAttrW(handle_.get(), SQL_ATTR_CONNECTION_DEAD, &dead,
                                       SQL_IS_UINTEGER, nullptr)) &&
      dead == SQL_CD_TRUE) {
    return false;
  }
  // SQL_COPT_SS_RESET_CONNECTION of SQL Server's drivers: the next statement finds no settings,
  // temporary tables or locks of earlier ones. Other drivers refuse it, which is no harm.
  constexpr SQLINTEGER kResetConnection = 1246;
  SQLSetConnectAttrW(handle_.get(), kResetConnection, AttributeValue(1), SQL_IS_UINTEGER);
  if (!hasRested && !isDoubtful_) return true;
  constexpr SQLULEN kTimeout = 5;
  try {
    Run(Statement(*this, kTimeout), u"SELECT 1");
  } catch (const DatabaseFailure& failure) {
    // A server to which this is no statement is there all the same.
    if (failure.Number() != kSyntaxFailure) return false;
  }
  isDoubtful_ = false;
  return true;
}

bool Link::RollBack() noexcept {
  // In auto-commit mode ODBC's own way does not reach a transaction that a batch has begun in SQL.
  SQLEndTran(SQL_HANDLE_DBC, handle_.get(), SQL_ROLLBACK);
  constexpr SQLULEN kTimeout = 30;
  // SQL Server's, to which nothing to take back is no failure, and everybody's.
  for (TextView sql : {u"IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION", u"ROLLBACK"}) {
    try {
      Run(Statement(*this, kTimeout), sql);
      return true;
    } catch (const DatabaseFailure&) {
      continue;  // of some drivers also when there was nothing to take back
    }
  }
  return false;
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
