// Tells whoever sits at the machine.
#pragma once

#include "automation/text.h"

namespace vellum250::platform {

// A modal box with one button: returns when it is closed, which on a server without anybody at it
// may be never. Elsewhere than on Windows a line on the process's error stream, "title: text",
// without waiting. Never fails.
void ShowMessage(TextView text, TextView title);

}  // namespace vellum250::platform
