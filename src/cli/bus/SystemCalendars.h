#pragma once

#include "cli/Verb.h"

namespace daywyn {

// The system calendars (Evolution Data Server and the folder of .ics files) for the
// verbs that show them, read through daywyn-calendars.so, which is loaded on the first
// read. A module that cannot be loaded gives the unavailable status and says why.
class SystemCalendars : public CalendarReader {
public:
    explicit SystemCalendars(const Calendar& calendar)
        : calendar_(calendar) {}

    CalendarSnapshot readCalendars(const CalendarQuery& query) override;

private:
    const Calendar& calendar_;
};

} // namespace daywyn
