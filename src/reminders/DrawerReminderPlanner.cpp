#include "reminders/DrawerReminderPlanner.h"

#include <algorithm>

#include "base/DoubleText.h"

namespace daywyn {

namespace {

bool isInsideWindow(Instant due, Instant now) {
    return due <= now && now - due <= DrawerReminderPlanner::kWindowSeconds;
}

// The date is part of the id, so moving a task's start or reminder makes a new
// reminder that an earlier dismissal does not hide.
std::string taskReminderId(std::string_view prefix, const Uuid& id, Instant date) {
    std::string text(prefix);
    text += id.text();
    text += ':';
    text += shortestDoubleText(date.seconds);
    return text;
}

} // namespace

std::vector<DrawerReminder>
DrawerReminderPlanner::candidates(const std::vector<TaskItem>& tasks,
                                  const std::vector<CalendarEventItem>& events, Instant now,
                                  const Calendar& calendar) {
    std::vector<DrawerReminder> due;
    for (const auto& task : tasks) {
        if (task.isComplete) {
            continue;
        }
        if (task.scheduledStart && isInsideWindow(*task.scheduledStart, now)) {
            due.push_back({taskReminderId("task:", task.id, *task.scheduledStart),
                           "Time for your task", task.title, *task.scheduledStart});
        }
        if (task.reminderDate && isInsideWindow(*task.reminderDate, now)) {
            due.push_back({taskReminderId("reminder:", task.id, *task.reminderDate),
                           "A task to remember", task.title, *task.reminderDate});
        }
    }
    for (const auto& event : events) {
        if (event.isAllDay || event.start <= now) {
            continue;
        }
        const Instant eventDue = event.start - kWindowSeconds;
        if (isInsideWindow(eventDue, now)) {
            due.push_back({"event:" + event.id, "Your calendar event starts soon",
                           event.title + " · " + calendar.shortTimeText(event.start), eventDue});
        }
    }
    std::stable_sort(due.begin(), due.end(), [](const DrawerReminder& a, const DrawerReminder& b) {
        return a.due < b.due;
    });
    return due;
}

} // namespace daywyn
