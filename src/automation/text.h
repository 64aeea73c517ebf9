// Text as the whole library holds it: UTF-16, any code unit allowed, lone surrogates and U+0000
// included.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vellum250 {

using Text = std::u16string;
using TextView = std::u16string_view;

// UTF-16 to UTF-8 and back without loss: a lone surrogate becomes its three-byte form, which
// `FromUtf8` accepts again. Bytes that are no such encoding become U+FFFD, one for each byte.
std::string ToUtf8(TextView text);
void AppendUtf8(std::string& out, TextView text);
Text FromUtf8(std::string_view bytes);

// As == has it, by the widest registers.
inline bool SameText(TextView a, TextView b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0;
}

// For names that are ASCII by nature (members, keywords, connection-string keys).
constexpr char16_t AsciiLower(char16_t c) {
  return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
}
bool EqualsIgnoreAsciiCase(TextView a, TextView b);
bool StartsWithIgnoreAsciiCase(TextView text, TextView prefix);
Text ToAsciiLower(TextView text);

// Removes blanks (U+0020 only, as the script's Trim does) from both ends.
TextView TrimBlanks(TextView text);

// Replaces every occurrence of `from` (not empty) by `to`, left to right, binary comparison.
Text ReplaceAll(TextView text, TextView from, TextView to);

// Decimal, with a minus sign when negative.
void AppendNumber(Text& out, int64_t number);
Text NumberText(int64_t number);

}  // namespace vellum250
