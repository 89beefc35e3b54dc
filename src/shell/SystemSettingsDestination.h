#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace daywyn {

// A pane of the desktop's settings that Daywyn sends the user to when a permission or
// a device is missing.
enum class SystemSettingsDestination { microphone, speechRecognition, calendars, notifications };

// The commands that open a destination's pane, to try in order until one starts:
// GNOME Settings panels and KDE System Settings modules (the current desktop's first,
// from XDG_CURRENT_DESKTOP, a colon-separated list), then the settings apps of the
// common desktops without a pane. Each command is a program and its arguments.
struct SystemSettingsCommands {
    static std::vector<std::vector<std::string>>
    forDestination(SystemSettingsDestination destination, std::string_view currentDesktop);

    // "Settings could not be opened. Open your desktop's privacy settings manually and allow
    // Daywyn."
    static std::string failureMessage();
};

} // namespace daywyn
