#pragma once

#include <string>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/AppPreferences.h"
#include "model/TaskItem.h"
#include "reminders/NotificationRequest.h"

namespace daywyn {

// The system notifications that the rules want for a task list and preferences at
// one moment. A wanted identifier that is already pending stays pending as it is.
struct DesiredNotifications {
    // Requests to add when their identifier is not pending, in rule order.
    std::vector<NotificationRequest> requests;
    // Identifiers still wanted but not to be added again because the alert was
    // already scheduled (by the task's bookkeeping) or its moment has passed: a
    // pending request with one of them stays, a missing one is not re-added.
    std::vector<std::string> keptIdentifiers;

    bool operator==(const DesiredNotifications&) const = default;
};

// Task reminders, budget alerts and end-of-block alerts for every open task in list
// order, then the unfinished-task nudges and the daily review, each only when its
// preference is on. Values too large to schedule (an estimate of 10^18 minutes, a
// date beyond the 64-bit seconds range) are skipped, never trapped on.
DesiredNotifications desiredNotifications(const std::vector<TaskItem>& tasks,
                                          const AppPreferences& preferences, Instant now,
                                          const Calendar& calendar);

// "daywyn.manual-test": the settings screen's test notification, three seconds on.
NotificationRequest testNotificationRequest(Instant now);

} // namespace daywyn
