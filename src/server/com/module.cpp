#include "server/com/module.h"

// Where the linker begins the module.
extern "C" IMAGE_DOS_HEADER __ImageBase;  // NOLINT(bugprone-reserved-identifier): its name

namespace vellum250::com {

namespace {
std::atomic<bool> processEnds = false;
}  // namespace

HMODULE ThisModule() { return reinterpret_cast<HMODULE>(&__ImageBase); }

Text ModulePath() {
  Text path(MAX_PATH, u'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(ThisModule(), reinterpret_cast<wchar_t*>(path.data()),
                                            static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(2 * path.size());
  }
}

LiveCounts& Live() {
  static LiveCounts counts;
  return counts;
}

void TellProcessEnds() { processEnds = true; }
bool ProcessEnds() { return processEnds; }

}  // namespace vellum250::com
