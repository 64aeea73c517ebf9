// Which version a program file says it is.
#pragma once

#include "automation/text.h"

namespace vellum250::platform {

// The text "FileVersion" of the file's version resource in the resource's first language, at most
// 254 bytes of the code page. Empty when the file or the text is missing.
//
// Elsewhere than on Windows, where files have no such resource, what follows ".so." in the name of
// a shared library, once links are followed: "2.0.0" of libodbc.so, a link to libodbc.so.2.0.0.
Text FileVersion(TextView path);

}  // namespace vellum250::platform
