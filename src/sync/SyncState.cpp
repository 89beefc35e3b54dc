#include "sync/SyncState.h"

#include <algorithm>
#include <unordered_map>

#include "sync/TaskMerge.h"

namespace daywyn::sync {

Instant LocalChange::fieldChangedAt(std::string_view field) const {
    const auto found = fields.find(field);
    return found == fields.end() ? changedAt : found->second;
}

Instant LocalChange::latest() const {
    Instant last = changedAt;
    for (const auto& [field, at] : fields) {
        last = std::max(last, at);
    }
    return last;
}

bool noteLocalChanges(SyncState& state, const std::vector<TaskItem>& before,
                      const std::vector<TaskItem>& after, Instant now) {
    std::unordered_map<Uuid, const TaskItem*> earlier;
    earlier.reserve(before.size());
    for (const auto& task : before) {
        earlier.emplace(task.id, &task);
    }
    // A task noted before keeps the time it was first noted at: the fields edited since
    // carry times of their own.
    bool noted = false;
    const auto note = [&](const Uuid& id) -> LocalChange& {
        noted = true;
        const auto [change, added] = state.localChanges.try_emplace(id, LocalChange{id, now, {}});
        return change->second;
    };
    for (const auto& task : after) {
        const auto found = earlier.find(task.id);
        if (found == earlier.end()) {
            note(task.id);
            continue;
        }
        // A change to this machine's reminder bookkeeping alone is nothing to send.
        if (!(*found->second == task)) {
            const auto fields = differingFields(*found->second, task);
            if (!fields.empty()) {
                LocalChange& change = note(task.id);
                for (const std::string_view field : fields) {
                    change.fields.insert_or_assign(std::string(field), now);
                }
            }
        }
        earlier.erase(found);
    }
    for (const auto& [id, task] : earlier) {
        note(id).changedAt = now;
    }
    return noted;
}

void forgetServer(SyncState& state) {
    state.account.reset();
    state.syncToken.clear();
    state.synced.clear();
    state.localChanges.clear();
    state.skipped.clear();
    state.lastPassAt.reset();
    state.lastError.clear();
    state.lastSummary.clear();
}

} // namespace daywyn::sync
