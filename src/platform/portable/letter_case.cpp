// Letter case by the C library's Unicode tables.

#include <clocale>
#include <cwctype>

#include "automation/locale.h"

namespace vellum250 {

namespace {

// Lives as long as the process: letters are mapped until the very end.
locale_t UnicodeLocale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return locale;
}

template <typename Map>
Text MapCodeUnits(TextView text, Map map) {
  Text out(text);
  for (char16_t& c : out) {
    if (c < 0x80) {
      c = static_cast<char16_t>(map(c, true));
    } else if ((c & 0xF800) != 0xD800) {
      const auto mapped = static_cast<char32_t>(map(c, false));
      // A mapping outside the plane would change the length.
      if (mapped <= 0xFFFF) c = static_cast<char16_t>(mapped);
    }
  }
  return out;
}

}  // namespace

Text ToUpper(TextView text) {
  return MapCodeUnits(text, [](char16_t c, bool ascii) -> wint_t {
    if (ascii) return c >= u'a' && c <= u'z' ? c - 32u : c;
    return towupper_l(c, UnicodeLocale());
  });
}

Text ToLower(TextView text) {
  return MapCodeUnits(text, [](char16_t c, bool ascii) -> wint_t {
    if (ascii) return AsciiLower(c);
    return towlower_l(c, UnicodeLocale());
  });
}

}  // namespace vellum250
