#pragma once

#include <map>
#include <string>
#include <vector>

#include "base/Instant.h"
#include "reminders/SnoozedReminder.h"

namespace daywyn {

// What the pop-out coordinator remembers between checks. seen, snoozed and
// lastNudge are kept in the settings file; lastPresented and isLocked live only
// as long as the process.
struct DrawerReminderCoordinatorState {
    // 0001-01-01T00:00:00Z: no pop-out yet.
    static constexpr Instant kDistantPast{-62135596800.0};

    // Reminder id -> when it was shown. Shown reminders do not return.
    std::map<std::string, Instant> seen;
    // In the order they were snoozed.
    std::vector<SnoozedReminder> snoozed;
    Instant lastPresented = kDistantPast;
    // When the last unfinished-task check-in was shown.
    Instant lastNudge;
    // Between the screen-lock and screen-unlock signals.
    bool isLocked = false;

    bool operator==(const DrawerReminderCoordinatorState&) const = default;
};

} // namespace daywyn
