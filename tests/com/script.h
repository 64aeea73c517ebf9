// The script engines of Windows, as a page runs in them.
#pragma once

#include "automation/object.h"
#include "platform/windows/ole.h"

namespace vellum250::com {

// Runs `source` in the engine ("VBScript", "JScript") with `probe` as the global of that name.
// What went wrong as "line 2: 13: Type mismatch", empty when nothing did.
Text RunScript(const wchar_t* engine, const char16_t* source, const ObjectRef& probe);

}  // namespace vellum250::com
