// Objects that the host gives to a script, written apart from the library's own adapter: to the
// library they are as foreign as a web server's.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "platform/windows/ole.h"

namespace vellum250::host {

using com::ComPtr;
using com::OwnedVariant;

// A failure that the script sees as Err.
struct HostFailure {
  HRESULT number;
  Text description;
};

// As a page writes it: Null and Empty are no text, an object is its default property. Raises 13.
Text TextOf(const VARIANT& value);
void SetText(VARIANT& result, TextView text);
void SetObject(VARIANT& result, IDispatch* object);

// Late-bound; every member answers a call, a read and a write alike.
class HostObject final : public IDispatch {
 public:
  struct Call {
    std::span<OwnedVariant> arguments;  // in order, no references; a written value comes last
    bool writes;
    VARIANT& result;

    // Raises 450 when there are fewer.
    const OwnedVariant& operator[](size_t index) const;
  };
  using Member = std::function<void(const Call&)>;

  static ComPtr<HostObject> Make() { return ComPtr<HostObject>::Adopt(new HostObject); }

  // The name of the default member is "".
  void Add(const wchar_t* name, Member member) { members_.emplace_back(name, std::move(member)); }

  // Another object's default member when there are arguments, else that object itself.
  void AddObject(const wchar_t* name, const ComPtr<HostObject>& object);

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override;
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* given,
                                   VARIANT* result, EXCEPINFO* failure, UINT*) override;

 private:
  HostObject() = default;
  virtual ~HostObject() = default;
  // nullptr when there is none.
  const Member* Find(const wchar_t* name) const;

  ULONG references_ = 1;
  std::vector<std::pair<std::wstring, Member>> members_;
};

}  // namespace vellum250::host
