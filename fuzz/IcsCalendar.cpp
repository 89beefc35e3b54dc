// Arbitrary bytes as an .ics calendar file: libical's parse and Daywyn's reading of its
// events, rules, added and excluded dates never crash or hang, and every occurrence
// given for a day shares time with that day.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "calendar/system/IcsCalendarFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace daywyn;
    static const Calendar calendar("Europe/Berlin");
    IcsCalendarFile file;
    if (!file.addText(std::string_view(reinterpret_cast<const char*>(data), size))) {
        return 0;
    }
    // A day in 2026 with a daylight-saving change, and an ordinary one.
    for (const Instant at : {Instant{1'774'785'600.0}, Instant{1'773'230'400.0}}) {
        const auto day = calendarDay(at, calendar);
        if (!day) {
            continue;
        }
        for (const auto& event : file.occurrences(*day, calendar, "fuzz")) {
            if (!day->overlaps(event.start, std::max(event.start, event.end))) {
                std::abort();
            }
        }
    }
    return 0;
}
