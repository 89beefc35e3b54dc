#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "calendar/CalendarAccessStatus.h"
#include "calendar/CalendarDay.h"

namespace daywyn {

// One calendar as a source lists it.
struct SourceCalendar {
    std::string id;
    std::string title;
    // The account or source the calendar belongs to.
    std::string sourceTitle;
    // The colour as the source writes it ("#62a0ea"); empty when it has none.
    std::string colorText;
    bool operator==(const SourceCalendar&) const = default;
};

// One occurrence of an event as a source gives it: a repeating event yields one per
// occurrence, each with its own start.
struct SourceEvent {
    // Empty when the source has none.
    std::string eventIdentifier;
    std::string calendarIdentifier;
    // Empty when the event has no title.
    std::string title;
    Instant start;
    Instant end;
    bool isAllDay = false;
    std::optional<std::string> url;
    bool operator==(const SourceEvent&) const = default;
};

// What to read: the day, and the calendars whose occurrences are wanted (none: no
// events, only the calendar list).
struct CalendarQuery {
    DayInterval day;
    std::vector<std::string> calendarIdentifiers;
};

// The answer of a source. The calendar list is complete; events may reach beyond the
// day and are filtered by the reader.
struct CalendarSnapshot {
    CalendarAccessStatus status = CalendarAccessStatus::unavailable;
    std::vector<SourceCalendar> calendars;
    std::vector<SourceEvent> events;
    // A sentence for the user when part of the reading failed.
    std::optional<std::string> errorMessage;
};

// The desktop's calendars, read only. Reading may take a while (a calendar service
// starting up): it completes later, once, on the thread that asked, and never blocks
// that thread.
class CalendarSource {
public:
    using Completion = std::function<void(CalendarSnapshot)>;
    virtual ~CalendarSource() = default;

    virtual void read(const CalendarQuery& query, Completion done) = 0;
    // Called, on the thread that installed it, whenever calendars or events change at
    // the source.
    virtual void setChangeHandler(std::function<void()> onChange) = 0;
};

} // namespace daywyn
