#include "database/odbc/diagnostics.h"

#include <algorithm>
#include <array>
#include <optional>

#include "database/connection_string.h"

namespace vellum250::database::odbc {

namespace {

struct Record {
  Text state;  // the five characters of the SQLSTATE
  SQLINTEGER native = 0;
  Text message;
};

std::optional<Record> ReadRecord(SQLSMALLINT handleType, SQLHANDLE handle, SQLSMALLINT number) {
  std::array<char16_t, SQL_SQLSTATE_SIZE + 1> state{};
  Record record;
  record.message.resize(SQL_MAX_MESSAGE_LENGTH);
  for (int attempt = 0;; ++attempt) {
    const auto room =
        static_cast<SQLSMALLINT>(std::min<size_t>(record.message.size(), SQLSMALLINT{32767}));
    SQLSMALLINT length = 0;
    const SQLRETURN result =
        SQLGetDiagRecW(handleType, handle, number, Wide(state.data()), &record.native,
                       Wide(record.message.data()), room, &length);
    if (!SQL_SUCCEEDED(result)) return std::nullopt;
    if (length < room || attempt > 0) break;
    record.message.resize(static_cast<size_t>(length) + 1);
  }
  record.message.resize(UpToZero(record.message).size());
  record.state.assign(state.data(), SQL_SQLSTATE_SIZE);
  return record;
}

// The first record that tells of a failure; warnings may stand before it.
std::optional<Record> FirstFailure(SQLSMALLINT handleType, SQLHANDLE handle, SQLSMALLINT& number) {
  constexpr SQLSMALLINT kMostRecords = 100;
  std::optional<Record> first;
  for (SQLSMALLINT candidate = 1; candidate <= kMostRecords; ++candidate) {
    auto record = ReadRecord(handleType, handle, candidate);
    if (!record) break;
    const bool isWarning = record->state.starts_with(u"01");
    if (!first || !isWarning) {
      first = std::move(record);
      number = candidate;
    }
    if (!isWarning) break;
  }
  return first;
}

int32_t NumberOf(TextView state) {
  if (state.starts_with(u"42")) return kSyntaxFailure;
  if (state.starts_with(u"23")) return kConstraintFailure;
  if (state.starts_with(u"28")) return kLogonFailure;
  // PostgreSQL's driver passes the server's own state on.
  if (state == u"HYT00" || state == u"57014") return kTimeoutFailure;
  return kUnspecifiedFailure;
}

// SQL Server's drivers tell the line of the batch in a field of their own.
int32_t LineOf(SQLSMALLINT handleType, SQLHANDLE handle, SQLSMALLINT record) {
  constexpr SQLSMALLINT kLineField = -1154;  // SQL_DIAG_SS_LINE
  int32_t line = 0;
  SQLSMALLINT length = 0;
  const bool told = SQL_SUCCEEDED(
      SQLGetDiagFieldW(handleType, handle, record, kLineField, &line, SQL_IS_INTEGER, &length));
  return told && line > 0 ? line : 0;
}

}  // namespace

DatabaseFailure FailureOf(SQLSMALLINT handleType, SQLHANDLE handle,
                          std::span<const Text> passwords) {
  SQLSMALLINT number = 0;
  std::optional<Record> record = FirstFailure(handleType, handle, number);
  if (!record || record->message.empty()) {
    return DatabaseFailure(kUnspecifiedFailure, kSource, u"The ODBC driver failed without a word");
  }
  // A connection's failures may be about the connection string, which a driver quotes in parts.
  return DatabaseFailure(NumberOf(record->state), kSource,
                         WithoutPasswords(record->message, passwords, handleType == SQL_HANDLE_DBC),
                         record->native, LineOf(handleType, handle, number));
}

void Fail(Text description) {
  throw DatabaseFailure(kUnspecifiedFailure, kSource, std::move(description));
}

}  // namespace vellum250::database::odbc
