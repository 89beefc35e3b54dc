#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace daywyn {

// How often the unfinished-task nudge repeats; raw value = interval in minutes.
enum class UnfinishedReminderCadence {
    off = 0,
    every30Minutes = 30,
    hourly = 60,
    every2Hours = 120
};

inline constexpr UnfinishedReminderCadence kAllCadences[] = {
    UnfinishedReminderCadence::off, UnfinishedReminderCadence::every30Minutes,
    UnfinishedReminderCadence::hourly, UnfinishedReminderCadence::every2Hours};

int rawValue(UnfinishedReminderCadence cadence);
std::optional<UnfinishedReminderCadence> cadenceFromRaw(long long minutes);

// Where the drawer handle sits on the screen edge.
enum class EdgeAnchor {
    topLeft,
    topCenter,
    topRight,
    rightCenter,
    bottomRight,
    bottomCenter,
    bottomLeft,
    leftCenter
};

inline constexpr EdgeAnchor kAllAnchors[] = {EdgeAnchor::topLeft,     EdgeAnchor::topCenter,
                                             EdgeAnchor::topRight,    EdgeAnchor::rightCenter,
                                             EdgeAnchor::bottomRight, EdgeAnchor::bottomCenter,
                                             EdgeAnchor::bottomLeft,  EdgeAnchor::leftCenter};

std::string_view rawValue(EdgeAnchor anchor);
std::optional<EdgeAnchor> edgeAnchorFromRaw(std::string_view raw);

// The user's settings that travel in the state file with the tasks. A
// default-constructed value is the defaults.
struct AppPreferences {
    bool taskRemindersEnabled = false;
    bool budgetNotificationsEnabled = false;
    bool scheduledEndAlertsEnabled = false;
    int budgetWarningLeadMinutes = 5;
    int endWarningLeadMinutes = 5;
    // Suggested only once the user chooses to add an estimate.
    int defaultTaskMinutes = 25;
    UnfinishedReminderCadence unfinishedReminderCadence = UnfinishedReminderCadence::off;
    int activeHoursStart = 9;
    int activeHoursEnd = 21;
    bool dailyReviewEnabled = true;
    int dailyReviewHour = 21;
    int dailyReviewMinute = 0;
    bool calendarIntegrationEnabled = false;
    std::vector<std::string> selectedCalendarIdentifiers;
    EdgeAnchor edgeAnchor = EdgeAnchor::topLeft;

    bool operator==(const AppPreferences&) const = default;
};

} // namespace daywyn
