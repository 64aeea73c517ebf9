// A script's text and its run in the engine of its language.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/globals.h"

namespace vellum250::host {

struct Script {
  std::filesystem::path file;
  const wchar_t* engine;  // "VBScript" or "JScript"
  Text source;
  std::vector<Text> blocks;  // of an .asp page: its plain markup, which the source writes by number
  std::vector<size_t> lines;  // of an .asp page: where each line of the source stands in the file
};

// Reads UTF-8, with or without its mark. The extension says the language: .vbs, .js, or .asp for
// a page with VBScript in its markup. Raises std::runtime_error for another and when the file
// cannot be read.
Script ReadScript(const std::filesystem::path& file);

// Whether it ran to its end; if not, the error stream tells file, line, number, source and text.
bool Run(const Script& script, HostObject& globals);

}  // namespace vellum250::host
