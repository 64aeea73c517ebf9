// The functions and the collation that emitted SQL calls, as SQLite functions named v_...
//
// NULL in gives NULL out unless noted. Arguments arrive in the type said here: the compiler wraps
// what has another type in v_convert. "text" is any text type, "code" an Encode(TypeInfo) constant.
//
//   v_convert(x, fromCode, toCode [, style])   CAST and CONVERT; text is cut silently
//   v_assign(x, fromCode, toCode, column, table)   storing: text too long is 2628; nothing is cut
//                                                 but blanks. Empty names for variables: text is
//                                                 cut
//   v_add v_sub v_mul v_div v_mod (a, b, resultCode [, aCode, bCode])   without the codes both
//                                                 operands have the result's type already
//   v_neg(x, resultCode)
//   v_len(text)  v_datalength(x, code)  v_ascii(text)  v_unicode(text)
//   v_left(text, n)  v_right(text, n)  v_substring(text, start, n)
//   v_charindex(sought, text [, start])  v_patindex(pattern, text)
//   v_replace(text, sought, replacement)  v_stuff(text, start, n, insertion; NULL insertion: none)
//   v_ltrim(text)  v_rtrim(text)  v_upper(text)  v_lower(text)  v_reverse(text)
//   v_str(float [, length [, decimals]])  v_space(n)  v_replicate(text, n, code of text)
//   v_char(n)  v_nchar(n)  v_quotename(text [, quote])
//   v_like(text, pattern [, escape])           0 or 1
//   v_getdate()                                datetime, one moment for a statement
//   v_dateadd(part, n, date, code of date)     part: 'year', 'yy' ... as a text constant
//   v_datediff(part, from, to)  v_datepart(part, date)  v_datename(part, date)   any date types
//   v_isdate(text)                             never NULL
//   v_abs(x, code)  v_sign(x, code)  v_floor(x, code)  v_ceiling(x, code)
//   v_round(x, n, code [, truncate])  v_power(x, float, code)   codes of x
//   v_sqrt(float)
//   v_isnumeric(x, code)                       never NULL
//   v_newid()
//   v_sum_int v_sum_bigint v_sum_decimal v_sum_float and v_avg_... (x)   aggregates, see
//   SumFunction
//
#pragma once

#include <sqlite3.h>

#include <optional>
#include <string>

#include "database/connection.h"
#include "database/embedded/types.h"

namespace vellum250::database::embedded {

// What the functions of one SQLite connection share with whoever steps its statements.
struct FunctionContext {
  // getdate(): a datetime value. Set before each statement with CurrentMoment().
  std::string now;
  // The failure behind an SQLITE_ERROR of sqlite3_step: take it out and rethrow it.
  std::optional<DatabaseFailure> failure;
};

// The local time as a datetime value.
std::string CurrentMoment();

// Registers the functions and the collation TSQL. `context` outlives the connection.
// Raises a DatabaseFailure when SQLite has no memory.
void RegisterFunctions(sqlite3* database, FunctionContext& context);

// The aggregates for a sum or an average of values of type `argument`, already converted to
// SumType or AverageType of it.
const char* SumFunction(TypeInfo argument);
const char* AverageFunction(TypeInfo argument);

}  // namespace vellum250::database::embedded
