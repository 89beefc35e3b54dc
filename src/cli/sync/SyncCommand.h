#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"

namespace daywyn {

// `daywyn sync` and `daywyn sync setup URL …` (args start with the verb), run by the
// daywyn-sync program: the pass reads and saves the state file under the writer lock,
// the password comes from the keyring. Writes to `out` and `err`; returns the exit
// status.
int runSyncCommand(const std::vector<std::string>& args, Instant now, const Calendar& calendar,
                   std::istream& in, std::ostream& out, std::ostream& err);

} // namespace daywyn
