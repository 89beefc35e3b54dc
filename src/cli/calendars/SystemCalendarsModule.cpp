// daywyn-calendars.so: the system calendars, loaded with dlopen. Evolution Data Server's
// libraries take longer to load than most verbs take to run, so only `today` (with
// calendar events on) and `calendars` load this module; the desktop app loads it for
// Evolution's reader when it first reads the desktop's calendars.
#include "calendar/CombinedCalendarSource.h"
#include "calendar/system/EdsCalendarReader.h"
#include "calendar/system/IcsFolderReader.h"

// A calendar service that takes longer than this to bring a calendar online is not
// waited for by a command.
constexpr std::uint32_t kConnectWaitSeconds = 10;

extern "C" __attribute__((visibility("default"))) void
daywynReadSystemCalendars(const daywyn::CalendarQuery& query, const daywyn::Calendar& calendar,
                          daywyn::CalendarSnapshot& snapshot) {
    using namespace daywyn;
    IcsFolderReader files(IcsFolderReader::defaultFolder(), calendar);
    EdsCalendarReader evolution(calendar, false, kConnectWaitSeconds);
    snapshot = CombinedCalendarSource::combined({evolution.read(query), files.read(query)});
}

// Evolution's calendars for the app: a reader it keeps and calls on its calendar thread.
// `connectWaitSeconds` as EdsCalendarReader takes it.
extern "C" __attribute__((visibility("default"))) daywyn::CalendarServiceReader*
daywynOpenEvolutionCalendars(const daywyn::Calendar& calendar, bool watch,
                             std::uint32_t connectWaitSeconds) {
    return new daywyn::EdsCalendarReader(calendar, watch, connectWaitSeconds);
}
