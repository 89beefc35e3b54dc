#pragma once

#include <string>
#include <string_view>

namespace daywyn {

// The XDG autostart entry that starts Daywyn when the user logs in
// ($XDG_CONFIG_HOME/autostart/daywyn.desktop).
struct LaunchAtLoginEntry {
    // The whole file for the executable at `executablePath`: a desktop entry of type
    // Application whose Exec line starts that exact file, however its path is spelled
    // (spaces, quotes, backslashes, dollar signs and per cent signs are escaped).
    static std::string text(std::string_view executablePath);

    // The Exec value for one program argument, quoted and escaped as desktop entries
    // require.
    static std::string execArgument(std::string_view argument);

    // "Launch at login could not be changed: <reason>"
    static std::string errorMessage(std::string_view reason);
};

} // namespace daywyn
