// Planning and reconciling system notifications for a large task list, as the
// store's change listener does after every change.
#include <benchmark/benchmark.h>

#include "BenchData.h"
#include "reminders/DesiredNotifications.h"
#include "reminders/NotificationChanges.h"

namespace {

using namespace daywyn;

struct Scenario {
    std::vector<TaskItem> tasks;
    AppPreferences preferences;
    Instant now;
    Calendar calendar{"America/New_York", "en_US"};
};

// Every alert switched on over a realistic state; one estimated task is running.
Scenario makeScenario(int taskCount) {
    Scenario s;
    s.tasks = bench::makeState(taskCount, 0).tasks;
    s.now = Instant{1793000000.0 - 60.0};
    for (auto& task : s.tasks) {
        if (!task.isComplete && task.estimatedMinutes) {
            task.liveSessionStartedAt = s.now - 600.0;
            break;
        }
    }
    s.preferences.taskRemindersEnabled = true;
    s.preferences.budgetNotificationsEnabled = true;
    s.preferences.scheduledEndAlertsEnabled = true;
    s.preferences.unfinishedReminderCadence = UnfinishedReminderCadence::every30Minutes;
    s.preferences.activeHoursStart = 0;
    s.preferences.activeHoursEnd = 0;
    s.preferences.dailyReviewEnabled = true;
    return s;
}

std::vector<std::string> pendingAfterFirstRun(const Scenario& s) {
    auto changes =
        reconcileNotifications(desiredNotifications(s.tasks, s.preferences, s.now, s.calendar), {});
    std::vector<std::string> pending;
    for (auto& request : changes.toAdd) {
        pending.push_back(std::move(request.identifier));
    }
    pending.push_back("org.example.other-app.1");
    return pending;
}

// The usual case: a change after which almost everything is already pending.
void ReconcileSteadyState(benchmark::State& state) {
    const Scenario s = makeScenario(static_cast<int>(state.range(0)));
    const auto pending = pendingAfterFirstRun(s);
    std::size_t added = 0;
    for (auto _ : state) {
        auto changes = reconcileNotifications(
            desiredNotifications(s.tasks, s.preferences, s.now, s.calendar), pending);
        added = changes.toAdd.size();
        benchmark::DoNotOptimize(changes);
    }
    state.counters["pending"] = static_cast<double>(pending.size());
    state.counters["added"] = static_cast<double>(added);
}
BENCHMARK(ReconcileSteadyState)->Arg(5000)->Unit(benchmark::kMillisecond);

// The first reconciliation after start-up with an empty pending set.
void ReconcileFromEmpty(benchmark::State& state) {
    const Scenario s = makeScenario(static_cast<int>(state.range(0)));
    std::size_t added = 0;
    for (auto _ : state) {
        auto changes = reconcileNotifications(
            desiredNotifications(s.tasks, s.preferences, s.now, s.calendar), {});
        added = changes.toAdd.size();
        benchmark::DoNotOptimize(changes);
    }
    state.counters["added"] = static_cast<double>(added);
}
BENCHMARK(ReconcileFromEmpty)->Arg(5000)->Unit(benchmark::kMillisecond);

} // namespace
