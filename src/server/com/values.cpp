#include "server/com/values.h"

#include <charconv>
#include <cstring>
#include <limits>

#include "automation/failure.h"
#include "platform/windows/ole_failures.h"
#include "server/com/adapter.h"
#include "server/com/host_object.h"

namespace vellum250::com {

namespace {

constexpr VARTYPE kVariantReference = VT_BYREF | VT_VARIANT;

// A language whose numbers have a point, for digits that no user sees.
constexpr LCID kPlainDigits = MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), SORT_DEFAULT);

// Where the chain of references to variants ends.
const VARIANT& Innermost(const VARIANT& value) {
  const VARIANT* at = &value;
  while (at->vt == kVariantReference && at->pvarVal != nullptr && at->pvarVal != at) {
    at = at->pvarVal;
  }
  return *at;
}

VARTYPE BaseType(const VARIANT& value) { return value.vt & static_cast<VARTYPE>(~VT_BYREF); }

// The datum itself, in the variant or where it refers to.
const void* DataOf(const VARIANT& value) {
  if ((value.vt & VT_BYREF) != 0) return value.byref;
  if (value.vt == VT_DECIMAL) return &value.decVal;  // fills the variant but for the type
  return &value.byref;
}

template <typename T>
T Read(const void* data) {
  T value;
  std::memcpy(&value, data, sizeof value);  // NOLINT(bugprone-sizeof-expression): pointers too
  return value;
}

template <typename Integer>
Variant Whole(Integer number) {
  if (std::in_range<int32_t>(number)) return static_cast<int32_t>(number);
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  return Decimal{Text(digits, end)};
}

Variant ReadDecimal(DECIMAL decimal) {
  Bstr digits;
  Check(VarBstrFromDec(&decimal, kPlainDigits, LOCALE_NOUSEROVERRIDE, digits.Out()));
  return Decimal{Text(View(digits.get()))};
}

void MakeDecimal(const Decimal& value, VARIANT& out) {
  DECIMAL decimal;
  Text digits = value.digits;
  Check(VarDecFromStr(reinterpret_cast<wchar_t*>(digits.data()), kPlainDigits,
                      LOCALE_NOUSEROVERRIDE, &decimal));
  out.decVal = decimal;
  out.vt = VT_DECIMAL;  // shares its place with the decimal's reserved part
}

ObjectRef ReadUnknown(IUnknown* object) {
  if (object == nullptr) return {};
  ComPtr<IDispatch> dispatch;
  if (FAILED(object->QueryInterface(IID_IDispatch, dispatch.OutVoid()))) {
    throw TypeMismatch(u"an object without automation");
  }
  return FromDispatch(dispatch.get());
}

// Whether the variable holds exactly this value.
bool Holds(const VARIANT& variable, const Variant& value) {
  const VARTYPE type = BaseType(variable);
  const void* data = DataOf(variable);
  if (const Text* text = value.If<Text>()) {
    return type == VT_BSTR && SameText(View(Read<BSTR>(data)), *text);
  }
  if (const ObjectRef* object = value.If<ObjectRef>()) {
    return (type == VT_DISPATCH || type == VT_UNKNOWN) &&
           Read<IUnknown*>(data) == LivingDispatch(object->get());
  }
  if (type == VT_BSTR || type == VT_DISPATCH || type == VT_UNKNOWN) return false;
  try {
    return ToVariant(variable) == value;
  } catch (const Failure&) {
    return false;  // an array, which no argument was when the call began
  }
}

size_t SizeOf(VARTYPE type) {
  switch (type) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
      return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
      return 8;
    default:
      return 0;
  }
}

// `converted` is of the variable's type; what it owns moves to the variable.
void Store(VARTYPE type, void* variable, OwnedVariant& converted) {
  switch (type) {
    case VT_BSTR: {
      BSTR& text = *static_cast<BSTR*>(variable);
      std::swap(text, converted.bstrVal);
      return;
    }
    case VT_DISPATCH:
    case VT_UNKNOWN: {
      IUnknown*& object = *static_cast<IUnknown**>(variable);
      std::swap(object, converted.punkVal);
      return;
    }
    case VT_DECIMAL: {
      DECIMAL& decimal = *static_cast<DECIMAL*>(variable);
      decimal = converted.decVal;
      decimal.wReserved = 0;
      return;
    }
    default:
      std::memcpy(variable, &converted.byref, SizeOf(type));
  }
}

void WriteTyped(const VARIANT& reference, const Variant& value) {
  const VARTYPE type = BaseType(reference);
  OwnedVariant converted;
  ToAutomation(value, converted);
  if (converted.vt != type) {
    Check(
        VariantChangeTypeEx(&converted, &converted, LOCALE_USER_DEFAULT, VARIANT_ALPHABOOL, type));
  }
  Store(type, reference.byref, converted);
}

}  // namespace

