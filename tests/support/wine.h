// Wine stands in for Windows in our tests, and differs from it here and there.
#pragma once

#ifdef _WIN32
#include <windows.h>
#endif

namespace vellum250::support {

inline bool IsWine() {
#ifdef _WIN32
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
#else
  return false;
#endif
}

}  // namespace vellum250::support
