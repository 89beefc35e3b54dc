#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Instant.h"
#include "base/Uuid.h"

namespace daywyn {

// One sub-item of a task's checklist.
struct ChecklistItem {
    Uuid id;
    std::string title;
    bool isComplete = false;
    bool operator==(const ChecklistItem&) const = default;
};

// A finished span of work on a task. The running span is not a session but the
// task's liveSessionStartedAt.
struct WorkSession {
    Uuid id;
    Instant start;
    Instant end;
    bool operator==(const WorkSession&) const = default;
};

// How a task repeats; raw values equal the case names.
enum class TaskRecurrence { none, daily, weekdays, weekly, monthly };

inline constexpr TaskRecurrence kAllRecurrences[] = {
    TaskRecurrence::none, TaskRecurrence::daily, TaskRecurrence::weekdays, TaskRecurrence::weekly,
    TaskRecurrence::monthly};

std::string_view rawValue(TaskRecurrence recurrence);
std::optional<TaskRecurrence> taskRecurrenceFromRaw(std::string_view raw);

// Time-budget alerts already scheduled for a task's current estimate.
enum class BudgetAlertKind { approaching, exceeded };

std::string_view rawValue(BudgetAlertKind kind);
std::optional<BudgetAlertKind> budgetAlertKindFromRaw(std::string_view raw);

// A set of BudgetAlertKind, compared as a set.
class BudgetAlertSet {
public:
    BudgetAlertSet() = default;
    BudgetAlertSet(std::initializer_list<BudgetAlertKind> kinds) {
        for (auto kind : kinds) {
            insert(kind);
        }
    }
    bool contains(BudgetAlertKind kind) const { return (bits_ & bit(kind)) != 0; }
    void insert(BudgetAlertKind kind) { bits_ = static_cast<std::uint8_t>(bits_ | bit(kind)); }
    void erase(BudgetAlertKind kind) { bits_ = static_cast<std::uint8_t>(bits_ & ~bit(kind)); }
    void clear() { bits_ = 0; }
    bool empty() const { return bits_ == 0; }
    bool operator==(const BudgetAlertSet&) const = default;

private:
    static std::uint8_t bit(BudgetAlertKind kind) {
        return static_cast<std::uint8_t>(1u << static_cast<unsigned>(kind));
    }
    std::uint8_t bits_ = 0;
};

// A task: the value every part of the planner works on. A task runs exactly while
// liveSessionStartedAt is present.
struct TaskItem {
    Uuid id;
    std::string title;
    std::optional<long long> estimatedMinutes;
    std::optional<Instant> reminderDate;
    std::optional<Instant> scheduledStart;
    // The planned day, stored as the start of that day (used when there is no start).
    std::optional<Instant> scheduledDay;
    std::optional<Instant> scheduledEnd;
    Instant createdAt;
    std::optional<Instant> completedAt;
    bool isComplete = false;
    std::vector<WorkSession> sessions;
    std::optional<Instant> liveSessionStartedAt;
    BudgetAlertSet scheduledBudgetAlerts;
    std::optional<Instant> scheduledReminderDate;
    std::optional<Instant> notifiedOverdueEnd;
    // Absent and `none` both mean the task does not repeat.
    std::optional<TaskRecurrence> recurrence;
    std::optional<bool> nextOccurrenceCreated;
    // Absent and empty are distinct and both kept.
    std::optional<std::vector<ChecklistItem>> checklist;
    // 1, 2 or 3 while pinned as a priority.
    std::optional<long long> priorityRank;

    bool operator==(const TaskItem&) const = default;

    bool isRunning() const { return liveSessionStartedAt.has_value(); }

    // Seconds of the finished sessions; a session ending before its start adds 0.
    // The running span is not included.
    double recordedDuration() const;
};

} // namespace daywyn
