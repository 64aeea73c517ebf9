// Settings in INI files, as Windows' profile functions keep them. A file is lines of "[section]"
// and "name=value"; sections and names are found without regard to case, the first of several
// counts, a line that begins with ";" is a comment, and what stands before the first section
// belongs to the section without a name. Blanks around names and values do not count.
//
// Texts pass through the code page and end at a U+0000. Elsewhere than on Windows, whose functions
// look for a bare file name in the Windows folder, a relative name starts at the working folder.
#pragma once

#include <optional>

#include "automation/text.h"

namespace vellum250::platform {

// The value without one pair of quotes (' or ") around it, its first 2,047 bytes. `fallback`, cut
// and unquoted in the same way, where the file, the section or the name is missing.
Text ProfileValue(TextView file, TextView section, TextView name, TextView fallback);

// Writes a value, or with nullopt removes the line; what is missing is made, but for folders. The
// other lines stay as they are. False when nothing could be written.
bool SetProfileValue(TextView file, TextView section, TextView name,
                     const std::optional<TextView>& value);

// Removes a section with all its lines. False as above; a section that is missing is no failure.
bool RemoveProfileSection(TextView file, TextView section);

}  // namespace vellum250::platform
