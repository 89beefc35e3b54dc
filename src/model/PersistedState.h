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

} // namespace daywyn
