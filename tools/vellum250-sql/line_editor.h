// Lines typed at a terminal, with editing and a history that outlives the process.
#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace vellum250::sqltool {

class LineEditor {
 public:
  // `in` is a terminal. Lines are remembered in the file `historyPath`, readable by its owner only;
  // "" for none. A file that cannot be read or written is done without.
  LineEditor(std::FILE* in, std::FILE* out, std::FILE* errors, std::string historyPath);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  enum class Event { Line, Cancelled, End };
  // Shows the prompt and reads a line, UTF-8, into `line` without its line end. Cancelled by
  // Ctrl-C; End after Ctrl-D in an empty line, or when the terminal has gone.
  Event Read(const std::string& prompt, std::string& line);

  // Keeps a line for this run and later ones, unless it speaks of a password.
  void Remember(const std::string& line);

 private:
  struct Library;
  std::unique_ptr<Library> library_;
};

}  // namespace vellum250::sqltool
