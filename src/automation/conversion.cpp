#include "automation/conversion.h"

#include <cmath>
#include <limits>

#include "automation/failure.h"
#include "automation/locale.h"
#include "automation/object.h"

namespace vellum250 {

namespace {

// What is common to all conversions of values that are no plain data.
[[noreturn]] void RaiseUnconvertible(const Variant& value) {
  switch (value.Type()) {
    case VariantType::Null:
      throw InvalidUseOfNull();
    case VariantType::Missing:
      throw ArgumentNotOptional();
    default:
      throw TypeMismatch();
  }
}

// As many objects may hold one another as values; an endless chain is a mistake of the host's.
constexpr int kLongestChain = 16;

// What an object is worth where a value is needed: its default member. 13 when it has none that can
// be called without arguments.
Variant DefaultOf(ObjectRef object) {
  for (int i = 0; object && i < kLongestChain; ++i) {
    try {
      Variant value = object->Invoke({}, InvokeKind::Method | InvokeKind::Get, {});
      const ObjectRef* next = value.If<ObjectRef>();
      if (next == nullptr) return value;
      object = *next;
    } catch (const Failure& failure) {
      const int32_t number = failure.Number();
      if (number == 438 || number == 449 || number == 450) throw TypeMismatch();
      throw;
    }
  }
  throw TypeMismatch();
}

Text CurrencyText(Currency value) {
  Text out;
  const int64_t whole = value.tenThousandths / 10000;
  const int64_t fraction = std::abs(value.tenThousandths % 10000);
  if (value.tenThousandths < 0 && whole == 0) out.push_back(u'-');
  AppendNumber(out, whole);
  if (fraction != 0) {
    Text digits = NumberText(10000 + fraction);
    digits[0] = u'.';
    digits.erase(digits.find_last_not_of(u'0') + 1);
    out += digits;
  }
  return out;
}

std::optional<bool> ParseBoolean(TextView text) {
  const TextView word = TrimBlanks(text);
  if (EqualsIgnoreAsciiCase(word, u"True")) return true;
  if (EqualsIgnoreAsciiCase(word, u"False")) return false;
  return std::nullopt;
}

template <typename Integer>
Integer ToInteger(const Variant& value) {
  if (const auto* same = value.If<Integer>()) return *same;
  // Half to even, the default rounding of the processor.
  const double number = std::nearbyint(ToDouble(value));
  if (!(number >= std::numeric_limits<Integer>::min() &&
        number <= std::numeric_limits<Integer>::max())) {
    throw OverflowFailure();
  }
  return static_cast<Integer>(number);
}

}  // namespace

Text ToText(const Variant& value) {
  switch (value.Type()) {
    case VariantType::Text:
      return value.As<Text>();
    case VariantType::Empty:
      return {};
    case VariantType::Boolean:
      return value.As<bool>() ? u"True" : u"False";
    case VariantType::Byte:
      return NumberText(value.As<uint8_t>());
    case VariantType::Int16:
      return NumberText(value.As<int16_t>());
    case VariantType::Int32:
      return NumberText(value.As<int32_t>());
    case VariantType::Double:
      return DoubleText(value.As<double>());
    case VariantType::Currency:
      return CurrencyText(value.As<Currency>());
    case VariantType::Decimal:
      return value.As<Decimal>().digits;
    case VariantType::Date:
      return DateText(value.As<Date>());
    case VariantType::Object:
      return ToText(DefaultOf(value.As<ObjectRef>()));
    default:
      RaiseUnconvertible(value);
  }
}

double ToDouble(const Variant& value) {
  switch (value.Type()) {
    case VariantType::Double:
      return value.As<double>();
    case VariantType::Empty:
      return 0;
    case VariantType::Boolean:
      return value.As<bool>() ? -1 : 0;
    case VariantType::Byte:
      return value.As<uint8_t>();
    case VariantType::Int16:
      return value.As<int16_t>();
    case VariantType::Int32:
      return value.As<int32_t>();
    case VariantType::Currency:
      return static_cast<double>(value.As<Currency>().tenThousandths) / 10000;
    case VariantType::Date:
      return value.As<Date>().days;
    case VariantType::Decimal:
    case VariantType::Text: {
      const TextView text =
          value.IsText() ? TextView(value.As<Text>()) : value.As<Decimal>().digits;
      if (const auto number = ParseDouble(text)) return *number;
      if (const auto truth = ParseBoolean(text)) return *truth ? -1 : 0;
      throw TypeMismatch();
    }
    case VariantType::Object:
      return ToDouble(DefaultOf(value.As<ObjectRef>()));
    default:
      RaiseUnconvertible(value);
  }
}

bool ToBoolean(const Variant& value) {
  if (const bool* same = value.If<bool>()) return *same;
  return ToDouble(value) != 0;
}

uint8_t ToByte(const Variant& value) { return ToInteger<uint8_t>(value); }
int16_t ToInt16(const Variant& value) { return ToInteger<int16_t>(value); }
int32_t ToInt32(const Variant& value) { return ToInteger<int32_t>(value); }

Date ToDate(const Variant& value) {
  if (const Date* same = value.If<Date>()) return *same;
  if (const Text* text = value.If<Text>()) {
    if (const auto date = ParseDate(*text)) return *date;
  }
  if (const ObjectRef* object = value.If<ObjectRef>()) return ToDate(DefaultOf(*object));
  // The script's dates run from 1 January 100 to 31 December 9999.
  const double days = ToDouble(value);
  if (!(days > -657435.0 && days < 2958466.0)) throw OverflowFailure();
  return Date{days};
}

ObjectRef ToObject(const Variant& value) {
  if (const ObjectRef* object = value.If<ObjectRef>()) {
    if (!*object) throw ObjectNotSet();
    return *object;
  }
  if (value.IsEmpty()) throw ObjectNotSet();
  throw ObjectRequired();
}

}  // namespace vellum250
