#pragma once

#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/TaskItem.h"

namespace daywyn {

// The sample tasks a brand-new user finds in the drawer, created at `now` and planned
// for that day. Each one introduces a feature by asking the user to try it.
std::vector<TaskItem> makeFirstRunTasks(Instant now, const Calendar& calendar);

} // namespace daywyn
