#include "platform/process.h"

#include <unistd.h>

namespace vellum250::platform {

int64_t ProcessId() { return getpid(); }

}  // namespace vellum250::platform
