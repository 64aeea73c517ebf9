#include "database/odbc/parameter.h"

#include <algorithm>

namespace vellum250::database::odbc {

namespace {

SqlType TypeOfValue(const Variant& value) {
  switch (value.Type()) {
    case VariantType::Boolean:
      return SqlType::Bit;
    case VariantType::Byte:
      return SqlType::TinyInt;
    case VariantType::Int16:
      return SqlType::SmallInt;
    case VariantType::Int32:
      return SqlType::Int;
    case VariantType::Double:
      return SqlType::Float;
    case VariantType::Currency:
      return SqlType::Money;
    case VariantType::Decimal:
      return SqlType::Decimal;
    case VariantType::Date:
      return SqlType::DateTime;
    default:
      return SqlType::NVarChar;
  }
}

// A long type for texts that are longer than their own type can be.
SQLSMALLINT LongType(SQLSMALLINT odbcType) {
  switch (odbcType) {
    case SQL_WCHAR:
    case SQL_WVARCHAR:
      return SQL_WLONGVARCHAR;
    case SQL_CHAR:
    case SQL_VARCHAR:
      return SQL_LONGVARCHAR;
    default:
      return odbcType;
  }
}

constexpr SQLULEN kLargestOutput = 8000;

}  // namespace

Parameter::Parameter(const Variant& value)
    : Parameter(value, TypeOfValue(value), Direction::In, 0) {}

Parameter::Parameter(const ProcedureParameter& parameter) try
    : Parameter(parameter.value, parameter.type, parameter.direction, parameter.size) {
} catch (const Failure& failure) {
  throw WithDetail(failure, parameter.name);
}

Parameter::Parameter(const Variant& value, SqlType type, Direction direction, int32_t size)
    : type_(type), direction_(direction) {
  const TypeTraits& traits = TraitsOf(type);
  odbcType_ = traits.odbcType;
  size_ = size > 0 ? static_cast<SQLULEN>(size) : traits.size;
  digits_ = traits.digits;
  const bool isText = traits.transfer == Transfer::Text;
  if (direction != Direction::Out && !value.IsNull() && !value.IsEmpty()) {
    if (isText) {
      text_ = ToWireText(type, value);
      indicator_ = static_cast<SQLLEN>(text_.size() * sizeof(char16_t));
    } else {
      fixed_ = ToFixed(type, value);
      indicator_ = 0;
    }
  }
  if (!isText) return;
  if (type == SqlType::Decimal) {
    const size_t point = text_.find(u'.');
    digits_ = point == Text::npos ? 0 : static_cast<SQLSMALLINT>(text_.size() - point - 1);
  } else if (direction == Direction::In && text_.size() > traits.size) {
    odbcType_ = LongType(odbcType_);
    size_ = text_.size();
  }
  if (direction != Direction::In) {
    size_ = std::min(size_, kLargestOutput);
    // A number's digits have a sign and a point beside them.
    text_.resize(std::max<size_t>(text_.size(), size_ + 2) + 1);
  }
}

void Parameter::Bind(const Statement& statement, SQLUSMALLINT number) {
  constexpr SQLSMALLINT kDirections[] = {SQL_PARAM_INPUT, SQL_PARAM_OUTPUT, SQL_PARAM_INPUT_OUTPUT};
  const Transfer transfer = TraitsOf(type_).transfer;
  const bool isText = transfer == Transfer::Text;
  const SQLPOINTER buffer = isText ? static_cast<SQLPOINTER>(text_.data()) : &fixed_;
  const size_t bytes = isText ? text_.size() * sizeof(char16_t) : sizeof fixed_;
  statement.Check(SQLBindParameter(
      statement.get(), number, kDirections[static_cast<size_t>(direction_)], CTypeOf(transfer),
      odbcType_, size_, digits_, buffer, static_cast<SQLLEN>(bytes), &indicator_));
}

Variant Parameter::Result() const {
  if (indicator_ == SQL_NULL_DATA) return Null{};
  if (TraitsOf(type_).transfer != Transfer::Text) return FromFixed(type_, fixed_);
  // The driver has ended the text with a zero, which the buffer holds as well.
  const auto length = static_cast<size_t>(indicator_) / sizeof(char16_t);
  if (indicator_ < 0 || length >= text_.size()) {
    Fail(u"An output parameter is longer than the size it was given");
  }
  return FromText(type_, text_.substr(0, length));
}

}  // namespace vellum250::database::odbc
