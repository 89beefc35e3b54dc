#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "base/JsonReader.h"
#include "base/Result.h"
#include "model/TaskItem.h"

namespace daywyn {

// Reads a state file's list of tasks on two cores. Loading the state file is what
// every start of Daywyn waits for, and the list of tasks is nearly all of it.
//
// The list is cut into runs at guessed element starts, found in the text alone: the
// places after the list's opening where an element is introduced the way its first
// element is (the same whitespace after a comma as after the bracket). A helper thread
// starts on the runs at once, while the caller's thread still reads what precedes the
// list; then both take runs until none is left. A run's elements count only when the
// run before it, read from a start already proven, ended exactly where this run begins:
// then the run was read from the very place, in the very state, that one reader going
// through the whole list would have been in, so its elements are the ones that reader
// would have read. From the first run that fails the test (a guess inside a string or
// a nested list, a run that met a fault) the caller's thread reads on alone.
//
// The helper may be slow to get a core; the caller never waits for it to start, only
// for a run it is reading, and a helper that starts after all runs are taken just ends.
class TaskListReadAhead {
public:
    // Texts shorter than this are read on one thread: starting one costs more.
    static constexpr std::size_t kMinimumBytes = 256 * 1024;
    // About 150 tasks as the encoder writes them: small enough that a thread waiting
    // for the other's last run waits little, large enough that guessing costs nothing.
    static constexpr std::size_t kRunBytes = 128 * 1024;

    // Null when the text is short, the machine has one core, or the text does not look
    // like a state file as the encoder writes it.
    static std::unique_ptr<TaskListReadAhead> start(std::string_view stateText,
                                                    std::size_t minimumBytes = kMinimumBytes,
                                                    std::size_t runBytes = kRunBytes);
    ~TaskListReadAhead();
    TaskListReadAhead(const TaskListReadAhead&) = delete;
    TaskListReadAhead& operator=(const TaskListReadAhead&) = delete;

    // decodeTaskList() for the list at the reader's position, with the runs' help.
    Status decode(JsonReader& reader, std::vector<TaskItem>& out);

    struct Shared;

private:
    explicit TaskListReadAhead(std::shared_ptr<Shared> shared);
    std::shared_ptr<Shared> shared_;
};

} // namespace daywyn
