#include <activscp.h>

#include <cwchar>

#include "host/script.h"

namespace vellum250::host {
namespace {

constexpr wchar_t kGlobals[] = L"HostGlobals";

// What the engine asks of its host. Lives on the stack of Run.
class Site final : public IActiveScriptSite {
 public:
  Site(const Script& script, HostObject& globals) : script_(script), globals_(globals) {}
  virtual ~Site() = default;
  bool HasFailed() const { return failed_; }

  void Report(size_t line, HRESULT number, TextView source, TextView description) {
    failed_ = true;
    // As Err.Number has it: a run-time error by its own number.
    const bool isRuntimeError = HRESULT_FACILITY(number) == FACILITY_CONTROL;
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, ":%u: error %ld (0x%08lX) ", static_cast<unsigned>(line),
                  isRuntimeError ? HRESULT_CODE(number) : number,
                  static_cast<unsigned long>(number));
    Write(stderr, script_.file.u16string() + FromUtf8(numbers));
    Write(stderr, Text(source) + u": " + Text(description) + u"\n");
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IActiveScriptSite) return E_NOINTERFACE;
    *out = static_cast<IActiveScriptSite*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE GetLCID(LCID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE OnStateChange(SCRIPTSTATE) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnEnterScript() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnLeaveScript() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override {
    return S_OK;
  }

  // There is one item, kGlobals.
  HRESULT STDMETHODCALLTYPE GetItemInfo(LPCOLESTR, DWORD mask, IUnknown** item,
                                        ITypeInfo** info) override {
    if ((mask & SCRIPTINFO_ITYPEINFO) != 0) *info = nullptr;
    if ((mask & SCRIPTINFO_IUNKNOWN) != 0) {
      globals_.AddRef();
      *item = &globals_;
    }
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE OnScriptError(IActiveScriptError* error) override {
    EXCEPINFO exception{};
    DWORD context = 0;
    ULONG line = 0;
    LONG column = 0;
    error->GetExceptionInfo(&exception);
    if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
    error->GetSourcePosition(&context, &line, &column);
    Report(line < script_.lines.size() ? script_.lines[line] : line + 1, exception.scode,
           com::View(exception.bstrSource), com::View(exception.bstrDescription));
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    return S_OK;
  }

 private:
  const Script& script_;
  HostObject& globals_;
  bool failed_ = false;
};

HRESULT RunIn(IActiveScript& engine, Site& site, const Script& script) {
  ComPtr<IActiveScriptParse> parser;
  HRESULT result = engine.QueryInterface(__uuidof(IActiveScriptParse), parser.OutVoid());
  if (SUCCEEDED(result)) result = engine.SetScriptSite(&site);
  if (SUCCEEDED(result)) result = parser->InitNew();
  // As members of the one item: Wine's VBScript calls no item by its default member.
  if (SUCCEEDED(result)) result = engine.AddNamedItem(kGlobals, SCRIPTITEM_GLOBALMEMBERS);
  if (SUCCEEDED(result)) result = engine.SetScriptState(SCRIPTSTATE_STARTED);
  if (SUCCEEDED(result)) {
    result = parser->ParseScriptText(com::Wide(script.source), nullptr, nullptr, nullptr, 0, 0, 0,
                                     nullptr, nullptr);
  }
  return result;
}

}  // namespace

bool Run(const Script& script, HostObject& globals) {
  Site site(script, globals);
  CLSID id{};
  ComPtr<IActiveScript> engine;
  HRESULT result = CLSIDFromProgID(script.engine, &id);
  if (SUCCEEDED(result)) {
    result =
        CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript, engine.OutVoid());
  }
  if (SUCCEEDED(result)) result = RunIn(*engine, site, script);
  // What went wrong in the script itself has been told.
  if (FAILED(result) && !site.HasFailed()) site.Report(0, result, u"host", u"The engine failed");
  if (engine) engine->Close();
  return !site.HasFailed();
}

}  // namespace vellum250::host
