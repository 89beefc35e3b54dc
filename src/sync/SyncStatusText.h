#pragma once

#include <string>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "sync/SyncState.h"

namespace daywyn::sync {

// The words the drawer and the settings page use for task sync, worked out without
// any UI.
struct SyncStatusText {
    // The drawer's quiet line: empty when sync is not set up; the sentence of a pass
    // that failed; otherwise how long ago the last pass ended ("Synced just now",
    // "Synced 2 min ago", "Synced 3 h ago", "Synced yesterday"), "Syncing…" before the
    // first pass ends, "Not synced yet" before it starts.
    static std::string drawerLine(const SyncState& state, bool passRunning, Instant now,
                                  const Calendar& calendar);

    // The last pass for the settings page: "Today 09:05: Sent 3 changes." or the
    // sentence it stopped with; "No pass yet." before the first.
    static std::string lastPass(const SyncState& state, Instant now, const Calendar& calendar);

    // One entry of the conflict log: "Title \"Pay rent by noon\" kept; \"Pay rent
    // today\" from this computer replaced."
    static std::string conflict(const ConflictRecord& record);

    // When a conflict happened: "Today 09:05".
    static std::string when(Instant at, Instant now, const Calendar& calendar);
};

} // namespace daywyn::sync
