// Digits and letters of ASCII.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vellum250::database::embedded {

inline bool IsAsciiDigit(char c) { return c >= '0' && c <= '9'; }
inline bool IsAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Without regard to case; `word` is made of letters, digits and "_".
inline bool EqualsAscii(std::string_view typed, std::string_view word) {
  return typed.size() == word.size() &&
         std::equal(typed.begin(), typed.end(), word.begin(), [](char a, char b) {
           return a == b || (IsAsciiLetter(a) && (a | 32) == (b | 32));
         });
}

// The number that `count` digits from `begin` make; what is behind the end does not count, what is
// no digit is 0.
inline int32_t GetDigits(std::string_view text, size_t begin, size_t count) {
  int32_t number = 0;
  for (size_t i = begin; i < begin + count && i < text.size(); ++i) {
    number = number * 10 + (IsAsciiDigit(text[i]) ? text[i] - '0' : 0);
  }
  return number;
}

}  // namespace vellum250::database::embedded
