// LIKE and PATINDEX.
#pragma once

#include <optional>
#include <string_view>

#include "automation/text.h"

namespace vellum250::database::embedded {

// Whether `text` fits `pattern`: % any text, _ one character, [a-z] [^a] sets and ranges, letters
// without regard to case, ranges in the order of the collation. Blanks at the end of the text are
// ignored, those of the pattern count. `escape` is the UTF-16 unit that takes a sign's meaning
// away.
bool Like(std::string_view text, std::string_view pattern, std::optional<char16_t> escape = {});

// The position (from 1, in UTF-16 units) where `pattern` first fits; 0 when it does not.
int64_t PatIndex(std::string_view pattern, std::string_view text);

}  // namespace vellum250::database::embedded
