#include "support/odbc_driver/driver.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/odbc_driver/script.h"

namespace vellum250::support {
namespace {

OdbcDriverControl control;

struct Diagnostic {
  std::u16string state;
  SQLINTEGER native = 0;
  std::u16string message;
};

// All handles begin alike: with the diagnostic of their last call.
struct Handle {
  std::optional<Diagnostic> diagnostic;
  Handle() { ++control.openHandles; }
  Handle(const Handle&) = delete;
  ~Handle() { --control.openHandles; }
};

struct Link : Handle {
  bool connected = false;
  bool transaction = false;
  int number = 0;  // from 1, in the order of connecting

  void SetTransaction(bool open) {
    control.openTransactions += static_cast<int>(open) - static_cast<int>(transaction);
    transaction = open;
  }
};

struct Bound {
  SQLSMALLINT direction = SQL_PARAM_INPUT;
  SQLSMALLINT cType = SQL_C_WCHAR;
  SQLPOINTER buffer = nullptr;
  SQLLEN bytes = 0;
  SQLLEN* indicator = nullptr;
};

struct Statement : Handle {
  Link* link = nullptr;
  std::vector<Bound> parameters;
  bool isCall = false;
  std::vector<ScriptResult> results;
  size_t result = 0;
  size_t row = 0;       // from 1
  size_t column = 0;    // the one that is being read
  size_t position = 0;  // in its text

  bool HasResult() const { return result < results.size(); }
};

template <typename T>
T& As(SQLHANDLE handle) {
  return *static_cast<T*>(static_cast<Handle*>(handle));
}

SQLRETURN Error(Handle& handle, Diagnostic diagnostic) {
  handle.diagnostic = std::move(diagnostic);
  return SQL_ERROR;
}

// Counts the call. A result when it is to fail; a lie is left to the function.
struct Call {
  std::optional<SQLRETURN> failure;
  Fault lie = Fault::None;

  Call(const char* function, Handle* handle) {
    if (handle != nullptr) handle->diagnostic.reset();
    if (++control.calls != control.faultAt) return;
    control.faultedIn = function;
    switch (control.fault) {
      case Fault::Error:
        if (handle != nullptr) {
          Error(*handle, {u"HY000", 50000, u"[Test]Injected fault; PWD=s3cret"});
        }
        failure = SQL_ERROR;
        break;
      case Fault::SilentError:
        failure = SQL_ERROR;
        break;
      case Fault::StrangeResult:
        failure = std::strcmp(function, "SQLExecDirectW") == 0 ? SQL_NEED_DATA : SQL_INVALID_HANDLE;
        break;
      default:
        lie = control.fault;
    }
  }

