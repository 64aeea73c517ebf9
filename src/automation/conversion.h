// Conversions of the scripting run time. All raise 13 for a value that cannot be converted, 94 for
// Null, 6 for a number out of the target's range, 449 for Missing. Empty is the zero value.
// Rounding is half to even.
#pragma once

#include "automation/variant.h"

namespace vellum250 {

// As CStr: numbers and dates in the locale, Boolean as "True" / "False".
Text ToText(const Variant& value);
bool ToBoolean(const Variant& value);
uint8_t ToByte(const Variant& value);
int16_t ToInt16(const Variant& value);
int32_t ToInt32(const Variant& value);
double ToDouble(const Variant& value);
Date ToDate(const Variant& value);
// 424 when the value is no object; Empty and a Nothing reference are 91.
ObjectRef ToObject(const Variant& value);

}  // namespace vellum250
