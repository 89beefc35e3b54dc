#pragma once

#include "base/Instant.h"
#include "model/TaskItem.h"

namespace daywyn {

// Stops the task's timer at `at`: a span of positive length becomes a new session,
// the live start is cleared, and budget alerts that have not been reached by the
// recorded time are forgotten so they can be scheduled again (all of them when the
// task has no estimate). A task that is not running is left alone.
void stopLiveSession(TaskItem& task, Instant at, int budgetWarningLeadMinutes);

} // namespace daywyn
