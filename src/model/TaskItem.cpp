#include "model/TaskItem.h"

namespace daywyn {

std::string_view rawValue(TaskRecurrence recurrence) {
    switch (recurrence) {
    case TaskRecurrence::none:
        return "none";
    case TaskRecurrence::daily:
        return "daily";
    case TaskRecurrence::weekdays:
        return "weekdays";
    case TaskRecurrence::weekly:
        return "weekly";
    case TaskRecurrence::monthly:
        return "monthly";
    }
    return "none";
}

std::optional<TaskRecurrence> taskRecurrenceFromRaw(std::string_view raw) {
    for (auto candidate : kAllRecurrences) {
        if (rawValue(candidate) == raw) {
            return candidate;
        }
    }
    return std::nullopt;
}

std::string_view rawValue(BudgetAlertKind kind) {
    return kind == BudgetAlertKind::approaching ? "approaching" : "exceeded";
}

std::optional<BudgetAlertKind> budgetAlertKindFromRaw(std::string_view raw) {
    if (raw == "approaching") {
        return BudgetAlertKind::approaching;
    }
    if (raw == "exceeded") {
        return BudgetAlertKind::exceeded;
    }
    return std::nullopt;
}

double TaskItem::recordedDuration() const {
    double total = 0.0;
    for (const auto& session : sessions) {
        const double length = session.end - session.start;
        if (length > 0) {
            total += length;
        }
    }
    return total;
}

} // namespace daywyn
