// LIKE and PATINDEX.
#pragma once

#include <optional>
#include <string_view>

#include "automation/text.h"

namespace vellum250::database::embedded {

// Whether `text` fits `pattern`: % any text, _ one UTF-16 unit, [a-z] and [^a] sets and ranges,
// letters without regard to case, ranges in the order of the collation. A set without its "]" fits
// nothing. `escape` takes the meaning away from the unit behind it. Blanks at the end of the
// pattern count; those of the text do when `blanksCount`, as they do for nvarchar.
bool Like(std::string_view text, std::string_view pattern, std::optional<char16_t> escape = {},
          bool blanksCount = false);

// The position (from 1, in UTF-16 units) where `pattern` first fits; 0 when it does not.
int64_t PatIndex(std::string_view pattern, std::string_view text);

}  // namespace vellum250::database::embedded
