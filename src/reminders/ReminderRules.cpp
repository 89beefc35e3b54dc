#include "reminders/ReminderRules.h"

#include "store/TaskDaySections.h"

namespace daywyn {

bool isWithinActiveHours(int hour, int start, int end) {
    if (start == end) {
        return true;
    }
    if (start < end) {
        return hour >= start && hour < end;
    }
    return hour >= start || hour < end;
}

std::vector<const TaskItem*> unfinishedTasksOfDay(const std::vector<TaskItem>& tasks, Instant at,
                                                  const Calendar& calendar) {
    const TaskDaySections sections = makeTaskSections(tasks, at, calendar);
    std::vector<const TaskItem*> open;
    open.reserve(sections.priorities.size() + sections.today.size() + sections.carryOver.size());
    open.insert(open.end(), sections.priorities.begin(), sections.priorities.end());
    open.insert(open.end(), sections.today.begin(), sections.today.end());
    open.insert(open.end(), sections.carryOver.begin(), sections.carryOver.end());
    return open;
}

} // namespace daywyn
