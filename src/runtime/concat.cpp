#include "runtime/concat.h"

namespace vellum250 {

void AppendPiece(Text& out, TextView piece) { out.append(piece); }

}  // namespace vellum250
