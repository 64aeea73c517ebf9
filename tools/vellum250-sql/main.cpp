#include <cstdio>
#include <string>
#include <vector>

#include "vellum250-sql/tool.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  return vellum250::sqltool::RunTool(arguments, stdin, stdout, stderr);
}
