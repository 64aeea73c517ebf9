#include "database/odbc/results.h"

#include <algorithm>
#include <array>
#include <optional>

#include "database/odbc/types.h"

namespace vellum250::database::odbc {

namespace {

Text TypeName(const Statement& statement, SQLUSMALLINT number) {
  std::array<char16_t, 64> name{};
  SQLSMALLINT bytes = 0;
  statement.Check(SQLColAttributeW(statement.get(), number, SQL_DESC_TYPE_NAME, name.data(),
                                   SQLSMALLINT{sizeof(name)}, &bytes, nullptr));
  return Text(UpToZero({name.data(), name.size()}));
}

Column DescribeColumn(const Statement& statement, SQLUSMALLINT number) {
  Column column;
  column.name.resize(130);  // a name of SQL Server has at most 128
  SQLSMALLINT nameLength = 0;
  SQLSMALLINT odbcType = 0;
  SQLULEN size = 0;
  SQLSMALLINT digits = 0;
  SQLSMALLINT nullable = 0;
  for (int attempt = 0; attempt < 2; ++attempt) {
    statement.Check(SQLDescribeColW(statement.get(), number, Wide(column.name.data()),
                                    static_cast<SQLSMALLINT>(column.name.size()), &nameLength,
                                    &odbcType, &size, &digits, &nullable));
    if (nameLength < static_cast<SQLSMALLINT>(column.name.size())) break;
    column.name.resize(static_cast<size_t>(nameLength) + 1);
  }
  column.name.resize(UpToZero(column.name).size());

  const bool mayBeMoney = odbcType == SQL_DECIMAL || odbcType == SQL_NUMERIC;
  column.type = TypeOfColumn(odbcType, size, mayBeMoney ? TypeName(statement, number) : Text());
  if (column.type == SqlType::Decimal) {
    column.precision = static_cast<int32_t>(std::min<SQLULEN>(size, 38));
    column.scale = digits;
  } else if (TraitsOf(column.type).transfer == Transfer::Text) {
    // Drivers give 0 or a number beyond all bounds for a type without a limit.
    constexpr SQLULEN kLargest = 8000;
    column.length = size == 0 || size > kLargest ? -1 : static_cast<int32_t>(size);
  }
  return column;
}

// One text column of the current row, piece by piece; nullopt for NULL.
std::optional<Text> ReadText(const Statement& statement, SQLUSMALLINT number) {
  constexpr size_t kFirstPiece = 1024;
  constexpr size_t kLargePiece = 1 << 19;
  std::array<char16_t, kFirstPiece> first;
  Text text;
  char16_t* piece = first.data();
  size_t room = first.size();  // with the zero that ends each piece
  while (true) {
    SQLLEN indicator = 0;
    const SQLRETURN result = SQLGetData(statement.get(), number, SQL_C_WCHAR, piece,
                                        static_cast<SQLLEN>(room * sizeof(char16_t)), &indicator);
    size_t got = 0;
    size_t remaining = 0;
    if (result != SQL_NO_DATA) {
      statement.Check(result);
      if (indicator == SQL_NULL_DATA) return std::nullopt;
      if (indicator < 0 && indicator != SQL_NO_TOTAL) {
        Fail(u"The ODBC driver gave a text of a length that cannot be");
      }
      const bool known = indicator != SQL_NO_TOTAL;
      const size_t length = known ? static_cast<size_t>(indicator) / sizeof(char16_t) : 0;
      const bool isLast = known && length < room;
      got = isLast ? length : room - 1;
      // A driver that gives no total is asked for as much as there is already.
      if (!isLast) remaining = known ? length - got : std::max(text.size(), kFirstPiece);
    }
    // Behind the first piece the text itself is the buffer.
    if (piece == first.data()) {
      text.assign(piece, got);
    } else {
      text.resize(text.size() - room + got);
    }
    if (remaining == 0) return text;
    room = std::min(remaining, std::max(text.size(), kLargePiece)) + 1;
    text.resize(text.size() + room);
    piece = text.data() + text.size() - room;
  }
}

Variant ReadValue(const Statement& statement, SQLUSMALLINT number, SqlType type) {
  const Transfer transfer = TraitsOf(type).transfer;
  if (transfer == Transfer::Text) {
    std::optional<Text> text = ReadText(statement, number);
    return text ? FromText(type, std::move(*text)) : Variant(Null{});
  }
  FixedValue value{};
  SQLLEN indicator = 0;
  statement.Check(
      SQLGetData(statement.get(), number, CTypeOf(transfer), &value, sizeof value, &indicator));
  return indicator == SQL_NULL_DATA ? Variant(Null{}) : FromFixed(type, value);
}

Recordset ReadRows(const Statement& statement, SQLUSMALLINT columnCount) {
  std::vector<Column> columns;
  for (SQLUSMALLINT i = 1; i <= columnCount; ++i) columns.push_back(DescribeColumn(statement, i));
  std::vector<Variant> values;
  while (true) {
    const SQLRETURN result = SQLFetch(statement.get());
    if (result == SQL_NO_DATA) return Recordset(std::move(columns), std::move(values));
    statement.Check(result);
    // In order, as many drivers cannot give them otherwise.
    for (SQLUSMALLINT i = 1; i <= columnCount; ++i) {
      values.push_back(ReadValue(statement, i, columns[i - 1u].type));
    }
  }
}

}  // namespace

void ReadResults(const Statement& statement, Batch& batch) {
  while (true) {
    SQLSMALLINT columnCount = 0;
    statement.Check(SQLNumResultCols(statement.get(), &columnCount));
    if (columnCount > 0) {
      batch.results.push_back(ReadRows(statement, static_cast<SQLUSMALLINT>(columnCount)));
    } else {
      SQLLEN rowCount = -1;
      statement.Check(SQLRowCount(statement.get(), &rowCount));
      if (rowCount >= 0) batch.rowCounts.push_back(rowCount);
    }
    const SQLRETURN result = SQLMoreResults(statement.get());
    if (result == SQL_NO_DATA) return;
    statement.Check(result);
  }
}

}  // namespace vellum250::database::odbc
