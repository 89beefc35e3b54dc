#include "calendar/CalendarDay.h"

namespace daywyn {

std::optional<DayInterval> calendarDay(Instant at, const Calendar& calendar) {
    const Instant start = calendar.startOfDay(at);
    const auto end = calendar.addingDays(start, 1);
    if (!end || !(*end > start)) {
        return std::nullopt;
    }
    return DayInterval{start, *end};
}

} // namespace daywyn
