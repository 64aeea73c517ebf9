// A T-SQL script: its text from a file's bytes, and its batches.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "automation/text.h"

namespace vellum250::sqltool {

struct ScriptBatch {
  TextView sql;           // a part of the script, line ends as they stand
  int32_t firstLine = 1;  // the line of the script, from 1, at which `sql` begins
  int32_t times = 1;      // how often it runs, 0 or more
};

// Follows a script line by line to the lines that end a batch: those that hold nothing but GO, in
// any case, a number if any, and blanks. Inside a comment, a text or a quoted name that spans lines
// they end nothing.
class BatchEnd {
 public:
  // How often the batch runs that this line, the next of the script, ends; nullopt when it ends
  // none.
  std::optional<int32_t> Follow(TextView line);
  // Whether no comment, text or quoted name goes on into the next line.
  bool IsOutside() const { return closing_ == 0 && commentDepth_ == 0; }

 private:
  void FollowInside(TextView line);

  char16_t closing_ = 0;  // what ends the open text or quoted name, or 0
  int commentDepth_ = 0;
};

// Whether the line holds nothing but this word, in any case, and blanks.
bool IsOnly(TextView line, TextView word);

// The script in these bytes: UTF-8, with or without a byte order mark. Raises a Failure that names
// the first line that is no UTF-8; a UTF-16 file is one.
Text ScriptFromBytes(std::string_view bytes);

// Splits at the lines that end a batch. Batches of blanks only are left out.
std::vector<ScriptBatch> SplitBatches(TextView script);

}  // namespace vellum250::sqltool
