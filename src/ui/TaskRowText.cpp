#include "ui/TaskRowText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace daywyn {

double TaskRowText::recordedSeconds(const TaskItem& task, Instant now) {
    double seconds = task.recordedDuration();
    if (task.liveSessionStartedAt) {
        // A clock that moved backwards must not make the row count down.
        seconds += std::max(0.0, now - *task.liveSessionStartedAt);
    }
    return seconds;
}

std::string TaskRowText::checklistProgress(const TaskItem& task) {
    if (!task.checklist || task.checklist->empty()) {
        return {};
    }
    const auto done = std::count_if(task.checklist->begin(), task.checklist->end(),
                                    [](const ChecklistItem& item) { return item.isComplete; });
    return std::to_string(done) + "/" + std::to_string(task.checklist->size());
}

std::string TaskRowText::timeSummary(const TaskItem& task, Instant now) {
    const double seconds = recordedSeconds(task, now);
    const long long minutes = static_cast<long long>(std::floor(seconds / 60));
    if (task.estimatedMinutes) {
        return std::to_string(minutes) + " / " + std::to_string(*task.estimatedMinutes) + " min";
    }
    if (seconds <= 0 && !task.isRunning()) {
        return {};
    }
    return std::to_string(minutes) + " min";
}

bool TaskRowText::isOverEstimate(const TaskItem& task, Instant now) {
    return task.estimatedMinutes &&
           recordedSeconds(task, now) > static_cast<double>(*task.estimatedMinutes) * 60;
}

std::string TaskRowText::clockText(double seconds) {
    const long long whole = static_cast<long long>(std::floor(std::max(0.0, seconds)));
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
    return text;
}

std::string TaskRowText::durationText(double seconds) {
    const long long minutes = static_cast<long long>(std::floor(std::max(0.0, seconds) / 60));
    if (minutes == 0) {
        return "under 1 min";
    }
    if (minutes < 60) {
        return std::to_string(minutes) + " min";
    }
    const std::string hours = std::to_string(minutes / 60) + " h";
    return minutes % 60 == 0 ? hours : hours + " " + std::to_string(minutes % 60) + " min";
}

} // namespace daywyn
