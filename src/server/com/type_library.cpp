#include "server/com/type_library.h"

#include "server/class_ids.h"
#include "server/com/guid.h"
#include "server/com/module.h"

// In oleaut32.dll since Windows Vista.
extern "C" {
HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* helpFolder);
HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID library, WORD major, WORD minor, LCID locale,
                                        SYSKIND system);
}

namespace vellum250::com {

namespace {

#ifdef _WIN64
constexpr SYSKIND kSystem = SYS_WIN64;
#else
constexpr SYSKIND kSystem = SYS_WIN32;
#endif

HRESULT Load(ComPtr<ITypeLib>& library) {
  return LoadTypeLibEx(Wide(ModulePath()), REGKIND_NONE, library.Out());
}

}  // namespace

bool HasTypeLibrary() {
  return FindResourceW(ThisModule(), MAKEINTRESOURCEW(1), L"TYPELIB") != nullptr;
}

HRESULT RegisterTypeLibrary(Scope scope) {
  if (!HasTypeLibrary()) return S_OK;
  ComPtr<ITypeLib> library;
  const HRESULT loaded = Load(library);
  if (FAILED(loaded)) return loaded;
  Text path = ModulePath();
  auto* wide = reinterpret_cast<wchar_t*>(path.data());
  return scope == Scope::User ? RegisterTypeLibForUser(library.get(), wide, nullptr)
                              : RegisterTypeLib(library.get(), wide, nullptr);
}

HRESULT UnregisterTypeLibrary(Scope scope) {
  if (!HasTypeLibrary()) return S_OK;
  const auto unregister = scope == Scope::User ? UnRegisterTypeLibForUser : UnRegisterTypeLib;
  const HRESULT result = unregister(GuidOf(server::kLibraryId), server::kLibraryMajorVersion,
                                    server::kLibraryMinorVersion, LOCALE_NEUTRAL, kSystem);
  // What Windows and Wine say when it was not registered.
  return result == TYPE_E_REGISTRYACCESS || result == E_INVALIDARG ? S_OK : result;
}

IID InterfaceIdOf(const ClassTable& table) {
  const server::ClassIds* ids = server::FindClassIds(table.Name());
  return ids != nullptr ? GuidOf(ids->interfaceId) : IID_NULL;
}

ComPtr<ITypeInfo> TypeInfoOf(REFIID interfaceId) {
  ComPtr<ITypeInfo> info;
  ComPtr<ITypeLib> library;
  if (interfaceId != IID_NULL && HasTypeLibrary() && SUCCEEDED(Load(library))) {
    if (FAILED(library->GetTypeInfoOfGuid(interfaceId, info.Out()))) return {};
  }
  return info;
}

}  // namespace vellum250::com
