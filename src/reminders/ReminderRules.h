#pragma once

#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/TaskItem.h"

namespace daywyn {

// Whether an hour of the day (0-23) lies in the active hours from start (inclusive)
// to end (exclusive). Equal bounds mean all day; a start after the end spans
// midnight (22 to 6 allows 22:00-23:59 and 00:00-05:59).
bool isWithinActiveHours(int hour, int start, int end);

// The open tasks the drawer shows for the day that holds `at`, in section order:
// priorities, today, then carried over (upcoming work is not the day's). The
// pointers refer into `tasks`.
std::vector<const TaskItem*> unfinishedTasksOfDay(const std::vector<TaskItem>& tasks, Instant at,
                                                  const Calendar& calendar);

} // namespace daywyn
