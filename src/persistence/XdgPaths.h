#pragma once

#include <functional>
#include <string>

#include "base/Result.h"

namespace daywyn {

// Where Daywyn keeps its files, after the XDG base directory rules: the one place that
// knows them. Each folder is Daywyn's own (".../Daywyn"), without a trailing slash. A
// relative or empty variable is ignored, as the rules say, for the default under the
// home folder; with no home folder either, the answer is an error sentence.
enum class XdgBase {
    data,   // $XDG_DATA_HOME, ~/.local/share: the state file, the calendar files
    config, // $XDG_CONFIG_HOME, ~/.config: Daywyn.conf
    state,  // $XDG_STATE_HOME, ~/.local/state: what was delivered and when
};

// Reads an environment variable; empty means the process environment.
using XdgEnvironment = std::function<const char*(const char*)>;

Result<std::string> daywynFolder(XdgBase base, const XdgEnvironment& environment = {});

} // namespace daywyn
