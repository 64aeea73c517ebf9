// Stands in for the word processor: an automation class Word.Application, to be registered only
// where there is none. Every object has every member; each use is written down.
//
// Of the application itself, for the tests, and not written down:
//   Recording                 what was done in this process so far, one use a line: "Visible =
//                             False", "Documents.Add(letter.dot)". Assigned, it begins anew.
//   TemplateBookmarks = "a|b" the bookmarks that every document has; without regard to case
//   FailAt = "SaveAs"         this member raises an error from now on; "" for none
#include <olectl.h>

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <mutex>

#include "host/host_object.h"

namespace {

using namespace vellum250;
using com::View;
using com::Wide;
using host::TextOf;

constexpr CLSID kClassId = {
    0x8f4f6a1c, 0x52c9, 0x4f0e, {0x9d, 0x1b, 0x3e, 0x77, 0x2a, 0x60, 0x5c, 0x11}};
constexpr wchar_t kClassIdText[] = L"{8f4f6a1c-52c9-4f0e-9d1b-3e772a605c11}";
const std::wstring kClassKey = std::wstring(L"CLSID\\") + kClassIdText;
constexpr wchar_t kProgIdKey[] = L"Word.Application\\CLSID";

// What all objects share. Dispatch ids are the positions of names, from 1.
struct State {
  std::mutex mutex;
  std::vector<Text> names;
  Text recording;
  Text templateBookmarks;
  Text failAt;

  DISPID IdOf(TextView name) {
    const auto same = [&](TextView known) { return EqualsIgnoreAsciiCase(known, name); };
    const auto found = std::find_if(names.begin(), names.end(), same);
    if (found != names.end()) return static_cast<DISPID>(found - names.begin()) + 1;
    names.emplace_back(name);
    return static_cast<DISPID>(names.size());
  }
};

State& TheState() {
  static State state;
  return state;
}

Text Shown(const VARIANT& value) {
  if (value.vt == VT_ERROR) return {};  // left out
  if (value.vt == VT_DISPATCH) return u"an object";
  return TextOf(value);
}

class WordObject final : public IDispatch {
 public:
  // The path of the application is "".
  explicit WordObject(Text path) : path_(std::move(path)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch) return E_NOINTERFACE;
    AddRef();
    *out = static_cast<IDispatch*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    const std::lock_guard lock(TheState().mutex);
    for (UINT i = 0; i < count; ++i) ids[i] = TheState().IdOf(View(names[i], wcslen(names[i])));
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* given,
                                   VARIANT* result, EXCEPINFO* failure, UINT*) override {
    State& state = TheState();
    const std::lock_guard lock(state.mutex);
    const bool writes = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    if (id < 0 || static_cast<size_t>(id) > state.names.size()) return DISP_E_MEMBERNOTFOUND;
    const Text name = id == DISPID_VALUE ? u"Item" : state.names[static_cast<size_t>(id) - 1];
    host::OwnedVariant value;
    try {
      if (!path_.empty() || !IsForTests(name, writes, *given, value)) {
        Use(name, writes, *given, value);
      }
    } catch (const host::HostFailure& raised) {
      if (failure != nullptr) {
        *failure = {};
        failure->scode = raised.number;
        failure->bstrSource = com::MakeBstr(u"Microsoft Word");
        failure->bstrDescription = com::MakeBstr(raised.description);
      }
      return DISP_E_EXCEPTION;
    }
    if (result != nullptr) *result = std::exchange(static_cast<VARIANT&>(value), VARIANT{});
    return S_OK;
  }

 private:
  virtual ~WordObject() = default;

  static bool IsForTests(TextView name, bool writes, const DISPPARAMS& given, VARIANT& result) {
    State& state = TheState();
    const struct {
      const char16_t* name;
      Text& text;
    } known[] = {{u"Recording", state.recording},
                 {u"TemplateBookmarks", state.templateBookmarks},
                 {u"FailAt", state.failAt}};
    for (const auto& [itsName, text] : known) {
      if (!EqualsIgnoreAsciiCase(itsName, name)) continue;
      if (writes) {
        text = TextOf(given.rgvarg[0]);
      } else {
        host::SetText(result, text);
      }
      return true;
    }
    return false;
  }

