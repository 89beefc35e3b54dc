#pragma once

#include <optional>
#include <string>

#include "base/Instant.h"

namespace daywyn {

// One calendar event occurrence as the drawer shows it, from a system calendar or a
// Google account. Daywyn only reads events; it never writes them back.
struct CalendarEventItem {
    // Unique key of the occurrence; drawer reminders are keyed by it.
    std::string id;
    std::string eventIdentifier;
    std::string calendarIdentifier;
    std::string calendarTitle;
    // "#" and six upper-case hexadecimal digits.
    std::string colorHex;
    // "Untitled event" when the source gives none.
    std::string title;
    Instant start;
    Instant end;
    bool isAllDay = false;
    std::optional<std::string> url;

    bool operator==(const CalendarEventItem&) const = default;
};

} // namespace daywyn
