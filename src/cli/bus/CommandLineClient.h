#pragma once

#include <string>
#include <vector>

namespace daywyn {

// The command-line process: `daywyn VERB …`. A writing verb is forwarded to the
// desktop app over D-Bus when it runs (it is then the only writer of the state
// file); otherwise the verb runs here against the state file, holding the writer
// lock while it writes. Returns the process's exit status.
int runCommandLine(const std::vector<std::string>& args);

} // namespace daywyn
