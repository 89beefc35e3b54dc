#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/Uuid.h"

namespace daywyn {

// The notification switches of the settings screen, each with a success message
// for turning it on and off.
enum class NotificationPreference {
    taskReminders,
    budgetAlerts,
    endAlerts,
    unfinishedCadence,
    dailyReview,
};

// "Task reminders are enabled." / "Task reminders are disabled." and so on. For the
// unfinished-task cadence, any cadence but off counts as enabled.
std::string_view preferenceMessage(NotificationPreference preference, bool enabled);

// Sentences the notification controller shows; a system reason follows those
// ending in ": ".
inline constexpr std::string_view kEnableFailedPrefix = "Notifications could not be enabled: ";
inline constexpr std::string_view kNotificationsOffMessage =
    "Notifications are off in System Settings.";
inline constexpr std::string_view kScheduleFailedPrefix = "A reminder could not be scheduled: ";
inline constexpr std::string_view kTestNotAllowedMessage =
    "Allow notifications in System Settings to test delivery.";
inline constexpr std::string_view kTestScheduledMessage =
    "Test notification scheduled. It should arrive in about three seconds.";
inline constexpr std::string_view kTestFailedPrefix =
    "The test notification could not be scheduled: ";

// The actions of the end-of-block category, in the order they are offered.
inline constexpr std::string_view kFinishAction = "DAYWYN_FINISH";
inline constexpr std::string_view kExtendTenAction = "DAYWYN_EXTEND_10";
inline constexpr std::string_view kExtendTwentyFiveAction = "DAYWYN_EXTEND_25";
inline constexpr std::pair<std::string_view, std::string_view> kEndActions[] = {
    {kFinishAction, "Finish"},
    {kExtendTenAction, "Add 10 min"},
    {kExtendTwentyFiveAction, "Add 25 min"},
};
// The action a notification server reports when the notification itself is clicked.
inline constexpr std::string_view kDefaultAction = "default";

// What the user asked for by acting on a delivered notification.
struct NotificationResponse {
    enum class Kind { ignore, showDrawer, finishTask, extendEnd };
    Kind kind = Kind::ignore;
    std::optional<Uuid> taskId;
    // For extendEnd: 10 or 25.
    int minutes = 0;

    bool operator==(const NotificationResponse&) const = default;
};

// Reads an action and the request's "taskID" text. A task action without a valid
// task id, or an action of someone else's category, is ignored.
NotificationResponse notificationResponse(std::string_view action, std::string_view taskIdText);

} // namespace daywyn
