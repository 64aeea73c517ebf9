#include "vellum250-sql/prompt.h"

#include <cstdlib>

#include "automation/failure.h"
#include "vellum250-sql/line_editor.h"

namespace vellum250::sqltool {
namespace {

// A file in the user's home; "" when there is no home.
std::string HistoryPath() {
  const char* home = std::getenv("HOME");
  return home != nullptr && *home != '\0' ? std::string(home) + "/.vellum250_sql_history" : "";
}

}  // namespace

void RunPrompt(std::FILE* in, std::FILE* out, std::FILE* errors,
               const std::function<void(const ScriptBatch&)>& run) {
  std::fputs("GO on a line of its own runs the lines before it; exit or Ctrl-D ends.\n", out);
  LineEditor editor(in, out, errors, HistoryPath());
  Text batch;
  int32_t lines = 0;
  BatchEnd end;
  const auto clear = [&] {
    batch.clear();
    lines = 0;
    end = BatchEnd();
  };
  for (std::string line;;) {
    std::fflush(out);
    const auto event = editor.Read(std::to_string(lines + 1) + "> ", line);
    if (event != LineEditor::Event::Line) std::fputc('\n', out);
    if (event == LineEditor::Event::End) break;
    if (event == LineEditor::Event::Cancelled) {
      clear();
      continue;
    }
    const Text text = FromUtf8(line);
    if (end.IsOutside() && (IsOnly(text, u"exit") || IsOnly(text, u"quit"))) break;
    const auto times = end.Follow(text);
    if (!times) {
      editor.Remember(line);
      batch.append(text).append(u"\n");
      ++lines;
      continue;
    }
    if (lines > 0) run({batch, 1, *times});
    clear();
  }
  if (lines > 0) std::fputs("The lines since the last GO were not run.\n", errors);
}

}  // namespace vellum250::sqltool
