#pragma once

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Instant.h"
#include "model/TaskItem.h"
#include "sync/SyncState.h"

namespace daywyn::sync {

// The fields that record what this machine has scheduled or delivered itself: the
// notification of a task's reminder, its time-budget alerts, the alert at its end. Each
// machine keeps its own: they are never sent nor taken from the server, a change to them
// alone is nothing to sync, and comparisons and merges here leave them out. The
// reminder itself (`reminderDate`) is the user's and syncs.
inline constexpr std::array<std::string_view, 3> kMachineLocalFields = {
    "notifiedOverdueEnd", "scheduledBudgetAlerts", "scheduledReminderDate"};

constexpr bool isMachineLocalField(std::string_view field) {
    for (const std::string_view local : kMachineLocalFields) {
        if (local == field) {
            return true;
        }
    }
    return false;
}

// `task` with this machine's own values of the machine-local fields, taken from `here`
// (their defaults when the task is new here).
TaskItem withMachineLocalFieldsOf(TaskItem task, const TaskItem* here);

// One field edited differently on both sides: which value was kept, which set aside.
struct FieldConflict {
    std::string field;
    std::string keptValue;
    std::string setAsideValue;
    ConflictSide lost = ConflictSide::local;
    bool operator==(const FieldConflict&) const = default;
};

// When one side's edits were made: each field at its own time where that is known,
// every other field at `fallback` (a whole task's change time, LAST-MODIFIED).
struct EditTimes {
    Instant fallback;
    FieldTimes fields;

    EditTimes(Instant at = {}, FieldTimes times = {}) // NOLINT: one time for every field
        : fallback(at)
        , fields(std::move(times)) {}
    Instant of(std::string_view field) const;
};

struct MergedTask {
    TaskItem task;
    std::vector<FieldConflict> conflicts;
    // For each field whose merged value differs from the base (every field without a
    // base): the time of the edit that value comes from.
    FieldTimes fieldTimes;
};

// Three-way merge of one task, field by field: a field changed on one side only takes
// that side's value; changed alike on both, that value; changed differently on both,
// the value of that field's later edit, and the other is set aside in a conflict.
// Sessions and checklist items are merged item by item (by id), so work recorded and
// items added on both machines are all kept. Without a base (the task was created on
// both sides) every differing field is a conflict. Times compare at whole seconds, as
// the state file keeps them. Equal edit times count the remote edit as the later.
MergedTask mergeTask(const TaskItem* base, const TaskItem& local, const EditTimes& localEdits,
                     const TaskItem& remote, const EditTimes& remoteEdits);

// The names of the fields whose values differ at whole seconds, in the record's order;
// machine-local fields are never named.
std::vector<std::string_view> differingFields(const TaskItem& a, const TaskItem& b);

// Whether two tasks are equal once their times are cut to whole seconds, whatever their
// machine-local fields hold.
bool sameAtWholeSeconds(const TaskItem& a, const TaskItem& b);
// The task with every time cut to whole seconds (towards the past).
TaskItem atWholeSeconds(TaskItem task);

} // namespace daywyn::sync
