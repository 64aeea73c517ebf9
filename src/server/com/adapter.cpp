#include "server/com/adapter.h"

#include <algorithm>
#include <cwchar>

#include "automation/class_table.h"
#include "platform/windows/ole_failures.h"
#include "server/com/arguments.h"
#include "server/com/host_object.h"
#include "server/com/module.h"
#include "server/com/type_library.h"
#include "server/com/values.h"

namespace vellum250::com {

namespace {

// {1983607e-44ce-41d5-b084-c4017ada52b1}: asked of a pointer, it tells an adapter from any other
// object. No proxy knows it, so an adapter of another apartment is an object of the host's.
constexpr IID kAdapter = {
    0x1983607e, 0x44ce, 0x41d5, {0xb0, 0x84, 0xc4, 0x01, 0x7a, 0xda, 0x52, 0xb1}};

// Counts references and knows its object; what can be called is the derived classes' matter.
class Adapter : public IDispatch {
 public:
  explicit Adapter(ObjectRef object) : object_(std::move(object)) { object_->hostSide = this; }
  Adapter(const Adapter&) = delete;
  Adapter& operator=(const Adapter&) = delete;
  virtual ~Adapter() { object_->hostSide = nullptr; }

  const ObjectRef& Wrapped() const { return object_; }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    if (iid == IID_IUnknown || iid == IID_IDispatch) {
      *out = static_cast<IDispatch*>(this);
    } else if (iid == kAdapter) {
      *out = this;
    } else {
      *out = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** out) override {
    if (out != nullptr) *out = nullptr;
    return DISP_E_BADINDEX;
  }

 private:
  ObjectRef object_;
  ULONG references_ = 0;
  LiveCount alive_{Live().adapters};
};

// Members by the class's table.
class TableAdapter final : public Adapter {
 public:
  TableAdapter(ObjectRef object, const ClassTable& table)
      : Adapter(std::move(object)), table_(table), interfaceId_(InterfaceIdOf(table)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    const HRESULT result = Adapter::QueryInterface(iid, out);
    // The class's own interface has no functions beside those of IDispatch.
    if (result != E_NOINTERFACE || iid != interfaceId_ || iid == IID_NULL) return result;
    return Adapter::QueryInterface(IID_IDispatch, out);
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = interfaceId_ != IID_NULL && HasTypeLibrary() ? 1 : 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    return Guarded([&] {
      if (index == 0) *out = TypeInfoOf(interfaceId_).Detach();
      return *out != nullptr ? S_OK : DISP_E_BADINDEX;
    });
  }

  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
    const MemberInfo* member = table_.Find(View(names[0], wcslen(names[0])));
    ids[0] = member != nullptr ? member->dispatchId : DISPID_UNKNOWN;
    bool known = member != nullptr;
    for (UINT i = 1; i < count; ++i) {
      ids[i] = member != nullptr ? ParameterId(*member, View(names[i], wcslen(names[i])))
                                 : DISPID_UNKNOWN;
      known = known && ids[i] != DISPID_UNKNOWN;
    }
    return known ? S_OK : DISP_E_UNKNOWNNAME;
  }

  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* given,
                                   VARIANT* result, EXCEPINFO* exception, UINT*) override {
    if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (given == nullptr) return E_INVALIDARG;
    if (result != nullptr) result->vt = VT_EMPTY;
    const MemberInfo* member = table_.FindById(id);
    if (member == nullptr) return DISP_E_MEMBERNOTFOUND;
    return Guarded(exception, [&] {
      CallArguments arguments(*member, *given);
      const Variant answer = Call(*member, static_cast<InvokeKind>(flags & 0xF), arguments);
      if (result != nullptr) ToAutomation(answer, *result);
      return S_OK;
    });
  }

 private:
  static DISPID ParameterId(const MemberInfo& member, TextView name) {
    for (size_t i = 0; i < member.parameters.size(); ++i) {
      if (EqualsIgnoreAsciiCase(member.parameters[i].name, name)) return static_cast<DISPID>(i);
    }
    return DISPID_UNKNOWN;
  }

