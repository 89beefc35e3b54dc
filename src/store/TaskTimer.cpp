#include "store/TaskTimer.h"

#include <algorithm>

namespace daywyn {

void stopLiveSession(TaskItem& task, Instant at, int budgetWarningLeadMinutes) {
    if (!task.liveSessionStartedAt) {
        return;
    }
    if (at > *task.liveSessionStartedAt) {
        task.sessions.push_back(WorkSession{Uuid::random(), *task.liveSessionStartedAt, at});
    }
    task.liveSessionStartedAt.reset();

    if (!task.estimatedMinutes) {
        task.scheduledBudgetAlerts.clear();
        return;
    }
    const double recorded = task.recordedDuration();
    const double budget = static_cast<double>(*task.estimatedMinutes) * 60.0;
    const double warnAt =
        std::max(0.0, budget - static_cast<double>(budgetWarningLeadMinutes) * 60.0);
    if (recorded < warnAt) {
        task.scheduledBudgetAlerts.erase(BudgetAlertKind::approaching);
    }
    if (recorded < budget) {
        task.scheduledBudgetAlerts.erase(BudgetAlertKind::exceeded);
    }
}

} // namespace daywyn
