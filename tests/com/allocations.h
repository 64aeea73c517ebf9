// How often the program has asked for memory.
#pragma once

#include <cstdint>

namespace vellum250::com {

int64_t Allocations();

}  // namespace vellum250::com
