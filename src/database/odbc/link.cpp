#include "database/odbc/link.h"

#include <array>
#include <limits>

namespace vellum250::database::odbc {

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
  if (SQL_SUCCEEDED(SQLDisconnect(handle_.get()))) return;
  // A driver refuses while a transaction is open.
  SQLEndTran(SQL_HANDLE_DBC, handle_.get(), SQL_ROLLBACK);
  SQLDisconnect(handle_.get());
}

bool Link::IsDead() const {
  SQLUINTEGER dead = SQL_CD_FALSE;
  return SQL_SUCCEEDED(SQLGetConnectAttrW(handle_.get(), SQL_ATTR_CONNECTION_DEAD, &dead,
                                          SQL_IS_UINTEGER, nullptr)) &&
         dead == SQL_CD_TRUE;
}

bool Link::IsSqlServer() const {
  std::array<char16_t, 64> name{};
  SQLSMALLINT bytes = 0;
  return SQL_SUCCEEDED(SQLGetInfoW(handle_.get(), SQL_DBMS_NAME, name.data(),
                                   SQLSMALLINT{sizeof(name)}, &bytes)) &&
         UpToZero({name.data(), name.size()}).find(u"SQL Server") != TextView::npos;
}

void Link::RollBack() noexcept {
  // In auto-commit mode ODBC's own way does not reach a transaction that a batch has begun in SQL.
  SQLEndTran(SQL_HANDLE_DBC, handle_.get(), SQL_ROLLBACK);
  const TextView sql =
      IsSqlServer() ? TextView(u"IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION") : TextView(u"ROLLBACK");
  constexpr SQLULEN kTimeout = 30;
  try {
    const Statement statement(*this, kTimeout);
    statement.Check(
        SQLExecDirectW(statement.get(), Wide(sql.data()), static_cast<SQLINTEGER>(sql.size())));
  } catch (const DatabaseFailure&) {
    // Most often there was nothing to take back.
  }
}

Statement::Statement(const Link& link, SQLULEN timeout) : link_(link), handle_(link.get()) {
  if (!handle_) throw FailureOf(SQL_HANDLE_DBC, link.get(), link.Passwords());
  SQLSetStmtAttrW(handle_.get(), SQL_ATTR_QUERY_TIMEOUT, AttributeValue(timeout), SQL_IS_UINTEGER);
}

void Statement::Raise(SQLRETURN result) const {
  const DatabaseFailure failure = FailureOf(SQL_HANDLE_STMT, handle_.get(), link_.Passwords());
  // A statement that waits for data, which nothing here sends, could not be freed.
  if (result == SQL_NEED_DATA) SQLCancel(handle_.get());
  throw failure;
}

}  // namespace vellum250::database::odbc
