#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Instant.h"

namespace daywyn {

// A colour as red, green and blue components from 0.0 to 1.0.
struct RgbColor {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    bool operator==(const RgbColor&) const = default;
};

// The colour shown for a calendar that has none (or none Daywyn can read).
inline constexpr std::string_view kFallbackCalendarColor = "#7D7D7D";

// The title shown for an event that has none.
inline constexpr std::string_view kUntitledEventTitle = "Untitled event";

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

    // The occurrence key: calendar id, "|", event id, "|", the start as seconds since
    // 2001-01-01 00:00:00 UTC in the shortest text that reads back exactly, always
    // with a fractional part ("…|784111800.0"). Each occurrence of a repeating event
    // gets its own key.
    static std::string occurrenceId(std::string_view calendarIdentifier,
                                    std::string_view eventIdentifier, Instant start);

    // "#RRGGBB" in upper case; each component is multiplied by 255 and truncated
    // (0.999 gives FE). No colour gives "#7D7D7D".
    static std::string hexColor(std::optional<RgbColor> color);

    // A colour given as text by a calendar source ("#62a0ea", "#abc" or the
    // twelve-digit "#rrrrggggbbbb"), as "#RRGGBB" in upper case; anything else gives
    // "#7D7D7D".
    static std::string hexColorFromText(std::string_view text);

    // Sorted by start, earliest first (equal starts keep their order), keeping only the
    // first item with each id.
    static std::vector<CalendarEventItem> deduplicated(std::vector<CalendarEventItem> items);
};

} // namespace daywyn
