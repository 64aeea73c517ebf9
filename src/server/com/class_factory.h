// Creation of the published classes by their class ids.
#pragma once

#include "platform/windows/ole.h"

namespace vellum250::com {

// The class object of a published class as the interface asked for;
// CLASS_E_CLASSNOTAVAILABLE for any other id.
HRESULT GetClassObject(REFCLSID classId, REFIID iid, void** out);

}  // namespace vellum250::com
