#pragma once

#include <algorithm>
#include <ostream>
#include <vector>

#include "model/RecordJson.h"
#include "support/FakeCalDavCollection.h"
#include "support/TaskBuilder.h"
#include "sync/SyncPass.h"
#include "sync/ical/IcalTaskCoding.h"

namespace daywyn {

// Tasks in failure messages as their JSON.
inline void PrintTo(const TaskItem& task, std::ostream* out) {
    *out << encodeTaskLine(task);
}

} // namespace daywyn

namespace daywyn::test {

// Tasks in id order: the same tasks on two machines may stand in different orders.
inline std::vector<TaskItem> byId(std::vector<TaskItem> tasks) {
    std::sort(tasks.begin(), tasks.end(),
              [](const TaskItem& a, const TaskItem& b) { return a.id < b.id; });
    return tasks;
}

// One machine's tasks and sync state. Edits go through edit(), which records their
// time as the app does for every store change.
struct Replica {
    std::vector<TaskItem> tasks;
    sync::SyncState state;

    void edit(Instant now, const std::function<void(std::vector<TaskItem>&)>& change) {
        const std::vector<TaskItem> before = tasks;
        change(tasks);
        sync::noteLocalChanges(state, before, tasks, now);
    }
    TaskItem* find(const Uuid& id) {
        for (auto& task : tasks) {
            if (task.id == id) {
                return &task;
            }
        }
        return nullptr;
    }

    // One pass: everything it returns is kept, as the app keeps it.
    sync::SyncOutcome sync(FakeCalDavCollection& server, Instant now,
                           const Calendar& calendar = newYork()) {
        static const sync::IcalTaskCoding coding;
        auto outcome = sync::runSyncPass(server, coding, tasks, state, now, calendar);
        tasks = outcome.tasks;
        state = outcome.state;
        return outcome;
    }
};

} // namespace daywyn::test
