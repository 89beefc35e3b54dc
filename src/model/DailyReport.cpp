#include "model/DailyReport.h"

namespace daywyn {

namespace {

std::vector<DailyTaskSummary> filtered(const std::vector<DailyTaskSummary>& tasks, bool complete) {
    std::vector<DailyTaskSummary> out;
    for (const auto& t : tasks) {
        if (t.wasComplete == complete) {
            out.push_back(t);
        }
    }
    return out;
}

} // namespace

std::vector<DailyTaskSummary> DailyReport::completedItems() const {
    return filtered(tasks, true);
}

std::vector<DailyTaskSummary> DailyReport::unfinishedItems() const {
    return filtered(tasks, false);
}

} // namespace daywyn
