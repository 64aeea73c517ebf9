// Regular expressions as the script engine's `RegExp` (version 5.5) reads them.
#pragma once

#include <cstddef>
#include <vector>

#include "automation/text.h"

namespace vellum250::platform {

// In code units; `length` may be 0.
struct PatternMatch {
  size_t position;
  size_t length;
  friend bool operator==(const PatternMatch&, const PatternMatch&) = default;
};

// Where `pattern` matches in `subject`, without regard to case, from left to right: none overlaps
// the one before. `^` and `$` are the ends of the whole text.
// Raises 5017, or another of the engine's syntax errors up to 5021, for a pattern that is none; 429
// where there is no script engine; 7 for a pattern that takes too much memory or time on a text.
std::vector<PatternMatch> FindMatches(TextView pattern, TextView subject);

}  // namespace vellum250::platform
