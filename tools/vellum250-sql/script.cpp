#include "vellum250-sql/script.h"

#include <algorithm>

#include "automation/failure.h"

namespace vellum250::sqltool {
namespace {

constexpr TextView kBlanks = u" \t\r\n\v\f";

}  // namespace

bool IsOnly(TextView line, TextView word) {
  const size_t begin = line.find_first_not_of(kBlanks);
  if (begin == TextView::npos) return false;
  const size_t end = line.find_last_not_of(kBlanks) + 1;
  return EqualsIgnoreAsciiCase(line.substr(begin, end - begin), word);
}

bool BatchEnd::Follow(TextView line) {
  if (IsOutside() && IsOnly(line, u"GO")) return true;
  FollowInside(line);
  return false;
}

void BatchEnd::FollowInside(TextView line) {
  for (size_t i = 0; i < line.size(); ++i) {
    const TextView two = line.substr(i, 2);
    if (commentDepth_ > 0) {
      // Comments nest in this dialect.
      if (two == u"*/") {
        --commentDepth_, ++i;
      } else if (two == u"/*") {
        ++commentDepth_, ++i;
      }
    } else if (closing_ != 0) {
      if (line[i] != closing_) continue;
      // Doubled, it stands for itself.
      if (two.size() == 2 && two[1] == closing_) {
        ++i;
      } else {
        closing_ = 0;
      }
    } else if (two == u"--") {
      return;
    } else if (two == u"/*") {
      ++commentDepth_, ++i;
    } else if (line[i] == u'\'' || line[i] == u'"') {
      closing_ = line[i];
    } else if (line[i] == u'[') {
      closing_ = u']';
    }
  }
}

Text ScriptFromBytes(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  Text script = FromUtf8(bytes);
  // Bytes that are no UTF-8 do not come back as they were.
  const std::string again = ToUtf8(script);
  if (again != bytes) {
    const auto end = std::mismatch(bytes.begin(), bytes.end(), again.begin(), again.end()).first;
    const auto line = std::count(bytes.begin(), end, '\n') + 1;
    throw Failure(5, kLibrarySource, u"line " + NumberText(line) + u" is not UTF-8 text");
  }
  return script;
}

std::vector<ScriptBatch> SplitBatches(TextView script) {
  std::vector<ScriptBatch> batches;
  BatchEnd batchEnd;
  size_t batchBegin = 0;
  int32_t batchLine = 1;
  int32_t line = 1;
  const auto endBatch = [&](size_t end) {
    const TextView sql = script.substr(batchBegin, end - batchBegin);
    if (sql.find_first_not_of(kBlanks) != TextView::npos) batches.push_back({sql, batchLine});
  };
  for (size_t begin = 0; begin < script.size(); ++line) {
    const size_t end = std::min(script.find(u'\n', begin), script.size() - 1) + 1;
    const TextView text = script.substr(begin, end - begin);
    if (batchEnd.Follow(text)) {
      endBatch(begin);
      batchBegin = end;
      batchLine = line + 1;
    }
    begin = end;
  }
  endBatch(script.size());
  return batches;
}

}  // namespace vellum250::sqltool
