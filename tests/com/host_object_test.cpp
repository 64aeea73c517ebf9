// The host's objects as the library calls them.
#include "server/com/host_object.h"

#include <gtest/gtest.h>

#include "com/probe.h"

namespace vellum250::com {
namespace {

// An object of a host that notes what it is asked. It lives on a test's stack.
class Noting final : public IDispatch {
 public:
  virtual ~Noting() = default;
  int asked = 0;  // for ids
  ULONG references = 1;
  WORD flags = 0;
  std::vector<Variant> arguments;
  std::vector<DISPID> named;
  HRESULT result = S_OK;
  EXCEPINFO failure{};
  Variant answer;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch) return E_NOINTERFACE;
    *out = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                          DISPID* ids) override {
    ++asked;
    if (names[0][0] == L'!') return DISP_E_UNKNOWNNAME;
    ids[0] = names[0][0];
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD how, DISPPARAMS* given,
                                   VARIANT* value, EXCEPINFO* exception, UINT*) override {
    flags = how;
    arguments.clear();
    for (UINT i = given->cArgs; i-- > 0;) arguments.push_back(ToVariant(given->rgvarg[i]));
    named.assign(given->rgdispidNamedArgs, given->rgdispidNamedArgs + given->cNamedArgs);
    *exception = failure;
    ToAutomation(answer, *value);
    return result;
  }
};

HRESULT WINAPI FillIn(EXCEPINFO* exception) {
  exception->scode = static_cast<HRESULT>(0x800A0000 + 1001);
  exception->bstrSource = SysAllocString(L"later");
  exception->bstrDescription = SysAllocString(L"filled in");
  return S_OK;
}

TEST(HostObject, AsksForANameOnceAndCallsAsAScriptDoes) {
  Noting noting;
  const ObjectRef object = FromDispatch(&noting);
  noting.answer = u"found";
  for (int i = 0; i < 3; ++i) {
    Variant key[] = {Variant(u"key")};
    EXPECT_EQ(object->Invoke(u"Item", InvokeKind::Get, key), Variant(u"found"));
    object->Invoke(u"Exists", InvokeKind::Method, key);
    object->Invoke({}, InvokeKind::Method, key);
  }
  EXPECT_EQ(noting.asked, 2);
  EXPECT_EQ(noting.flags, DISPATCH_METHOD | DISPATCH_PROPERTYGET);

  Variant pair[] = {Variant(u"key"), Variant(5)};
  const std::pair<InvokeKind, WORD> puts[] = {{InvokeKind::Put, DISPATCH_PROPERTYPUT},
                                              {InvokeKind::PutRef, DISPATCH_PROPERTYPUTREF}};
  for (const auto& [kind, flags] : puts) {
    object->Invoke(u"Item", kind, pair);
    EXPECT_EQ(noting.flags, flags);
    EXPECT_EQ(noting.arguments, std::vector<Variant>(std::begin(pair), std::end(pair)));
    EXPECT_EQ(noting.named, std::vector<DISPID>{DISPID_PROPERTYPUT});
  }
  EXPECT_EQ(ToDispatch(object).get(), &noting) << "goes out as it came";
}

TEST(HostObject, FailuresOfTheHostKeepTheirNumberAndWords) {
  const auto words = [](const wchar_t* source, const wchar_t* description) {
    EXCEPINFO failure{};
    failure.bstrSource = SysAllocString(source);
    failure.bstrDescription = SysAllocString(description);
    return failure;
  };
  EXCEPINFO script = words(L"page", L"of the page");
  script.scode = static_cast<HRESULT>(0x800A0000 + 457);
  EXCEPINFO coded = words(L"page", L"coded");
  coded.wCode = 600;
  EXCEPINFO whole = words(L"provider", L"whole");
  whole.scode = E_ACCESSDENIED;
  EXCEPINFO deferred{};
  deferred.pfnDeferredFillIn = FillIn;
  EXCEPINFO silent{};
  silent.scode = E_ACCESSDENIED;
  const struct {
    HRESULT result;
    EXCEPINFO failure;
    int32_t number;
    TextView source;
    TextView description;
  } cases[] = {
      {DISP_E_EXCEPTION, script, 457, u"page", u"of the page"},
      {DISP_E_EXCEPTION, coded, 600, u"page", u"coded"},
      {DISP_E_EXCEPTION, whole, E_ACCESSDENIED, u"provider", u"whole"},
      {DISP_E_EXCEPTION, deferred, 1001, u"later", u"filled in"},
      {DISP_E_EXCEPTION, silent, E_ACCESSDENIED, u"", u"Item"},
      {DISP_E_MEMBERNOTFOUND, {}, 438, u"vellum250", u"Item"},
      {DISP_E_TYPEMISMATCH, {}, 13, u"vellum250", u"Item"},
      {DISP_E_BADPARAMCOUNT, {}, 450, u"vellum250", u"Item"},
      {DISP_E_PARAMNOTOPTIONAL, {}, 449, u"vellum250", u"Item"},
      {DISP_E_OVERFLOW, {}, 6, u"vellum250", u"Item"},
      {E_OUTOFMEMORY, {}, 7, u"vellum250", u"Item"},
      {RPC_E_DISCONNECTED, {}, RPC_E_DISCONNECTED, u"vellum250", u"Item"},
  };
  for (const auto& c : cases) {
    Noting noting;
    const ObjectRef object = FromDispatch(&noting);
    noting.result = c.result;
    noting.failure = c.failure;
    try {
      object->Invoke(u"Item", InvokeKind::Method, {});
      ADD_FAILURE() << c.number;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Number(), c.number);
      EXPECT_EQ(failure.Source(), c.source);
      EXPECT_NE(failure.Description().find(c.description), Text::npos) << failure.what();
    }
  }
  Noting noting;
  EXPECT_THROW(FromDispatch(&noting)->Invoke(u"!", InvokeKind::Method, {}), Failure);
  EXPECT_EQ(noting.references, 1u);
}

}  // namespace
}  // namespace vellum250::com
