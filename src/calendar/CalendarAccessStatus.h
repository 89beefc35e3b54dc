#pragma once

#include <string_view>

namespace daywyn {

// Whether Daywyn can read the desktop's calendars. On Linux "full access" means a
// calendar source answered: Evolution Data Server on the session bus, or the folder
// of .ics calendars.
enum class CalendarAccessStatus {
    // Not asked yet (calendar integration has been off since start).
    notDetermined,
    // No calendar source could be reached.
    unavailable,
    fullAccess,
};

// "notDetermined", "unavailable", "fullAccess".
std::string_view rawValue(CalendarAccessStatus status);

} // namespace daywyn
