#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Calendar.h"
#include "calendar/CalendarSource.h"

namespace daywyn {

// The events of one or more iCalendar (.ics) texts, parsed once with libical and asked
// for the occurrences of a day as often as needed. Repeating events are expanded with
// their rule, their excluded dates and their changed occurrences; times keep their own
// zone, floating times and all-day dates are read in the user's calendar.
class IcsCalendarFile {
public:
    IcsCalendarFile();
    ~IcsCalendarFile();
    IcsCalendarFile(const IcsCalendarFile&) = delete;
    IcsCalendarFile& operator=(const IcsCalendarFile&) = delete;

    // Adds the events of one iCalendar text. False (and nothing added) when the text is
    // not an iCalendar document.
    bool addText(std::string_view text);

    // The calendar's own name (X-WR-CALNAME) and colour (COLOR or X-APPLE-CALENDAR-COLOR)
    // from the first text that has them; empty when none did.
    const std::string& name() const { return name_; }
    const std::string& colorText() const { return colorText_; }
    std::size_t eventCount() const;

    // The occurrences that share time with the day, for the calendar `calendarId`.
    std::vector<SourceEvent> occurrences(const DayInterval& day, const Calendar& calendar,
                                         const std::string& calendarId) const;

private:
    struct Parsed;
    std::unique_ptr<Parsed> parsed_;
    std::string name_;
    std::string colorText_;
};

} // namespace daywyn
