#include "server/com/host_object.h"

#include <dispex.h>

#include "platform/windows/ole_failures.h"
#include "server/com/apartment.h"
#include "server/com/values.h"

namespace vellum250::com {

namespace {

WORD FlagsOf(InvokeKind kind, DISPID id, size_t arguments) {
  // A JScript object's worth is no function to be called.
  if (id == DISPID_VALUE && arguments == 0) return DISPATCH_PROPERTYGET;
  // A script does not say whether it reads a property or calls a function; neither does the
  // library.
  if (Includes(kind, InvokeKind::PutRef)) return DISPATCH_PROPERTYPUTREF;
  if (Includes(kind, InvokeKind::Put)) return DISPATCH_PROPERTYPUT;
  return DISPATCH_METHOD | DISPATCH_PROPERTYGET;
}

// The objects of a script's own classes may tell their ids by the newer interface only.
HRESULT IdOfScriptObject(IDispatch& object, TextView member, DISPID& id) {
  ComPtr<IDispatchEx> scripted;
  const HRESULT result = object.QueryInterface(__uuidof(IDispatchEx), scripted.OutVoid());
  if (FAILED(result)) return result;
  const Bstr name(member);
  return scripted->GetDispID(name.get(), fdexNameCaseInsensitive, &id);
}

}  // namespace

HostObject::HostObject(ComPtr<IDispatch> dispatch)
    : dispatch_(std::move(dispatch)), apartment_(&Apartment::Current()) {
  apartment_->Add(*this);
}

HostObject::~HostObject() {
  if (apartment_ != nullptr) apartment_->Remove(*this);
  if (ProcessEnds()) static_cast<void>(dispatch_.Detach());
}

void HostObject::Detach() {
  apartment_ = nullptr;
  if (ProcessEnds()) static_cast<void>(dispatch_.Detach());
  dispatch_ = {};
}

DISPID HostObject::IdOf(TextView member) {
  if (member.empty()) return DISPID_VALUE;
  for (const auto& [name, id] : ids_) {
    if (SameText(name, member)) return id;
  }
  Text name(member);
  auto* wide = reinterpret_cast<wchar_t*>(name.data());
  DISPID id = DISPID_UNKNOWN;
  HRESULT result = dispatch_->GetIDsOfNames(IID_NULL, &wide, 1, LOCALE_USER_DEFAULT, &id);
  if (result == E_NOTIMPL) result = IdOfScriptObject(*dispatch_, member, id);
  if (FAILED(result)) {
    EXCEPINFO none{};
    RaiseCallFailure(result, none, member);
  }
  ids_.emplace_back(std::move(name), id);
  return id;
}

Variant HostObject::Invoke(TextView member, InvokeKind kind, Arguments arguments) {
  if (!dispatch_) throw ObjectNotSet(u"the page that owned this object has ended");
  const ObjectRef self(this);  // the host may let go of it in the call
  const ComPtr<IDispatch> dispatch = dispatch_;
  const DISPID id = IdOf(member);

  SmallArray<OwnedVariant, 8> given(arguments.size());
  for (size_t i = 0; i < arguments.size(); ++i) {
    ToAutomation(arguments[arguments.size() - 1 - i], given[i]);
  }
  const WORD flags = FlagsOf(kind, id, arguments.size());
  DISPID newValue = DISPID_PROPERTYPUT;
  DISPPARAMS parameters{given.data(), nullptr, static_cast<UINT>(given.size()), 0};
  if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0) {
    parameters.rgdispidNamedArgs = &newValue;
    parameters.cNamedArgs = 1;
  }
  OwnedVariant answer;
  EXCEPINFO exception{};
  const HRESULT result = dispatch->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                          &answer, &exception, nullptr);
  if (FAILED(result)) RaiseCallFailure(result, exception, member);
  try {
    return ToVariant(answer);
  } catch (const Failure& failure) {
    throw WithDetail(failure, Text(member) + u" of the page's object");
  }
}

}  // namespace vellum250::com
