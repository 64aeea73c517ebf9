// What the system knows of automation components: where a class that is created by name lives.
#pragma once

#include "automation/text.h"

namespace vellum250::platform {

// The default value of a key under the classes root, such as "Scripting.Dictionary\CLSID": at most
// 1,023 bytes of the code page. Empty when there is no such key, no text in it, or more than that.
//
// Elsewhere than on Windows the classes root is an INI file with a section for every key and the
// default value under the name "@": the one that the environment's VELLUM250_CLASSES names, or else
// /etc/vellum250/classes.ini.
Text ClassRegistryText(TextView key);

}  // namespace vellum250::platform
