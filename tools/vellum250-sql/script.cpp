#include "vellum250-sql/script.h"

#include <algorithm>

#include "automation/failure.h"

namespace vellum250::sqltool {
namespace {

constexpr TextView kBlanks = u" \t\r\n\v\f";

TextView WithoutBlanks(TextView text) {
  const size_t begin = text.find_first_not_of(kBlanks);
  if (begin == TextView::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

// The number behind GO, 1 without one; nullopt when the line is none of GO's.
std::optional<int32_t> TimesOf(TextView line) {
  constexpr size_t kMostDigits = 9;
  line = WithoutBlanks(line);
  if (!EqualsIgnoreAsciiCase(line.substr(0, 2), u"GO")) return std::nullopt;
  line.remove_prefix(2);
  if (line.empty()) return 1;
  const TextView number = WithoutBlanks(line);
  if (number.size() == line.size() || number.size() > kMostDigits) return std::nullopt;
  int32_t times = 0;
  for (const char16_t c : number) {
    if (c < u'0' || c > u'9') return std::nullopt;
    times = times * 10 + (c - u'0');
  }
  return times;
}

}  // namespace

bool IsOnly(TextView line, TextView word) {
  return EqualsIgnoreAsciiCase(WithoutBlanks(line), word);
}

std::optional<int32_t> BatchEnd::Follow(TextView line) {
  const auto times = IsOutside() ? TimesOf(line) : std::nullopt;
  if (!times) FollowInside(line);
  return times;
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
  const auto endBatch = [&](size_t end, int32_t times) {
    const TextView sql = script.substr(batchBegin, end - batchBegin);
    if (!WithoutBlanks(sql).empty()) batches.push_back({sql, batchLine, times});
  };
  for (size_t begin = 0; begin < script.size(); ++line) {
    const size_t end = std::min(script.find(u'\n', begin), script.size() - 1) + 1;
    const TextView text = script.substr(begin, end - begin);
    if (const auto times = batchEnd.Follow(text)) {
      endBatch(begin, *times);
      batchBegin = end;
      batchLine = line + 1;
    }
    begin = end;
  }
  endBatch(script.size(), 1);
  return batches;
}

}  // namespace vellum250::sqltool
