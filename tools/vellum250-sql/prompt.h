// The interactive prompt: batches typed line by line, run at each GO.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include "vellum250-sql/script.h"

namespace vellum250::sqltool {

// Reads batches from the terminal `in` and hands each to `run`, until "exit", "quit" or Ctrl-D.
// Ctrl-C gives up the batch typed so far. The lines are kept in the user's history.
void RunPrompt(std::FILE* in, std::FILE* out, std::FILE* errors,
               const std::function<void(const ScriptBatch&)>& run);

}  // namespace vellum250::sqltool
