// Objects of the library as a script engine holds them.
#pragma once

#include "automation/object.h"
#include "platform/windows/ole.h"

namespace vellum250::com {

// The script's side of `object`: the same one as long as a script holds it, the host's own pointer
// for an object that came from the host, null for Nothing. Raises 13 for an object that has
// neither published members nor elements to walk.
ComPtr<IDispatch> ToDispatch(const ObjectRef& object);

// The same without making one: null when no script holds it. Not counted.
IDispatch* LivingDispatch(const Object* object);

// The object behind a pointer: the library's own when ToDispatch made it in this apartment,
// otherwise a HostObject; Nothing for null.
ObjectRef FromDispatch(IDispatch* dispatch);

}  // namespace vellum250::com
