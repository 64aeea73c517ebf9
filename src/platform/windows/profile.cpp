#include "platform/profile.h"

#include <windows.h>

#include <array>
#include <string>

#include "platform/code_page.h"

namespace vellum250::platform {

Text ProfileValue(TextView file, TextView section, TextView name, TextView fallback) {
  std::array<char, 2048> buffer{};
  const DWORD length = GetPrivateProfileStringA(
      ToCodePage(section).c_str(), ToCodePage(name).c_str(), ToCodePage(fallback).c_str(),
      buffer.data(), static_cast<DWORD>(buffer.size()), ToCodePage(file).c_str());
  return FromCodePage({buffer.data(), length});
}

bool SetProfileValue(TextView file, TextView section, TextView name,
                     const std::optional<TextView>& value) {
  const std::string text = value ? ToCodePage(*value) : std::string();
  return WritePrivateProfileStringA(ToCodePage(section).c_str(), ToCodePage(name).c_str(),
                                    value ? text.c_str() : nullptr, ToCodePage(file).c_str()) != 0;
}

bool RemoveProfileSection(TextView file, TextView section) {
  return WritePrivateProfileStringA(ToCodePage(section).c_str(), nullptr, nullptr,
                                    ToCodePage(file).c_str()) != 0;
}

}  // namespace vellum250::platform
