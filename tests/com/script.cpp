#include "com/script.h"

#include <activscp.h>

#include "platform/windows/ole_failures.h"
#include "server/com/adapter.h"

namespace vellum250::com {

namespace {

// Lives on the stack of RunScript.
class Site final : public IActiveScriptSite {
 public:
  explicit Site(IDispatch* probe) : probe_(probe) {}
  virtual ~Site() = default;
  Text failure;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IActiveScriptSite) return E_NOINTERFACE;
    *out = static_cast<IActiveScriptSite*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  HRESULT STDMETHODCALLTYPE GetLCID(LCID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetItemInfo(LPCOLESTR, DWORD mask, IUnknown** item,
                                        ITypeInfo** info) override {
    if ((mask & SCRIPTINFO_ITYPEINFO) != 0) *info = nullptr;
    if ((mask & SCRIPTINFO_IUNKNOWN) != 0) {
      probe_->AddRef();
      *item = probe_;
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE OnStateChange(SCRIPTSTATE) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnScriptError(IActiveScriptError* error) override {
    EXCEPINFO exception{};
    DWORD context = 0;
    ULONG line = 0;
    LONG column = 0;
    error->GetExceptionInfo(&exception);
    error->GetSourcePosition(&context, &line, &column);
    failure = u"line " + NumberText(line + 1) + u": " + NumberText(ToNumber(exception.scode)) +
              u": " + Text(View(exception.bstrDescription));
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE OnEnterScript() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE OnLeaveScript() override { return S_OK; }

 private:
  IDispatch* probe_;
};

}  // namespace

Text RunScript(const wchar_t* engineName, const char16_t* source, const ObjectRef& probe) {
  const ComPtr<IDispatch> global = ToDispatch(probe);
  Site site(global.get());
  CLSID engineId{};
  Check(CLSIDFromProgID(engineName, &engineId));
  ComPtr<IActiveScript> engine;
  Check(CoCreateInstance(engineId, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript,
                         engine.OutVoid()));
  ComPtr<IActiveScriptParse> parser;
  Check(engine->QueryInterface(__uuidof(IActiveScriptParse), parser.OutVoid()));
  Check(engine->SetScriptSite(&site));
  Check(parser->InitNew());
  Check(engine->AddNamedItem(L"probe", SCRIPTITEM_ISVISIBLE));
  Check(engine->SetScriptState(SCRIPTSTATE_STARTED));
  parser->ParseScriptText(Wide(source), nullptr, nullptr, nullptr, 0, 0, 0, nullptr, nullptr);
  engine->Close();
  return site.failure;
}

}  // namespace vellum250::com
