#pragma once

#include <vector>

#include "model/AppPreferences.h"
#include "model/DailyReport.h"
#include "model/TaskItem.h"

namespace daywyn {

// Everything the state file holds: the format version, every task in the store's
// order, the preferences and the saved daily reports.
struct PersistedState {
    static constexpr long long kCurrentVersion = 2;

    long long version = kCurrentVersion;
    std::vector<TaskItem> tasks;
    AppPreferences preferences;
    std::vector<DailyReport> reports;

    bool operator==(const PersistedState&) const = default;
};

// A state to be written, borrowed from its owner so that saving never copies the
// task list.
struct PersistedStateView {
    long long version = PersistedState::kCurrentVersion;
    const std::vector<TaskItem>& tasks;
    const AppPreferences& preferences;
    const std::vector<DailyReport>& reports;

    PersistedStateView(const std::vector<TaskItem>& t, const AppPreferences& p,
                       const std::vector<DailyReport>& r)
        : tasks(t)
        , preferences(p)
        , reports(r) {}
    PersistedStateView(const PersistedState& state)
        : version(state.version)
        , tasks(state.tasks)
        , preferences(state.preferences)
        , reports(state.reports) {}
};

} // namespace daywyn
