#pragma once

#include <string>
#include <vector>

#include "base/Instant.h"
#include "model/TaskItem.h"
#include "sync/SyncState.h"

namespace daywyn::sync {

// One field edited differently on both sides: which value was kept, which set aside.
struct FieldConflict {
    std::string field;
    std::string keptValue;
    std::string setAsideValue;
    ConflictSide lost = ConflictSide::local;
    bool operator==(const FieldConflict&) const = default;
};

struct MergedTask {
    TaskItem task;
    std::vector<FieldConflict> conflicts;
};

// Three-way merge of one task, field by field: a field changed on one side only takes
// that side's value; changed alike on both, that value; changed differently on both,
// the later edit's value, and the other is set aside in a conflict. Sessions and
// checklist items are merged item by item (by id), so work recorded and items added
// on both machines are all kept. Without a base (the task was created on both sides)
// every differing field is a conflict. Times compare at whole seconds, as the state
// file keeps them. Equal edit times count the remote edit as the later.
MergedTask mergeTask(const TaskItem* base, const TaskItem& local, Instant localEditedAt,
                     const TaskItem& remote, Instant remoteEditedAt);

// Whether two tasks are equal once their times are cut to whole seconds.
bool sameAtWholeSeconds(const TaskItem& a, const TaskItem& b);
// The task with every time cut to whole seconds (towards the past).
TaskItem atWholeSeconds(TaskItem task);

} // namespace daywyn::sync
