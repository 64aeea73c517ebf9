// The script engine's regular expressions written as PCRE2 reads them.
#pragma once

#include "automation/text.h"

namespace vellum250::platform {

// The text with each letter as its capital: equal here is equal without regard to case (ECMA-262,
// 3rd edition, 15.10.2.8: letter by letter, and none beyond ASCII becomes one of ASCII).
Text WithoutCase(TextView text);

// `pattern` for PCRE2 without options of its own, to be matched against a text `WithoutCase`. Only
// what the engine knows is let through, each character in a form that means nothing else, so that
// what PCRE2 still refuses is too large for it. Each group begins with a callout, for what
// takes long is in one that repeats. Raises 5017.
Text TranslatedPattern(TextView pattern);

}  // namespace vellum250::platform
