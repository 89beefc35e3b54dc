#pragma once

#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "calendar/CalendarEventItem.h"
#include "model/TaskItem.h"
#include "reminders/DrawerReminder.h"

namespace daywyn {

// Which drawer reminders are due now: task starts and reminder dates that fell due
// within the last five minutes, and timed events that start within the next five.
// Older ones are never replayed after sleep or a long absence.
class DrawerReminderPlanner {
public:
    // The due reminders, oldest first; equal dues keep tasks (in list order) before
    // events. Event times are written in the calendar's zone and locale.
    static std::vector<DrawerReminder> candidates(const std::vector<TaskItem>& tasks,
                                                  const std::vector<CalendarEventItem>& events,
                                                  Instant now, const Calendar& calendar);

    // How far a task reminder may lag behind its due date, and how early an event's
    // reminder comes before its start.
    static constexpr double kWindowSeconds = 300.0;
};

} // namespace daywyn
