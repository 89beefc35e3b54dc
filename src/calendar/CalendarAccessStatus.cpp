#include "calendar/CalendarAccessStatus.h"

namespace daywyn {

std::string_view rawValue(CalendarAccessStatus status) {
    switch (status) {
    case CalendarAccessStatus::notDetermined:
        return "notDetermined";
    case CalendarAccessStatus::unavailable:
        return "unavailable";
    case CalendarAccessStatus::fullAccess:
        return "fullAccess";
    }
    return "unavailable";
}

} // namespace daywyn
