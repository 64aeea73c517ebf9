// A T-SQL script: its text from a file's bytes, and its batches.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "automation/text.h"

namespace vellum250::sqltool {

struct ScriptBatch {
  TextView sql;           // a part of the script, line ends as they stand
  int32_t firstLine = 1;  // the line of the script, from 1, at which `sql` begins
};

// The script in these bytes: UTF-8, with or without a byte order mark. Raises a Failure that names
// the first line that is no UTF-8; a UTF-16 file is one.
Text ScriptFromBytes(std::string_view bytes);

// Splits at the lines that hold nothing but GO, in any case, and blanks; inside a comment, a text
// or a quoted name that spans lines such a line stays. Batches of blanks only are left out.
std::vector<ScriptBatch> SplitBatches(TextView script);

}  // namespace vellum250::sqltool