  void Use(const Text& name, bool writes, const DISPPARAMS& given, VARIANT& result) {
    State& state = TheState();
    const Text member = path_.empty() ? name : path_ + u"." + name;
    Text arguments;
    for (UINT i = given.cArgs; i-- > (writes ? 1u : 0u);) {
      if (!arguments.empty()) arguments += u", ";
      if (!writes && i < given.cNamedArgs) {
        arguments += state.names[static_cast<size_t>(given.rgdispidNamedArgs[i]) - 1] + u":=";
      }
      arguments += Shown(given.rgvarg[i]);
    }
    state.recording += member;
    if (given.cArgs > (writes ? 1u : 0u)) state.recording += u"(" + arguments + u")";
    if (writes) state.recording += u" = " + Shown(given.rgvarg[0]);
    state.recording += u"\n";
    if (EqualsIgnoreAsciiCase(name, state.failAt)) {
      throw host::HostFailure{static_cast<HRESULT>(0x800A1066), u"Command failed"};
    }
    if (!writes) Answer(name, member, given, result);
  }

  // A bookmark's existence, and objects for all else.
  static void Answer(const Text& name, const Text& member, const DISPPARAMS& given,
                     VARIANT& result) {
    if (EqualsIgnoreAsciiCase(name, u"Exists") && given.cArgs > 0) {
      const Text wanted = u"|" + ToAsciiLower(TextOf(given.rgvarg[0])) + u"|";
      const Text known = u"|" + ToAsciiLower(TheState().templateBookmarks) + u"|";
      result.vt = VT_BOOL;
      result.boolVal = known.find(wanted) != Text::npos ? VARIANT_TRUE : VARIANT_FALSE;
      return;
    }
    result.vt = VT_DISPATCH;
    result.pdispVal = new WordObject(member);
  }

  ULONG references_ = 1;
  const Text path_;
};

class Factory final : public IClassFactory {
 public:
  virtual ~Factory() = default;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    const bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
    *out = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    *out = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    const auto made = com::ComPtr<IDispatch>::Adopt(new WordObject({}));
    return made->QueryInterface(iid, out);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

HRESULT SetKey(const std::wstring& key, const wchar_t* name, const wchar_t* value) {
  const auto size = static_cast<DWORD>((wcslen(value) + 1) * sizeof(wchar_t));
  return HRESULT_FROM_WIN32(
      RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), name, REG_SZ, value, size));
}

// The class id that the name stands for; empty when there is none.
std::wstring RegisteredId() {
  wchar_t id[64];
  DWORD size = sizeof id;
  const LSTATUS status =
      RegGetValueW(HKEY_CLASSES_ROOT, kProgIdKey, nullptr, RRF_RT_REG_SZ, nullptr, id, &size);
  return status == ERROR_SUCCESS ? id : L"";
}

}  // namespace

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** out) {
  static Factory factory;
  *out = nullptr;
  return classId == kClassId ? factory.QueryInterface(iid, out) : CLASS_E_CLASSNOTAVAILABLE;
}

// It stays loaded, for what it has recorded.
STDAPI DllCanUnloadNow() { return S_FALSE; }

STDAPI DllRegisterServer() {
  // Never in the place of a word processor.
  const std::wstring registered = RegisteredId();
  if (!registered.empty() && registered != kClassIdText) return SELFREG_E_CLASS;
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, kClassIdText, &module);
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(module, path, MAX_PATH);
  const std::wstring server = kClassKey + L"\\InprocServer32";
  HRESULT result = SetKey(kProgIdKey, nullptr, kClassIdText);
  if (SUCCEEDED(result)) result = SetKey(server, nullptr, path);
  if (SUCCEEDED(result)) result = SetKey(server, L"ThreadingModel", L"Apartment");
  return result;
}

STDAPI DllUnregisterServer() {
  if (RegisteredId() != kClassIdText) return S_OK;
  RegDeleteTreeW(HKEY_CLASSES_ROOT, L"Word.Application");
  RegDeleteTreeW(HKEY_CLASSES_ROOT, kClassKey.c_str());
  return S_OK;
}
