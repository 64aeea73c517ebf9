// The platform's single-byte (ANSI) code page: Windows-1252 on every platform but Windows, which
// uses its own. A character without a code in it is "?" (63); no look-alike takes its place.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "automation/text.h"

namespace vellum250::platform {

// For CharacterCode alone.
int16_t CharacterCodeBeyondAscii(char16_t c);

// The character's code: 0 to 255, or the two bytes of a double-byte code page as a signed number,
// which then is negative. A surrogate has no code of its own.
inline int16_t CharacterCode(char16_t c) {
  return c < 0x80 ? static_cast<int16_t>(c) : CharacterCodeBeyondAscii(c);
}

// The character of a code. Codes that Windows-1252 leaves undefined (129, 141, 143, 144, 157) are
// the control characters of the same number, in both directions.
char16_t CharacterOfCode(uint8_t code);

// Whole texts; neither fails. On a single-byte code page each code unit is one byte, so a
// surrogate pair is "??".
std::string ToCodePage(TextView text);
Text FromCodePage(std::string_view bytes);

}  // namespace vellum250::platform
