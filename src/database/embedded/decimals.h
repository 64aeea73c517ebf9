// Exact arithmetic: whole numbers with SQL Server's ranges, decimals and money on 128 bits.
#pragma once

#include <optional>
#include <string>

#include "database/embedded/int128.h"
#include "database/embedded/value.h"

namespace vellum250::database::embedded {

// `value`, scaled by 10^from, scaled by 10^to; half away from zero when digits go, or cut. nullopt
// when more than 38 digits would come.
enum class Rounding : uint8_t { HalfAwayFromZero, TowardsZero };
std::optional<Int128> Rescale(Int128 value, int32_t from, int32_t to,
                              Rounding rounding = Rounding::HalfAwayFromZero);

// The stored values of a whole-number or money type.
struct IntegerRange {
  int64_t least;
  int64_t most;
};
IntegerRange RangeOf(SqlType type);

// The value of a decimal type. Raises 8115 when it has more digits than the type, and "not
// supported" when the type has room but the database does not (more than 18 digits).
int64_t FitDecimal(Int128 value, TypeInfo type, TextView from = u"numeric");

// The digits of a scaled number, with all decimals: -150 of scale 2 is "-1.50".
void AppendScaled(std::string& out, int64_t value, int32_t scale);

// Blanks, sign, digits with at most one point: the number scaled by 10^scale, digits beyond
// rounded. nullopt when the text is none; `overflow` is set when it has too many digits.
std::optional<Int128> ParseScaled(std::string_view text, int32_t scale, bool& overflow);

// `left op right` in the type `result` (ResultType). NULL when either is. Raises 8115, 8134 and
// what converting the operands raises.
Value Arithmetic(Operator op, ValueRef left, TypeInfo leftType, ValueRef right, TypeInfo rightType,
                 TypeInfo result);
Value Negate(ValueRef value, TypeInfo result);

// abs, sign, floor, ceiling, round, power: `type` is the argument's, the result has
// NumericResult(...) of the function's name. Raises 8116 for an argument that is no number.
TypeInfo NumericResult(TextView function, TypeInfo argument);
Value Abs(ValueRef value, TypeInfo type);
Value Sign(ValueRef value, TypeInfo type);
Value Floor(ValueRef value, TypeInfo type);
Value Ceiling(ValueRef value, TypeInfo type);
// `places` right of the point, negative for left of it.
Value Round(ValueRef value, int64_t places, TypeInfo type, bool truncate);
Value Power(ValueRef value, double exponent, TypeInfo type);

}  // namespace vellum250::database::embedded
