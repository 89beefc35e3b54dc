#pragma once

#include <optional>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/AppPreferences.h"
#include "model/DailyReport.h"
#include "model/TaskItem.h"

namespace daywyn {

// The end-of-day report due at `now`, built but not stored: for today once the review
// time has passed, else for yesterday. Absent when reviews are off, the target day
// already has a report, or no task counted. A task counts when it was completed in
// the target day by the review time, has time recorded in that window, or is planned
// for that day and was still open at the review time.
std::optional<DailyReport> makeDueReport(const std::vector<TaskItem>& tasks,
                                         const std::vector<DailyReport>& reports,
                                         const AppPreferences& preferences, Instant now,
                                         const Calendar& calendar);

} // namespace daywyn
