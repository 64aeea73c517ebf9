// What the benchmarks exchange with benchmarks/run: UTF-8 files in one folder.
#pragma once

#include <fstream>
#include <sstream>
#include <string>

#include "automation/text.h"

namespace vellum250 {

inline Text ReadText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return FromUtf8(bytes.str());
}

inline void WriteText(const std::string& path, TextView text) {
  std::ofstream(path, std::ios::binary) << ToUtf8(text);
}

void RegisterHtmlEncode(const std::string& folder);
void RegisterBuildAddress(const std::string& folder);
void RegisterAmmendLocation(const std::string& folder);
void RegisterOdbc(const std::string& folder);
// `memoryFolder` lies in memory, where the machine has such a place.
void RegisterDatabase(const std::string& folder, const std::string& memoryFolder);

}  // namespace vellum250
