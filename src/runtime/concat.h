// Text put together from pieces: texts as they are, integers in decimal.
#pragma once

#include <concepts>

#include "automation/text.h"

namespace vellum250 {

inline void AppendPiece(Text& out, TextView piece) { out.append(piece); }
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
