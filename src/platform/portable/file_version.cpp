#include "platform/file_version.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace vellum250::platform {

Text FileVersion(TextView path) {
  std::error_code error;
  const auto file = std::filesystem::canonical(ToUtf8(path), error);
  if (error) return {};
  const std::string name = file.filename().string();
  constexpr std::string_view kBefore = ".so.";
  const size_t at = name.find(kBefore);
  return at == std::string::npos ? Text()
                                 : FromUtf8(std::string_view(name).substr(at + kBefore.size()));
}

}  // namespace vellum250::platform
