#pragma once

#include <string_view>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "base/Result.h"
#include "model/TaskDraft.h"
#include "model/TaskItem.h"
#include "store/TodayTaskStore.h"

namespace daywyn {

// A typed line that became a task: the task as saved and the draft the line was read
// into (what was recognised in it).
struct LineAdded {
    TaskItem task;
    TaskDraft draft;
};

// The one way a typed line becomes a task, used by the drawer's add field, Quick Add
// and `daywyn add`: the quick parser takes the day, time and estimate out of the text
// once, the store validates and saves it. An Error carries the sentence to show
// ("Give the task a title.", a save failure); nothing is added then.
Result<LineAdded> addFromLine(TodayTaskStore& store, std::string_view text, Instant now,
                              const Calendar& calendar);

// The same for a draft read beforehand (the command line reads the text before it
// opens the store, so that a line without a title never touches the file).
Result<LineAdded> addDraft(TodayTaskStore& store, const TaskDraft& draft, Instant now,
                           const Calendar& calendar);

} // namespace daywyn
