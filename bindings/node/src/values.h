// Values between JavaScript and the library.
//
//   JavaScript                 library                     library          JavaScript
//   undefined                  Missing                     Empty, Missing   undefined
//   null                       Null                        Null             null
//   boolean                    Boolean                     Boolean          boolean
//   number, whole, 32 bits     Int32                       numbers          number
//   any other number           Double                      Currency         number
//   bigint up to 96 bits       Decimal                     Decimal          string
//   string                     Text                        Text             string
//   Date                       Date, local time            Date             Date, local time
//   object of this library     Object                      Object           the same object again
//   Map, or an object with     Object (a dictionary)       a page's object  that object
//   Count, Exists and Item                                 Nothing          null
//
// Texts are the same code units on both sides.
#pragma once

#include <napi.h>

#include "automation/variant.h"

namespace vellum250::node {

class Environment;

napi_valuetype TypeOf(napi_env env, napi_value value);
// The first argument of a call, undefined when there is none.
napi_value FirstArgument(napi_env env, napi_callback_info info);

// Raises 13 for a function, a symbol, an invalid date and any other object, 6 for a bigint of more
// than 96 bits and a year outside 100 to 9999.
Variant ToVariant(Environment& environment, napi_value value);
// The same for a caller that has asked for the type already.
Variant ToVariant(Environment& environment, napi_value value, napi_valuetype type);
napi_value ToJavaScript(Environment& environment, const Variant& value);

// The value is a string.
Text ReadText(napi_env env, napi_value value);
// Raises 7 when the text is longer than JavaScript allows.
napi_value MakeText(napi_env env, TextView text);
// The value is a number: Int32 or Double.
Variant ReadNumber(napi_env env, napi_value value);

// As ToVariant, but only a string will do: 13 with `name` otherwise, 449 when it is undefined.
Text RequireText(napi_env env, napi_value value, TextView name);

}  // namespace vellum250::node
