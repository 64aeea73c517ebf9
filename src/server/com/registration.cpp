#include "server/com/registration.h"

#include <olectl.h>

#include <vector>

#include "server/class_ids.h"
#include "server/com/module.h"
#include "server/com/type_library.h"
#include "server/factory.h"

namespace vellum250::com {

namespace {

struct Entry {
  Text key;  // below the classes
  const wchar_t* name;
  Text value;
};

HKEY RootOf(Scope scope) { return scope == Scope::User ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE; }

// The name that scripts create a class by has no version, so it stands for both of its names.
std::vector<Entry> EntriesOf(const server::ClassIds& ids) {
  const Text name(ids.name);
  const Text classId(ids.classId);
  const Text classKey = u"CLSID\\" + classId;
  const Text version =
      NumberText(server::kLibraryMajorVersion) + u"." + NumberText(server::kLibraryMinorVersion);
  std::vector<Entry> entries = {
      {name, nullptr, name},
      {name + u"\\CLSID", nullptr, classId},
      {classKey, nullptr, name},
      {classKey + u"\\InprocServer32", nullptr, ModulePath()},
      {classKey + u"\\InprocServer32", L"ThreadingModel", u"Apartment"},
      {classKey + u"\\ProgID", nullptr, name},
      {classKey + u"\\VersionIndependentProgID", nullptr, name},
      {classKey + u"\\Version", nullptr, version},
      {classKey + u"\\Programmable", nullptr, u""},
  };
  if (HasTypeLibrary()) {
    entries.push_back({classKey + u"\\TypeLib", nullptr, Text(server::kLibraryId)});
  }
  return entries;
}

HRESULT Write(Scope scope, const Entry& entry) {
  const Text key = u"Software\\Classes\\" + entry.key;
  const auto size = static_cast<DWORD>((entry.value.size() + 1) * sizeof(char16_t));
  return HRESULT_FROM_WIN32(static_cast<DWORD>(
      RegSetKeyValueW(RootOf(scope), Wide(key), entry.name, REG_SZ, entry.value.c_str(), size)));
}

HRESULT Delete(Scope scope, const Text& key) {
  const LSTATUS status = RegDeleteTreeW(RootOf(scope), Wide(u"Software\\Classes\\" + key));
  return status == ERROR_FILE_NOT_FOUND ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT RegisterAll(Scope scope) {
  for (const server::PublishedClass& published : server::PublishedClasses()) {
    const server::ClassIds* ids = server::FindClassIds(published.table().Name());
    if (ids == nullptr) return SELFREG_E_CLASS;
    for (const Entry& entry : EntriesOf(*ids)) {
      const HRESULT written = Write(scope, entry);
      if (FAILED(written)) return written;
    }
  }
  return RegisterTypeLibrary(scope);
}

}  // namespace

HRESULT Register(Scope scope) {
  const HRESULT result = RegisterAll(scope);
  if (FAILED(result)) Unregister(scope);
  return result;
}

HRESULT Unregister(Scope scope) {
  HRESULT result = UnregisterTypeLibrary(scope);
  for (const server::ClassIds& ids : server::AllClassIds()) {
    for (const Text& key : {u"CLSID\\" + Text(ids.classId), Text(ids.name)}) {
      const HRESULT deleted = Delete(scope, key);
      if (SUCCEEDED(result)) result = deleted;
    }
  }
  return result;
}

}  // namespace vellum250::com
