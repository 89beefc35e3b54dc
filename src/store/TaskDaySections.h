#pragma once

#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/TaskItem.h"

namespace daywyn {

// The drawer's section identifiers.
enum class TaskSectionKind { priority, carryOver, today, upcoming, completed };

// The tasks of one displayed day in the drawer's five sections, each in display
// order. The entries point into the store's task list and stay valid until the
// store's next change.
struct TaskDaySections {
    std::vector<const TaskItem*> priorities;
    std::vector<const TaskItem*> today;
    std::vector<const TaskItem*> carryOver;
    std::vector<const TaskItem*> upcoming;
    std::vector<const TaskItem*> completedToday;
};

// Groups the tasks into the sections of the day that contains `at`, in one pass.
// TodayTaskStore::taskSections is this over the store's tasks; rules that look at a
// task list of their own (reminders, reports) call it directly.
TaskDaySections makeTaskSections(const std::vector<TaskItem>& tasks, Instant at,
                                 const Calendar& calendar);

} // namespace daywyn
