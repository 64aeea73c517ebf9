// Letter case by Windows' own tables, the same in every locale.
#include <windows.h>

#include "automation/locale.h"
#include "platform/windows/wide.h"

namespace vellum250 {

namespace {

Text Mapped(TextView text, DWORD how) {
  Text out(text);
  const auto length = static_cast<int>(text.size());
  // Without linguistic casing each code unit becomes one code unit.
  LCMapStringEx(LOCALE_NAME_INVARIANT, how, platform::Wide(text.data()), length,
                platform::Wide(out.data()), length, nullptr, nullptr, 0);
  return out;
}

}  // namespace

Text ToUpper(TextView text) { return Mapped(text, LCMAP_UPPERCASE); }

Text ToLower(TextView text) { return Mapped(text, LCMAP_LOWERCASE); }

}  // namespace vellum250
