#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "cli/Verb.h"
#include "store/TodayTaskStore.h"

namespace daywyn {

// A verb line read against the verb table, before any data is touched: either the
// answer (help, an unknown verb or option, a missing word) or the line to run.
struct ParsedCommand {
    std::optional<CommandOutput> answer;
    VerbLine line;
};
ParsedCommand parseCommand(const std::vector<std::string>& args);

// The verb's own checks that need no data (`add` reads its text here, once). A
// present output ends the command; then nothing has been opened or written.
std::optional<CommandOutput> prepareCommand(VerbLine& line, Instant now, const Calendar& calendar);

// How the parsed line touches the user's data (a writing verb with its read-only
// option only reads).
VerbAccess lineAccess(const VerbLine& line);

// The access of the verb that `args` starts with. Unknown verbs and help count as
// reading: they are answered before the store is touched.
VerbAccess verbAccess(const std::vector<std::string>& args);

// The answer to a command that needs no data: help, an unknown verb, a usage error,
// an added text without a title. Absent when the verb must run.
std::optional<CommandOutput> checkWithoutStore(const std::vector<std::string>& args, Instant now,
                                               const Calendar& calendar);

// Runs a parsed and prepared line.
CommandOutput runVerbLine(VerbLine& line, VerbContext& context);

// Reads, checks and runs one verb line (args[0] is the verb) against a store at `now`.
// The same code serves the command-line process and the desktop app answering a
// line handed to it over the bus (which passes its windows, its calendars and its
// task sync).
CommandOutput runCommand(TodayTaskStore& store, const std::vector<std::string>& args, Instant now,
                         const Calendar& calendar, AppWindows* windows = nullptr,
                         CalendarReader* calendars = nullptr, TaskSyncRunner* syncer = nullptr);

// The argument with every byte sequence that is not UTF-8 replaced by U+FFFD, so that a
// mistyped byte neither reaches the state file nor breaks a call over the bus.
std::string validUtf8(std::string_view text);

} // namespace daywyn
