// What the library holds of a thread's apartment. Pages share a thread's context, so their
// dictionaries outlive every object of the library; they must still be released before the
// apartment they belong to ends.
#pragma once

#include <objbase.h>

#include <unordered_set>

#include "platform/windows/ole.h"

namespace vellum250::com {

class HostObject;

// One for each thread that was handed an object of the host. Watches for the apartment's end.
class Apartment final : private IInitializeSpy {
 public:
  static Apartment& Current();

  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;

  void Add(HostObject& object) { objects_.insert(&object); }
  void Remove(HostObject& object) { objects_.erase(&object); }

 private:
  Apartment();
  ~Apartment();

  void ReleaseObjects();

  // It lives as long as its thread, whoever counts.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE PreInitialize(DWORD, DWORD) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE PostInitialize(HRESULT result, DWORD, DWORD) override { return result; }
  HRESULT STDMETHODCALLTYPE PreUninitialize(DWORD initializations) override;
  HRESULT STDMETHODCALLTYPE PostUninitialize(DWORD) override { return S_OK; }

  std::unordered_set<HostObject*> objects_;
  ULARGE_INTEGER cookie_{};
  bool watching_ = false;
};

}  // namespace vellum250::com
