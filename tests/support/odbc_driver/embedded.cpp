// A server that understands SQL Server's dialect behind the driver: the embedded database whose
// file the environment variable VELLUM250_TEST_ODBC_DATABASE names.
#include <cstdlib>

#include "automation/conversion.h"
#include "database/connection.h"
#include "support/odbc_driver/script.h"

namespace vellum250::support {

namespace {

using database::Recordset;
using database::SqlType;

// The types that the library's own statements ask for; the failure of any other is the test's.
ScriptColumn Described(const database::Column& column) {
  ScriptColumn described{.name = column.name};
  described.typeName = database::SqlTypeName(column.type);
  switch (column.type) {
    case SqlType::TinyInt:
      described.type = SQL_TINYINT;
      break;
    case SqlType::SmallInt:
      described.type = SQL_SMALLINT;
      break;
    case SqlType::Int:
      break;
    case SqlType::Decimal:
      described.type = SQL_DECIMAL;
      described.size = static_cast<SQLULEN>(column.precision);
      described.digits = static_cast<SQLSMALLINT>(column.scale);
      break;
    case SqlType::Char:
    case SqlType::VarChar:
    case SqlType::NVarChar:
      described.type = SQL_WVARCHAR;
      described.size = column.length < 0 ? 0 : static_cast<SQLULEN>(column.length);
      break;
    default:
      throw TypeMismatch(u"not a type of the test's server: " + described.typeName);
  }
  return described;
}

ScriptResult Told(const Recordset& rows) {
  ScriptResult result;
  for (const database::Column& column : rows.Columns()) result.columns.push_back(Described(column));
  for (size_t row = 0; row < rows.RowCount(); ++row) {
    auto& values = result.rows.emplace_back();
    for (size_t i = 0; i < result.columns.size(); ++i) {
      const Variant& value = rows.At(row, i);
      values.push_back(value.IsNull() ? ScriptValue() : ScriptValue(ToText(value)));
    }
  }
  return result;
}

ScriptAnswer Failed(const char16_t* state, int32_t native, TextView words) {
  return {.executed = SQL_ERROR,
          .state = state,
          .native = native,
          .message = u"[Test][Embedded]" + Text(words)};
}

}  // namespace

ScriptAnswer Answer(std::u16string_view sql) {
  try {
    const char* const file = std::getenv("VELLUM250_TEST_ODBC_DATABASE");
    const auto connection = database::Connection::Open(
        u"Driver=Vellum250;Database={" + FromUtf8(file == nullptr ? "" : file) + u"};");
    const database::Batch batch = connection->Run(sql);
    if (batch.failure) {
      const bool isConstraint = batch.failure->Number() == database::kConstraintFailure;
      return Failed(isConstraint ? u"23000" : u"42000", batch.failure->NativeNumber(),
                    batch.failure->Description());
    }
    ScriptAnswer answer;
    for (const int64_t count : batch.rowCounts) answer.results.push_back({.rowCount = count});
    for (const Recordset& rows : batch.results) answer.results.push_back(Told(rows));
    if (answer.results.empty()) answer.results.emplace_back();
    return answer;
  } catch (const Failure& failure) {
    return Failed(u"HY000", 0, failure.Description());
  }
}

}  // namespace vellum250::support
