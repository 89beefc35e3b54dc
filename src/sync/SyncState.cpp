#include "sync/SyncState.h"

#include <unordered_map>

namespace daywyn::sync {

void noteLocalChanges(SyncState& state, const std::vector<TaskItem>& before,
                      const std::vector<TaskItem>& after, Instant now) {
    std::unordered_map<Uuid, const TaskItem*> earlier;
    earlier.reserve(before.size());
    for (const auto& task : before) {
        earlier.emplace(task.id, &task);
    }
    const auto note = [&](const Uuid& id) {
        state.localChanges[id] = LocalChange{id, now};
    };
    for (const auto& task : after) {
        const auto found = earlier.find(task.id);
        if (found == earlier.end()) {
            note(task.id);
            continue;
        }
        if (!(*found->second == task)) {
            note(task.id);
        }
        earlier.erase(found);
    }
    for (const auto& [id, task] : earlier) {
        note(id);
    }
}

void forgetServer(SyncState& state) {
    state.account.reset();
    state.syncToken.clear();
    state.synced.clear();
    state.localChanges.clear();
    state.lastPassAt.reset();
    state.lastError.clear();
    state.lastSummary.clear();
}

} // namespace daywyn::sync
