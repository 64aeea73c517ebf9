#include "platform/process.h"

#include <windows.h>

namespace vellum250::platform {

int64_t ProcessId() { return GetCurrentProcessId(); }

}  // namespace vellum250::platform
