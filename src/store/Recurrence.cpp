#include "store/Recurrence.h"

namespace daywyn {

namespace {

// A locale whose every day is a weekend day would otherwise never leave the loop.
constexpr int kMaxWeekendSkips = 7;

long long civilDay(const Calendar& calendar, Instant at) {
    const DateParts p = calendar.parts(at);
    return daysFromCivil(p.year, static_cast<unsigned>(p.month), static_cast<unsigned>(p.day));
}

// How many days `next` may jump at once towards `target` without passing an
// occurrence: whole weeks for the weekly rules (a weekday stays the same weekday),
// single days for daily. Zero when the gap is short enough to step.
long long fastForwardDays(TaskRecurrence recurrence, Instant next, Instant target,
                          const Calendar& calendar) {
    if (recurrence == TaskRecurrence::monthly || recurrence == TaskRecurrence::none) {
        return 0;
    }
    const long long gap = civilDay(calendar, target) - civilDay(calendar, next);
    if (gap <= 14) {
        return 0;
    }
    if (recurrence == TaskRecurrence::daily) {
        return gap - 2;
    }
    return (gap - 7) / 7 * 7;
}

} // namespace

std::optional<Instant> nextOccurrence(TaskRecurrence recurrence, Instant after,
                                      const Calendar& calendar) {
    switch (recurrence) {
    case TaskRecurrence::none:
        return std::nullopt;
    case TaskRecurrence::daily:
        return calendar.addingDays(after, 1);
    case TaskRecurrence::weekdays: {
        auto next = calendar.addingDays(after, 1);
        for (int skips = 0; next && calendar.isWeekend(*next); ++skips) {
            if (skips == kMaxWeekendSkips) {
                return std::nullopt;
            }
            next = calendar.addingDays(*next, 1);
        }
        return next;
    }
    case TaskRecurrence::weekly:
        return calendar.addingDays(after, 7);
    case TaskRecurrence::monthly:
        return calendar.addingMonths(after, 1);
    }
    return std::nullopt;
}

std::optional<TaskItem> makeNextOccurrence(const TaskItem& completed, Instant completedAt,
                                           const Calendar& calendar) {
    if (completed.nextOccurrenceCreated.value_or(false) || !completed.recurrence) {
        return std::nullopt;
    }
    const TaskRecurrence rule = *completed.recurrence;
    const Instant anchor =
        completed.scheduledStart.value_or(completed.scheduledDay.value_or(completedAt));
    auto next = nextOccurrence(rule, anchor, calendar);
    // A task completed late skips the occurrences already in the past. A task
    // anchored years back jumps most of the way instead of stepping day by day.
    while (next && *next <= completedAt) {
        if (const long long jump = fastForwardDays(rule, *next, completedAt, calendar); jump > 0) {
            next = calendar.addingDays(*next, jump);
            if (!next) {
                break;
            }
        }
        next = nextOccurrence(rule, *next, calendar);
    }
    if (!next) {
        return std::nullopt;
    }

    TaskItem task;
    task.id = Uuid::random();
    task.title = completed.title;
    task.estimatedMinutes = completed.estimatedMinutes;
    task.recurrence = completed.recurrence;
    if (completed.scheduledStart) {
        task.scheduledStart = *next;
        if (completed.scheduledEnd) {
            task.scheduledEnd = *next + (*completed.scheduledEnd - *completed.scheduledStart);
        }
        if (completed.reminderDate) {
            task.reminderDate = *next + (*completed.reminderDate - *completed.scheduledStart);
        }
    } else {
        task.scheduledDay = calendar.startOfDay(*next);
    }
    task.createdAt = completedAt;
    if (completed.checklist) {
        task.checklist.emplace();
        task.checklist->reserve(completed.checklist->size());
        for (const auto& item : *completed.checklist) {
            task.checklist->push_back(ChecklistItem{Uuid::random(), item.title, false});
        }
    }
    return task;
}

} // namespace daywyn
