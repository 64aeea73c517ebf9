// Late-bound calls as a compiled program makes them, of a trivial member of ours and of Exists of a
// Scripting.Dictionary, with and without the look-up of the name: the best of several rounds, taken
// in turn. One line per call: name, nanoseconds, ratio to the Dictionary's of the same kind.
#include <windows.h>
#include <oleauto.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

constexpr int kCalls = 100000;
constexpr int kRounds = 9;
constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

IDispatch* Create(const wchar_t* name) {
  CLSID id{};
  void* created = nullptr;
  if (CLSIDFromProgID(name, &id) != S_OK ||
      CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &created) != S_OK) {
    std::fprintf(stderr, "cannot create %ls\n", name);
    std::exit(1);
  }
  return static_cast<IDispatch*>(created);
}

DISPID IdOf(IDispatch* object, const wchar_t* member) {
  auto* name = const_cast<wchar_t*>(member);
  DISPID id = DISPID_UNKNOWN;
  object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
  return id;
}

struct Member {
  const char* title;
  IDispatch* object;
  const wchar_t* name;
  VARIANT* argument;            // nullptr for none
  double best[2] = {1e9, 1e9};  // nanoseconds a call: by the id, by the name

  void Call(DISPID id) const {
    VARIANT result;
    VariantInit(&result);
    DISPPARAMS given{argument, nullptr, argument == nullptr ? 0U : 1U, 0};
    if (object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kCall, &given, &result, nullptr,
                       nullptr) != S_OK) {
      std::fprintf(stderr, "%s failed\n", title);
      std::exit(1);
    }
    VariantClear(&result);
  }

  void Round(bool byName) {
    const DISPID known = IdOf(object, name);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kCalls; ++i) Call(byName ? IdOf(object, name) : known);
    const std::chrono::duration<double, std::nano> passed =
        std::chrono::steady_clock::now() - start;
    best[byName] = std::min(best[byName], passed.count() / kCalls);
  }
};

}  // namespace

int main() {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  VARIANT key{}, number{};
  key.vt = VT_BSTR;
  key.bstrVal = SysAllocString(L"key");
  number.vt = VT_I4;
  number.lVal = 5;
  IDispatch* dictionary = Create(L"Scripting.Dictionary");
  IDispatch* address = Create(L"vellum250.address");
  Member members[] = {{"Dictionary.Exists", dictionary, L"Exists", &key},
                      {"LastSql, read", address, L"LastSql", nullptr},
                      {"TextID, one number", address, L"TextID", &number}};
  for (int round = 0; round < kRounds; ++round) {
    for (const bool byName : {false, true}) {
      for (Member& member : members) member.Round(byName);
    }
  }
  for (const bool byName : {false, true}) {
    for (const Member& member : members) {
      std::printf("%s, %s\t%.0f\t%.3f\n", member.title, byName ? "by name" : "by id",
                  member.best[byName], member.best[byName] / members[0].best[byName]);
    }
  }
  address->Release();
  dictionary->Release();
  SysFreeString(key.bstrVal);
  CoUninitialize();
}
