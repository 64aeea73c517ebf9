// Names for files that are soon gone.
#pragma once

#include "automation/text.h"

namespace vellum250::platform {

// "rad", five random hexadecimal digits in upper case, ".tmp"; no file is made. On Windows the
// scripting run time's file-system object gives it, and 429 is raised when that is missing.
// Elsewhere a process does not repeat a name within its first million.
Text TemporaryName();

}  // namespace vellum250::platform
