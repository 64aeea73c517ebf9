// bench_core FOLDER [Google Benchmark's options]: measures the core on the material in FOLDER and
// leaves there what it produced, for comparison.

#include <benchmark/benchmark.h>

#include <iostream>

#include "automation/failure.h"
#include "texts.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: bench_core FOLDER [options]\n";
    return 2;
  }
  const std::string folder = argv[1];
  argv[1] = argv[0];
  benchmark::Initialize(&--argc, ++argv);
  try {
    vellum250::RegisterHtmlEncode(folder);
    vellum250::RegisterBuildAddress(folder);
    vellum250::RegisterAmmendLocation(folder);
    vellum250::RegisterOdbc(folder);
    benchmark::RunSpecifiedBenchmarks();
  } catch (const vellum250::Failure& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
  return 0;
}
