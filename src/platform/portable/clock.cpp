#include <ctime>

#include "automation/locale.h"

namespace vellum250 {

Date Now() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local{};
  localtime_r(&now.tv_sec, &local);
  return FromCivil({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                    local.tm_min, local.tm_sec, static_cast<int>(now.tv_nsec / 1'000'000)});
}

}  // namespace vellum250
