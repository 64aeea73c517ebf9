// The command line.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace vellum250::sqltool {

extern const char kUsage[];

struct Source {
  enum class Kind { File, StandardInput, Statement };
  Kind kind = Kind::File;
  std::string text;  // the path, or the statement
};

struct Options {
  std::string connection;
  std::vector<Source> sources;  // in the order given; never empty
  bool create = false;
  bool json = false;
  bool timing = false;
  bool help = false;  // the rest does not matter then
};

// What is wrong with a command line, without a value that could hold a password.
struct UsageError {
  std::string message;
};

// Reads the arguments after the program's name. Raises a UsageError.
Options ReadOptions(std::span<const std::string> arguments);

}  // namespace vellum250::sqltool
