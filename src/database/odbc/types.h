// SQL Server's types as ODBC has them, and values on their way between ODBC and a Variant.
#pragma once

#include "automation/variant.h"
#include "database/odbc/handles.h"
#include "database/recordset.h"

namespace vellum250::database::odbc {

// The C type in which a value travels: SQL_C_BIT, SQL_C_SLONG, SQL_C_DOUBLE, SQL_C_TYPE_TIMESTAMP
// or SQL_C_WCHAR. Numbers that no C type holds exactly travel as their digits.
enum class Transfer : uint8_t { Bit, Integer, Real, Timestamp, Text };
SQLSMALLINT CTypeOf(Transfer transfer);

struct TypeTraits {
  SQLSMALLINT odbcType;  // of a parameter
  Transfer transfer;
  SQLULEN size;        // characters or digits of the largest value
  SQLSMALLINT digits;  // after the point, of numbers and seconds
};
const TypeTraits& TraitsOf(SqlType type);

// The type of a column that ODBC describes so; unknown ones are VarChar, as text is what every
// driver can give. `typeName` tells the money types from other decimals.
SqlType TypeOfColumn(SQLSMALLINT odbcType, SQLULEN size, TextView typeName);

// Room for a value of any transfer but Text.
union FixedValue {
  unsigned char bit;
  SQLINTEGER integer;
  double real;
  SQL_TIMESTAMP_STRUCT timestamp;
};

// To the Variant that a column of the type gives. Both raise a DatabaseFailure when the driver's
// value is none of the type.
Variant FromFixed(SqlType type, const FixedValue& value);
Variant FromText(SqlType type, Text text);

// From any Variant that converts to the type; not Null, Empty or Missing. Raise 6 and 13.
FixedValue ToFixed(SqlType type, const Variant& value);
Text ToWireText(SqlType type, const Variant& value);

}  // namespace vellum250::database::odbc