  // A length or number, or a lie in its place.
  template <typename T>
  T Told(T value, T small, T large) const {
    return lie == Fault::SmallLie ? small : lie == Fault::LargeLie ? large : value;
  }
};

// Copies as ODBC does: with a final zero, cut to the room, counted in characters.
void CopyText(std::u16string_view text, SQLWCHAR* out, SQLLEN room) {
  if (out == nullptr || room <= 0) return;
  const size_t count = std::min(text.size(), static_cast<size_t>(room) - 1);
  std::memcpy(out, text.data(), count * sizeof(SQLWCHAR));
  out[count] = 0;
}

std::string Narrow(std::u16string_view text) { return std::string(text.begin(), text.end()); }

SQLRETURN GiveText(Statement& statement, const Call& call, const ScriptResult& result,
                   const std::u16string& text, SQLPOINTER out, SQLLEN bytes, SQLLEN* indicator) {
  const SQLLEN room = bytes / SQLLEN{sizeof(SQLWCHAR)};
  if (statement.position > text.size()) return SQL_NO_DATA;
  const auto rest = std::u16string_view(text).substr(statement.position);
  CopyText(rest, static_cast<SQLWCHAR*>(out), room);
  const bool isLast = static_cast<SQLLEN>(rest.size()) < room;
  const auto total = static_cast<SQLLEN>(rest.size() * sizeof(SQLWCHAR));
  *indicator =
      call.Told<SQLLEN>(!isLast && result.withoutTotal ? SQL_NO_TOTAL : total, -7, SQLLEN{1} << 50);
  statement.position += isLast ? rest.size() + 1 : static_cast<size_t>(room) - 1;
  return isLast ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

void GiveFixed(const Call& call, const std::u16string& text, SQLSMALLINT cType, SQLPOINTER out) {
  const std::string narrow = Narrow(text);
  const long whole = std::strtol(narrow.c_str(), nullptr, 10);
  switch (cType) {
    case SQL_C_BIT:
      *static_cast<unsigned char*>(out) =
          call.Told<unsigned char>(static_cast<unsigned char>(whole), 0, 255);
      break;
    case SQL_C_SLONG:
      *static_cast<SQLINTEGER*>(out) =
          call.Told<SQLINTEGER>(static_cast<SQLINTEGER>(whole), -2147483647, 2147483647);
      break;
    case SQL_C_DOUBLE:
      *static_cast<double*>(out) = std::strtod(narrow.c_str(), nullptr);
      break;
    default: {
      int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, millisecond = 0;
      std::sscanf(narrow.c_str(), "%d-%d-%d %d:%d:%d.%d", &year, &month, &day, &hour, &minute,
                  &second, &millisecond);
      auto& t = *static_cast<SQL_TIMESTAMP_STRUCT*>(out);
      t.year = call.Told<SQLSMALLINT>(static_cast<SQLSMALLINT>(year), -1, 32767);
      t.month = call.Told<SQLUSMALLINT>(static_cast<SQLUSMALLINT>(month), 0, 65535);
      t.day = static_cast<SQLUSMALLINT>(day);
      t.hour = static_cast<SQLUSMALLINT>(hour);
      t.minute = static_cast<SQLUSMALLINT>(minute);
      t.second = static_cast<SQLUSMALLINT>(second);
      t.fraction = static_cast<SQLUINTEGER>(millisecond) * 1'000'000;
    }
  }
}

// Every output becomes 42, or "42" behind what it was; the return value -3.
void GiveOutputs(Statement& statement) {
  for (size_t i = 0; i < statement.parameters.size(); ++i) {
    Bound& bound = statement.parameters[i];
    if (bound.direction == SQL_PARAM_INPUT) continue;
    if (bound.cType == SQL_C_SLONG) {
      *static_cast<SQLINTEGER*>(bound.buffer) = i == 0 ? -3 : 42;
      *bound.indicator = sizeof(SQLINTEGER);
    } else if (bound.cType == SQL_C_WCHAR) {
      std::u16string text;
      if (bound.direction == SQL_PARAM_INPUT_OUTPUT && *bound.indicator >= 0) {
        text.assign(static_cast<char16_t*>(bound.buffer),
                    static_cast<size_t>(*bound.indicator) / sizeof(SQLWCHAR));
      }
      text += u"42";
      CopyText(text, static_cast<SQLWCHAR*>(bound.buffer), bound.bytes / SQLLEN{sizeof(SQLWCHAR)});
      *bound.indicator = static_cast<SQLLEN>(text.size() * sizeof(SQLWCHAR));
    }
  }
}

void Disconnect(Link& link) {
  if (!link.connected) return;
  link.connected = false;
  if (link.transaction) ++control.abandonedTransactions;
  link.SetTransaction(false);
  --control.openConnections;
}

}  // namespace
}  // namespace vellum250::support

using namespace vellum250::support;

extern "C" {

OdbcDriverControl* TestOdbcDriverControl() { return &control; }

SQLRETURN SQL_API SQLAllocHandle(SQLSMALLINT type, SQLHANDLE parent, SQLHANDLE* out) {
  const Call call("SQLAllocHandle", static_cast<Handle*>(parent));
  *out = nullptr;
  if (call.failure) return *call.failure;
  if (type == SQL_HANDLE_STMT) {
    auto statement = std::make_unique<Statement>();
    statement->link = &As<Link>(parent);
    *out = static_cast<Handle*>(statement.release());
  } else if (type == SQL_HANDLE_DBC) {
    *out = static_cast<Handle*>(std::make_unique<Link>().release());
  } else {
    *out = std::make_unique<Handle>().release();
  }
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLFreeHandle(SQLSMALLINT type, SQLHANDLE handle) {
  if (type == SQL_HANDLE_STMT) {
    delete &As<Statement>(handle);
  } else if (type == SQL_HANDLE_DBC) {
    Disconnect(As<Link>(handle));
    delete &As<Link>(handle);
  } else {
    delete static_cast<Handle*>(handle);
  }
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLSetEnvAttr(SQLHENV handle, SQLINTEGER, SQLPOINTER, SQLINTEGER) {
  return Call("SQLSetEnvAttr", static_cast<Handle*>(handle)).failure.value_or(SQL_SUCCESS);
}

SQLRETURN SQL_API SQLSetConnectAttrW(SQLHDBC handle, SQLINTEGER attribute, SQLPOINTER value,
                                     SQLINTEGER) {
  const Call call("SQLSetConnectAttrW", static_cast<Handle*>(handle));
  if (call.failure) return *call.failure;
  if (attribute == SQL_ATTR_LOGIN_TIMEOUT) {
    control.loginTimeout = reinterpret_cast<SQLULEN>(value);
  }
  constexpr SQLINTEGER kReset = 1246;  // as SQL Server's drivers have it
  if (attribute == kReset && value == reinterpret_cast<SQLPOINTER>(1)) ++control.resets;
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLGetConnectAttrW(SQLHDBC handle, SQLINTEGER attribute, SQLPOINTER value,
                                     SQLINTEGER, SQLINTEGER*) {
  Link& link = As<Link>(handle);
  const Call call("SQLGetConnectAttrW", &link);
  if (call.failure) return *call.failure;
  if (attribute != SQL_ATTR_CONNECTION_DEAD) return Error(link, {u"HYC00", 0, u"Not here"});
  *static_cast<SQLUINTEGER*>(value) =
      call.Told<SQLUINTEGER>(link.number <= control.died, SQL_CD_TRUE, 77);
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLDriverConnectW(SQLHDBC handle, SQLHWND, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*,
                                    SQLSMALLINT, SQLSMALLINT*, SQLUSMALLINT) {
  Link& link = As<Link>(handle);
  const Call call("SQLDriverConnectW", &link);
  if (call.failure) return *call.failure;
  link.connected = true;
  link.number = ++control.connects;
  ++control.openConnections;
  return call.lie == Fault::None ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

SQLRETURN SQL_API SQLDisconnect(SQLHDBC handle) {
  Link& link = As<Link>(handle);
  const Call call("SQLDisconnect", &link);
  if (call.failure) return *call.failure;
  Disconnect(link);
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLEndTran(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT) {
  // Does nothing in auto-commit mode, like the real ones.
  return Call("SQLEndTran", static_cast<Handle*>(handle)).failure.value_or(SQL_SUCCESS);
}

SQLRETURN SQL_API SQLGetInfoW(SQLHDBC handle, SQLUSMALLINT type, SQLPOINTER value,
                              SQLSMALLINT bytes, SQLSMALLINT* length) {
  Link& link = As<Link>(handle);
  const Call call("SQLGetInfoW", &link);
  if (call.failure) return *call.failure;
  if (type != SQL_DBMS_NAME && type != SQL_DRIVER_ODBC_VER) {
    return Error(link, {u"HYC00", 0, u"Not here"});
  }
  const std::u16string_view text = type == SQL_DBMS_NAME ? u"Microsoft SQL Server" : u"03.51";
  CopyText(text, static_cast<SQLWCHAR*>(value), bytes / SQLSMALLINT{sizeof(SQLWCHAR)});
  if (length != nullptr) {
    *length =
        call.Told<SQLSMALLINT>(static_cast<SQLSMALLINT>(text.size() * sizeof(SQLWCHAR)), -9, 32767);
  }
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLSetStmtAttrW(SQLHSTMT handle, SQLINTEGER attribute, SQLPOINTER value,
                                  SQLINTEGER) {
  const Call call("SQLSetStmtAttrW", static_cast<Handle*>(handle));
  if (call.failure) return *call.failure;
  if (attribute == SQL_ATTR_QUERY_TIMEOUT) control.queryTimeout = reinterpret_cast<SQLULEN>(value);
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLGetStmtAttrW(SQLHSTMT handle, SQLINTEGER, SQLPOINTER, SQLINTEGER,
                                  SQLINTEGER*) {
  return Error(As<Statement>(handle), {u"HYC00", 0, u"Not here"});
}

SQLRETURN SQL_API SQLBindParameter(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT direction,
                                   SQLSMALLINT cType, SQLSMALLINT, SQLULEN, SQLSMALLINT,
                                   SQLPOINTER buffer, SQLLEN bytes, SQLLEN* indicator) {
  Statement& statement = As<Statement>(handle);
  const Call call("SQLBindParameter", &statement);
  if (call.failure) return *call.failure;
  if (statement.parameters.size() < number) statement.parameters.resize(number);
  statement.parameters[number - 1u] = {direction, cType, buffer, bytes, indicator};
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLExecDirectW(SQLHSTMT handle, SQLWCHAR* text, SQLINTEGER length) {
  Statement& statement = As<Statement>(handle);
  const Call call("SQLExecDirectW", &statement);
  if (call.failure) return *call.failure;
  const std::u16string_view sql(reinterpret_cast<char16_t*>(text), static_cast<size_t>(length));
  // The second is a procedure that does so, called by its bare name.
  if (sql == u"BEGIN TRANSACTION" || sql == u"update_and_leave_open")
    statement.link->SetTransaction(true);
  if (sql == u"IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION" || sql == u"ROLLBACK") {
    statement.link->SetTransaction(false);
  }
  ScriptAnswer answer = Answer(sql);
  if (answer.executed == SQL_ERROR) {
    return Error(statement, {answer.state, answer.native, answer.message});
  }
  statement.isCall = sql.starts_with(u"{");
  statement.results = std::move(answer.results);
  statement.result = statement.row = 0;
  return call.lie == Fault::None ? answer.executed : SQLRETURN{SQL_SUCCESS_WITH_INFO};
}

SQLRETURN SQL_API SQLNumResultCols(SQLHSTMT handle, SQLSMALLINT* count) {
  Statement& statement = As<Statement>(handle);
  const Call call("SQLNumResultCols", &statement);
  if (call.failure) return *call.failure;
  const size_t columns =
      statement.HasResult() ? statement.results[statement.result].columns.size() : 0;
  *count = call.Told<SQLSMALLINT>(static_cast<SQLSMALLINT>(columns), -1, 3);
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLRowCount(SQLHSTMT handle, SQLLEN* count) {
  Statement& statement = As<Statement>(handle);
  const Call call("SQLRowCount", &statement);
  if (call.failure) return *call.failure;
  const SQLLEN rows = statement.HasResult() ? statement.results[statement.result].rowCount : -1;
  *count = call.Told<SQLLEN>(rows, -5, SQLLEN{1} << 62);
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLDescribeColW(SQLHSTMT handle, SQLUSMALLINT number, SQLWCHAR* name,
                                  SQLSMALLINT room, SQLSMALLINT* nameLength, SQLSMALLINT* type,
                                  SQLULEN* size, SQLSMALLINT* digits, SQLSMALLINT* nullable) {
  Statement& statement = As<Statement>(handle);
  const Call call("SQLDescribeColW", &statement);
  if (call.failure) return *call.failure;
  if (!statement.HasResult() || number > statement.results[statement.result].columns.size()) {
    return Error(statement, {u"07009", 0, u"No such column"});
  }
  const ScriptColumn& column = statement.results[statement.result].columns[number - 1u];
  CopyText(column.name, name, room);
  *nameLength = call.Told<SQLSMALLINT>(static_cast<SQLSMALLINT>(column.name.size()), -32768, 32767);
  *type = call.Told<SQLSMALLINT>(column.type, -32768, 32767);
  *size = call.Told<SQLULEN>(column.size, 0, ~SQLULEN{0});
  *digits = call.Told<SQLSMALLINT>(column.digits, -1, 32767);
  *nullable = SQL_NULLABLE;
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLColAttributeW(SQLHSTMT handle, SQLUSMALLINT number, SQLUSMALLINT,
                                   SQLPOINTER value, SQLSMALLINT bytes, SQLSMALLINT* length,
                                   SQLLEN*) {
  Statement& statement = As<Statement>(handle);
  const Call call("SQLColAttributeW", &statement);
  if (call.failure) return *call.failure;
  const std::u16string& name = statement.results[statement.result].columns[number - 1u].typeName;
  CopyText(name, static_cast<SQLWCHAR*>(value), bytes / SQLSMALLINT{sizeof(SQLWCHAR)});
  *length =
      call.Told<SQLSMALLINT>(static_cast<SQLSMALLINT>(name.size() * sizeof(SQLWCHAR)), -1, 32767);
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLFetch(SQLHSTMT handle) {
  Statement& statement = As<Statement>(handle);
  const Call call("SQLFetch", &statement);
  if (call.failure) return *call.failure;
  if (call.lie == Fault::SmallLie) return SQL_NO_DATA;
  const ScriptResult& result = statement.results[statement.result];
  if (statement.row == result.rows.size()) {
    if (result.failsInRow) return Error(statement, {u"40001", 1205, u"Chosen as a victim"});
    return SQL_NO_DATA;
  }
  ++statement.row;
  statement.column = 0;
  return call.lie == Fault::None ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

SQLRETURN SQL_API SQLGetData(SQLHSTMT handle, SQLUSMALLINT number, SQLSMALLINT cType,
                             SQLPOINTER out, SQLLEN bytes, SQLLEN* indicator) {
  Statement& statement = As<Statement>(handle);
  const Call call("SQLGetData", &statement);
  if (call.failure) return *call.failure;
  if (number < statement.column) return Error(statement, {u"07009", 0, u"Columns in order only"});
  if (number != statement.column) statement.position = 0;
  statement.column = number;
  const ScriptResult& result = statement.results[statement.result];
  const ScriptValue& value = result.rows[statement.row - 1][number - 1u];
  if (!value) {
    *indicator = SQL_NULL_DATA;
    return SQL_SUCCESS;
  }
  if (cType == SQL_C_WCHAR) {
    return GiveText(statement, call, result, *value, out, bytes, indicator);
  }
  GiveFixed(call, *value, cType, out);
  *indicator = 4;
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLMoreResults(SQLHSTMT handle) {
  Statement& statement = As<Statement>(handle);
  const Call call("SQLMoreResults", &statement);
  if (call.failure) return *call.failure;
  if (call.lie == Fault::SmallLie) return SQL_NO_DATA;
  statement.row = 0;
  if (statement.HasResult() && ++statement.result < statement.results.size()) return SQL_SUCCESS;
  if (statement.isCall) GiveOutputs(statement);
  return SQL_NO_DATA;
}

SQLRETURN SQL_API SQLFreeStmt(SQLHSTMT, SQLUSMALLINT) { return SQL_SUCCESS; }
SQLRETURN SQL_API SQLCloseCursor(SQLHSTMT) { return SQL_SUCCESS; }
SQLRETURN SQL_API SQLCancel(SQLHSTMT handle) {
  return Call("SQLCancel", static_cast<Handle*>(handle)).failure.value_or(SQL_SUCCESS);
}

SQLRETURN SQL_API SQLGetDiagRecW(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT number, SQLWCHAR* state,
                                 SQLINTEGER* native, SQLWCHAR* message, SQLSMALLINT room,
                                 SQLSMALLINT* length) {
  const auto& diagnostic = static_cast<Handle*>(handle)->diagnostic;
  if (number != 1 || !diagnostic) return SQL_NO_DATA;
  const Call call("SQLGetDiagRecW", nullptr);
  if (call.failure) return *call.failure;
  CopyText(diagnostic->state, state, SQL_SQLSTATE_SIZE + 1);
  *native = diagnostic->native;
  CopyText(diagnostic->message, message, room);
  *length = call.Told<SQLSMALLINT>(static_cast<SQLSMALLINT>(diagnostic->message.size()), -9, 32767);
  return SQL_SUCCESS;
}

SQLRETURN SQL_API SQLGetDiagFieldW(SQLSMALLINT, SQLHANDLE handle, SQLSMALLINT number,
                                   SQLSMALLINT field, SQLPOINTER value, SQLSMALLINT, SQLSMALLINT*) {
  constexpr SQLSMALLINT kLineField = -1154;  // as SQL Server's drivers have it
  if (number != 1 || !static_cast<Handle*>(handle)->diagnostic) return SQL_NO_DATA;
  if (field != kLineField) return SQL_ERROR;
  const Call call("SQLGetDiagFieldW", nullptr);
  if (call.failure) return *call.failure;
  *static_cast<SQLINTEGER*>(value) = call.Told<SQLINTEGER>(kFailureLine, -1, 2147483647);
  return SQL_SUCCESS;
}

}  // extern "C"
