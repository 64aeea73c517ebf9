// Rows of one result, read forward.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "automation/variant.h"

namespace vellum250::database {

// SQL Server's types. Values arrive as: Bit Boolean; TinyInt Byte; SmallInt Int16; Int Int32;
// BigInt and Decimal Decimal; Money and SmallMoney Currency; Float and Real Double; the dates Date;
// all others Text.
enum class SqlType : uint8_t {
  Bit,
  TinyInt,
  SmallInt,
  Int,
  BigInt,
  Decimal,
  Money,
  SmallMoney,
  Float,
  Real,
  DateTime,
  SmallDateTime,
  Date,
  Char,
  VarChar,
  Text,
  NChar,
  NVarChar,
  NText,
  UniqueIdentifier,
  Binary,
  VarBinary,
  Image,
  Sysname
};

// The type's name as SQL Server writes it ("varchar", "datetime" ...).
TextView SqlTypeName(SqlType type);

struct Column {
  Text name;  // "" for an expression without alias
  SqlType type = SqlType::VarChar;
  int32_t precision = 0;  // of Decimal
  int32_t scale = 0;      // of Decimal
  int32_t length = 0;     // characters, of the text types; -1 is max
};

class Recordset {
 public:
  // Not null; results of one statement may share them.
  using ColumnsPtr = std::shared_ptr<const std::vector<Column>>;

  Recordset();
  Recordset(ColumnsPtr columns, std::vector<Variant> values);
  Recordset(std::vector<Column> columns, std::vector<Variant> values);

  const std::vector<Column>& Columns() const { return *columns_; }
  size_t RowCount() const { return columns_->empty() ? 0 : values_.size() / columns_->size(); }

  bool Eof() const { return row_ >= RowCount(); }
  void MoveNext() { ++row_; }

  // A field of the current row: a Null variant for NULL. Raises 3021 (no current record) at the
  // end, 3265 (item not found) for an unknown name or position. Names without regard to case, the
  // first of several.
  const Variant& Field(size_t index) const;
  const Variant& Field(TextView name) const;

  // Any row, for those who read them all: row < RowCount(), index < Columns().size().
  const Variant& At(size_t row, size_t index) const {
    return values_[row * columns_->size() + index];
  }

 private:
  ColumnsPtr columns_;
  std::vector<Variant> values_;  // row by row
  size_t row_ = 0;
};

}  // namespace vellum250::database
