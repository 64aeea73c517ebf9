#include "values.h"

#include <cmath>
#include <limits>

#include "automation/locale.h"
#include "classes.h"
#include "environment.h"
#include "failures.h"
#include "host_object.h"

namespace vellum250::node {

namespace {

Decimal ReadBigInt(napi_env env, napi_value value) {
  int sign = 0;
  uint64_t words[2] = {};
  size_t count = std::size(words);
  Check(env, napi_get_value_bigint_words(env, value, &sign, &count, words));
  if (count > 2 || words[1] > std::numeric_limits<uint32_t>::max()) throw OverflowFailure();
  napi_value digits = nullptr;
  Check(env, napi_coerce_to_string(env, value, &digits));
  return Decimal{ReadText(env, digits)};
}

// By its local parts, so that the page and the library see the same day and hour.
Date ReadDate(Environment& environment, napi_value value) {
  const napi_env env = environment.Env();
  int parts[7] = {};
  for (size_t i = 0; i < std::size(parts); ++i) {
    napi_value part = nullptr;
    Check(env, napi_call_function(env, value, environment.Functions().dateParts[i].Value(), 0,
                                  nullptr, &part));
    double number = 0;
    Check(env, napi_get_value_double(env, part, &number));
    if (std::isnan(number)) throw TypeMismatch(u"an invalid date");
    parts[i] = static_cast<int>(number);
  }
  if (parts[0] < 100 || parts[0] > 9999) throw OverflowFailure();
  return FromCivil({parts[0], parts[1] + 1, parts[2], parts[3], parts[4], parts[5], parts[6]});
}

napi_value MakeDate(Environment& environment, Date date) {
  const napi_env env = environment.Env();
  const CivilTime time = ToCivil(date);
  const int parts[7] = {time.year,   time.month - 1, time.day,        time.hour,
                        time.minute, time.second,    time.millisecond};
  napi_value arguments[7];
  for (size_t i = 0; i < std::size(parts); ++i) {
    Check(env, napi_create_int32(env, parts[i], &arguments[i]));
  }
  napi_value result = nullptr;
  Check(env, napi_new_instance(env, environment.Functions().date.Value(), std::size(arguments),
                               arguments, &result));
  return result;
}

Variant ReadObject(Environment& environment, napi_value value) {
  const napi_env env = environment.Env();
  if (ObjectRef own = Unwrap(env, value)) return own;
  bool isDate = false;
  Check(env, napi_is_date(env, value, &isDate));
  if (isDate) return ReadDate(environment, value);
  if (ObjectRef host = HostObject::From(environment, value)) return host;
  throw TypeMismatch();
}

napi_value MakeObjectValue(Environment& environment, const ObjectRef& object) {
  napi_value result = nullptr;
  if (!object) {
    Check(environment.Env(), napi_get_null(environment.Env(), &result));
    return result;
  }
  if (const auto* host = dynamic_cast<const HostObject*>(object.get())) return host->Value();
  return Wrap(environment, object);
}

}  // namespace

napi_valuetype TypeOf(napi_env env, napi_value value) {
  napi_valuetype type = napi_undefined;
  Check(env, napi_typeof(env, value, &type));
  return type;
}

napi_value FirstArgument(napi_env env, napi_callback_info info) {
  size_t count = 1;
  napi_value argument = nullptr;
  Check(env, napi_get_cb_info(env, info, &count, &argument, nullptr, nullptr));
  return argument;
}

Text ReadText(napi_env env, napi_value value) {
  // A field's text usually fits; then its length need not be asked first.
  char16_t fitting[128];
  size_t length = 0;
  Check(env, napi_get_value_string_utf16(env, value, fitting, std::size(fitting), &length));
  if (length + 1 < std::size(fitting)) return Text(fitting, length);

  Check(env, napi_get_value_string_utf16(env, value, nullptr, 0, &length));
  Text text(length, u'\0');
  Check(env, napi_get_value_string_utf16(env, value, text.data(), length + 1, &length));
  return text;
}

napi_value MakeText(napi_env env, TextView text) {
  napi_value value = nullptr;
  if (napi_create_string_utf16(env, text.data(), text.size(), &value) != napi_ok) {
    throw OutOfMemory();
  }
  return value;
}

Variant ReadNumber(napi_env env, napi_value value) {
  double number = 0;
  Check(env, napi_get_value_double(env, value, &number));
  using Limits = std::numeric_limits<int32_t>;
  if (number >= Limits::min() && number <= Limits::max() && number == std::trunc(number)) {
    return static_cast<int32_t>(number);
  }
  return number;
}

Text RequireText(napi_env env, napi_value value, TextView name) {
  switch (TypeOf(env, value)) {
    case napi_string:
      return ReadText(env, value);
    case napi_undefined:
      throw ArgumentNotOptional(name);
    default:
      throw TypeMismatch(name);
  }
}

Variant ToVariant(Environment& environment, napi_value value) {
  return ToVariant(environment, value, TypeOf(environment.Env(), value));
}

Variant ToVariant(Environment& environment, napi_value value, napi_valuetype type) {
  const napi_env env = environment.Env();
  switch (type) {
    case napi_undefined:
      return Missing{};
    case napi_null:
      return Null{};
    case napi_boolean: {
      bool truth = false;
      Check(env, napi_get_value_bool(env, value, &truth));
      return truth;
    }
    case napi_number:
      return ReadNumber(env, value);
    case napi_string:
      return ReadText(env, value);
    case napi_bigint:
      return ReadBigInt(env, value);
    case napi_object:
      return ReadObject(environment, value);
    default:
      throw TypeMismatch();
  }
}

napi_value ToJavaScript(Environment& environment, const Variant& value) {
  const napi_env env = environment.Env();
  const auto number = [env](double n) -> napi_value { return Napi::Number::New(env, n); };
  switch (value.Type()) {
    case VariantType::Empty:
    case VariantType::Missing:
      return Napi::Env(env).Undefined();
    case VariantType::Null:
      return Napi::Env(env).Null();
    case VariantType::Boolean:
      return Napi::Boolean::New(env, value.As<bool>());
    case VariantType::Byte:
      return number(value.As<uint8_t>());
    case VariantType::Int16:
      return number(value.As<int16_t>());
    case VariantType::Int32:
      return number(value.As<int32_t>());
    case VariantType::Double:
      return number(value.As<double>());
    case VariantType::Currency:
      return number(static_cast<double>(value.As<Currency>().tenThousandths) / 10000);
    case VariantType::Decimal:
      return MakeText(env, value.As<Decimal>().digits);
    case VariantType::Date:
      return MakeDate(environment, value.As<Date>());
    case VariantType::Text:
      return MakeText(env, value.As<Text>());
    case VariantType::Object:
      return MakeObjectValue(environment, value.As<ObjectRef>());
  }
  return nullptr;
}

}  // namespace vellum250::node
