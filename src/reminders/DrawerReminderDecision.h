#pragma once

#include <optional>

#include "reminders/DrawerReminder.h"

namespace daywyn {

// The outcome of one check: show nothing new, close whatever pop-out is visible
// (paused or locked), or present one reminder.
struct DrawerReminderDecision {
    enum class Kind { nothing, closeVisible, present };
    Kind kind = Kind::nothing;
    // Set exactly when kind is present.
    std::optional<DrawerReminder> reminder;

    bool operator==(const DrawerReminderDecision&) const = default;
};

// The buttons of a shown pop-out.
enum class DrawerReminderAction { open, snooze, dismiss };

} // namespace daywyn
