#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calendar/CalendarSource.h"
#include "store/TodayTaskStore.h"

namespace daywyn {

// The command line's `daywyn calendars` verb: lists the calendars with their ids,
// titles, sources and colours, turns the integration on or off, and chooses calendars
// by id (or all of them), through the store like every other change.

// The verb's --help text.
inline constexpr const char* kCalendarsCommandHelp =
    "Without words, lists the calendars Daywyn can read (id, title, source and colour,\n"
    "[x] when chosen) and tells whether calendar events appear in the drawer. 'on' and\n"
    "'off' switch calendar events; 'select' and 'unselect' add calendar ids to the\n"
    "choice or take them out, or every calendar with --all.";

// What the verb line asks for: its words, and the --all and --json flags.
struct CalendarsRequest {
    std::vector<std::string> words;
    bool all = false;
    bool json = false;
};

// What is wrong with the request, as a sentence; absent when it can run.
std::optional<std::string> calendarsCommandUsageProblem(const CalendarsRequest& request);

// What the verb printed and whether it succeeded.
struct CalendarsCommandResult {
    bool succeeded = true;
    std::string out;
    std::string err;
};

// Runs the verb. `listing` is the calendar list as read now, absent when no calendar
// could be read here: ids are then taken on trust and --all has nothing to choose from.
CalendarsCommandResult runCalendarsCommand(TodayTaskStore& store, const CalendarsRequest& request,
                                           const std::optional<CalendarSnapshot>& listing);

} // namespace daywyn
