#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Instant.h"
#include "base/Result.h"
#include "base/Uuid.h"
#include "model/AppPreferences.h"
#include "model/PersistedState.h"
#include "model/TaskItem.h"

namespace daywyn {

// One task of the earlier single-timer file format (any version below 2): the time
// worked before the running stretch is one number, and the timer's start is startedAt.
struct LegacyTaskItem {
    Uuid id;
    std::string title;
    long long estimatedMinutes = 0;
    std::optional<Instant> dueDate;
    double elapsedBeforeCurrentRun = 0.0;
    std::optional<Instant> startedAt;
    bool isComplete = false;
    BudgetAlertSet scheduledBudgetAlerts;
    std::optional<Instant> scheduledDueDate;
    bool operator==(const LegacyTaskItem&) const = default;
};

// The earlier file format: tasks and preferences, no reports.
struct LegacyPersistedState {
    long long version = 1;
    std::vector<LegacyTaskItem> tasks;
    AppPreferences preferences;
    bool operator==(const LegacyPersistedState&) const = default;

    // Decodes the format's list of tasks (a JSON array, ISO dates), appending to `out`;
    // every required member must be present and of the right type, or the whole list
    // fails.
    static Status decodeTasks(std::string_view json, std::vector<LegacyTaskItem>& out);

    // The same data in the current format at instant t: tasks created (and, when done,
    // completed) at t, the earlier work as one session ending where the running timer
    // began (or at t), a running timer still running, no reports.
    PersistedState migrated(Instant t) const;
};

} // namespace daywyn
