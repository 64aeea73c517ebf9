#include "platform/temporary_name.h"

#include <atomic>
#include <cstdint>
#include <random>

namespace vellum250::platform {

Text TemporaryName() {
  static std::atomic<uint32_t> next = std::random_device()();
  // Odd, it visits all 2^20 numbers before it comes back to the first; neighbours look unlike.
  constexpr uint32_t kStep = 0x9E377;
  uint32_t number = next.fetch_add(kStep);
  Text name = u"rad00000.tmp";
  for (size_t digit = 7; digit > 2; --digit, number >>= 4) {
    name[digit] = u"0123456789ABCDEF"[number & 0xF];
  }
  return name;
}

}  // namespace vellum250::platform
