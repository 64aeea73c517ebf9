#include "server/com/class_factory.h"

#include "platform/windows/ole_failures.h"
#include "server/class_ids.h"
#include "server/com/adapter.h"
#include "server/com/guid.h"
#include "server/com/module.h"
#include "server/factory.h"

namespace vellum250::com {

namespace {

class ClassFactory final : public IClassFactory {
 public:
  explicit ClassFactory(const server::PublishedClass& published) : published_(published) {}
  virtual ~ClassFactory() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IClassFactory) return E_NOINTERFACE;
    *out = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
  }
  // Class objects may be asked for in one thread and let go of in another.
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return Guarded([&] { return ToDispatch(published_.create())->QueryInterface(iid, out); });
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    Live().locks += lock != FALSE ? 1 : -1;
    return S_OK;
  }

 private:
  const server::PublishedClass& published_;
  std::atomic<ULONG> references_ = 0;
  LiveCount alive_{Live().locks};
};

}  // namespace

HRESULT GetClassObject(REFCLSID classId, REFIID iid, void** out) {
  for (const server::PublishedClass& published : server::PublishedClasses()) {
    const server::ClassIds* ids = server::FindClassIds(published.table().Name());
    if (ids == nullptr || GuidOf(ids->classId) != classId) continue;
    return ComPtr<IClassFactory>(new ClassFactory(published))->QueryInterface(iid, out);
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace vellum250::com
