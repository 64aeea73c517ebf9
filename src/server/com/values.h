// Values between a script engine's VARIANT and the library.
//
//   VARIANT                          library                    library          VARIANT
//   EMPTY                            Empty                      Empty            EMPTY
//   NULL                             Null                       Null             NULL
//   ERROR, parameter not found       Missing                    Missing          ERROR, the same
//   BOOL                             Boolean                    Boolean          BOOL
//   UI1                              Byte                       Byte             UI1
//   I1, I2                           Int16                      Int16            I2
//   I4, INT, UI2                     Int32                      Int32            I4
//   UI4, UINT, I8, UI8               Int32, Decimal if large
//   R4, R8                           Double                     Double           R8
//   CY                               Currency                   Currency         CY
//   DECIMAL                          Decimal                    Decimal          DECIMAL
//   DATE                             Date                       Date             DATE
//   BSTR                             Text                       Text             BSTR
//   DISPATCH, UNKNOWN, of ours       that Object                Object           DISPATCH
//   DISPATCH, UNKNOWN, the host's    a HostObject               HostObject       what it came as
//   DISPATCH, UNKNOWN, null          Nothing                    Nothing          DISPATCH, null
//
// By reference each of them is read through the reference. Anything else, arrays among it, is 13.
#pragma once

#include "automation/object.h"
#include "platform/windows/ole.h"

namespace vellum250::com {

// Raises 13 for a type that the library has no value for.
Variant ToVariant(const VARIANT& value);

// `out` holds nothing that is to be released. Raises 13 for an object without published members
// and 6 for a decimal of more than 96 bits; `out` is Empty then.
void ToAutomation(const Variant& value, VARIANT& out);

// False for a typed reference to anything but a text; a variant takes whatever is written to it.
bool CanTakeText(const VARIANT& argument);

// Puts a changed value where the caller passed `argument` by reference: into a variant as it is,
// into a typed variable converted to its type in the user's locale (13 and 6 when it cannot be).
// An argument by value, and a variable that holds the value already, stay as they are.
void WriteBack(const VARIANT& argument, const Variant& value);

}  // namespace vellum250::com