  // What was changed by reference reaches the caller also when the member raises.
  Variant Call(const MemberInfo& member, InvokeKind kind, CallArguments& arguments) {
    const ObjectRef object = Wrapped();  // the page may let go of it in the call
    Variant answer;
    try {
      answer = table_.Call(*object, member, kind, arguments.Values());
    } catch (...) {
      try {
        arguments.WriteBack();
      } catch (const Failure&) {
        // The member's own failure is the one to tell.
      }
      throw;
    }
    arguments.WriteBack();
    return answer;
  }

  const ClassTable& table_;
  const IID interfaceId_;
};

// What a for-each loop walks. Loops ask a collection for it; asked in the same way, it answers with
// itself.
class EnumeratorAdapter final : public Adapter, public IEnumVARIANT {
 public:
  explicit EnumeratorAdapter(const Ref<Enumerator>& enumerator)
      : Adapter(enumerator), enumerator_(*enumerator) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (out == nullptr || iid != IID_IEnumVARIANT) return Adapter::QueryInterface(iid, out);
    *out = static_cast<IEnumVARIANT*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return Adapter::AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return Adapter::Release(); }

  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
    std::fill_n(ids, count, DISPID_UNKNOWN);
    if (EqualsIgnoreAsciiCase(View(names[0], wcslen(names[0])), u"_NewEnum")) {
      ids[0] = DISPID_NEWENUM;
      if (count == 1) return S_OK;
    }
    return DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                                   EXCEPINFO*, UINT*) override {
    if (id != DISPID_NEWENUM) return DISP_E_MEMBERNOTFOUND;
    if (result == nullptr) return S_OK;
    result->pdispVal = this;
    result->vt = VT_DISPATCH;
    AddRef();
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* out, ULONG* fetched) override {
    if (out == nullptr || (fetched == nullptr && count != 1)) return E_INVALIDARG;
    ULONG made = 0;
    const HRESULT result = Guarded([&] {
      for (; made < count; ++made) {
        const std::optional<Variant> element = enumerator_.Next();
        if (!element) return S_FALSE;
        ToAutomation(*element, out[made]);
      }
      return S_OK;
    });
    if (fetched != nullptr) *fetched = made;
    return result;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    return Guarded([&] {
      for (; count > 0; --count) {
        if (!enumerator_.Next()) return S_FALSE;
      }
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    return Guarded([&] {
      enumerator_.Reset();
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    return Guarded([&] {
      return ToDispatch(enumerator_.Clone())
          ->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(out));
    });
  }

 private:
  Enumerator& enumerator_;  // the one that Adapter keeps
};

Adapter* MakeAdapter(const ObjectRef& object) {
  if (auto* enumerator = dynamic_cast<Enumerator*>(object.get())) {
    return new EnumeratorAdapter(Ref<Enumerator>(enumerator));
  }
  if (object->Class() == nullptr) throw TypeMismatch(u"an object without published members");
  return new TableAdapter(object, *object->Class());
}

}  // namespace

IDispatch* LivingDispatch(const Object* object) {
  if (object == nullptr) return nullptr;
  if (object->hostSide != nullptr) return static_cast<Adapter*>(object->hostSide);
  const auto* host = dynamic_cast<const HostObject*>(object);
  return host != nullptr ? host->Dispatch() : nullptr;
}

ComPtr<IDispatch> ToDispatch(const ObjectRef& object) {
  if (!object) return {};
  IDispatch* living = LivingDispatch(object.get());
  return ComPtr<IDispatch>(living != nullptr ? living : MakeAdapter(object));
}

ObjectRef FromDispatch(IDispatch* dispatch) {
  if (dispatch == nullptr) return {};
  Adapter* adapter = nullptr;
  if (SUCCEEDED(dispatch->QueryInterface(kAdapter, reinterpret_cast<void**>(&adapter)))) {
    const auto held = ComPtr<Adapter>::Adopt(adapter);
    return held->Wrapped();
  }
  return MakeObject<HostObject>(ComPtr<IDispatch>(dispatch));
}

}  // namespace vellum250::com
