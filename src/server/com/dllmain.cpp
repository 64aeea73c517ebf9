// What Windows calls in the DLL.
#include <olectl.h>

#include <cwchar>

#include "platform/windows/ole_failures.h"
#include "platform/windows/thread_end.h"
#include "server/com/class_factory.h"
#include "server/com/module.h"
#include "server/com/registration.h"

namespace com = vellum250::com;

// Threads are told of: what belongs to one is released when it ends.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* processEnds) {
  if (reason == DLL_PROCESS_DETACH && processEnds != nullptr) com::TellProcessEnds();
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  return com::Guarded([&] { return com::GetClassObject(classId, iid, out); });
}

STDAPI DllCanUnloadNow() {
  return !com::Live().Needed() && vellum250::platform::ThreadsLetGo() ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
  return com::Guarded([] { return com::Register(com::Scope::Machine); });
}

STDAPI DllUnregisterServer() {
  return com::Guarded([] { return com::Unregister(com::Scope::Machine); });
}

// "user" is for the user alone (regsvr32 /n /i:user), anything else for the machine.
STDAPI DllInstall(BOOL install, PCWSTR commandLine) {
  const bool user = commandLine != nullptr && _wcsicmp(commandLine, L"user") == 0;
  const com::Scope scope = user ? com::Scope::User : com::Scope::Machine;
  return com::Guarded(
      [&] { return install != FALSE ? com::Register(scope) : com::Unregister(scope); });
}
