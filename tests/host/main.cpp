// Runs a script as a page would: see kUsage.
#include <fcntl.h>
#include <io.h>

#include <cwchar>
#include <exception>

#include "host/script.h"

namespace {

using namespace vellum250;

constexpr char kUsage[] =
    "Usage: vellum250-host [--page] <script.vbs | script.js | page.asp> [name=value ...]\n"
    "Runs a script in UTF-8 with `Host`: Echo, Print, CreateObject, Argument(name), all of them "
    "by\n"
    "their bare names as well. With --page, as an .asp page always, it has Request, Response,\n"
    "Server and Application too. Exit code: 0 when it ran to its end, 1 when not, 2 for a wrong\n"
    "command line.\n";

Text FromWide(const wchar_t* text) { return Text(com::View(text, std::wcslen(text))); }

int RunFile(const std::filesystem::path& file, bool isPage, const host::Arguments& arguments) {
  try {
    const host::Script script = host::ReadScript(file);
    const host::ComPtr<host::HostObject> globals = host::MakeGlobals(arguments);
    if (isPage || !script.lines.empty()) host::AddPage(*globals, arguments, script.blocks);
    return host::Run(script, *globals) ? 0 : 1;
  } catch (const std::exception& failure) {
    host::Write(stderr, file.u16string() + u": " + FromUtf8(failure.what()) + u"\n");
    return 1;
  }
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  // Bytes as they are written, no carriage returns added.
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  const bool isPage = argc > 1 && std::wcscmp(argv[1], L"--page") == 0;
  const int first = isPage ? 2 : 1;
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
  const int exitCode = RunFile(argv[first], isPage, arguments);
  CoUninitialize();
  std::fflush(stdout);
  return exitCode;
}
