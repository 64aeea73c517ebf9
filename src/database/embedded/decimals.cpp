#include "database/embedded/decimals.h"

#include <array>
#include <cmath>
#include <limits>

#include "database/embedded/ascii.h"
#include "database/embedded/convert.h"
#include "database/embedded/dates.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"

namespace vellum250::database::embedded {
namespace {

constexpr int32_t kMostDigits = 38;  // of any type; all of them fit 128 bits

constexpr auto kPowersOfTen = [] {
  std::array<Int128, kMostDigits + 1> powers{};
  powers[0] = 1;
  for (size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

// 10^exponent; nullopt above 38.
std::optional<Int128> PowerOfTen(int32_t exponent) {
  if (exponent < 0 || exponent > kMostDigits) return std::nullopt;
  return kPowersOfTen[static_cast<size_t>(exponent)];
}

DatabaseFailure TooManyDigits() { return Unsupported(u"a decimal of more than 18 digits"); }

bool FitsInt64(Int128 value) {
  return value >= std::numeric_limits<int64_t>::min() &&
         value <= std::numeric_limits<int64_t>::max();
}

Int128 RoundedQuotient(Int128 value, Int128 divisor, Rounding rounding) {
  const Int128 quotient = value / divisor;
  const Int128 rest = value % divisor;
  const Int128 half = rest < 0 ? -rest : rest;
  if (rounding == Rounding::TowardsZero || half < divisor - half) return quotient;
  return quotient + (value < 0 ? -1 : 1);
}

}  // namespace

IntegerRange RangeOf(SqlType type) {
  switch (type) {
    case SqlType::Bit:
      return {0, 1};
    case SqlType::TinyInt:
      return {0, 255};
    case SqlType::SmallInt:
      return {-32768, 32767};
    case SqlType::Int:
      return {std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()};
    case SqlType::SmallMoney:
      return {std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()};
    default:
      return {std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max()};
  }
}

std::optional<Int128> Rescale(Int128 value, int32_t from, int32_t to, Rounding rounding) {
  if (from == to) return value;
  if (value == 0) return 0;
  if (from > to) {
    const auto divisor = PowerOfTen(from - to);
    return divisor ? RoundedQuotient(value, *divisor, rounding) : Int128{0};
  }
  const auto limit = PowerOfTen(kMostDigits - (to - from));
  if (!limit || value >= *limit || -value >= *limit) return std::nullopt;
  return value * *PowerOfTen(to - from);
}

int64_t FitDecimal(Int128 value, TypeInfo type, TextView from) {
  const Int128 limit = *PowerOfTen(type.precision);
  if (value >= limit || value <= -limit) throw ConversionOverflow(from, u"numeric");
  if (!FitsInt64(value)) throw TooManyDigits();
  return static_cast<int64_t>(value);
}

void AppendScaled(std::string& out, int64_t value, int32_t scale) {
  char digits[64];
  char* const end = digits + sizeof digits;
  char* begin = end;
  uint64_t rest = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  for (int32_t place = 0; rest != 0 || place <= scale; ++place) {
    if (place == scale && scale != 0) *--begin = '.';
    *--begin = static_cast<char>('0' + rest % 10);
    rest /= 10;
  }
  if (value < 0) *--begin = '-';
  out.append(begin, static_cast<size_t>(end - begin));
}

std::optional<Int128> ParseScaled(std::string_view text, int32_t scale, bool& overflow) {
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && text[begin] == ' ') ++begin;
  while (end > begin && text[end - 1] == ' ') --end;
  const bool negative = begin < end && text[begin] == '-';
  if (begin < end && (text[begin] == '-' || text[begin] == '+')) ++begin;

  Int128 number = 0;
  int32_t places = -1;  // digits behind the point; -1 before it
  bool roundUp = false;
  bool anyDigit = false;
  overflow = false;
  for (size_t i = begin; i < end; ++i) {
    if (text[i] == '.' && places < 0) {
      places = 0;
      continue;
    }
    if (!IsAsciiDigit(text[i])) return std::nullopt;
    anyDigit = true;
    if (places == scale) {
      roundUp = text[i] >= '5';
      ++places;
    } else if (places < scale) {
      overflow = overflow || number >= kPowersOfTen[kMostDigits - 1];
      if (!overflow) number = number * 10 + (text[i] - '0');
      if (places >= 0) ++places;
    }
  }
  if (!anyDigit) return std::nullopt;
  const auto scaled = Rescale(number, std::min(std::max(places, 0), scale), scale);
  overflow = overflow || !scaled;
  if (overflow) return 0;
  const Int128 size = *scaled + (roundUp ? 1 : 0);
  return negative ? -size : size;
}

// ---- Operators ----------------------------------------------------------------------------------

namespace {

// A whole number or money in the range of its type.
Value FitRange(Int128 value, TypeInfo type) {
  const IntegerRange range = RangeOf(type.type);
  if (value < range.least || value > range.most) throw ExpressionOverflow(MessageName(type));
  return static_cast<int64_t>(value);
}

Value FitFloat(double value, TypeInfo type) {
  if (type.type == SqlType::Real) value = double{static_cast<float>(value)};
  if (std::isnan(value)) throw InvalidFloatOperation();
  if (std::isinf(value)) throw ExpressionOverflow(MessageName(type));
  return value;
}

int64_t IntegerOf(ValueRef value, TypeInfo from, TypeInfo to) {
  if (ClassOf(from.type) == ClassOf(to.type)) return value.Integer();
  return ValueRef(Convert(value, from, to)).Integer();
}

double FloatOf(ValueRef value, TypeInfo from) {
  if (ClassOf(from.type) == TypeClass::Float) return value.Double();
  return ValueRef(Convert(value, from, kFloat)).Double();
}

Value WholeArithmetic(Operator op, int64_t left, int64_t right, TypeInfo result) {
  const Int128 a = left;
  const Int128 b = right;
  switch (op) {
    case Operator::Add:
      return FitRange(a + b, result);
    case Operator::Subtract:
      return FitRange(a - b, result);
    case Operator::Multiply:
      return FitRange(a * b, result);
    default:
      break;
  }
  if (right == 0) throw DividedByZero();
  return FitRange(op == Operator::Divide ? a / b : a % b, result);
}

Value MoneyArithmetic(Operator op, int64_t left, int64_t right, TypeInfo result) {
  constexpr Int128 kUnit = 10000;
  if (op == Operator::Multiply) {
    return FitRange(RoundedQuotient(Int128{left} * right, kUnit, Rounding::HalfAwayFromZero),
                    result);
  }
  if (op != Operator::Divide) return WholeArithmetic(op, left, right, result);
  if (right == 0) throw DividedByZero();
  // SQL Server drops what is behind the fourth decimal.
  return FitRange(Int128{left} * kUnit / right, result);
}

struct Scaled {
  Int128 value;
  int32_t scale;
};

// An operand of decimal arithmetic; a text takes precision and scale of the other side.
Scaled ScaledOf(ValueRef value, TypeInfo type, TypeInfo other) {
  if (IsText(type)) {
    const TypeInfo decimal = AsDecimal(other);
    return {ValueRef(Convert(value, type, decimal)).Integer(), decimal.scale};
  }
  return {value.Integer(), AsDecimal(type).scale};
}

Value DecimalArithmetic(Operator op, Scaled left, Scaled right, TypeInfo result) {
  std::optional<Int128> number;
  if (op == Operator::Multiply) {
    number = Rescale(left.value * right.value, left.scale + right.scale, result.scale);
  } else if (op == Operator::Divide) {
    if (right.value == 0) throw DividedByZero();
    const int32_t shifted = result.scale + right.scale;
    const auto dividend = Rescale(left.value, left.scale, shifted, Rounding::TowardsZero);
    if (dividend) number = *dividend / right.value;
  } else {
    const int32_t scale = std::max(left.scale, right.scale);
    const auto a = Rescale(left.value, left.scale, scale);
    const auto b = Rescale(right.value, right.scale, scale);
    if (op == Operator::Modulo && right.value == 0) throw DividedByZero();
    if (a && b) {
      number = op == Operator::Modulo ? *a % *b : op == Operator::Add ? *a + *b : *a - *b;
      number = Rescale(*number, scale, result.scale);
    }
  }
  if (!number) throw TooManyDigits();
  return FitDecimal(*number, result, u"expression");
}

Value FloatArithmetic(Operator op, double left, double right, TypeInfo result) {
  switch (op) {
    case Operator::Add:
      return FitFloat(left + right, result);
    case Operator::Subtract:
      return FitFloat(left - right, result);
    case Operator::Multiply:
      return FitFloat(left * right, result);
    default:
      break;
  }
  if (right == 0) throw DividedByZero();
  return FitFloat(op == Operator::Divide ? left / right : std::fmod(left, right), result);
}

Moment MomentOf(ValueRef value, TypeInfo type) {
  if (IsDate(type)) return StoredMoment(value.Text());
  const Value converted = Convert(value, type, kDateTime);
  return StoredMoment(ValueRef(converted).Text());
}

Value DateArithmetic(Operator op, Moment left, Moment right, TypeInfo result) {
  const int64_t sign = op == Operator::Add ? 1 : -1;
  const int64_t ticks = left.tick + sign * right.tick;
  int64_t day = left.day + sign * right.day;
  day += ticks < 0 ? -1 : ticks >= kTicksOfDay ? 1 : 0;
  const int64_t tick = (ticks + kTicksOfDay) % kTicksOfDay;
  auto stored = Store({static_cast<int32_t>(day), static_cast<int32_t>(tick)}, result.type);
  if (!stored) throw ExpressionOverflow(MessageName(result));
  return std::move(*stored);
}

}  // namespace

Value Arithmetic(Operator op, ValueRef left, TypeInfo leftType, ValueRef right, TypeInfo rightType,
                 TypeInfo result) {
  if (left.IsNull() || right.IsNull()) return {};
  switch (ClassOf(result.type)) {
    case TypeClass::Whole:
      return WholeArithmetic(op, IntegerOf(left, leftType, result),
                             IntegerOf(right, rightType, result), result);
    case TypeClass::Money:
      return MoneyArithmetic(op, IntegerOf(left, leftType, result),
                             IntegerOf(right, rightType, result), result);
    case TypeClass::Decimal:
      return DecimalArithmetic(op, ScaledOf(left, leftType, rightType),
                               ScaledOf(right, rightType, leftType), result);
    case TypeClass::Float:
      return FloatArithmetic(op, FloatOf(left, leftType), FloatOf(right, rightType), result);
    case TypeClass::DateTime:
      return DateArithmetic(op, MomentOf(left, leftType), MomentOf(right, rightType), result);
    default: {
      std::string joined;
      joined.reserve(left.Text().size() + right.Text().size());
      joined.append(left.Text()).append(right.Text());
      return Convert(std::string_view(joined), VarChar(-1), result);
    }
  }
}

Value Negate(ValueRef value, TypeInfo result) {
  if (value.IsNull()) return {};
  if (ClassOf(result.type) == TypeClass::Float) return -value.Double();
  return FitRange(-Int128{value.Integer()}, result);
}

// ---- Numeric functions --------------------------------------------------------------------------

namespace {

// The type in which a numeric function works.
TypeInfo Widened(TypeInfo type) {
  switch (type.type) {
    case SqlType::TinyInt:
    case SqlType::SmallInt:
    case SqlType::Int:
      return kInt;
    case SqlType::SmallMoney:
      return kMoney;
    case SqlType::BigInt:
    case SqlType::Money:
    case SqlType::Decimal:
      return type;
    default:
      return kFloat;
  }
}

// 1 in an exact type.
Int128 UnitOf(TypeInfo type) { return *PowerOfTen(AsDecimal(type).scale); }

// An exact result in its own type.
Value FitExact(Int128 value, TypeInfo type) {
  if (type.type == SqlType::Decimal) return FitDecimal(value, type, u"expression");
  return FitRange(value, type);
}

// Converts to the type in which numeric functions work, and calls the one for its kind.
template <typename Exact, typename Inexact>
Value Numeric(ValueRef value, TypeInfo type, Exact exact, Inexact inexact) {
  if (value.IsNull()) return {};
  const TypeInfo widened = Widened(type);
  const Value converted = Convert(value, type, widened);
  const ValueRef number(converted);
  if (ClassOf(widened.type) == TypeClass::Float) return inexact(number.Double());
  return exact(Int128{number.Integer()}, widened);
}

// The whole number next to an exact one towards `side`.
template <int32_t side>
Value WholeBeside(Int128 exact, TypeInfo type) {
  const Int128 unit = UnitOf(type);
  const Int128 rest = exact % unit;
  const Int128 whole = exact / unit + (rest != 0 && (rest < 0) == (side < 0) ? side : 0);
  if (type.type == SqlType::Decimal) return FitDecimal(whole, DecimalType(type.precision, 0));
  return FitExact(whole * unit, type);
}

double RoundFloat(double value, int64_t places, bool truncate) {
  if (places > 17 || places < -300) return places > 0 ? value : 0.0;
  const double factor = std::pow(10.0, static_cast<double>(places < 0 ? -places : places));
  const double shifted = places < 0 ? value / factor : value * factor;
  const double rounded = truncate ? std::trunc(shifted) : std::round(shifted);
  if (std::isinf(rounded)) return value;
  return places < 0 ? rounded * factor : rounded / factor;
}

}  // namespace

TypeInfo NumericResult(TextView function, TypeInfo argument) {
  if ((!IsNumber(argument) && !IsText(argument)) || IsLongText(argument)) {
    throw InvalidArgumentType(MessageName(argument), 1, function);
  }
  const TypeInfo type = Widened(argument);
  if (type.type != SqlType::Decimal) return type;
  if (function == u"power") return DecimalType(38, type.scale);
  const bool isWhole = function == u"floor" || function == u"ceiling";
  return isWhole ? DecimalType(type.precision, 0) : type;
}

Value Abs(ValueRef value, TypeInfo type) {
  return Numeric(
      value, type,
      [](Int128 exact, TypeInfo widened) { return FitExact(exact < 0 ? -exact : exact, widened); },
      [](double number) { return std::fabs(number); });
}

Value Sign(ValueRef value, TypeInfo type) {
  return Numeric(
      value, type,
      [](Int128 exact, TypeInfo widened) {
        return FitExact(((exact > 0) - (exact < 0)) * UnitOf(widened), widened);
      },
      [](double number) { return double((number > 0) - (number < 0)); });
}

Value Floor(ValueRef value, TypeInfo type) {
  return Numeric(value, type, WholeBeside<-1>, [](double number) { return std::floor(number); });
}

Value Ceiling(ValueRef value, TypeInfo type) {
  return Numeric(value, type, WholeBeside<1>, [](double number) { return std::ceil(number); });
}

Value Round(ValueRef value, int64_t places, TypeInfo type, bool truncate) {
  const auto exactly = [&](Int128 exact, TypeInfo widened) {
    const int64_t dropped = AsDecimal(widened).scale - places;
    if (dropped <= 0) return FitExact(exact, widened);
    const auto divisor = PowerOfTen(static_cast<int32_t>(std::min<int64_t>(dropped, 39)));
    if (!divisor) return Value(int64_t{0});
    const Rounding rounding = truncate ? Rounding::TowardsZero : Rounding::HalfAwayFromZero;
    const Int128 quotient = RoundedQuotient(exact, *divisor, rounding);
    return quotient == 0 ? Value(int64_t{0}) : FitExact(quotient * *divisor, widened);
  };
  return Numeric(value, type, exactly,
                 [&](double number) { return RoundFloat(number, places, truncate); });
}

Value Power(ValueRef value, double exponent, TypeInfo type) {
  const double base = ValueRef(Convert(value, type, kFloat)).Double();
  if (value.IsNull()) return {};
  const TypeInfo result = NumericResult(u"power", type);
  const Value power = FitFloat(std::pow(base, exponent), kFloat);
  return Convert(power, kFloat, result);
}

}  // namespace vellum250::database::embedded
