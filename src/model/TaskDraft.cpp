#include "model/TaskDraft.h"

#include "base/Text.h"

namespace daywyn {

TaskDraft TaskDraft::from(const TaskItem& task) {
    TaskDraft draft;
    draft.checklist = task.checklist.value_or(std::vector<ChecklistItem>{});
    draft.recurrence = task.recurrence.value_or(TaskRecurrence::none);
    draft.title = task.title;
    draft.hasEstimate = task.estimatedMinutes.has_value();
    draft.estimatedMinutes = task.estimatedMinutes.value_or(draft.estimatedMinutes);
    draft.hasReminder = task.reminderDate.has_value();
    draft.reminderDate = task.reminderDate.value_or(Instant{});
    draft.hasScheduledStart = task.scheduledStart.has_value();
    draft.scheduledStart = task.scheduledStart.value_or(Instant{});
    draft.hasScheduledDay = task.scheduledDay.has_value();
    draft.scheduledDay = task.scheduledDay.value_or(Instant{});
    draft.hasScheduledEnd = task.scheduledEnd.has_value();
    draft.scheduledEnd = task.scheduledEnd.value_or(Instant{});
    return draft;
}

std::optional<std::string> TaskDraft::validationMessage() const {
    if (isBlank(title)) {
        return "Give the task a title.";
    }
    if (hasEstimate && estimatedMinutes < 1) {
        return "Estimate must be greater than zero.";
    }
    if (hasScheduledStart && hasScheduledEnd && scheduledEnd <= scheduledStart) {
        return "Scheduled end must follow the start.";
    }
    return std::nullopt;
}

void TaskDraft::applyTo(TaskItem& task, const Calendar& calendar) const {
    task.title = trimWhitespace(title);
    task.estimatedMinutes = hasEstimate ? std::optional<long long>(estimatedMinutes) : std::nullopt;
    task.reminderDate = hasReminder ? std::optional<Instant>(reminderDate) : std::nullopt;
    task.scheduledEnd = hasScheduledEnd ? std::optional<Instant>(scheduledEnd) : std::nullopt;
    if (hasScheduledStart) {
        task.scheduledStart = scheduledStart;
        task.scheduledDay.reset();
    } else {
        task.scheduledStart.reset();
        task.scheduledDay = hasScheduledDay
                                ? std::optional<Instant>(calendar.startOfDay(scheduledDay))
                                : std::nullopt;
    }
    task.recurrence = recurrence == TaskRecurrence::none ? std::nullopt : std::optional(recurrence);
    std::vector<ChecklistItem> items;
    for (const auto& item : checklist) {
        if (!isBlank(item.title)) {
            items.push_back(item);
        }
    }
    task.checklist = std::move(items);
}

std::optional<std::string> sessionValidationMessage(const SessionDraft& draft, Instant now) {
    if (draft.end <= draft.start) {
        return "Session end must follow its start.";
    }
    if (draft.end > now) {
        return "A past session cannot end in the future.";
    }
    return std::nullopt;
}

} // namespace daywyn
