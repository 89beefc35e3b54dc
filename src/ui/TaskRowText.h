#pragma once

#include <string>

#include "base/Instant.h"
#include "model/TaskItem.h"

namespace daywyn {

// The short texts a task row shows beside its title, worked out without any UI so the
// same words appear in the drawer, the tray and tests.
struct TaskRowText {
    // Finished sessions plus the running span up to `now`, in seconds.
    static double recordedSeconds(const TaskItem& task, Instant now);

    // "2/5" done of all checklist items; empty when the task has no items.
    static std::string checklistProgress(const TaskItem& task);

    // Recorded time against the estimate, in whole minutes: "18 / 25 min", or "18 min"
    // without an estimate; empty when nothing is recorded and there is no estimate.
    static std::string timeSummary(const TaskItem& task, Instant now);

    // True when recorded time has passed the estimate (the row turns coral).
    static bool isOverEstimate(const TaskItem& task, Instant now);

    // A running timer as minutes and seconds ("4:05", "72:00"), never negative.
    static std::string clockText(double seconds);

    // A length of time read as one, never as a time of day: "under 1 min", "18 min",
    // "1 h 11 min", "2 h" (whole minutes, rounded down).
    static std::string durationText(double seconds);
};

} // namespace daywyn
