#include "store/FirstRunTasks.h"

namespace daywyn {

namespace {

struct SampleTask {
    const char* title;
    long long estimatedMinutes; // 0: no estimate
    const char* checklist[3];   // null-terminated when shorter
};

// The program's string table for the first run; the texts may be reworded freely.
constexpr SampleTask kSamples[] = {
    {"Pin this task as one of today's three priorities", 0, {}},
    {"Start the timer on this task, then stop it to record the time", 25, {}},
    {"Press Ctrl+Alt+Space in any app to quick add a task", 0, {}},
    {"Break a bigger task into a checklist",
     0,
     {"Open this task in the editor", "Add a step of your own", "Tick a step off here"}},
};

} // namespace

std::vector<TaskItem> makeFirstRunTasks(Instant now, const Calendar& calendar) {
    const Instant today = calendar.startOfDay(now);
    std::vector<TaskItem> tasks;
    tasks.reserve(std::size(kSamples));
    for (const auto& sample : kSamples) {
        TaskItem task;
        task.id = Uuid::random();
        task.title = sample.title;
        if (sample.estimatedMinutes > 0) {
            task.estimatedMinutes = sample.estimatedMinutes;
        }
        task.scheduledDay = today;
        task.createdAt = now;
        task.checklist.emplace();
        for (const char* step : sample.checklist) {
            if (step) {
                task.checklist->push_back(ChecklistItem{Uuid::random(), step, false});
            }
        }
        tasks.push_back(std::move(task));
    }
    return tasks;
}

} // namespace daywyn
