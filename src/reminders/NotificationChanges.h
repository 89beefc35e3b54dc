#pragma once

#include <string>
#include <vector>

#include "reminders/DesiredNotifications.h"
#include "reminders/NotificationRequest.h"

namespace daywyn {

// What one reconciliation does to the pending system notifications.
struct NotificationChanges {
    // Wanted and not pending, in rule order. A pending request is never refreshed.
    std::vector<NotificationRequest> toAdd;
    // Pending "daywyn." identifiers that no rule wants any more, in pending order.
    std::vector<std::string> toRemove;

    bool operator==(const NotificationChanges&) const = default;
};

// Compares the desired set with the identifiers now pending. Identifiers without
// the "daywyn." prefix are never removed, nor is a pending test notification (the
// settings screen promised it will arrive).
NotificationChanges reconcileNotifications(DesiredNotifications desired,
                                           const std::vector<std::string>& pendingIdentifiers);

} // namespace daywyn
