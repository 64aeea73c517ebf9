// What compiled callers use: the type library in the DLL, and creation by a manifest alone.
#include "server/com/type_library.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "com/probe.h"
#include "platform/file_version.h"
#include "server/class_ids.h"
#include "server/factory.h"
#include "support/reference_database.h"

namespace vellum250::com {
namespace {

const std::filesystem::path kDll = std::filesystem::absolute(VELLUM250_DLL);

ComPtr<ITypeInfo> DescriptionOf(const ClassTable& table) {
  ComPtr<ITypeLib> library;
  ComPtr<ITypeInfo> info;
  EXPECT_EQ(LoadTypeLibEx(kDll.c_str(), REGKIND_NONE, library.Out()), S_OK);
  if (library) {
    EXPECT_EQ(library->GetTypeInfoOfGuid(InterfaceIdOf(table), info.Out()), S_OK);
  }
  return info;
}

// "3 1 24 Method(out 8& a;[2 b;)": dispatch id, kind and type, and those of the parameters.
std::vector<std::string> FunctionsOf(ITypeInfo& info) {
  const auto typeName = [](const TYPEDESC& type) {
    const bool byReference = type.vt == VT_PTR;
    return std::to_string(byReference ? type.lptdesc->vt : type.vt) + (byReference ? "&" : "");
  };
  std::vector<std::string> functions;
  FUNCDESC* function = nullptr;
  for (UINT i = 0; info.GetFuncDesc(i, &function) == S_OK; ++i) {
    BSTR names[64] = {};
    UINT count = 0;
    info.GetNames(function->memid, names, 64, &count);
    const auto name = [&](int index) { return ToUtf8(ToAsciiLower(View(names[index]))); };
    std::string text = std::to_string(function->memid) + ' ' + std::to_string(function->invkind) +
                       ' ' + typeName(function->elemdescFunc.tdesc) + ' ' + name(0) + '(';
    if (function->invkind == INVOKE_FUNC) {
      for (int p = 0; p < function->cParams; ++p) {
        const ELEMDESC& parameter = function->lprgelemdescParam[p];
        const WORD flags = parameter.paramdesc.wParamFlags;
        text += (flags & PARAMFLAG_FOPT) != 0 ? "[" : "";
        text += (flags & PARAMFLAG_FOUT) != 0 ? "out " : "";
        text += typeName(parameter.tdesc) + ' ' + name(p + 1) + ';';
      }
    }
    functions.push_back(text + ')');
    for (UINT n = 0; n < count; ++n) SysFreeString(names[n]);
    info.ReleaseFuncDesc(function);
  }
  return functions;
}

// The same of a class table. Names without regard to case, as a type library has them.
std::vector<std::string> FunctionsOf(const ClassTable& table) {
  const auto typeName = [](ScriptType type, Passing passing = Passing::ByValue) {
    constexpr VARTYPE kTypes[] = {VT_VOID, VT_BOOL, VT_UI1,  VT_I2,      VT_I4,
                                  VT_R8,   VT_DATE, VT_BSTR, VT_VARIANT, VT_DISPATCH};
    return std::to_string(kTypes[static_cast<size_t>(type)]) +
           (passing == Passing::ByValue ? "" : "&");
  };
  std::vector<std::string> functions;
  for (const MemberInfo& member : table.Members()) {
    const auto add = [&](INVOKEKIND kind, ScriptType result, const std::string& parameters = "") {
      const bool walks = member.role == MemberRole::Enumerator;
      functions.push_back(std::to_string(member.dispatchId) + ' ' + std::to_string(kind) + ' ' +
                          (walks ? std::to_string(VT_UNKNOWN) : typeName(result)) + ' ' +
                          ToUtf8(ToAsciiLower(member.name)) + '(' + parameters + ')');
    };
    if (member.kind != MemberKind::Method) {
      add(INVOKE_PROPERTYGET, member.result);
      if (member.kind == MemberKind::ReadOnlyProperty) continue;
      const bool maybeObject =
          member.result == ScriptType::Object || member.result == ScriptType::Variant;
      if (member.result != ScriptType::Object) add(INVOKE_PROPERTYPUT, ScriptType::None);
      if (maybeObject) add(INVOKE_PROPERTYPUTREF, ScriptType::None);
      continue;
    }
    std::string parameters;
    for (const ParameterInfo& parameter : member.parameters) {
      parameters += parameter.optional ? "[" : "";
      parameters += parameter.passing == Passing::ByReference ? "out " : "";
      parameters += typeName(parameter.type, parameter.passing) + ' ' +
                    ToUtf8(ToAsciiLower(parameter.name)) + ';';
    }
    add(INVOKE_FUNC, member.result, parameters);
  }
  return functions;
}

TEST(TypeLibrary, HoldsTheMembersOfTheTablesInOrder) {
  for (const server::PublishedClass& published : server::PublishedClasses()) {
    const ClassTable& table = published.table();
    const ComPtr<ITypeInfo> info = DescriptionOf(table);
    ASSERT_TRUE(info);
    EXPECT_EQ(FunctionsOf(*info), FunctionsOf(table)) << ToUtf8(table.Name());
  }
}

TEST(VersionResource, TellsTheVersion) {
  EXPECT_EQ(platform::FileVersion(kDll.u16string()), FromUtf8(VELLUM250_VERSION));
}

// An activation context from a manifest, for this thread.
class ActivationContext {
 public:
  explicit ActivationContext(const std::filesystem::path& file, PCWSTR resource = nullptr) {
    ACTCTXW description{};
    description.cbSize = sizeof description;
    description.lpSource = file.c_str();
    description.lpResourceName = resource;
    if (resource != nullptr) description.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
    context_ = CreateActCtxW(&description);
    active_ = context_ != INVALID_HANDLE_VALUE && ActivateActCtx(context_, &cookie_) != FALSE;
  }
  ActivationContext(const ActivationContext&) = delete;
  ActivationContext& operator=(const ActivationContext&) = delete;
  ~ActivationContext() {
    if (active_) DeactivateActCtx(0, cookie_);
    if (context_ != INVALID_HANDLE_VALUE) ReleaseActCtx(context_);
  }
  bool IsActive() const { return active_; }

