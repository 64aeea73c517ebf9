// The entry points of the DLL.
#include <windows.h>
#include <olectl.h>

extern "C" {

BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) { return TRUE; }

HRESULT WINAPI DllGetClassObject(REFCLSID, REFIID, LPVOID* object) {
  *object = nullptr;
  return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT WINAPI DllCanUnloadNow() { return S_OK; }

HRESULT WINAPI DllRegisterServer() { return SELFREG_E_CLASS; }

HRESULT WINAPI DllUnregisterServer() { return SELFREG_E_CLASS; }

HRESULT WINAPI DllInstall(BOOL, LPCWSTR) { return SELFREG_E_CLASS; }

}  // extern "C"
