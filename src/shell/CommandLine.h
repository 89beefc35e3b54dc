#pragma once

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
    // Reads the store only (today, split, report --list, export, help).
    reading,
    // Changes the store (add, done, reopen, start, stop, pin, delete, report): while
    // the desktop app runs these are forwarded to it, so it stays the only writer.
    writing,
};

// The access of the verb that `args` starts with; writing for unknown verbs so that
// nothing is ever written by a process that does not hold the writer lock.
VerbAccess verbAccess(const std::vector<std::string>& args);

// Runs one verb (args[0]) with its arguments against a store at `now`. The same code
// serves the command line process and the desktop app answering a forwarded verb.
CommandOutput runCommand(TodayTaskStore& store, const std::vector<std::string>& args, Instant now,
                         const Calendar& calendar);

} // namespace daywyn
