#include <windows.h>

#include "automation/locale.h"

namespace vellum250 {

Date Now() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return FromCivil(
      {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds});
}

}  // namespace vellum250
