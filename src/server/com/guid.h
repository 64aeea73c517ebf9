// The ids of class_ids.h as Windows' functions take them.
#pragma once

#include <cstdint>

#include "platform/windows/ole.h"

namespace vellum250::com {

// `text` is "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}" in lower case.
constexpr GUID GuidOf(TextView text) {
  const auto hex = [text](size_t at, size_t digits) {
    uint32_t number = 0;
    for (const char16_t c : text.substr(at, digits)) {
      number = number * 16 + static_cast<uint32_t>(c <= u'9' ? c - u'0' : c - u'a' + 10);
    }
    return number;
  };
  GUID guid{hex(1, 8), static_cast<uint16_t>(hex(10, 4)), static_cast<uint16_t>(hex(15, 4)), {}};
  for (size_t i = 0; i < 8; ++i) {
    guid.Data4[i] = static_cast<uint8_t>(hex((i < 2 ? 20 : 21) + 2 * i, 2));
  }
  return guid;
}

}  // namespace vellum250::com
