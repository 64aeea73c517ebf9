// Small checks and changes of text that several classes share.
#pragma once

#include "automation/text.h"

namespace vellum250 {

// The shape only: something before the first "@", a "." after it, and two or three characters
// after the last ".". Callers rely on longer endings being refused.
bool IsValidEmailAddress(TextView address);

// Whether a field is on in a mask.
constexpr bool IsBitSet(int16_t mask, int16_t bit) { return (mask & bit) != 0; }

// The digits 0 to 9 of a text, in order.
Text DigitsOnly(TextView text);

// `text` with `pad` before it until it is at least `length` characters long; a longer pad may
// overshoot. Raises 5 when it would have to pad with nothing.
Text PadLeft(TextView text, TextView pad, int16_t length);

// `unit` repeated until it is longer than `model`. Raises 5 for an empty unit.
Text RepeatToLength(TextView model, TextView unit);

}  // namespace vellum250
