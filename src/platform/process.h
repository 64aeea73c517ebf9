// The process that the library runs in.
#pragma once

#include <cstdint>

namespace vellum250::platform {

// Differs between processes that live at the same time, and after a fork from the parent's.
int64_t ProcessId();

}  // namespace vellum250::platform
