#include "shell/SystemSettingsDestination.h"

#include <algorithm>
#include <cctype>

namespace daywyn {
namespace {

using Command = std::vector<std::string>;

std::vector<Command> gnomePanels(SystemSettingsDestination destination) {
    const std::string program = "gnome-control-center";
    switch (destination) {
    case SystemSettingsDestination::microphone:
    case SystemSettingsDestination::speechRecognition:
        // Recognition runs on the device, so what it needs is the microphone.
        return {{program, "microphone"}, {program, "sound"}};
    case SystemSettingsDestination::calendars:
        return {{program, "online-accounts"}};
    case SystemSettingsDestination::notifications:
        return {{program, "notifications"}};
    }
    return {};
}

std::vector<Command> kdeModules(SystemSettingsDestination destination) {
    const std::string program = "systemsettings";
    switch (destination) {
    case SystemSettingsDestination::microphone:
    case SystemSettingsDestination::speechRecognition:
        return {{program, "kcm_pulseaudio"}};
    case SystemSettingsDestination::calendars:
        return {{program, "kcm_kaccounts"}};
    case SystemSettingsDestination::notifications:
        return {{program, "kcm_notifications"}};
    }
    return {};
}

bool mentions(std::string_view desktops, std::string_view name) {
    std::string lower(desktops);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower.find(name) != std::string::npos;
}

} // namespace

std::vector<Command> SystemSettingsCommands::forDestination(SystemSettingsDestination destination,
                                                            std::string_view currentDesktop) {
    std::vector<Command> gnome = gnomePanels(destination);
    std::vector<Command> kde = kdeModules(destination);
    std::vector<Command> commands;
    const bool kdeFirst = mentions(currentDesktop, "kde");
    for (auto* group : kdeFirst ? std::vector{&kde, &gnome} : std::vector{&gnome, &kde}) {
        commands.insert(commands.end(), group->begin(), group->end());
    }
    for (const char* settingsApp :
         {"gnome-control-center", "systemsettings", "xfce4-settings-manager", "mate-control-center",
          "cinnamon-settings", "lxqt-config"}) {
        commands.push_back({settingsApp});
    }
    return commands;
}

std::string SystemSettingsCommands::failureMessage() {
    return "Settings could not be opened. Open your desktop's privacy settings manually and "
           "allow Daywyn.";
}

} // namespace daywyn
