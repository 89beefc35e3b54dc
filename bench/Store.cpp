// The drawer's sections and one full store change (find, complete, save, notify) over
// large task lists. The repository only counts saves, so the store's own work is
// measured, not the file.
#include <benchmark/benchmark.h>

#include "BenchData.h"
#include "store/TodayTaskStore.h"

namespace {

using namespace daywyn;

class CountingRepository : public TaskRepository {
public:
    explicit CountingRepository(PersistedState state)
        : state_(std::move(state)) {}
    Result<std::optional<PersistedState>> load() override {
        return std::optional<PersistedState>(std::move(state_));
    }
    Status save(const PersistedStateView& state) override {
        ++saves;
        benchmark::DoNotOptimize(state.tasks.data());
        return {};
    }
    long long saves = 0;

private:
    PersistedState state_;
};

const Instant kNow{1793000000.0 + 4 * 3600.0}; // inside BenchData's plan window

void TaskSections(benchmark::State& s) {
    const Calendar calendar("America/New_York", "en_US");
    TodayTaskStore store(
        std::make_unique<CountingRepository>(bench::makeState(static_cast<int>(s.range(0)))), kNow,
        calendar);
    std::size_t shown = 0;
    for (auto _ : s) {
        auto sections = store.taskSections(kNow, calendar);
        shown = sections.priorities.size() + sections.today.size() + sections.carryOver.size() +
                sections.upcoming.size() + sections.completedToday.size();
        benchmark::DoNotOptimize(sections);
    }
    s.counters["shown"] = static_cast<double>(shown);
}
BENCHMARK(TaskSections)->Arg(5000)->Arg(20000)->Unit(benchmark::kMicrosecond);

void ToggleCompleteCommit(benchmark::State& s) {
    const Calendar calendar("America/New_York", "en_US");
    const int count = static_cast<int>(s.range(0));
    TodayTaskStore store(std::make_unique<CountingRepository>(bench::makeState(count)), kNow,
                         calendar);
    std::size_t notified = 0;
    store.setOnMeaningfulChange([&](const auto& tasks, const auto&) { notified += tasks.size(); });
    // A task near the end of the list, so the lookup walks most of it.
    const Uuid id = store.tasks()[static_cast<std::size_t>(count - 3)].id;
    Instant at = kNow;
    for (auto _ : s) {
        at += 1.0;
        store.toggleComplete(id, at, calendar);
    }
    benchmark::DoNotOptimize(notified);
}
BENCHMARK(ToggleCompleteCommit)->Arg(5000)->Arg(20000)->Unit(benchmark::kMicrosecond);

} // namespace
