#include "platform/class_registry.h"

#include <cstdlib>

#include "platform/code_page.h"
#include "platform/profile.h"

namespace vellum250::platform {

Text ClassRegistryText(TextView key) {
  const char* file = std::getenv("VELLUM250_CLASSES");
  Text text =
      ProfileValue(FromUtf8(file != nullptr ? file : "/etc/vellum250/classes.ini"), key, u"@", u"");
  constexpr size_t kLongest = 1023;
  return ToCodePage(text).size() > kLongest ? Text() : text;
}

}  // namespace vellum250::platform
