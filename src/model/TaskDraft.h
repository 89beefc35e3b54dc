#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/TaskItem.h"

namespace daywyn {

// What the task editor, quick add and the command line edit before anything is
// stored: each optional value has a switch beside it, so a value can be kept while
// its field is switched off. A fresh draft has every switch off, an estimate preset
// of 25 minutes for when the switch is turned on, and dates at the epoch until the
// editor offers one.
struct TaskDraft {
    std::vector<ChecklistItem> checklist;
    TaskRecurrence recurrence = TaskRecurrence::none;
    std::string title;
    bool hasEstimate = false;
    long long estimatedMinutes = 25;
    bool hasReminder = false;
    Instant reminderDate;
    bool hasScheduledStart = false;
    Instant scheduledStart;
    bool hasScheduledDay = false;
    Instant scheduledDay;
    bool hasScheduledEnd = false;
    Instant scheduledEnd;

    bool operator==(const TaskDraft&) const = default;

    // A draft for editing an existing task: switches on where the task has a value.
    static TaskDraft from(const TaskItem& task);

    // The first problem that stops the draft from being saved, as the sentence the
    // editor shows; absent when the draft is valid.
    std::optional<std::string> validationMessage() const;

    // Writes the draft's editable fields into the task: trimmed title, a start wins
    // over a planned day, the day stored as the start of its day, blank checklist
    // items dropped, `none` stored as no recurrence. Identity, creation, completion,
    // sessions and the timer are left alone.
    void applyTo(TaskItem& task, const Calendar& calendar) const;
};

// The session editor's values.
struct SessionDraft {
    Instant start;
    Instant end;
    bool operator==(const SessionDraft&) const = default;
};

// The session editor's check before saving: the sentence to show, or absent.
std::optional<std::string> sessionValidationMessage(const SessionDraft& draft, Instant now);

} // namespace daywyn
