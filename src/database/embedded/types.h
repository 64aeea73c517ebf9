// SQL Server's types as the embedded database knows them: names, codes, precedence, and the types
// of expressions.
#pragma once

#include <cstdint>
#include <string_view>

#include "automation/text.h"
#include "database/recordset.h"

namespace vellum250::database::embedded {

// The type of a column, variable or expression.
struct TypeInfo {
  SqlType type = SqlType::Int;
  int32_t length = 0;     // text types: characters (UTF-16 code units), -1 is max; else 0
  int32_t precision = 0;  // Decimal: 1-38. Whole-number types: the digits of a literal, 0 otherwise
  int32_t scale = 0;      // Decimal: 0-precision; else 0

  bool operator==(const TypeInfo&) const = default;
};

// What a type is made of; the order has no meaning.
enum class TypeClass : uint8_t { Whole, Decimal, Money, Float, DateTime, Text, Guid, Binary };
TypeClass ClassOf(SqlType type);
inline bool IsText(TypeInfo type) { return ClassOf(type.type) == TypeClass::Text; }
inline bool IsDate(TypeInfo type) { return ClassOf(type.type) == TypeClass::DateTime; }
// bit, whole numbers, decimal, money, float.
bool IsNumber(TypeInfo type);
// char and nchar: padded with blanks to their length.
inline bool IsPadded(TypeInfo type) {
  return type.type == SqlType::Char || type.type == SqlType::NChar;
}
// nchar, nvarchar, ntext, sysname: two bytes a character.
bool IsNational(TypeInfo type);
// The characters of the longest text that is not max.
int32_t LongestText(TypeInfo type);
// The length that a plan gives a text of this length, so that it serves texts of other lengths as
// well: short, the longest, or -1 for what only max holds.
int32_t LengthClass(TypeInfo type);
// text, ntext: no comparison, no arithmetic, few functions.
inline bool IsLongText(TypeInfo type) {
  return type.type == SqlType::Text || type.type == SqlType::NText;
}

// A type as one integer constant in emitted SQL, and back.
constexpr int64_t Encode(TypeInfo type) {
  return static_cast<int64_t>(type.type) | int64_t{type.precision} << 8 |
         int64_t{type.scale} << 16 | (int64_t{type.length} + 1) << 24;
}
constexpr TypeInfo Decode(int64_t code) {
  return {static_cast<SqlType>(code & 0xFF), static_cast<int32_t>(code >> 24) - 1,
          static_cast<int32_t>(code >> 8 & 0xFF), static_cast<int32_t>(code >> 16 & 0xFF)};
}

// The type that T-SQL names `name` ("varchar", "numeric", "double precision" with one blank ...),
// without regard to case. `first` and `second` are the numbers in brackets: 0 when absent, -1 for
// MAX. `unsized` is the length of a text type without one: 1 in declarations, 30 in CAST and
// CONVERT. Raises 2715 or, in CAST and CONVERT, 243 for an unknown name, 131, 1001, 2716, 2750 or
// 2751 for numbers that do not fit, and "not supported" for the types this database does not store
// (binary, datetime2, time, xml
// ...).
TypeInfo ParseType(TextView name, int32_t first, int32_t second, int32_t unsized);

// Shorthands.
constexpr TypeInfo kBit{SqlType::Bit, 0, 0, 0};
constexpr TypeInfo kInt{SqlType::Int, 0, 0, 0};
constexpr TypeInfo kBigInt{SqlType::BigInt, 0, 0, 0};
constexpr TypeInfo kFloat{SqlType::Float, 0, 0, 0};
constexpr TypeInfo kMoney{SqlType::Money, 0, 0, 0};
constexpr TypeInfo kDateTime{SqlType::DateTime, 0, 0, 0};
constexpr TypeInfo VarChar(int32_t length) { return {SqlType::VarChar, length, 0, 0}; }
constexpr TypeInfo NVarChar(int32_t length) { return {SqlType::NVarChar, length, 0, 0}; }
constexpr TypeInfo DecimalType(int32_t precision, int32_t scale) {
  return {SqlType::Decimal, 0, precision, scale};
}

// The type's name in SQL Server's messages: "varchar", "numeric" for decimal ...
TextView MessageName(TypeInfo type);

// The decimal that holds every value of a number type: int is decimal(10,0), money (19,4); a
// literal counts its own digits.
TypeInfo AsDecimal(TypeInfo type);
// What SQL Server stores a value in; 0 for texts and binaries, where that is in the value.
int32_t StoredBytes(TypeInfo type);
// The text type that a value of another type becomes as an argument of a text function: long
// enough for any value. Text types stay as they are.
TypeInfo AsText(TypeInfo type);

enum class Operator : uint8_t { Add, Subtract, Multiply, Divide, Modulo };

// The type of `left op right`: SQL Server's precedence, precision and scale rules, lengths of
// joined texts. Raises 402, 206, 257 or 8117 when the operator does not take these types.
TypeInfo ResultType(Operator op, TypeInfo left, TypeInfo right);
// The type of `-operand`; raises 8117.
TypeInfo NegatedType(TypeInfo operand);
// The one type of several values that meet: the branches of CASE, the arguments of COALESCE, the
// columns of UNION. An untyped NULL takes no part: leave it out. Raises 206.
TypeInfo CommonType(TypeInfo left, TypeInfo right);
// The type in which two operands are compared; `words` is the operator in SQL Server's words
// ("equal to", "less than", "not equal to" ...). Raises 206 and 402.
TypeInfo ComparisonType(TypeInfo left, TypeInfo right, TextView words);
// The types of sum and avg over values of a type; raise 8117.
TypeInfo SumType(TypeInfo argument);
TypeInfo AverageType(TypeInfo argument);

// Raises 206, 257 when a value of type `from` does not become `to` without CONVERT.
void CheckImplicit(TypeInfo from, TypeInfo to);
// Raises 529 when not even CAST and CONVERT can.
void CheckExplicit(TypeInfo from, TypeInfo to);

}  // namespace vellum250::database::embedded
