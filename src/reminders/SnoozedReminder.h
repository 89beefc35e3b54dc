#pragma once

#include "base/Instant.h"
#include "reminders/DrawerReminder.h"

namespace daywyn {

// A pop-out the user put off: it returns at `until`, even when already seen and
// long past its own five minutes.
struct SnoozedReminder {
    DrawerReminder reminder;
    Instant until;

    bool operator==(const SnoozedReminder&) const = default;
};

} // namespace daywyn
