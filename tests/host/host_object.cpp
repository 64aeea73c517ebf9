#include "host/host_object.h"

#include <algorithm>
#include <cwchar>
#include <exception>

namespace vellum250::host {

Text TextOf(const VARIANT& value) {
  if (value.vt == VT_EMPTY || value.vt == VT_NULL) return {};
  OwnedVariant text;
  const HRESULT result = VariantChangeTypeEx(&text, const_cast<VARIANT*>(&value),
                                             LOCALE_USER_DEFAULT, VARIANT_ALPHABOOL, VT_BSTR);
  if (FAILED(result)) throw HostFailure{result, u"Type mismatch"};
  return Text(com::View(text.bstrVal));
}

void SetText(VARIANT& result, TextView text) {
  result.bstrVal = com::MakeBstr(text);
  result.vt = VT_BSTR;
}

void SetObject(VARIANT& result, IDispatch* object) {
  object->AddRef();
  result.pdispVal = object;
  result.vt = VT_DISPATCH;
}

const OwnedVariant& HostObject::Call::operator[](size_t index) const {
  if (index >= arguments.size()) {
    throw HostFailure{static_cast<HRESULT>(0x800A01C2), u"Wrong number of arguments"};
  }
  return arguments[index];
}

void HostObject::AddObject(const wchar_t* name, const ComPtr<HostObject>& object) {
  Add(name, [object](const Call& call) {
    if (call.arguments.empty()) return SetObject(call.result, object.get());
    const Member* const byDefault = object->Find(L"");
    if (byDefault == nullptr) throw HostFailure{DISP_E_MEMBERNOTFOUND, u"No default member"};
    (*byDefault)(call);
  });
}

const HostObject::Member* HostObject::Find(const wchar_t* name) const {
  for (const auto& [known, member] : members_) {
    if (_wcsicmp(known.c_str(), name) == 0) return &member;
  }
  return nullptr;
}

HRESULT HostObject::QueryInterface(REFIID iid, void** out) {
  *out = nullptr;
  if (iid != IID_IUnknown && iid != IID_IDispatch) return E_NOINTERFACE;
  AddRef();
  *out = static_cast<IDispatch*>(this);
  return S_OK;
}

ULONG HostObject::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT HostObject::GetTypeInfoCount(UINT* count) {
  *count = 0;
  return S_OK;
}

HRESULT HostObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  std::fill_n(ids, count, DISPID_UNKNOWN);
  for (size_t i = 0; i < members_.size(); ++i) {
    if (_wcsicmp(members_[i].first.c_str(), names[0]) == 0) ids[0] = static_cast<DISPID>(i + 1);
  }
  return count == 1 && ids[0] != DISPID_UNKNOWN ? S_OK : DISP_E_UNKNOWNNAME;
}

HRESULT HostObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* given, VARIANT* result,
                           EXCEPINFO* failure, UINT*) {
  for (size_t i = 0; id == DISPID_VALUE && i < members_.size(); ++i) {
    if (members_[i].first.empty()) id = static_cast<DISPID>(i + 1);
  }
  if (id < 1 || static_cast<size_t>(id) > members_.size()) return DISP_E_MEMBERNOTFOUND;
  com::SmallArray<OwnedVariant, 8> arguments(given->cArgs);
  for (UINT i = 0; i < given->cArgs; ++i) {
    VariantCopyInd(&arguments[i], &given->rgvarg[given->cArgs - 1 - i]);
  }
  OwnedVariant made;
  // The member may end with the object.
  const ComPtr<IDispatch> alive(this);
  try {
    const bool writes = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    members_[static_cast<size_t>(id) - 1].second({arguments, writes, made});
  } catch (const HostFailure& raised) {
    if (failure != nullptr) {
      *failure = {};
      failure->scode = raised.number;
      failure->bstrSource = com::MakeBstr(u"host");
      failure->bstrDescription = com::MakeBstr(raised.description);
    }
    return DISP_E_EXCEPTION;
  } catch (const std::exception&) {
    return E_INVALIDARG;
  }
  if (result != nullptr) *result = std::exchange(static_cast<VARIANT&>(made), VARIANT{});
  return S_OK;
}

}  // namespace vellum250::host
