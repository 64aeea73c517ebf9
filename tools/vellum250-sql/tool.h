// The tool without its process.
#pragma once

#include <cstdio>
#include <span>
#include <string>

namespace vellum250::sqltool {

inline constexpr int kSuccess = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;

// Runs the tool with the arguments after its name and gives its exit code. Reads `in` when no
// script is given or one is "-"; rows go to `out`, failures and times to `errors`.
int RunTool(std::span<const std::string> arguments, std::FILE* in, std::FILE* out,
            std::FILE* errors);

}  // namespace vellum250::sqltool
