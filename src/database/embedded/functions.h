// The functions and the collation that emitted SQL calls, as SQLite functions named v_...
//
// NULL in gives NULL out unless noted. Arguments arrive in the type said here: the compiler wraps
// what has another type in v_convert. "text" is any text type, n a whole number, "code" an
// Encode(TypeInfo) constant.
//
//   v_convert(x, fromCode, toCode [, style])     CAST and CONVERT, variables: text is cut silently
//   v_assign(x, fromCode, toCode, column, table) columns: text that is too long is 2628
//   v_add v_sub v_mul v_div v_mod (a, b, resultCode [, aCode, bCode])
//                                                without their codes both operands have the
//                                                result's type already
//   v_neg(x, resultCode)                         x already has the result's type
//
//   v_len(text)  v_datalength(x, code)  v_ascii(text)  v_unicode(text)  v_char(n)  v_nchar(n)
//   v_left(text, n)  v_right(text, n)  v_substring(text, start, n)  v_reverse(text)
//   v_charindex(sought, text [, start])  v_patindex(pattern, text)
//   v_replace(text, sought, replacement)  v_stuff(text, start, n, insertion; NULL inserts nothing)
//   v_ltrim(text)  v_rtrim(text)  v_upper(text)  v_lower(text)  v_quotename(text [, quote])
//   v_str(float [, length [, decimals]])  v_space(n)  v_replicate(text, n, code of text)
//   v_like(text, pattern [, escape])             0 or 1
//   v_nlike(text, pattern [, escape])            when one of them is of a national type: blanks at
//                                                the end of the text count
//
//   v_dateadd(part, n, date, code of date)       part: 'year', 'yy' ... as a text constant
//   v_datediff(part, from, to)  v_datepart(part, date)  v_datename(part, date)
//                                                of any date type
//   v_isdate(text)                               never NULL
//
//   v_abs(x, code)  v_sign(x, code)  v_floor(x, code)  v_ceiling(x, code)
//   v_round(x, n [, truncate], code)  v_power(x, float, code)
//                                                code: the type of x, a number or a text; the
//                                                result has NumericResult of it
//   v_sqrt(float)
//   v_isnumeric(x, code)                         never NULL
//   v_newid()
//
//   v_sum_...(x)  v_avg_...(x)                   see SumFunction and AverageFunction
//
// Texts and comparisons of texts take COLLATE TSQL (collation.h).
#pragma once

#include <sqlite3.h>

#include <optional>
#include <string>

#include "database/connection.h"
#include "database/embedded/types.h"

namespace vellum250::database::embedded {

// What the functions of one SQLite connection share with whoever steps its statements.
struct FunctionContext {
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
