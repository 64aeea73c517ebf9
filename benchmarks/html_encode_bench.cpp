// HtmlEncode on the texts that benchmarks/run writes, against a plain copy of the same bytes.

#include <benchmark/benchmark.h>

#include <cstring>
#include <map>

#include "runtime/html_encode.h"
#include "texts.h"

namespace vellum250 {
namespace {

// Both sides read the same text and write into the same buffer, large enough already: where in
// memory these lie makes half of a copy's time.
struct Buffers {
  Text text;
  Text out;
};

void Encode(benchmark::State& state, Buffers* buffers) {
  for (auto _ : state) {
    buffers->out.clear();
    AppendHtmlEncoded(buffers->out, buffers->text);
    benchmark::DoNotOptimize(buffers->out.data());
    benchmark::ClobberMemory();
  }
}

void PlainCopy(benchmark::State& state, Buffers* buffers) {
  for (auto _ : state) {
    std::memcpy(buffers->out.data(), buffers->text.data(), buffers->text.size() * sizeof(char16_t));
    benchmark::DoNotOptimize(buffers->out.data());
    benchmark::ClobberMemory();
  }
}

}  // namespace

void RegisterHtmlEncode(const std::string& folder) {
  static std::map<std::string, Buffers> all;
  for (const std::string percent : {"0", "5", "50"}) {
    Buffers& buffers = all[percent];
    buffers.text = ReadText(folder + "/" + percent + ".txt");
    buffers.out.reserve(buffers.text.size() * 8);
    WriteText(folder + "/" + percent + ".encoded", HtmlEncode(buffers.text));
    benchmark::RegisterBenchmark(("HtmlEncode/" + percent).c_str(), Encode, &buffers);
    benchmark::RegisterBenchmark(("memcpy/" + percent).c_str(), PlainCopy, &buffers);
  }
}

}  // namespace vellum250
