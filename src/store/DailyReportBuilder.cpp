#include "store/DailyReportBuilder.h"

#include <algorithm>

namespace daywyn {

namespace {

// Seconds of [start, end) that fall inside [from, to); never negative.
double overlap(Instant start, Instant end, Instant from, Instant to) {
    return std::max(0.0, std::min(end, to) - std::max(start, from));
}

} // namespace

std::optional<DailyReport> makeDueReport(const std::vector<TaskItem>& tasks,
                                         const std::vector<DailyReport>& reports,
                                         const AppPreferences& preferences, Instant now,
                                         const Calendar& calendar) {
    if (!preferences.dailyReviewEnabled) {
        return std::nullopt;
    }
    const int hour = preferences.dailyReviewHour;
    const int minute = preferences.dailyReviewMinute;
    const Instant today = calendar.startOfDay(now);
    const auto reviewToday = calendar.settingTime(today, hour, minute, 0);
    if (!reviewToday) {
        return std::nullopt;
    }
    Instant target = today;
    if (now < *reviewToday) {
        const auto yesterday = calendar.addingDays(today, -1);
        if (!yesterday) {
            return std::nullopt;
        }
        target = calendar.startOfDay(*yesterday);
    }
    const auto dayAfter = calendar.addingDays(target, 1);
    const auto cutOff = calendar.settingTime(target, hour, minute, 0);
    if (!dayAfter || !cutOff) {
        return std::nullopt;
    }
    const Instant nextDay = calendar.startOfDay(*dayAfter);
    const auto inTargetDay = [&](Instant at) {
        return at >= target && at < nextDay;
    };

    for (const auto& report : reports) {
        if (inTargetDay(report.day)) {
            return std::nullopt;
        }
    }

    DailyReport report;
    for (const auto& task : tasks) {
        const bool completedByCutOff = task.completedAt && *task.completedAt <= *cutOff;
        double seconds = 0.0;
        for (const auto& session : task.sessions) {
            seconds += overlap(session.start, session.end, target, *cutOff);
        }
        if (task.liveSessionStartedAt && *cutOff > *task.liveSessionStartedAt) {
            seconds += overlap(*task.liveSessionStartedAt, *cutOff, target, *cutOff);
        }
        // A task finished after the review time still counts as open for that day.
        const bool openAtCutOff = !task.isComplete || (task.completedAt && !completedByCutOff);
        const Instant plan =
            task.scheduledStart.value_or(task.scheduledDay.value_or(task.createdAt));
        const bool counts = (completedByCutOff && *task.completedAt >= target) || seconds > 0.0 ||
                            (inTargetDay(plan) && openAtCutOff);
        if (!counts) {
            continue;
        }
        report.tasks.push_back(DailyTaskSummary{task.id, task.title, completedByCutOff,
                                                task.estimatedMinutes, seconds});
    }
    if (report.tasks.empty()) {
        return std::nullopt;
    }
    report.id = Uuid::random();
    report.day = target;
    report.generatedAt = now;
    return report;
}

} // namespace daywyn
