#pragma once

#include <cstdint>
#include <functional>

#include "calendar/CalendarSource.h"

namespace daywyn {

// A calendar service read on one thread, blocking it (Evolution Data Server through
// libecal). The app reaches it through daywyn-calendars.so, loaded on the first read,
// so that a start-up never maps the service's libraries.
class CalendarServiceReader {
public:
    // Waiting for a calendar's backend to come online: forever (a network calendar is
    // worth waiting for on a worker) or a bound in seconds.
    static constexpr std::uint32_t kWaitForever = static_cast<std::uint32_t>(-1);

    virtual ~CalendarServiceReader() = default;

    virtual CalendarSnapshot read(const CalendarQuery& query) = 0;
    // Called on the reading thread when calendars or (when watching) events change.
    virtual void setChangeHandler(std::function<void()> onChange) = 0;
    // Ends a read waiting on the service, and every later one. Safe from any thread.
    virtual void cancel() = 0;
};

} // namespace daywyn
