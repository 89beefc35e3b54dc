#include "reminders/NotificationMessages.h"

namespace daywyn {

std::string_view preferenceMessage(NotificationPreference preference, bool enabled) {
    switch (preference) {
    case NotificationPreference::taskReminders:
        return enabled ? "Task reminders are enabled." : "Task reminders are disabled.";
    case NotificationPreference::budgetAlerts:
        return enabled ? "Time-budget alerts are enabled." : "Time-budget alerts are disabled.";
    case NotificationPreference::endAlerts:
        return enabled ? "End-time reminders are enabled." : "End-time reminders are disabled.";
    case NotificationPreference::unfinishedCadence:
        return enabled ? "Unfinished-task nudges are enabled."
                       : "Unfinished-task nudges are disabled.";
    case NotificationPreference::dailyReview:
        return enabled ? "Daily review reminders are enabled."
                       : "Daily review reminders are disabled.";
    }
    return {};
}

NotificationResponse notificationResponse(std::string_view action, std::string_view taskIdText) {
    using Kind = NotificationResponse::Kind;
    if (action == kDefaultAction) {
        return {Kind::showDrawer, std::nullopt, 0};
    }
    const auto taskId = Uuid::parse(taskIdText);
    if (!taskId) {
        return {};
    }
    if (action == kFinishAction) {
        return {Kind::finishTask, taskId, 0};
    }
    if (action == kExtendTenAction) {
        return {Kind::extendEnd, taskId, 10};
    }
    if (action == kExtendTwentyFiveAction) {
        return {Kind::extendEnd, taskId, 25};
    }
    return {};
}

} // namespace daywyn
