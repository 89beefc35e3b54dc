#pragma once

#include <optional>
#include <string>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "base/Result.h"
#include "sync/SyncPass.h"
#include "sync/SyncState.h"

namespace daywyn {

// Reads the sync state's file without changing it: nothing there is an absent state,
// and a file that does not decode is an Error naming the problem (a pass moves such a
// file aside; showing the status never does).
Result<std::optional<sync::SyncState>> readSyncStateForStatus(const std::string& path);

// `daywyn sync status`: the account, the last pass, the changes waiting to be sent and
// the conflict log, newest first.
std::string syncStatusText(const std::optional<sync::SyncState>& state, Instant now,
                           const Calendar& calendar);
// The same as one JSON object (keys account, conflicts, lastError, lastPassAt,
// lastSummary, pendingChanges), on one line.
std::string syncStatusJson(const std::optional<sync::SyncState>& state);

// What one pass moved and why it stopped (empty when it finished), as `daywyn sync
// --json` prints it: one JSON object on one line.
std::string syncPassJson(const sync::SyncSummary& summary, const std::string& error);

} // namespace daywyn
