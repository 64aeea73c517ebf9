// bench_core FOLDER MEMORY_FOLDER [Google Benchmark's options]: measures the core on the material
// in FOLDER and leaves there what it produced, for comparison. The second folder holds a copy of
// the database that costs no disk.

#include <benchmark/benchmark.h>

#include <iostream>

#include "automation/failure.h"
#include "texts.h"

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: bench_core FOLDER MEMORY_FOLDER [options]\n";
    return 2;
  }
  const std::string folder = argv[1];
  const std::string memoryFolder = argv[2];
  argv[2] = argv[0];
  argc -= 2;
  argv += 2;
  benchmark::Initialize(&argc, argv);
  try {
    vellum250::RegisterHtmlEncode(folder);
    vellum250::RegisterBuildAddress(folder);
    vellum250::RegisterAmmendLocation(folder);
    vellum250::RegisterOdbc(folder);
    vellum250::RegisterDatabase(folder, memoryFolder);
    benchmark::RunSpecifiedBenchmarks();
  } catch (const vellum250::Failure& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
  return 0;
}
