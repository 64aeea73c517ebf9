#include "server/com/apartment.h"

#include "runtime/component_context.h"
#include "server/com/host_object.h"
#include "server/com/module.h"

namespace vellum250::com {

Apartment& Apartment::Current() {
  // Made first and so destroyed last: the apartment's end lets go of the context's dictionaries.
  ComponentContext::Current();
  thread_local Apartment apartment;
  return apartment;
}

Apartment::Apartment() : watching_(SUCCEEDED(CoRegisterInitializeSpy(this, &cookie_))) {}

// The thread ends without having ended its apartment.
Apartment::~Apartment() {
  if (watching_ && !ProcessEnds()) CoRevokeInitializeSpy(cookie_);
  ReleaseObjects();
}

void Apartment::ReleaseObjects() {
  // The thread's next apartment begins without dictionaries.
  ComponentContext& context = ComponentContext::Current();
  context.showText = {};
  context.webConfig = {};
  // Others are held by objects that a host has not released. Letting go of one may end others.
  while (!objects_.empty()) {
    HostObject* object = *objects_.begin();
    objects_.erase(objects_.begin());
    object->Detach();
  }
}

HRESULT Apartment::QueryInterface(REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  if (iid != IID_IUnknown && iid != IID_IInitializeSpy) {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  *out = static_cast<IInitializeSpy*>(this);
  return S_OK;
}

HRESULT Apartment::PreUninitialize(DWORD initializations) {
  // Initialisations nest; the last one out ends the apartment.
  if (initializations == 1) ReleaseObjects();
  return S_OK;
}

}  // namespace vellum250::com
