#include "reminders/DesiredNotifications.h"

#include <algorithm>
#include <cmath>

#include "reminders/ReminderRules.h"

namespace daywyn {

namespace {

// Seconds since 1970 as a whole signed 64-bit number (truncated toward zero), the
// form the identifiers carry; a value outside that range has no identifier.
std::optional<long long> wholeSeconds(double seconds) {
    if (!std::isfinite(seconds) || seconds < -9223372036854775808.0 ||
        seconds >= 9223372036854775808.0) {
        return std::nullopt;
    }
    return static_cast<long long>(seconds);
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::size_t size = 0;
    for (auto part : parts) {
        size += part.size();
    }
    std::string text;
    text.reserve(size);
    for (auto part : parts) {
        text += part;
    }
    return text;
}

class Planner {
public:
    Planner(const AppPreferences& preferences, Instant now)
        : preferences_(preferences)
        , now_(now) {}

    void planTask(const TaskItem& task) {
        char uuid[36];
        task.id.writeText(uuid);
        const std::string_view uuidText(uuid, sizeof uuid);
        if (preferences_.taskRemindersEnabled) {
            planTaskReminder(task, uuidText);
        }
        if (preferences_.budgetNotificationsEnabled) {
            planBudgetAlerts(task, uuidText);
        }
        if (preferences_.scheduledEndAlertsEnabled) {
            planEndAlerts(task, uuidText);
        }
    }

    void planNudges(const std::vector<TaskItem>& tasks, const Calendar& calendar);
    void planReview(const Calendar& calendar);

    DesiredNotifications result;

private:
    // A fire date in the past or less than a second away is delivered one second on.
    NotificationRequest& add(std::string identifier, std::string_view title, std::string body,
                             Instant fire, const TaskItem* task = nullptr) {
        NotificationRequest& request = result.requests.emplace_back();
        request.identifier = std::move(identifier);
        request.title = title;
        request.body = std::move(body);
        request.fireAt = std::max(fire, now_ + 1.0);
        if (task) {
            request.taskId = task->id;
        }
        return request;
    }

    // The task's recorded reminder date does not gate this request: a fire date
    // still ahead has not been delivered yet, so a pending request stays by its
    // identifier and one that went missing is simply added again.
    void planTaskReminder(const TaskItem& task, std::string_view uuid) {
        const std::optional<Instant> fire =
            task.reminderDate ? task.reminderDate : task.scheduledStart;
        if (!fire || *fire <= now_) {
            return;
        }
        const bool atStart = !task.reminderDate || task.reminderDate == task.scheduledStart;
        auto& request = add(joined({"daywyn.task.", uuid}),
                            atStart ? "Scheduled now" : "Task reminder", task.title, *fire, &task);
        request.mark = NotificationMark::taskReminderDate;
        request.markedDate = fire;
    }

    // A kind already in the task's bookkeeping stays wanted (so its pending request
    // survives) but is never added again: once delivered it must not repeat while
    // the same estimate runs on.
    void planBudgetAlerts(const TaskItem& task, std::string_view uuid) {
        if (!task.estimatedMinutes || !task.liveSessionStartedAt) {
            return;
        }
        long long budget = 0;
        long long warnAt = 0;
        const long long lead = static_cast<long long>(preferences_.budgetWarningLeadMinutes) * 60;
        if (__builtin_mul_overflow(*task.estimatedMinutes, 60LL, &budget) ||
            __builtin_sub_overflow(budget, lead, &warnAt)) {
            return;
        }
        const double elapsed =
            task.recordedDuration() + std::max(0.0, now_ - *task.liveSessionStartedAt);
        struct Threshold {
            BudgetAlertKind kind;
            long long seconds;
        };
        for (const Threshold threshold :
             {Threshold{BudgetAlertKind::approaching, std::max(0LL, warnAt)},
              Threshold{BudgetAlertKind::exceeded, budget}}) {
            std::string identifier =
                joined({"daywyn.budget.", rawValue(threshold.kind), ".", uuid});
            if (task.scheduledBudgetAlerts.contains(threshold.kind)) {
                result.keptIdentifiers.push_back(std::move(identifier));
                continue;
            }
            const bool approaching = threshold.kind == BudgetAlertKind::approaching;
            std::string body =
                approaching
                    ? joined({task.title, " has about ",
                              std::to_string(preferences_.budgetWarningLeadMinutes), " min left."})
                    : joined({task.title, " reached its ", std::to_string(*task.estimatedMinutes),
                              " min estimate."});
            const Instant fire = now_ + (static_cast<double>(threshold.seconds) - elapsed);
            auto& request = add(std::move(identifier),
                                approaching ? "Budget nearly reached" : "Time to recalibrate",
                                std::move(body), fire, &task);
            request.mark = NotificationMark::budgetAlert;
            request.markedBudgetAlert = threshold.kind;
        }
    }

