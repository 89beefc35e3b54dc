#include "store/TaskDaySections.h"

#include <algorithm>

namespace daywyn {

namespace {

Instant planDate(const TaskItem& task) {
    return task.scheduledStart.value_or(task.scheduledDay.value_or(task.createdAt));
}

} // namespace

TaskDaySections makeTaskSections(const std::vector<TaskItem>& tasks, Instant at,
                                 const Calendar& calendar) {
    // Days are contiguous spans, so "same day", "earlier day" and "later day" are
    // comparisons with the displayed day's two boundaries; the calendar is asked
    // twice per call instead of once per task.
    const Instant dayStart = calendar.startOfDay(at);
    const Instant nextDayStart =
        calendar.startOfDay(calendar.addingDays(dayStart, 1).value_or(dayStart + 86400.0));

    TaskDaySections sections;
    for (const auto& task : tasks) {
        if (task.isComplete) {
            if (task.completedAt && *task.completedAt >= dayStart &&
                *task.completedAt < nextDayStart) {
                sections.completedToday.push_back(&task);
            }
            continue;
        }
        const Instant plan = planDate(task);
        if (plan >= nextDayStart && !task.isRunning()) {
            sections.upcoming.push_back(&task);
        } else if (task.priorityRank) {
            sections.priorities.push_back(&task);
        } else if (plan < dayStart && !task.isRunning()) {
            sections.carryOver.push_back(&task);
        } else {
            sections.today.push_back(&task);
        }
    }

    std::stable_sort(sections.priorities.begin(), sections.priorities.end(),
                     [](const TaskItem* a, const TaskItem* b) {
                         return a->priorityRank.value_or(4) < b->priorityRank.value_or(4);
                     });
    std::stable_sort(
        sections.upcoming.begin(), sections.upcoming.end(),
        [](const TaskItem* a, const TaskItem* b) { return planDate(*a) < planDate(*b); });
    return sections;
}

} // namespace daywyn
