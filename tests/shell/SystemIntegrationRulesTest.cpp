#include <gtest/gtest.h>

#include "shell/LaunchAtLoginEntry.h"
#include "shell/SystemSettingsDestination.h"

namespace daywyn {
namespace {

TEST(LaunchAtLoginEntry, StartsTheExactExecutableFromAPlainDesktopEntry) {
    EXPECT_EQ(LaunchAtLoginEntry::text("/usr/bin/daywyn"),
              "[Desktop Entry]\n"
              "Type=Application\n"
              "Name=Daywyn\n"
              "Comment=Your day beside everything else\n"
              "Exec=\"/usr/bin/daywyn\"\n"
              "Icon=daywyn\n"
              "Terminal=false\n"
              "X-GNOME-Autostart-enabled=true\n");
}

TEST(LaunchAtLoginEntry, EscapesPathsThatTheExecLineWouldMisread) {
    struct Case {
        std::string path;
        std::string exec;
    };
    const Case cases[] = {
        {"/home/ama/My Apps/daywyn", "\"/home/ama/My Apps/daywyn\""},
        // Inside quotes " ` $ and \ take a backslash, and the value escapes it again.
        {"/opt/$HOME/d\"y", "\"/opt/\\\\$HOME/d\\\\\"y\""},
        {"/opt/a\\b", "\"/opt/a\\\\\\\\b\""},
        {"/opt/100%/daywyn", "\"/opt/100%%/daywyn\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(LaunchAtLoginEntry::execArgument(c.path), c.exec);
    }
}

TEST(LaunchAtLoginEntry, ErrorNamesTheReason) {
    EXPECT_EQ(LaunchAtLoginEntry::errorMessage("Permission denied"),
              "Launch at login could not be changed: Permission denied");
}

TEST(SystemSettingsCommands, TriesTheCurrentDesktopsPaneFirstThenAnySettingsApp) {
    using Commands = std::vector<std::vector<std::string>>;
    const Commands gnome = SystemSettingsCommands::forDestination(
        SystemSettingsDestination::notifications, "ubuntu:GNOME");
    ASSERT_GE(gnome.size(), 3u);
    EXPECT_EQ(gnome[0], (std::vector<std::string>{"gnome-control-center", "notifications"}));
    EXPECT_EQ(gnome[1], (std::vector<std::string>{"systemsettings", "kcm_notifications"}));
    EXPECT_EQ(gnome[2], (std::vector<std::string>{"gnome-control-center"}));

    const Commands kde =
        SystemSettingsCommands::forDestination(SystemSettingsDestination::microphone, "KDE");
    EXPECT_EQ(kde[0], (std::vector<std::string>{"systemsettings", "kcm_pulseaudio"}));
    EXPECT_EQ(kde[1], (std::vector<std::string>{"gnome-control-center", "microphone"}));
    EXPECT_EQ(kde[2], (std::vector<std::string>{"gnome-control-center", "sound"}));
}

TEST(SystemSettingsCommands, EveryDestinationHasItsOwnPaneBeforeTheFallbacks) {
    for (const auto destination :
         {SystemSettingsDestination::microphone, SystemSettingsDestination::speechRecognition,
          SystemSettingsDestination::calendars, SystemSettingsDestination::notifications}) {
        const auto commands = SystemSettingsCommands::forDestination(destination, "");
        ASSERT_FALSE(commands.empty());
        EXPECT_EQ(commands.front().size(), 2u) << commands.front()[0];
        EXPECT_EQ(commands.back().size(), 1u);
    }
    EXPECT_EQ(
        SystemSettingsCommands::forDestination(SystemSettingsDestination::calendars, "")[0][1],
        "online-accounts");
}

} // namespace
} // namespace daywyn
