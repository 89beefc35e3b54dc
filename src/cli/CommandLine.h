#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "store/TodayTaskStore.h"

namespace daywyn {

// What one command-line verb printed and its exit status (0 success, 1 a failure
// the user must see, 2 a usage error).
struct CommandOutput {
    int status = 0;
    std::string out;
    std::string err;
    bool operator==(const CommandOutput&) const = default;
};

// How a verb touches the user's data.
enum class VerbAccess {
    // Reads the store only (today, split, report --list, export, add --dry-run, help).
    reading,
    // Changes the store (add, done, reopen, start, stop, pin, delete, report): while
    // the desktop app runs these are forwarded to it, so it stays the only writer.
    writing,
};

// The access of the verb that `args` starts with. Unknown verbs count as reading: they
// are refused as usage errors before the store is touched.
VerbAccess verbAccess(const std::vector<std::string>& args);

// The answer to a command that needs no data: help, an unknown verb, a usage error,
// an added text without a title. Absent when the verb must run against the store.
// Checked first so that such a command never creates or rewrites the state file.
std::optional<CommandOutput> checkWithoutStore(const std::vector<std::string>& args, Instant now,
                                               const Calendar& calendar);

// Runs one verb (args[0]) with its arguments against a store at `now`. The same code
// serves the command line process and the desktop app answering a forwarded verb.
CommandOutput runCommand(TodayTaskStore& store, const std::vector<std::string>& args, Instant now,
                         const Calendar& calendar);

} // namespace daywyn
