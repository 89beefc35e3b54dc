// Encoding and decoding the records of a whole state, without any file I/O.
#include "model/RecordJson.h"

#include <benchmark/benchmark.h>

#include "BenchData.h"
#include "persistence/StateFileDecoding.h"

namespace {

using namespace daywyn;

void EncodeStatePretty(benchmark::State& s) {
    const auto state = bench::makeState(static_cast<int>(s.range(0)));
    std::size_t bytes = 0;
    for (auto _ : s) {
        auto text = encodeStateFile(state);
        bytes = text.size();
        benchmark::DoNotOptimize(text);
    }
    s.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(EncodeStatePretty)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond);

void DecodeState(benchmark::State& s) {
    const auto text = encodeStateFile(bench::makeState(static_cast<int>(s.range(0))));
    for (auto _ : s) {
        auto state = decodeStateFile(text);
        if (!state) {
            s.SkipWithError(state.error().c_str());
            break;
        }
        benchmark::DoNotOptimize(state);
    }
}
BENCHMARK(DecodeState)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
