// Values on their way into markup.
#pragma once

#include "automation/text.h"

namespace vellum250 {

// Encodes `"`, `&`, `<`, `>` by name; control characters and those from code 128 on as their code
// in the platform's code page ("&#233;"). A character that has no code there stays. A no-break
// space in UTF-8 that was read as two characters of the code page becomes one blank. Apostrophes
// stay: attributes are enclosed in double quotes. Never fails, whatever the text holds.
Text HtmlEncode(TextView text);
void AppendHtmlEncoded(Text& out, TextView text);

}  // namespace vellum250
