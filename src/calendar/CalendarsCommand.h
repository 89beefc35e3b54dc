#pragma once

#include <optional>
#include <string>
#include <vector>

#include "store/TodayTaskStore.h"

namespace daywyn {

// The command line's `daywyn calendars` verb: shows whether calendar events are on and
// which calendars are chosen, turns the integration on or off, and chooses calendars
// by id, through the store like every other change.

// The verb's --help text.
inline constexpr const char* kCalendarsCommandHelp =
    "Usage: daywyn calendars [on|off|select ID...|unselect ID...]\n\n"
    "Without words, shows whether calendar events appear in the drawer and which calendar\n"
    "ids are chosen. 'on' and 'off' switch calendar events; 'select' and 'unselect' add\n"
    "calendar ids to the choice or take them out (Settings > Calendars shows every\n"
    "calendar with its id's title).\n";

// Whether the words (after the verb) change the preferences.
bool calendarsCommandWrites(const std::vector<std::string>& words);

// What is wrong with the words, as a sentence; absent when they can run.
std::optional<std::string> calendarsCommandUsageProblem(const std::vector<std::string>& words);

// Runs the verb; returns what it prints.
std::string runCalendarsCommand(TodayTaskStore& store, const std::vector<std::string>& words);

} // namespace daywyn
