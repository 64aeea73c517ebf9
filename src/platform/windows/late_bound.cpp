#include "platform/windows/late_bound.h"

#include "automation/failure.h"
#include "platform/windows/ole_failures.h"

namespace vellum250::com {

LateBound::LateBound(const char16_t* progId) {
  CLSID classId;
  HRESULT result = CLSIDFromProgID(Wide(progId), &classId);
  if (SUCCEEDED(result)) {
    result = CoCreateInstance(classId, nullptr, CLSCTX_ALL, __uuidof(IDispatch), object_.OutVoid());
  }
  if (FAILED(result)) throw CannotCreateObject(progId);
}

LateBound::LateBound(ComPtr<IDispatch> object) : object_(std::move(object)) {
  if (!object_) throw ObjectNotSet();
}

void LateBound::Call(const char16_t* member, WORD kind, std::span<VARIANT> arguments,
                     VARIANT& answer) const {
  EXCEPINFO exception{};
  DISPID id = DISPID_UNKNOWN;
  auto* name = const_cast<wchar_t*>(Wide(member));
  HRESULT result = object_->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
  if (FAILED(result)) RaiseCallFailure(result, exception, member);
  DISPID newValue = DISPID_PROPERTYPUT;
  DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
  if (kind == DISPATCH_PROPERTYPUT) {
    parameters.rgdispidNamedArgs = &newValue;
    parameters.cNamedArgs = 1;
  }
  result = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, &answer,
                           &exception, nullptr);
  if (FAILED(result)) RaiseCallFailure(result, exception, member);
}

}  // namespace vellum250::com
