// The core side of a CalDAV sync pass over 2,000 tasks against an in-memory task list:
// a pass with nothing changed on either side (the periodic case, one request), and the
// first upload of every task. The network is not in these figures.
#include <benchmark/benchmark.h>

#include "BenchData.h"
#include "support/FakeCalDavCollection.h"
#include "sync/SyncPass.h"
#include "sync/ical/IcalTaskCoding.h"

namespace {

using namespace daywyn;

const Calendar& calendar() {
    static const Calendar newYork("America/New_York");
    return newYork;
}

Instant now() {
    return Instant{1'773'000'000.0};
}

void BM_SyncPassWithNothingChanged(benchmark::State& state) {
    const auto tasks = bench::makeState(static_cast<int>(state.range(0)), 0).tasks;
    const sync::IcalTaskCoding coding;
    test::FakeCalDavCollection server;
    auto first = sync::runSyncPass(server, coding, tasks, {}, now(), calendar());
    auto settled = sync::runSyncPass(server, coding, first.tasks, first.state, now(), calendar());
    server.resetCounts();
    for (auto _ : state) {
        auto outcome =
            sync::runSyncPass(server, coding, settled.tasks, settled.state, now(), calendar());
        benchmark::DoNotOptimize(outcome.tasksChanged);
    }
    state.counters["requests_per_pass"] =
        static_cast<double>(server.requests()) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_SyncPassWithNothingChanged)->Arg(2000)->Unit(benchmark::kMillisecond);

void BM_SyncFirstUpload(benchmark::State& state) {
    const auto tasks = bench::makeState(static_cast<int>(state.range(0)), 0).tasks;
    const sync::IcalTaskCoding coding;
    for (auto _ : state) {
        state.PauseTiming();
        test::FakeCalDavCollection server;
        state.ResumeTiming();
        auto outcome = sync::runSyncPass(server, coding, tasks, {}, now(), calendar());
        benchmark::DoNotOptimize(outcome.summary.pushed);
    }
}
BENCHMARK(BM_SyncFirstUpload)->Arg(2000)->Unit(benchmark::kMillisecond);

} // namespace