Variant ToVariant(const VARIANT& argument) {
  const VARIANT& value = Innermost(argument);
  const void* data = DataOf(value);
  if (data == nullptr) throw TypeMismatch(u"a reference to nothing");
  switch (BaseType(value)) {
    case VT_EMPTY:
      return {};
    case VT_NULL:
      return Null{};
    case VT_BOOL:
      return Read<VARIANT_BOOL>(data) != VARIANT_FALSE;
    case VT_UI1:
      return Read<uint8_t>(data);
    case VT_I1:
      return int16_t{Read<int8_t>(data)};
    case VT_I2:
      return Read<int16_t>(data);
    case VT_UI2:
      return int32_t{Read<uint16_t>(data)};
    case VT_I4:
    case VT_INT:
      return Read<int32_t>(data);
    case VT_UI4:
    case VT_UINT:
      return Whole(Read<uint32_t>(data));
    case VT_I8:
      return Whole(Read<int64_t>(data));
    case VT_UI8:
      return Whole(Read<uint64_t>(data));
    case VT_R4:
      return double{Read<float>(data)};
    case VT_R8:
      return Read<double>(data);
    case VT_CY:
      return Currency{Read<int64_t>(data)};
    case VT_DATE:
      return Date{Read<double>(data)};
    case VT_BSTR:
      return View(Read<BSTR>(data));
    case VT_DECIMAL:
      return ReadDecimal(Read<DECIMAL>(data));
    case VT_DISPATCH:
      return FromDispatch(Read<IDispatch*>(data));
    case VT_UNKNOWN:
      return ReadUnknown(Read<IUnknown*>(data));
    case VT_ERROR:
      if (Read<SCODE>(data) == DISP_E_PARAMNOTFOUND) return Missing{};
      throw TypeMismatch(u"an error value");
    default:
      throw TypeMismatch((value.vt & VT_ARRAY) != 0 ? u"an array" : u"");
  }
}

void ToAutomation(const Variant& value, VARIANT& out) {
  out.vt = VT_EMPTY;
  switch (value.Type()) {
    case VariantType::Empty:
      return;
    case VariantType::Null:
      out.vt = VT_NULL;
      return;
    case VariantType::Missing:
      out.scode = DISP_E_PARAMNOTFOUND;
      out.vt = VT_ERROR;
      return;
    case VariantType::Boolean:
      out.boolVal = value.As<bool>() ? VARIANT_TRUE : VARIANT_FALSE;
      out.vt = VT_BOOL;
      return;
    case VariantType::Byte:
      out.bVal = value.As<uint8_t>();
      out.vt = VT_UI1;
      return;
    case VariantType::Int16:
      out.iVal = value.As<int16_t>();
      out.vt = VT_I2;
      return;
    case VariantType::Int32:
      out.lVal = value.As<int32_t>();
      out.vt = VT_I4;
      return;
    case VariantType::Double:
      out.dblVal = value.As<double>();
      out.vt = VT_R8;
      return;
    case VariantType::Currency:
      out.cyVal.int64 = value.As<Currency>().tenThousandths;
      out.vt = VT_CY;
      return;
    case VariantType::Decimal:
      MakeDecimal(value.As<Decimal>(), out);
      return;
    case VariantType::Date:
      out.date = value.As<Date>().days;
      out.vt = VT_DATE;
      return;
    case VariantType::Text:
      out.bstrVal = MakeBstr(value.As<Text>());
      out.vt = VT_BSTR;
      return;
    case VariantType::Object:
      out.pdispVal = ToDispatch(value.As<ObjectRef>()).Detach();
      out.vt = VT_DISPATCH;
      return;
  }
}

bool CanTakeText(const VARIANT& argument) {
  const VARIANT& variable = Innermost(argument);
  return (variable.vt & VT_BYREF) == 0 || BaseType(variable) == VT_BSTR;
}

void WriteBack(const VARIANT& argument, const Variant& value) {
  const VARIANT& variable = Innermost(argument);
  const bool typed = (variable.vt & VT_BYREF) != 0;
  // By value, or a variable that has the value: it keeps also the type that the caller gave it.
  if ((!typed && &variable == &argument) || Holds(variable, value)) return;
  if (typed) return WriteTyped(variable, value);
  // Found through a reference, so it is the caller's to change.
  auto& target = const_cast<VARIANT&>(variable);
  OwnedVariant fresh;
  ToAutomation(value, fresh);
  std::swap(static_cast<VARIANT&>(fresh), target);
}

}  // namespace vellum250::com
