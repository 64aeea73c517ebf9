#include "database/embedded/value.h"

#include <algorithm>

#include "automation/failure.h"
#include "automation/locale.h"
#include "database/embedded/ascii.h"
#include "database/embedded/dates.h"
#include "database/embedded/decimals.h"

namespace vellum250::database::embedded {
namespace {

Date DateOf(std::string_view stored) {
  CivilTime time;
  time.year = GetDigits(stored, 0, 4);
  time.month = GetDigits(stored, 5, 2);
  time.day = GetDigits(stored, 8, 2);
  time.hour = GetDigits(stored, 11, 2);
  time.minute = GetDigits(stored, 14, 2);
  time.second = GetDigits(stored, 17, 2);
  time.millisecond = GetDigits(stored, 20, 3);
  return FromCivil(time);
}

TypedValue FromDate(Date date) {
  const CivilTime time = ToCivil(date);
  const int32_t milliseconds =
      ((time.hour * 60 + time.minute) * 60 + time.second) * 1000 + time.millisecond;
  const int32_t day = DayOf({time.year, time.month, time.day});
  // A scripting date reaches back to the year 100, a datetime to 1753.
  auto stored = Store(MomentAt(day, milliseconds), SqlType::DateTime);
  if (!stored) throw OverflowFailure(u"a date before 1753");
  return {std::move(*stored), kDateTime};
}

TypedValue FromDecimal(const Decimal& decimal) {
  const size_t point = decimal.digits.find(u'.');
  const auto scale =
      point == Text::npos ? 0 : static_cast<int32_t>(decimal.digits.size() - point - 1);
  const std::string digits = ToUtf8(decimal.digits);
  bool overflow = scale > 38;
  const auto number = overflow ? std::nullopt : ParseScaled(digits, scale, overflow);
  if (!number || overflow) throw OverflowFailure(u"a decimal of more than 38 digits");
  const auto length = static_cast<int32_t>(
      std::count_if(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; }));
  const TypeInfo type = DecimalType(std::clamp(length, std::max(1, scale), 38), scale);
  return {FitDecimal(*number, type), type};
}

TypedValue FromText(TextView text) {
  const bool isLong = text.size() > 4000;
  const auto length = isLong ? -1 : std::max(1, static_cast<int32_t>(text.size()));
  return {ToUtf8(text), NVarChar(length)};
}

}  // namespace

Value ValueRef::Copy() const {
  if (const auto* text = std::get_if<std::string_view>(&value_)) return std::string(*text);
  if (const auto* integer = std::get_if<int64_t>(&value_)) return *integer;
  if (const auto* number = std::get_if<double>(&value_)) return *number;
  return {};
}

Variant ToVariant(ValueRef value, TypeInfo type) {
  if (value.IsNull()) return Null{};
  switch (type.type) {
    case SqlType::Bit:
      return value.Integer() != 0;
    case SqlType::TinyInt:
      return static_cast<uint8_t>(value.Integer());
    case SqlType::SmallInt:
      return static_cast<int16_t>(value.Integer());
    case SqlType::Int:
      return static_cast<int32_t>(value.Integer());
    case SqlType::BigInt:
    case SqlType::Decimal: {
      std::string digits;
      AppendScaled(digits, value.Integer(), type.scale);
      return Decimal{FromUtf8(digits)};
    }
    case SqlType::Money:
    case SqlType::SmallMoney:
      return Currency{value.Integer()};
    case SqlType::Float:
    case SqlType::Real:
      return value.Double();
    case SqlType::DateTime:
    case SqlType::SmallDateTime:
    case SqlType::Date:
      return DateOf(value.Text());
    default:
      return FromUtf8(value.Text());
  }
}

TypedValue FromVariant(const Variant& value) {
  switch (value.Type()) {
    case VariantType::Boolean:
      return {int64_t{value.As<bool>()}, kBit};
    case VariantType::Byte:
      return {int64_t{value.As<uint8_t>()}, {SqlType::TinyInt, 0, 0, 0}};
    case VariantType::Int16:
      return {int64_t{value.As<int16_t>()}, {SqlType::SmallInt, 0, 0, 0}};
    case VariantType::Int32:
      return {int64_t{value.As<int32_t>()}, kInt};
    case VariantType::Double:
      return {value.As<double>(), kFloat};
    case VariantType::Currency:
      return {value.As<Currency>().tenThousandths, kMoney};
    case VariantType::Decimal:
      return FromDecimal(value.As<Decimal>());
    case VariantType::Date:
      return FromDate(value.As<Date>());
    case VariantType::Text:
      return FromText(value.As<Text>());
    case VariantType::Object:
      throw TypeMismatch(u"an object is no value of a statement");
    default:
      return {{}, kInt};
  }
}

}  // namespace vellum250::database::embedded
