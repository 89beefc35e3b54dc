#pragma once

#include <string>

#include "base/Instant.h"

namespace daywyn {

// One in-app pop-out beside the drawer. The id is stable for one occurrence of one
// reminder, so a reminder once shown is recognised again by it.
struct DrawerReminder {
    std::string id;
    std::string title;
    std::string detail;
    // The moment it became due.
    Instant due;

    bool operator==(const DrawerReminder&) const = default;
};

} // namespace daywyn
