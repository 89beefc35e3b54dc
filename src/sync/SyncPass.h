#pragma once

#include <string>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/TaskItem.h"
#include "sync/CalDavCollection.h"
#include "sync/SyncState.h"
#include "sync/TaskCoding.h"

namespace daywyn::sync {

// What one pass moved.
struct SyncSummary {
    int pushed = 0;
    int pulled = 0;
    // Tasks removed on this machine because they were deleted on the server.
    int deletedHere = 0;
    // Tasks removed from the server because they were deleted here.
    int deletedThere = 0;
    int conflicts = 0;
    // Objects on the server that are not readable as tasks: left alone there.
    int unreadable = 0;
    // A server that came back empty while tasks were synced with it: the tasks here were
    // kept and sent again.
    bool emptyServerRefilled = false;

    // One sentence for people: "Sent 3 changes, received 1.", "Everything is up to date."
    std::string sentence() const;
};

struct SyncOutcome {
    // The tasks to keep on this machine (the list given, with the server's changes).
    std::vector<TaskItem> tasks;
    bool tasksChanged = false;
    // To be saved whatever happened: it holds everything done until a failure.
    SyncState state;
    SyncSummary summary;
    // Why the pass stopped early; empty when it finished. What was done until then is
    // kept, and nothing is deleted because of a failure.
    std::string error;
};

// One two-way pass between the tasks here and the server's task list: a three-way
// merge per task and field against the last synced version. The state's account is not
// used (the collection is already open). Costs one request when nothing changed on
// either side.
SyncOutcome runSyncPass(CalDavCollection& collection, const TaskCoding& coding,
                        const std::vector<TaskItem>& local, SyncState state, Instant now,
                        const Calendar& calendar);

// The list to store after a pass that ran on `snapshot` while the user may have gone
// on editing (`current`). A task the pass changed, added or removed is taken from
// `synced` only while the current copy still equals the snapshot's (or is still
// absent, its machine-local fields aside: those keep the current values); a task edited
// meanwhile stays as the user left it, and a task added meanwhile stays. Afterwards call
// noteLocalChanges(outcome.state, synced, result, now) so that the next pass sends the edits made
// meanwhile.
std::vector<TaskItem> applySyncResult(const std::vector<TaskItem>& current,
                                      const std::vector<TaskItem>& snapshot,
                                      const std::vector<TaskItem>& synced);

} // namespace daywyn::sync
