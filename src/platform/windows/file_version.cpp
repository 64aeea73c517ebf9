#include "platform/file_version.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace vellum250::platform {

namespace {

// Empty when the resource has no such block.
std::string_view Block(const std::string& resource, const char* name) {
  void* bytes = nullptr;
  UINT size = 0;
  if (VerQueryValueA(resource.data(), name, &bytes, &size) == 0) return {};
  return {static_cast<const char*>(bytes), size};
}

}  // namespace

Text FileVersion(TextView path) {
  const std::string file = ToCodePage(path);
  DWORD unused = 0;
  const DWORD size = GetFileVersionInfoSizeA(file.c_str(), &unused);
  if (size == 0) return {};
  std::string resource(size, '\0');
  if (GetFileVersionInfoA(file.c_str(), 0, size, resource.data()) == 0) return {};

  const std::string_view translation = Block(resource, "\\VarFileInfo\\Translation");
  if (translation.size() < 4) return {};
  const auto word = [&](size_t i) {
    return static_cast<unsigned>(static_cast<BYTE>(translation[i]) |
                                 static_cast<BYTE>(translation[i + 1]) << 8);
  };
  char name[40];
  std::snprintf(name, sizeof name, "\\StringFileInfo\\%04X%04X\\FileVersion", word(0), word(2));
  constexpr size_t kLongest = 254;
  const std::string_view version = Block(resource, name);
  return FromCodePage(version.substr(0, std::min(version.find('\0'), kLongest)));
}

}  // namespace vellum250::platform
