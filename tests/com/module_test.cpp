// The DLL as Windows uses it: creation, unloading, registration, apartments.
#include "server/com/module.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <thread>
#include <utility>

#include "com/probe.h"
#include "platform/windows/ole_failures.h"
#include "runtime/component_context.h"
#include "server/class_ids.h"
#include "server/com/guid.h"

namespace vellum250::com {
namespace {

class Dll : public testing::Test {
 protected:
  explicit Dll(const std::filesystem::path& file = VELLUM250_DLL)
      : module_(LoadLibraryW(file.c_str())) {}
  void SetUp() override { ASSERT_NE(module_, nullptr); }
  ~Dll() override {
    if (module_ != nullptr) FreeLibrary(module_);
  }

  template <typename Function>
  Function* Find(const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }
  ComPtr<IClassFactory> Factory() {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(getClassObject_(class_, IID_IClassFactory, factory.OutVoid()), S_OK);
    return factory;
  }

  HMODULE module_;
  HRESULT(*getClassObject_)
  (REFCLSID, REFIID, void**) = Find<HRESULT(REFCLSID, REFIID, void**)>("DllGetClassObject");
  HRESULT (*canUnloadNow_)() = Find<HRESULT()>("DllCanUnloadNow");
  const GUID class_ = GuidOf(server::FindClassIds(u"vellum250.address")->classId);
};

TEST_F(Dll, CreatesThePublishedClassesAndNothingElse) {
  void* none = this;
  EXPECT_EQ(getClassObject_(IID_IDispatch, IID_IClassFactory, &none), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(none, nullptr);
  const auto factory = Factory();
  EXPECT_EQ(factory->CreateInstance(factory.get(), IID_IUnknown, &none), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPersist, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
  ComPtr<IDispatch> address;
  const IID own = GuidOf(server::FindClassIds(u"vellum250.address")->interfaceId);
  ASSERT_EQ(factory->CreateInstance(nullptr, own, address.OutVoid()), S_OK);
  EXPECT_EQ(Call(address.get(), L"DisplayAddressName", {Value(u"1 High St"), Value(u"York")}).value,
            Variant(u"1 High St, York"));
  VARIANT word = Value(u"Jane Mary");
  Call(address.get(), L"GetFirstWord", {Reference(VT_VARIANT, word)});
  EXPECT_EQ(View(word.bstrVal), u"Jane");
}

// A module of its own that no thread has used yet: the file under another name.
class FreshDll : public Dll {
 protected:
  // A name of the test's own, for a module that stays loaded cannot be written over.
  static Text NewName() {
    return FromUtf8(testing::UnitTest::GetInstance()->current_test_info()->name()) + u".dll";
  }
  FreshDll() : Dll(Copy()) {}
  static std::filesystem::path Copy() {
    const auto copy = std::filesystem::temp_directory_path() / NewName();
    std::filesystem::copy_file(VELLUM250_DLL, copy,
                               std::filesystem::copy_options::overwrite_existing);
    return copy;
  }
  static bool IsLoaded() { return GetModuleHandleW(Wide(NewName())) != nullptr; }

  // Uses an object of the class in a thread of its own, then does `last` there.
  template <typename Last>
  void InAThread(Last&& last) {
    std::thread([&] {
      CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
      {
        ComPtr<IDispatch> address;
        Factory()->CreateInstance(nullptr, IID_IDispatch, address.OutVoid());
        EXPECT_EQ(Call(address.get(), L"TextID", {Value(5)}).number, 0);
        EXPECT_EQ(canUnloadNow_(), S_FALSE) << "an object";
      }
      CoUninitialize();
      last();
    }).join();
  }
};

TEST_F(FreshDll, StaysLoadedAsLongAsItIsNeeded) {
  EXPECT_EQ(canUnloadNow_(), S_OK);
  {
    const auto factory = Factory();
    EXPECT_EQ(canUnloadNow_(), S_FALSE) << "a class object";
    factory->LockServer(TRUE);
  }
  EXPECT_EQ(canUnloadNow_(), S_FALSE) << "a lock";
  Factory()->LockServer(FALSE);
  EXPECT_EQ(canUnloadNow_(), S_OK);
  InAThread([&] { EXPECT_EQ(canUnloadNow_(), S_FALSE) << "the thread's context"; });
  EXPECT_EQ(canUnloadNow_(), S_OK);
  FreeLibrary(std::exchange(module_, nullptr));
  EXPECT_FALSE(IsLoaded());
}

TEST_F(FreshDll, AThreadEndsThoughNobodyElseHoldsTheModule) {
  InAThread([&] { FreeLibrary(std::exchange(module_, nullptr)); });
  EXPECT_TRUE(IsLoaded()) << "a thread's end does not free the code that it runs";
  std::thread([] {}).join();
}

// The text of a key below the scope's classes, "-" when there is none.
Text Registered(HKEY root, const Text& key, const wchar_t* name = nullptr) {
  wchar_t value[MAX_PATH];
  DWORD size = sizeof value;
  const Text path = u"Software\\Classes\\" + key;
  if (RegGetValueW(root, Wide(path), name, RRF_RT_REG_SZ, nullptr, value, &size) != ERROR_SUCCESS) {
    return u"-";
  }
  return Text(View(value, wcslen(value)));
}

TEST_F(Dll, RegistersForTheMachineAndForTheUser) {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(module_, path, MAX_PATH);
  const Text classId(server::FindClassIds(u"vellum250.address")->classId);
  const Text classKey = u"CLSID\\" + classId;
  auto* const install = Find<HRESULT(BOOL, PCWSTR)>("DllInstall");
  const struct {
    HKEY root;
    HKEY other;
    std::function<HRESULT()> registers;
    std::function<HRESULT()> unregisters;
  } scopes[] = {
      {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, [&] { return install(TRUE, L"user"); },
       [&] { return install(FALSE, L"USER"); }},
      {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, Find<HRESULT()>("DllRegisterServer"),
       Find<HRESULT()>("DllUnregisterServer")},
  };
  for (const auto& scope : scopes) scope.unregisters();
  for (const auto& scope : scopes) {
    ASSERT_EQ(scope.registers(), S_OK);
    ASSERT_EQ(scope.registers(), S_OK) << "again";
    const auto at = [&](const Text& key, const wchar_t* name = nullptr) {
      return Registered(scope.root, key, name);
    };
    EXPECT_EQ(at(u"vellum250.address\\CLSID"), classId);
    EXPECT_EQ(at(classKey + u"\\InprocServer32"), View(path, wcslen(path)));
    EXPECT_EQ(at(classKey + u"\\InprocServer32", L"ThreadingModel"), u"Apartment");
    EXPECT_EQ(at(classKey + u"\\ProgID"), u"vellum250.address");
    EXPECT_EQ(at(classKey + u"\\VersionIndependentProgID"), u"vellum250.address");
    EXPECT_EQ(Registered(scope.other, classKey), u"-");
    ASSERT_EQ(scope.unregisters(), S_OK);
    ASSERT_EQ(scope.unregisters(), S_OK) << "again";
    EXPECT_EQ(at(classKey), u"-");
    EXPECT_EQ(at(u"vellum250.address"), u"-");
  }
}

TEST_F(Dll, FailedRegistrationLeavesNothingBehind) {
  // Below a key that is gone at the next start nothing lasting can be made.
  const Text classKey = u"CLSID\\" + Text(server::FindClassIds(u"vellum250.address")->classId);
  const Text blocked = u"Software\\Classes\\" + classKey;
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, Wide(blocked), 0, nullptr, REG_OPTION_VOLATILE,
                            KEY_ALL_ACCESS, nullptr, &key, nullptr),
            ERROR_SUCCESS);
  RegCloseKey(key);
  auto* const install = Find<HRESULT(BOOL, PCWSTR)>("DllInstall");
  EXPECT_EQ(install(TRUE, L"user"), HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE));
  EXPECT_EQ(Registered(HKEY_CURRENT_USER, u"vellum250.address"), u"-");
  EXPECT_EQ(Registered(HKEY_CURRENT_USER, classKey), u"-");
}

// A dictionary of the page's.
ComPtr<IDispatch> MakeDictionary() {
  CLSID id{};
  Check(CLSIDFromProgID(L"Scripting.Dictionary", &id));
  ComPtr<IDispatch> dictionary;
  Check(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, dictionary.OutVoid()));
  return dictionary;
}

