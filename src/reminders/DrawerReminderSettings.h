#pragma once

#include <string_view>

namespace daywyn {

// The user's drawer pop-out switches, read from the settings file by the owner of
// the coordinator; a default-constructed value is the defaults of absent keys.
struct DrawerReminderSettings {
    // "Show gentle drawer pop-outs".
    bool enabled = true;
    // "Pause for presentations".
    bool paused = false;
    // Active hours from start (inclusive) to end (exclusive); equal means all day.
    int activeStart = 9;
    int activeEnd = 21;
    // Hours between check-ins; 0 or less turns the check-in off.
    int nudgeHours = 2;

    bool operator==(const DrawerReminderSettings&) const = default;
};

// The settings-file keys of the pop-outs and of the coordinator's memory.
inline constexpr std::string_view kInAppRemindersEnabledKey = "inAppRemindersEnabled";
inline constexpr std::string_view kInAppRemindersPausedKey = "inAppRemindersPaused";
inline constexpr std::string_view kInAppActiveStartKey = "inAppActiveStart";
inline constexpr std::string_view kInAppActiveEndKey = "inAppActiveEnd";
inline constexpr std::string_view kInAppNudgeHoursKey = "inAppNudgeHours";
inline constexpr std::string_view kInAppReminderSoundEnabledKey = "inAppReminderSoundEnabled";
inline constexpr std::string_view kDrawerReminderSeenKey = "drawerReminderSeen";
inline constexpr std::string_view kDrawerReminderSnoozedKey = "drawerReminderSnoozed";
inline constexpr std::string_view kDrawerLastNudgeKey = "drawerLastNudge";

} // namespace daywyn
