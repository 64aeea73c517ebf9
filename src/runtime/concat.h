// Text put together from pieces: texts as they are, integers in decimal.
#pragma once

#include <concepts>
#include <cstddef>

#include "automation/text.h"

namespace vellum250 {

// Out of line: compilers copy pieces of a known length by slower means than the C library's.
void AppendPiece(Text& out, TextView piece);
// A literal's length is known; nobody counts it.
template <size_t size>
void AppendPiece(Text& out, const char16_t (&literal)[size]) {
  AppendPiece(out, TextView(literal, size - 1));
}
template <std::signed_integral Number>
void AppendPiece(Text& out, Number piece) {
  AppendNumber(out, piece);
}
inline void AppendPiece(Text& out, uint8_t piece) { AppendNumber(out, piece); }

template <typename... Pieces>
void Append(Text& out, const Pieces&... pieces) {
  (AppendPiece(out, pieces), ...);
}

template <typename... Pieces>
Text Concat(const Pieces&... pieces) {
  Text out;
  Append(out, pieces...);
  return out;
}

}  // namespace vellum250
