#pragma once

#include <optional>

#include "base/Calendar.h"
#include "base/Instant.h"

namespace daywyn {

// The half-open span [start, end) of one calendar day.
struct DayInterval {
    Instant start;
    Instant end;
    bool operator==(const DayInterval&) const = default;

    // Whether an event from `from` to `to` shares any time with the day. An event of no
    // length counts when it sits inside the day.
    bool overlaps(Instant from, Instant to) const {
        return from < end && (to > start || (to == from && from >= start));
    }
};

// The day that contains `at`: from its first instant to the same wall-clock time one
// calendar day later, so a daylight-saving day lasts 23 or 25 hours. Absent when the
// calendar cannot form the next day.
std::optional<DayInterval> calendarDay(Instant at, const Calendar& calendar);

} // namespace daywyn
