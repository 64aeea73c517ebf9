// The code page of the system, through Windows' conversions.
#include "platform/code_page.h"

#include <windows.h>

#include "platform/windows/wide.h"

namespace vellum250::platform {

namespace {

// Into at most `size` bytes; the number of bytes, or with size 0 how many there would be.
int Encode(TextView text, char* bytes, int size) {
  const auto length = static_cast<int>(text.size());
  // Where UTF-8 is the code page every character has a code, and the options are refused.
  if (GetACP() == CP_UTF8) {
    return WideCharToMultiByte(CP_UTF8, 0, Wide(text.data()), length, bytes, size, nullptr,
                               nullptr);
  }
  return WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, Wide(text.data()), length, bytes, size,
                             "?", nullptr);
}

}  // namespace

int16_t CharacterCodeBeyondAscii(char16_t c) {
  char bytes[4];
  const int count = Encode({&c, 1}, bytes, sizeof bytes);
  const auto byte = [&](int i) { return static_cast<uint8_t>(bytes[i]); };
  if (count == 1) return byte(0);
  if (count == 2) return static_cast<int16_t>(byte(0) << 8 | byte(1));
  return u'?';
}

char16_t CharacterOfCode(uint8_t code) {
  const auto byte = static_cast<char>(code);
  wchar_t character = 0;
  return MultiByteToWideChar(CP_ACP, 0, &byte, 1, &character, 1) == 1 ? character : code;
}

std::string ToCodePage(TextView text) {
  if (text.empty()) return {};
  std::string bytes(static_cast<size_t>(Encode(text, nullptr, 0)), '\0');
  Encode(text, bytes.data(), static_cast<int>(bytes.size()));
  return bytes;
}

Text FromCodePage(std::string_view bytes) {
  if (bytes.empty()) return {};
  const auto size = static_cast<int>(bytes.size());
  const int length = MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, nullptr, 0);
  Text text(static_cast<size_t>(length), u'\0');
  MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, Wide(text.data()), length);
  return text;
}

}  // namespace vellum250::platform
