#pragma once

#include <optional>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/TaskItem.h"

namespace daywyn {

// The next due date after `after` for a repeat rule: daily +1 day, weekdays +1 day
// skipping the calendar's weekend days, weekly +7 days, monthly +1 month (clamped to
// the month's last day). The time of day is kept. Absent for `none` or when the
// calendar cannot produce a date.
std::optional<Instant> nextOccurrence(TaskRecurrence recurrence, Instant after,
                                      const Calendar& calendar);

// The open task that follows a repeating task completed at `completedAt`: due at the
// first occurrence after the completion time, with the same block length, reminder
// offset, estimate and checklist titles (all open, new ids). Absent when the task
// does not repeat, already produced its next copy, or no date follows.
std::optional<TaskItem> makeNextOccurrence(const TaskItem& completed, Instant completedAt,
                                           const Calendar& calendar);

} // namespace daywyn
