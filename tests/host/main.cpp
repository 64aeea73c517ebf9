// Runs a script as a page would: see kUsage.
#include <fcntl.h>
#include <io.h>

#include <cwchar>
#include <exception>
#include <thread>

#include "host/script.h"

namespace {

using namespace vellum250;

constexpr char kUsage[] =
    "Usage: vellum250-host [--unload] [--page] <script.vbs | script.js | page.asp> [name=value "
    "...]\n"
    "Runs a script in UTF-8 with `Host`: Echo, Print, CreateObject, Argument(name), and\n"
    "RunApart(text): the same script in another apartment with that Argument(\"apart\"), True "
    "when\n"
    "it ran to its end. All of them by their bare names as well. With --page, as an .asp page\n"
    "always, it has Request, Response, Server and Application too. Exit code: 0 when it ran to "
    "its\n"
    "end, and with --unload when nothing keeps vellum250.dll loaded then; 1 when not, 2 for a\n"
    "wrong command line.\n";

Text FromWide(const wchar_t* text) { return Text(com::View(text, std::wcslen(text))); }

int RunApart(const std::filesystem::path& file, bool isPage, const host::Arguments& arguments);

int RunFile(const std::filesystem::path& file, bool isPage, const host::Arguments& arguments) {
  try {
    const host::Script script = host::ReadScript(file);
    const host::ComPtr<host::HostObject> globals = host::MakeGlobals(arguments);
    if (isPage || !script.lines.empty()) host::AddPage(*globals, arguments, script.blocks);
    globals->Add(L"RunApart", [&](const host::HostObject::Call& call) {
      host::Arguments others = arguments;
      others[u"apart"] = {host::TextOf(call[0])};
      call.result.vt = VT_BOOL;
      call.result.boolVal = RunApart(file, isPage, others) == 0 ? VARIANT_TRUE : VARIANT_FALSE;
    });
    return host::Run(script, *globals) ? 0 : 1;
  } catch (const std::exception& failure) {
    host::Write(stderr, file.u16string() + u": " + FromUtf8(failure.what()) + u"\n");
    return 1;
  }
}

// In a thread and an apartment of its own, which have ended when this returns.
int RunApart(const std::filesystem::path& file, bool isPage, const host::Arguments& arguments) {
  int exitCode = 1;
  std::thread([&] {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    exitCode = RunFile(file, isPage, arguments);
    CoUninitialize();
  }).join();
  return exitCode;
}

// Whether the module may go, asked as COM asks before it unloads one; true when it is not loaded.
bool MayGo(const wchar_t* name) {
  HMODULE module = nullptr;
  if (GetModuleHandleExW(0, name, &module) == FALSE) return true;
  using Ask = HRESULT WINAPI();
  auto* const canUnloadNow =
      reinterpret_cast<Ask*>(reinterpret_cast<void*>(GetProcAddress(module, "DllCanUnloadNow")));
  const bool may = canUnloadNow() == S_OK;
  FreeLibrary(module);
  return may;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  // Bytes as they are written, no carriage returns added.
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  int first = 1;
  const auto takes = [&](const wchar_t* option) {
    const bool given = argc > first && std::wcscmp(argv[first], option) == 0;
    first += given ? 1 : 0;
    return given;
  };
  const bool unload = takes(L"--unload");
  const bool isPage = takes(L"--page");
  host::Arguments arguments;
  bool isRight = argc > first;
  for (int i = first + 1; i < argc; ++i) {
    const Text argument = FromWide(argv[i]);
    const size_t equals = argument.find(u'=');
    isRight = isRight && equals != Text::npos;
    if (!isRight) break;
    arguments[ToAsciiLower(argument.substr(0, equals))].push_back(argument.substr(equals + 1));
  }
  if (!isRight) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  int exitCode = RunApart(argv[first], isPage, arguments);
  if (unload && !MayGo(L"vellum250.dll")) {
    std::fputs("vellum250.dll is still needed\n", stderr);
    exitCode = 1;
  }
  CoUninitialize();
  std::fflush(stdout);
  return exitCode;
}
