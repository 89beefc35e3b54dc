#pragma once

#include <string>
#include <vector>

#include "base/Clock.h"

namespace daywyn {

// The command-line process: `daywyn VERB …`. A writing verb is handed to the desktop
// app over the session bus when it runs (it is then the only writer of the state
// file), a window verb always (the bus starts the app); otherwise the verb runs here
// against the state file, holding the writer lock while it writes. Returns the
// process's exit status. Loads no Qt: the core, ICU and sd-bus only. Every rule it
// runs reads "now" from `clock`.
int runCommandLine(const std::vector<std::string>& args, const Clock& clock);

// The system's wall clock: the one the shipped program hands to runCommandLine.
Instant systemClock();

// One of Daywyn's own programs (daywyn-app, daywyn-transcribe): beside this program
// (the build tree), else where `make install` put it relative to this program. Empty
// when neither exists.
std::string helperProgramPath(const std::string& name);

} // namespace daywyn
