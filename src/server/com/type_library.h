// The type library among the module's resources. A module may have none; then its classes are
// late-bound only.
#pragma once

#include "automation/class_table.h"
#include "platform/windows/ole.h"
#include "server/com/registration.h"

namespace vellum250::com {

bool HasTypeLibrary();

// Both are S_OK without a type library.
HRESULT RegisterTypeLibrary(Scope scope);
HRESULT UnregisterTypeLibrary(Scope scope);

// Of the class's dispatch interface; IID_NULL for a class without ids.
IID InterfaceIdOf(const ClassTable& table);
// The description of that interface, none when the library has none.
ComPtr<ITypeInfo> TypeInfoOf(REFIID interfaceId);

}  // namespace vellum250::com
