#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "base/Calendar.h"
#include "calendar/CalendarServiceReader.h"

namespace daywyn {

// The desktop's calendars in Evolution Data Server (GNOME Calendar, Evolution, online
// accounts), read through libecal: the calendar list from its source registry, with each
// calendar's account and colour, and the day's occurrences from each calendar asked for,
// so repeating events, their exceptions and zoned times come out as Evolution shows
// them. No service on the bus gives the unavailable status.
//
// Every call blocks the calling thread, and the registry's and views' signals are
// dispatched in the GLib context that is that thread's default: call it from one thread
// only (the app's calendar thread, or the command line's only thread).
class EdsCalendarReader final : public CalendarServiceReader {
public:
    // `watch`: keep a view on each calendar read, so that changed events call the change
    // handler (a one-off read has no use for it).
    EdsCalendarReader(Calendar calendar, bool watch, std::uint32_t connectWaitSeconds);
    ~EdsCalendarReader() override;
    EdsCalendarReader(const EdsCalendarReader&) = delete;
    EdsCalendarReader& operator=(const EdsCalendarReader&) = delete;

    CalendarSnapshot read(const CalendarQuery& query) override;

    // Called (on the reading thread's context) when calendars are added, removed or
    // changed, and, when watching, when events of a calendar read change.
    void setChangeHandler(std::function<void()> onChange) override;

    // Ends a read that is waiting on the service, and every later one, with what was
    // gathered so far. Safe from any thread.
    void cancel() override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace daywyn
