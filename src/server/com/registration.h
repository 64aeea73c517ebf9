// The registry entries by which Windows finds the classes.
#pragma once

#include <cstdint>

#include "platform/windows/ole.h"

namespace vellum250::com {

// Machine: for everyone, wants an administrator. User: for the user who runs it.
enum class Scope : uint8_t { Machine, User };

// Every published class with its module, threading model and names, and the type library. A failure
// leaves nothing of it behind.
HRESULT Register(Scope scope);
// What is not there is no failure.
HRESULT Unregister(Scope scope);

}  // namespace vellum250::com
