#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Instant.h"
#include "base/Uuid.h"

namespace daywyn {

// One task's line in a daily report.
struct DailyTaskSummary {
    Uuid id;
    std::string title;
    bool wasComplete = false;
    std::optional<long long> estimatedMinutes;
    // Recorded seconds that count for the report's day.
    double actualSeconds = 0.0;
    bool operator==(const DailyTaskSummary&) const = default;
};

// The end-of-day report of one calendar day. Immutable once generated.
struct DailyReport {
    Uuid id;
    // Start of the calendar day the report covers.
    Instant day;
    Instant generatedAt;
    std::vector<DailyTaskSummary> tasks;
    bool operator==(const DailyReport&) const = default;

    // The summaries with wasComplete true, in stored order.
    std::vector<DailyTaskSummary> completedItems() const;
    // The summaries with wasComplete false, in stored order.
    std::vector<DailyTaskSummary> unfinishedItems() const;
};

} // namespace daywyn
