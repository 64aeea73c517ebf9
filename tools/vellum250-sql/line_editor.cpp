#include "vellum250-sql/line_editor.h"

#include <histedit.h>
#include <langinfo.h>

#include <cctype>
#include <clocale>
#include <cstring>
#include <string_view>

#include "automation/text.h"
#include "database/connection_string.h"

namespace vellum250::sqltool {
namespace {

constexpr int kMostLines = 1000;

// The library converts by the locale.
void UseUtf8() {
  std::setlocale(LC_CTYPE, "");
  if (std::string_view(nl_langinfo(CODESET)) != "UTF-8") std::setlocale(LC_CTYPE, "C.UTF-8");
}

}  // namespace

struct LineEditor::Library {
  std::unique_ptr<EditLine, void (*)(EditLine*)> editor{nullptr, &el_end};
  std::unique_ptr<History, void (*)(History*)> history{history_init(), &history_end};
  std::string historyPath;
  std::string prompt;
  bool cancelled = false;

  static Library& Of(EditLine* editor) {
    void* library = nullptr;
    el_get(editor, EL_CLIENTDATA, &library);
    return *static_cast<Library*>(library);
  }
  static char* Prompt(EditLine* editor) { return Of(editor).prompt.data(); }
  static unsigned char Cancel(EditLine* editor, int) {
    Of(editor).cancelled = true;
    return CC_NEWLINE;
  }
};

LineEditor::LineEditor(std::FILE* in, std::FILE* out, std::FILE* errors, std::string historyPath)
    : library_(std::make_unique<Library>()) {
  UseUtf8();
  library_->historyPath = std::move(historyPath);
  HistEvent event;
  history(library_->history.get(), &event, H_SETSIZE, kMostLines);
  history(library_->history.get(), &event, H_SETUNIQUE, 1);
  if (!library_->historyPath.empty()) {
    history(library_->history.get(), &event, H_LOAD, library_->historyPath.c_str());
  }
  library_->editor.reset(el_init("vellum250-sql", in, out, errors));
  EditLine* editor = library_->editor.get();
  if (editor == nullptr) return;
  el_set(editor, EL_CLIENTDATA, library_.get());
  el_set(editor, EL_PROMPT, &Library::Prompt);
  el_set(editor, EL_EDITOR, "emacs");
  el_set(editor, EL_HIST, history, library_->history.get());
  // Ctrl-C is a key while a line is edited, a signal as ever while a batch runs.
  el_set(editor, EL_SETTY, "-d", "-isig", nullptr);
  // The narrow call keeps copies of the texts that nothing frees.
  el_wset(editor, EL_ADDFN, L"cancel-line", L"Give up what was typed", &Library::Cancel);
  el_set(editor, EL_BIND, "^C", "cancel-line", nullptr);
}

LineEditor::~LineEditor() = default;

LineEditor::Event LineEditor::Read(const std::string& prompt, std::string& line) {
  if (!library_->editor) return Event::End;
  library_->prompt = prompt;
  library_->cancelled = false;
  int length = 0;
  const char* text = el_gets(library_->editor.get(), &length);
  if (library_->cancelled) return Event::Cancelled;
  if (text == nullptr || length <= 0) return Event::End;
  line.assign(text, std::strlen(text));
  while (line.ends_with('\n') || line.ends_with('\r')) line.pop_back();
  return Event::Line;
}

void LineEditor::Remember(const std::string& line) {
  if (database::IsPasswordKey(FromUtf8(line))) return;
  if (line.find_first_not_of(" \t") == std::string::npos) return;
  HistEvent event;
  history(library_->history.get(), &event, H_ENTER, line.c_str());
  // At once: a terminal that is closed, or Ctrl-C in a running batch, ends the process.
  if (library_->historyPath.empty()) return;
  history(library_->history.get(), &event, H_SAVE, library_->historyPath.c_str());
}

}  // namespace vellum250::sqltool
