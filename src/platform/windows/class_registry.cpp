#include "platform/class_registry.h"

#include <windows.h>

#include <array>

#include "platform/code_page.h"

namespace vellum250::platform {

Text ClassRegistryText(TextView key) {
  HKEY opened = nullptr;
  if (RegOpenKeyExA(HKEY_CLASSES_ROOT, ToCodePage(key).c_str(), 0, KEY_READ, &opened) !=
      ERROR_SUCCESS) {
    return {};
  }
  std::array<char, 1024> buffer{};
  auto size = static_cast<DWORD>(buffer.size());
  DWORD type = REG_NONE;
  const LSTATUS result =
      RegQueryValueExA(opened, "", nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &size);
  RegCloseKey(opened);
  // The size counts the zero at the end.
  if (result != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ) || size == 0) return {};
  return FromCodePage({buffer.data(), size - 1});
}

}  // namespace vellum250::platform