 private:
  HANDLE context_;
  ULONG_PTR cookie_ = 0;
  bool active_ = false;
};

ComPtr<IDispatch> Create(const Text& progId) {
  CLSID id{};
  ComPtr<IDispatch> created;
  if (CLSIDFromProgID(Wide(progId), &id) == S_OK) {
    CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, created.OutVoid());
  }
  return created;
}

TEST(Manifest, CreatesEveryClassWithNothingInTheRegistry) {
  const auto beside = std::filesystem::path(kDll).replace_extension(".manifest");
  const struct {
    std::filesystem::path file;
    PCWSTR resource;
  } manifests[] = {{beside, nullptr}, {kDll, MAKEINTRESOURCEW(1)}};
  for (const auto& manifest : manifests) {
    for (const server::ClassIds& ids : server::AllClassIds()) {
      const Text name(ids.name);
      HKEY key = nullptr;
      ASSERT_EQ(RegOpenKeyW(HKEY_CLASSES_ROOT, Wide(name), &key), ERROR_FILE_NOT_FOUND);
      ASSERT_EQ(RegOpenKeyW(HKEY_CLASSES_ROOT, Wide(u"CLSID\\" + Text(ids.classId)), &key),
                ERROR_FILE_NOT_FOUND);
      EXPECT_FALSE(Create(name));
      const ActivationContext context(manifest.file, manifest.resource);
      ASSERT_TRUE(context.IsActive()) << manifest.file << ' ' << GetLastError();
      EXPECT_TRUE(Create(name)) << manifest.file << ' ' << ToUtf8(name);
    }
  }
}

// As a compiler binds it: ids from the type library, arguments of the declared types.
TEST(TypeLibrary, BindsACompiledCaller) {
  const ActivationContext context(std::filesystem::path(kDll).replace_extension(".manifest"));
  const ComPtr<IDispatch> address = Create(u"vellum250.address");
  ASSERT_TRUE(address);
  const ComPtr<ITypeInfo> info = DescriptionOf(server::PublishedClasses()[0].table());
  const auto invoke = [&](const wchar_t* member, WORD flags, std::vector<VARIANT> reversed) {
    DISPID id = DISPID_UNKNOWN;
    auto* name = const_cast<wchar_t*>(member);
    EXPECT_EQ(info->GetIDsOfNames(&name, 1, &id), S_OK);
    DISPID put = DISPID_PROPERTYPUT;
    const bool puts = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS given{reversed.data(), puts ? &put : nullptr, static_cast<UINT>(reversed.size()),
                     puts ? 1u : 0u};
    OwnedVariant result;
    EXPECT_EQ(info->Invoke(address.get(), id, flags, &given, &result, nullptr, nullptr), S_OK);
    return result.vt == VT_BSTR ? ToUtf8(View(result.bstrVal)) : std::to_string(result.vt);
  };
  VARIANT statement = Value(u"select 1");
  invoke(L"LastSql", DISPATCH_PROPERTYPUT, {statement});
  EXPECT_EQ(invoke(L"LastSql", DISPATCH_PROPERTYGET, {}), "select 1");
  BSTR town = MakeBstr(u"York"), street = MakeBstr(u"1 High St");
  EXPECT_EQ(invoke(L"DisplayAddressName", DISPATCH_METHOD,
                   {Reference(VT_BSTR, town), Reference(VT_BSTR, street)}),
            "1 High St, York");

  const support::ReferenceDatabase database;
  invoke(L"Connection", DISPATCH_METHOD, {Value(database.ConnectionString())});
  invoke(L"SysDebug", DISPATCH_METHOD, {Value(false)});
  LONG owner = 17;
  BSTR main = MakeBstr(u"Y");
  uint8_t editLink = 5;
  std::vector<VARIANT> insertion(16, Value(Missing{}));
  insertion[0] = Reference(VT_UI1, editLink);
  insertion[1] = Reference(VT_BSTR, main);
  insertion[12] = Reference(VT_BSTR, street);
  insertion[15] = Reference(VT_I4, owner);
  EXPECT_EQ(invoke(L"InsertIndividualAddress", DISPATCH_METHOD, insertion), std::to_string(VT_I4));
  EXPECT_EQ(editLink, 1);
  EXPECT_EQ(View(main), u"'Y'");

  VARIANT words = Value(u"Jane Mary");
  invoke(L"GetFirstWord", DISPATCH_METHOD, {Reference(VT_VARIANT, words)});
  EXPECT_EQ(View(words.bstrVal), u"Jane");
}

}  // namespace
}  // namespace vellum250::com
