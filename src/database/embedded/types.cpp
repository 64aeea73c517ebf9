#include "database/embedded/types.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "database/embedded/failures.h"
#include "database/embedded/messages.h"

namespace vellum250::database::embedded {
namespace {

struct TypeTraits {
  SqlType type;
  TypeClass typeClass;
  int32_t precedence;  // the larger wins
  int32_t digits;      // as a decimal
  int32_t scale;
  int32_t textLength;  // of any value as text
  int32_t bytes;       // as stored; 0 where that depends on the value or the precision
};

// In the order of SqlType.
constexpr TypeTraits kTraits[] = {
    {SqlType::Bit, TypeClass::Whole, 11, 1, 0, 1, 1},
    {SqlType::TinyInt, TypeClass::Whole, 12, 3, 0, 3, 1},
    {SqlType::SmallInt, TypeClass::Whole, 13, 5, 0, 6, 2},
    {SqlType::Int, TypeClass::Whole, 14, 10, 0, 12, 4},
    {SqlType::BigInt, TypeClass::Whole, 15, 19, 0, 24, 8},
    {SqlType::Decimal, TypeClass::Decimal, 18, 18, 0, 41, 0},
    {SqlType::Money, TypeClass::Money, 17, 19, 4, 30, 8},
    {SqlType::SmallMoney, TypeClass::Money, 16, 10, 4, 30, 4},
    {SqlType::Float, TypeClass::Float, 20, 0, 0, 30, 8},
    {SqlType::Real, TypeClass::Float, 19, 0, 0, 30, 4},
    {SqlType::DateTime, TypeClass::DateTime, 23, 0, 0, 30, 8},
    {SqlType::SmallDateTime, TypeClass::DateTime, 22, 0, 0, 30, 4},
    {SqlType::Date, TypeClass::DateTime, 21, 0, 0, 30, 3},
    {SqlType::Char, TypeClass::Text, 3, 0, 0, 0, 0},
    {SqlType::VarChar, TypeClass::Text, 4, 0, 0, 0, 0},
    {SqlType::Text, TypeClass::Text, 9, 0, 0, 0, 0},
    {SqlType::NChar, TypeClass::Text, 5, 0, 0, 0, 0},
    {SqlType::NVarChar, TypeClass::Text, 6, 0, 0, 0, 0},
    {SqlType::NText, TypeClass::Text, 10, 0, 0, 0, 0},
    {SqlType::UniqueIdentifier, TypeClass::Guid, 7, 0, 0, 36, 16},
    {SqlType::Binary, TypeClass::Binary, 0, 0, 0, 0, 0},
    {SqlType::VarBinary, TypeClass::Binary, 1, 0, 0, 0, 0},
    {SqlType::Image, TypeClass::Binary, 8, 0, 0, 0, 0},
    {SqlType::Sysname, TypeClass::Text, 6, 0, 0, 0, 0},
};
constexpr bool InOrder() {
  for (size_t i = 0; i < std::size(kTraits); ++i) {
    if (static_cast<size_t>(kTraits[i].type) != i) return false;
  }
  return true;
}
static_assert(InOrder());

const TypeTraits& TraitsOf(TypeInfo type) { return kTraits[static_cast<size_t>(type.type)]; }

struct TypeName {
  TextView name;
  std::optional<SqlType> type;  // none: a type of SQL Server that is not stored here
};
constexpr TypeName kTypeNames[] = {
    {u"bit", SqlType::Bit},
    {u"tinyint", SqlType::TinyInt},
    {u"smallint", SqlType::SmallInt},
    {u"int", SqlType::Int},
    {u"integer", SqlType::Int},
    {u"bigint", SqlType::BigInt},
    {u"decimal", SqlType::Decimal},
    {u"numeric", SqlType::Decimal},
    {u"dec", SqlType::Decimal},
    {u"money", SqlType::Money},
    {u"smallmoney", SqlType::SmallMoney},
    {u"float", SqlType::Float},
    {u"double precision", SqlType::Float},
    {u"real", SqlType::Real},
    {u"datetime", SqlType::DateTime},
    {u"smalldatetime", SqlType::SmallDateTime},
    {u"date", SqlType::Date},
    {u"char", SqlType::Char},
    {u"character", SqlType::Char},
    {u"varchar", SqlType::VarChar},
    {u"char varying", SqlType::VarChar},
    {u"character varying", SqlType::VarChar},
    {u"text", SqlType::Text},
    {u"nchar", SqlType::NChar},
    {u"national char", SqlType::NChar},
    {u"national character", SqlType::NChar},
    {u"nvarchar", SqlType::NVarChar},
    {u"national char varying", SqlType::NVarChar},
    {u"national character varying", SqlType::NVarChar},
    {u"ntext", SqlType::NText},
    {u"national text", SqlType::NText},
    {u"uniqueidentifier", SqlType::UniqueIdentifier},
    {u"sysname", SqlType::Sysname},
    {u"binary", {}},
    {u"varbinary", {}},
    {u"binary varying", {}},
    {u"image", {}},
    {u"time", {}},
    {u"datetime2", {}},
    {u"datetimeoffset", {}},
    {u"timestamp", {}},
    {u"rowversion", {}},
    {u"sql_variant", {}},
    {u"xml", {}},
    {u"hierarchyid", {}},
    {u"geometry", {}},
    {u"geography", {}},
    {u"table", {}},
    {u"cursor", {}},
};

const TypeName* FindTypeName(TextView name) {
  const auto* found = std::find_if(std::begin(kTypeNames), std::end(kTypeNames), [&](auto& entry) {
    return EqualsIgnoreAsciiCase(entry.name, name);
  });
  return found == std::end(kTypeNames) ? nullptr : found;
}

TypeInfo ParseText(TypeInfo type, int32_t length, int32_t unsized) {
  if (type.type == SqlType::Sysname || IsLongText(type)) {
    if (length != 0) throw WidthNotAllowed(MessageName(type));
    type.length = IsLongText(type) ? -1 : 128;
    return type;
  }
  if (length == -1 && IsPadded(type)) throw InvalidLength(length);
  if (length > LongestText(type)) {
    throw LengthTooLarge(length, MessageName(type), LongestText(type));
  }
  type.length = length == 0 ? unsized : length;
  return type;
}

TypeInfo ParseDecimal(int32_t precision, int32_t scale) {
  if (precision == 0) precision = 18;
  if (precision < 0) throw InvalidLength(precision);
  if (precision > 38) throw PrecisionTooLarge(precision);
  if (scale > precision) throw ScaleAbovePrecision(scale, precision);
  return DecimalType(precision, scale);
}

// Larger decimals keep their whole digits, as far as six decimals are left.
TypeInfo CappedDecimal(int32_t precision, int32_t scale) {
  if (precision > 38) {
    scale = std::max(std::min(scale, 38 - (precision - scale)), std::min(scale, 6));
    precision = 38;
  }
  return DecimalType(precision, scale);
}

TypeInfo DecimalResult(Operator op, TypeInfo left, TypeInfo right) {
  const TypeInfo a = AsDecimal(left);
  const TypeInfo b = AsDecimal(right);
  switch (op) {
    case Operator::Multiply:
      return CappedDecimal(a.precision + b.precision + 1, a.scale + b.scale);
    case Operator::Divide: {
      const int32_t scale = std::max(6, a.scale + b.precision + 1);
      return CappedDecimal(a.precision - a.scale + b.scale + scale, scale);
    }
    case Operator::Modulo: {
      const int32_t scale = std::max(a.scale, b.scale);
      return CappedDecimal(std::min(a.precision - a.scale, b.precision - b.scale) + scale, scale);
    }
    default: {
      const int32_t scale = std::max(a.scale, b.scale);
      const int32_t whole = std::max(a.precision - a.scale, b.precision - b.scale);
      if (whole + scale + 1 <= 38) return DecimalType(whole + scale + 1, scale);
      return DecimalType(38, std::max(0, std::min(scale, 38 - whole)));
    }
  }
}

TextView OperatorWord(Operator op) {
  static constexpr TextView kWords[] = {u"add", u"subtract", u"multiply", u"divide", u"modulo"};
  return kWords[static_cast<size_t>(op)];
}

TypeInfo JoinedText(TypeInfo left, TypeInfo right) {
  if (IsLongText(left) || IsLongText(right)) {
    throw TypesIncompatible(MessageName(left), MessageName(right), OperatorWord(Operator::Add));
  }
  TypeInfo result = CommonType(left, right);
  if (left.length == -1 || right.length == -1) {
    result.length = -1;
  } else {
    result.length = std::min(left.length + right.length, LongestText(result));
  }
  return result;
}

// A datetime takes part in sums only; a number beside it counts days.
TypeInfo DateResult(Operator op, TypeInfo left, TypeInfo right, TypeInfo winner) {
  if (op != Operator::Add && op != Operator::Subtract) {
    throw InvalidOperandType(MessageName(winner), OperatorWord(op));
  }
  if (left.type == SqlType::Date || right.type == SqlType::Date) {
    const TypeInfo& other = left.type == SqlType::Date ? right : left;
    if (IsNumber(other)) throw TypeClash(MessageName(other), u"date");
    throw InvalidOperandType(u"date", OperatorWord(op));
  }
  return winner;
}

const TypeInfo& Stronger(const TypeInfo& left, const TypeInfo& right) {
  return TraitsOf(right).precedence > TraitsOf(left).precedence ? right : left;
}

TypeInfo WithoutDigits(TypeInfo type) {
  if (ClassOf(type.type) == TypeClass::Whole) type.precision = 0;
  return type;
}

}  // namespace

TypeClass ClassOf(SqlType type) { return kTraits[static_cast<size_t>(type)].typeClass; }

bool IsNumber(TypeInfo type) { return ClassOf(type.type) <= TypeClass::Float; }

bool IsNational(TypeInfo type) {
  return type.type == SqlType::NChar || type.type == SqlType::NVarChar ||
         type.type == SqlType::NText || type.type == SqlType::Sysname;
}

int32_t LongestText(TypeInfo type) { return IsNational(type) ? 4000 : 8000; }

int32_t LengthClass(TypeInfo type) {
  constexpr int32_t kShort = 255;
  if (type.length == -1 || type.length > LongestText(type)) return -1;
  return type.length <= kShort ? kShort : LongestText(type);
}

TypeInfo ParseType(TextView name, int32_t first, int32_t second, int32_t unsized) {
  const TypeName* found = FindTypeName(name);
  if (found == nullptr) throw unsized == 1 ? NoSuchType(name) : NotASystemType(name);
  if (!found->type) throw Unsupported(u"data type " + Text(name));
  TypeInfo type{*found->type, 0, 0, 0};
  switch (ClassOf(type.type)) {
    case TypeClass::Text:
      return ParseText(type, first, unsized);
    case TypeClass::Decimal:
      return ParseDecimal(first, second);
    case TypeClass::Float:
      if (first < 0 || first > 53 || (first != 0 && type.type == SqlType::Real)) {
        throw WidthNotAllowed(name);
      }
      if (first != 0 && first <= 24) type.type = SqlType::Real;
      return type;
    default:
      if (first != 0) throw WidthNotAllowed(name);
      return type;
  }
}

TextView MessageName(TypeInfo type) {
  if (type.type == SqlType::Decimal) return u"numeric";
  if (type.type == SqlType::Sysname) return u"nvarchar";
  return SqlTypeName(type.type);
}

TypeInfo AsDecimal(TypeInfo type) {
  if (type.type == SqlType::Decimal) return type;
  const TypeTraits& traits = TraitsOf(type);
  const bool isLiteral = traits.typeClass == TypeClass::Whole && type.precision != 0;
  return DecimalType(isLiteral ? type.precision : traits.digits, traits.scale);
}

int32_t StoredBytes(TypeInfo type) {
  if (type.type != SqlType::Decimal) return TraitsOf(type).bytes;
  return type.precision < 10 ? 5 : type.precision < 20 ? 9 : type.precision < 29 ? 13 : 17;
}

TypeInfo AsText(TypeInfo type) { return IsText(type) ? type : VarChar(TraitsOf(type).textLength); }

TypeInfo ResultType(Operator op, TypeInfo left, TypeInfo right) {
  if (IsText(left) && IsText(right)) {
    if (op == Operator::Add) return JoinedText(left, right);
    throw InvalidOperandType(MessageName(left), OperatorWord(op));
  }
  const TypeInfo winner = Stronger(left, right);
  const TypeInfo other = &Stronger(left, right) == &left ? right : left;
  CheckImplicit(other, winner);
  switch (TraitsOf(winner).typeClass) {
    case TypeClass::DateTime:
      return DateResult(op, left, right, winner);
    case TypeClass::Decimal:
      // A text takes the number's precision and scale.
      return DecimalResult(op, IsText(left) ? right : left, IsText(right) ? left : right);
    case TypeClass::Float:
      if (op != Operator::Modulo) return winner;
      throw TypesIncompatible(MessageName(left), MessageName(right), OperatorWord(op));
    case TypeClass::Money:
      return winner;
    case TypeClass::Whole:
      if (winner.type != SqlType::Bit) return WithoutDigits(winner);
      break;
    default:
      break;
  }
  throw InvalidOperandType(MessageName(winner), OperatorWord(op));
}

TypeInfo NegatedType(TypeInfo operand) {
  if (!IsNumber(operand) || operand.type == SqlType::Bit) {
    throw InvalidOperandType(MessageName(operand), u"minus");
  }
  if (operand.type == SqlType::TinyInt) operand.type = SqlType::SmallInt;
  return operand;
}

TypeInfo CommonType(TypeInfo left, TypeInfo right) {
  if (left == right) return WithoutDigits(left);
  const TypeInfo winner = Stronger(left, right);
  const TypeInfo other = &Stronger(left, right) == &left ? right : left;
  if (IsText(winner) && IsText(other)) {
    TypeInfo result = winner;
    // A text of a fixed length beside one of a varying length.
    if (IsPadded(winner) && !IsPadded(other)) result.type = SqlType::NVarChar;
    result.length = left.length == -1 || right.length == -1
                        ? -1
                        : std::min(std::max(left.length, right.length), LongestText(winner));
    if (result.length == -1 && IsPadded(result)) {
      result.type = IsNational(result) ? SqlType::NVarChar : SqlType::VarChar;
    }
    return result;
  }
  CheckImplicit(other, winner);
  if (winner.type == SqlType::Decimal && IsNumber(other)) {
    const TypeInfo a = AsDecimal(left);
    const TypeInfo b = AsDecimal(right);
    const int32_t scale = std::max(a.scale, b.scale);
    return CappedDecimal(std::max(a.precision - a.scale, b.precision - b.scale) + scale, scale);
  }
  // Only text and ntext win over another type, a uniqueidentifier.
  if (IsText(winner)) throw TypeClash(MessageName(other), MessageName(winner));
  return WithoutDigits(winner);
}

TypeInfo ComparisonType(TypeInfo left, TypeInfo right, TextView words) {
  if (IsLongText(left) || IsLongText(right)) {
    throw TypesIncompatible(MessageName(left), MessageName(right), words);
  }
  return CommonType(left, right);
}

TypeInfo SumType(TypeInfo argument) {
  switch (ClassOf(argument.type)) {
    case TypeClass::Whole:
      if (argument.type == SqlType::Bit) break;
      return argument.type == SqlType::BigInt ? kBigInt : kInt;
    case TypeClass::Decimal:
      return DecimalType(38, argument.scale);
    case TypeClass::Money:
      return kMoney;
    case TypeClass::Float:
      return kFloat;
    default:
      break;
  }
  throw InvalidOperandType(MessageName(argument), u"sum");
}

TypeInfo AverageType(TypeInfo argument) {
  if (!IsNumber(argument) || argument.type == SqlType::Bit) {
    throw InvalidOperandType(MessageName(argument), u"avg");
  }
  if (argument.type == SqlType::Decimal) return DecimalType(38, std::max(argument.scale, 6));
  return SumType(argument);
}

void CheckExplicit(TypeInfo from, TypeInfo to) {
  const TypeClass source = ClassOf(from.type);
  const TypeClass target = ClassOf(to.type);
  const bool toText = target == TypeClass::Text;
  bool allowed = source == target || source == TypeClass::Text || toText;
  if (source <= TypeClass::Float && target <= TypeClass::Float) allowed = true;
  if (source <= TypeClass::Float && target == TypeClass::DateTime) allowed = true;
  if (source == TypeClass::DateTime && target <= TypeClass::Float) allowed = true;
  if (allowed && IsLongText(from)) allowed = toText;
  if (allowed && IsLongText(to)) allowed = source == TypeClass::Text;
  const bool isDate = from.type == SqlType::Date || to.type == SqlType::Date;
  if (isDate && (source <= TypeClass::Float || target <= TypeClass::Float)) allowed = false;
  if (!allowed) throw ExplicitNotAllowed(MessageName(from), MessageName(to));
}

void CheckImplicit(TypeInfo from, TypeInfo to) {
  try {
    CheckExplicit(from, to);
  } catch (const DatabaseFailure&) {
    throw TypeClash(MessageName(from), MessageName(to));
  }
  const TypeClass source = ClassOf(from.type);
  const TypeClass target = ClassOf(to.type);
  const bool dateToNumber = source == TypeClass::DateTime && target <= TypeClass::Float;
  const bool moneyToText = source == TypeClass::Money && target == TypeClass::Text;
  if (dateToNumber || moneyToText) throw ImplicitNotAllowed(MessageName(from), MessageName(to));
}

}  // namespace vellum250::database::embedded
