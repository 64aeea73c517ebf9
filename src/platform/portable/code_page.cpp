// Windows-1252, as the index of that name in the WHATWG Encoding Standard maps it.
#include "platform/code_page.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vellum250::platform {

namespace {

constexpr char16_t kFirst = 0x80;  // codes from here to 0x9F are not those of ISO 8859-1
constexpr char16_t kCharacters[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98
};

using CharacterAndCode = std::pair<char16_t, int16_t>;

constexpr auto kByCharacter = [] {
  std::array<CharacterAndCode, std::size(kCharacters)> entries{};
  for (size_t i = 0; i < entries.size(); ++i) {
    entries[i] = {kCharacters[i], static_cast<int16_t>(kFirst + i)};
  }
  std::ranges::sort(entries);
  return entries;
}();

}  // namespace

int16_t CharacterCodeBeyondAscii(char16_t c) {
  if (c < kFirst || (c >= 0xA0 && c <= 0xFF)) return static_cast<int16_t>(c);
  const auto found = std::ranges::lower_bound(kByCharacter, c, {}, &CharacterAndCode::first);
  return found != kByCharacter.end() && found->first == c ? found->second : int16_t{u'?'};
}

char16_t CharacterOfCode(uint8_t code) {
  return code >= kFirst && code < 0xA0 ? kCharacters[code - kFirst] : char16_t{code};
}

std::string ToCodePage(TextView text) {
  std::string bytes(text.size(), '\0');
  std::ranges::transform(text, bytes.begin(),
                         [](char16_t c) { return static_cast<char>(CharacterCode(c)); });
  return bytes;
}

Text FromCodePage(std::string_view bytes) {
  Text text(bytes.size(), u'\0');
  std::ranges::transform(bytes, text.begin(),
                         [](char c) { return CharacterOfCode(static_cast<uint8_t>(c)); });
  return text;
}

}  // namespace vellum250::platform
