#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/TaskItem.h"

namespace daywyn {

// Every system notification Daywyn schedules has an identifier with this prefix;
// pending requests without it belong to someone else and are never touched.
inline constexpr std::string_view kNotificationPrefix = "daywyn.";
// The category of the end-of-block requests, whose actions finish or extend a task.
inline constexpr std::string_view kEndActionsCategory = "DAYWYN_END_ACTIONS";
// Foreground delivery of a request with this prefix also generates the due report.
inline constexpr std::string_view kReviewIdentifierPrefix = "daywyn.review.";
// The key of the task's UUID text in a request's user info.
inline constexpr std::string_view kTaskIdUserInfoKey = "taskID";

// What the store records once a request has been added, so that the same alert is
// not scheduled twice for one task.
enum class NotificationMark {
    nothing,
    // markTaskReminderScheduled with markedDate.
    taskReminderDate,
    // markBudgetAlertScheduled with markedBudgetAlert.
    budgetAlert,
    // markOverdueEndScheduled with markedDate.
    overdueEnd,
};

// One system notification to be delivered once at fireAt, with the default sound.
// Requests about one task carry its id as the "taskID" user info.
struct NotificationRequest {
    std::string identifier;
    std::string title;
    std::string body;
    std::optional<std::string> category;
    // Never earlier than one second after the moment the request was planned.
    Instant fireAt;
    std::optional<Uuid> taskId;
    NotificationMark mark = NotificationMark::nothing;
    std::optional<Instant> markedDate;
    std::optional<BudgetAlertKind> markedBudgetAlert;

    bool operator==(const NotificationRequest&) const = default;
};

} // namespace daywyn
