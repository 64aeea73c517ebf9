// HtmlEncode on the texts that benchmarks/run writes, against a plain copy of the same bytes.

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "runtime/html_encode.h"
#include "texts.h"

namespace vellum250 {
namespace {

// Both sides write into a buffer of their own that is large enough already.
void Encode(benchmark::State& state, const Text& text) {
  Text out;
  out.reserve(text.size() * 8);
  for (auto _ : state) {
    out.clear();
    AppendHtmlEncoded(out, text);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
}

void PlainCopy(benchmark::State& state, const Text& text) {
  std::vector<char16_t> out(text.size());
  for (auto _ : state) {
    std::memcpy(out.data(), text.data(), text.size() * sizeof(char16_t));
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
}

}  // namespace

void RegisterHtmlEncode(const std::string& folder) {
  for (const std::string percent : {"0", "5", "50"}) {
    const Text text = ReadText(folder + "/" + percent + ".txt");
    WriteText(folder + "/" + percent + ".encoded", HtmlEncode(text));
    benchmark::RegisterBenchmark(("HtmlEncode/" + percent).c_str(), Encode, text);
    benchmark::RegisterBenchmark(("memcpy/" + percent).c_str(), PlainCopy, text);
  }
}

}  // namespace vellum250
