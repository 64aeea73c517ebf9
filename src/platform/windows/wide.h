// Texts as Windows' wide functions take them: wchar_t is UTF-16 there, as char16_t is everywhere.
#pragma once

#include <string>

#include "automation/text.h"

namespace vellum250::platform {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline const wchar_t* Wide(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }
inline wchar_t* Wide(char16_t* text) { return reinterpret_cast<wchar_t*>(text); }
// Ends in a zero, which is not part of the text.
inline const wchar_t* Wide(const Text& text) { return Wide(text.c_str()); }

inline const char16_t* FromWide(const wchar_t* text) {
  return reinterpret_cast<const char16_t*>(text);
}

}  // namespace vellum250::platform
