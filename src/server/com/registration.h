// The registry entries by which Windows finds the classes.
#pragma once

#include "automation/text.h"
#include "server/com/ole.h"

namespace vellum250::com {

// Machine: for everyone, wants an administrator. User: for the user who runs it.
enum class Scope : uint8_t { Machine, User };

// Every published class with its module, threading model and names, and the type library. A failure
// leaves nothing of it behind.
HRESULT Register(Scope scope);
// What is not there is no failure.
HRESULT Unregister(Scope scope);

// "{...}" as a GUID; raises 5 for another text.
GUID GuidOf(TextView text);

}  // namespace vellum250::com