    // Both identifiers carry the end, so a moved end is wanted under new ones and
    // the requests for the old end are removed. A passed warning moment and an
    // overdue alert already recorded for this end stay wanted but are not re-added.
    void planEndAlerts(const TaskItem& task, std::string_view uuid) {
        if (!task.scheduledEnd) {
            return;
        }
        const Instant end = *task.scheduledEnd;
        const auto endSeconds = wholeSeconds(end.seconds);
        if (!endSeconds) {
            return;
        }
        const std::string suffix = joined({uuid, ".", std::to_string(*endSeconds)});
        std::string warningId = joined({"daywyn.end.warning.", suffix});
        std::string overdueId = joined({"daywyn.end.overdue.", suffix});

        const int lead = preferences_.endWarningLeadMinutes;
        const Instant warnAt = end - static_cast<double>(lead) * 60.0;
        if (warnAt > now_) {
            auto& warning = add(std::move(warningId), "Time is nearly up",
                                joined({task.title, " ends in ", std::to_string(lead), " minutes"}),
                                warnAt, &task);
            warning.category = std::string(kEndActionsCategory);
        } else {
            result.keptIdentifiers.push_back(std::move(warningId));
        }

        if (task.notifiedOverdueEnd == end) {
            result.keptIdentifiers.push_back(std::move(overdueId));
            return;
        }
        auto& overdue =
            add(std::move(overdueId), "Make more room?",
                joined({task.title, " reached its scheduled end. Finish it or extend the time."}),
                end, &task);
        overdue.category = std::string(kEndActionsCategory);
        overdue.mark = NotificationMark::overdueEnd;
        overdue.markedDate = end;
    }

    const AppPreferences& preferences_;
    Instant now_;
};

// The nudges step from now, not from a clock grid: a pending request is never
// refreshed, so identifiers that change with every reconciliation are what keeps
// the count in a nudge's body true after the task list changes.
void Planner::planNudges(const std::vector<TaskItem>& tasks, const Calendar& calendar) {
    const auto cadence = preferences_.unfinishedReminderCadence;
    if (cadence == UnfinishedReminderCadence::off) {
        return;
    }
    const auto open = unfinishedTasksOfDay(tasks, now_, calendar);
    if (open.empty()) {
        return;
    }
    std::string body = open.size() == 1
                           ? joined({"1 task remains: ", open.front()->title})
                           : joined({std::to_string(open.size()), " tasks remain today."});
    // The next day's start through the calendar: on a 25-hour day, now + 24 h can
    // still fall on today.
    const Instant dayStart = calendar.startOfDay(now_);
    const Instant nextDay = calendar.addingDays(dayStart, 1).value_or(dayStart + 86400.0);
    const double step = rawValue(cadence) * 60.0;
    for (int k = 1;; ++k) {
        const Instant fire = now_ + step * k;
        if (fire >= nextDay) {
            break;
        }
        if (!isWithinActiveHours(calendar.hour(fire), preferences_.activeHoursStart,
                                 preferences_.activeHoursEnd)) {
            continue;
        }
        if (const auto seconds = wholeSeconds(fire.seconds)) {
            add(joined({"daywyn.cadence.", std::to_string(*seconds)}), "A gentle pace check", body,
                fire);
        }
    }
}

// Today's review time, or tomorrow's when it has passed; both are set as wall-clock
// times so that a daylight-saving change in between does not shift the review.
void Planner::planReview(const Calendar& calendar) {
    if (!preferences_.dailyReviewEnabled) {
        return;
    }
    const int hour = preferences_.dailyReviewHour;
    const int minute = preferences_.dailyReviewMinute;
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59) {
        return;
    }
    auto fire = calendar.settingTime(now_, hour, minute, 0);
    if (fire && *fire <= now_) {
        const auto tomorrow = calendar.addingDays(calendar.startOfDay(now_), 1);
        fire = tomorrow ? calendar.settingTime(*tomorrow, hour, minute, 0) : std::nullopt;
    }
    const auto seconds = fire ? wholeSeconds(fire->seconds) : std::nullopt;
    if (!seconds) {
        return;
    }
    add(joined({"daywyn.review.", std::to_string(*seconds)}), "Your daily rhythm",
        "Review what moved and what can be replanned.", *fire);
}

} // namespace

DesiredNotifications desiredNotifications(const std::vector<TaskItem>& tasks,
                                          const AppPreferences& preferences, Instant now,
                                          const Calendar& calendar) {
    Planner planner(preferences, now);
    // About one request per open task plus the day's nudges, without regrowing.
    planner.result.requests.reserve(tasks.size() + 64);
    for (const auto& task : tasks) {
        if (!task.isComplete) {
            planner.planTask(task);
        }
    }
    planner.planNudges(tasks, calendar);
    planner.planReview(calendar);
    return std::move(planner.result);
}

NotificationRequest testNotificationRequest(Instant now) {
    NotificationRequest request;
    request.identifier = "daywyn.manual-test";
    request.title = "Daywyn reminders are ready";
    request.body = "This is your test notification. Focus settings may silence banners.";
    request.fireAt = now + 3.0;
    return request;
}

} // namespace daywyn
