// Conversions between types, as CAST, CONVERT and assignment make them.
#pragma once

#include "database/embedded/value.h"

namespace vellum250::database::embedded {

// CAST and CONVERT: text is cut to its length or padded, decimals are rounded, whole numbers drop
// fractions. NULL stays NULL. Raises SQL Server's failures: 220, 232, 241, 242, 244, 245, 248,
// 8114, 8115 ..., 529 for types that never convert, 281 for a style that is none.
Value Convert(ValueRef value, TypeInfo from, TypeInfo to, int32_t style = 0);

// Storing in a column: as Convert, but text that would lose more than blanks raises 2628.
Value Assign(ValueRef value, TypeInfo from, TypeInfo to, TextView column, TextView table);

// Whether a value of type `from` is one of type `to` as it stands, so that neither need be called:
// the same representation, and no length or range to check.
bool IsSameValue(TypeInfo from, TypeInfo to);

// ISNUMERIC: whether a text converts to some number type.
bool IsNumeric(std::string_view text);

}  // namespace vellum250::database::embedded