TEST(Apartments, EachHasItsOwnContextAndEndsWithoutLeaks) {
  const int32_t hosts = Live().hostObjects, adapters = Live().adapters;
  ComponentContext::Current().textId = 1;
  for (const bool endsApartment : {true, false}) {
    std::thread([&] {
      CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
      EXPECT_EQ(ComponentContext::Current().textId, 0);
      const ComPtr<IDispatch> dictionary = MakeDictionary();
      ComponentContext::Current().showText = WebDictionary(FromDispatch(dictionary.get()));
      ComponentContext::Current().webConfig = WebDictionary(FromDispatch(dictionary.get()));
      EXPECT_EQ(Live().hostObjects, hosts + 2);
      // Initialisations nest.
      CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
      CoUninitialize();
      EXPECT_FALSE(ComponentContext::Current().showText.HasEntries());
      if (!endsApartment) return;

      // An object that outlives the apartment holds one as well.
      const Ref<Probe> probe = MakeObject<Probe>();
      probe->Held = FromDispatch(dictionary.get());
      dictionary->AddRef();
      CoUninitialize();
      EXPECT_EQ(dictionary->Release(), 1u) << "only this function holds it";
      EXPECT_EQ(Live().hostObjects, hosts + 1);
      try {
        probe->Held->Invoke(u"Count", InvokeKind::Get, {});
        ADD_FAILURE() << "the apartment has ended";
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.Number(), 91);
      }
      EXPECT_FALSE(ComponentContext::Current().showText.HasEntries()) << "begins anew";
      probe->Held = nullptr;
    }).join();
    EXPECT_EQ(Live().hostObjects, hosts) << endsApartment;
  }
  EXPECT_EQ(Live().adapters, adapters);
  EXPECT_EQ(ComponentContext::Current().textId, 1);
}

}  // namespace
}  // namespace vellum250::com
