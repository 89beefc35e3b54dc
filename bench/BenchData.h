#pragma once

#include "model/PersistedState.h"

namespace daywyn::bench {

// A realistic state of `taskCount` tasks: about three sessions each, a checklist on
// every third, a mix of estimates, plans and completions, and `reportCount` reports.
// The same arguments always give the same state.
PersistedState makeState(int taskCount, int reportCount = 200);

} // namespace daywyn::bench
