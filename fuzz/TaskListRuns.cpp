// Arbitrary bytes as a state file's list of tasks, read by one thread and then in
// short runs on two: both readings end the same way, with the same tasks and the
// reader at the same place, or with the same error.
#include <cstdlib>
#include <string>
#include <vector>

#include "base/JsonReader.h"
#include "model/RecordJson.h"
#include "persistence/TaskListReadAhead.h"

namespace {

using namespace daywyn;

// The reader at the value of the outermost object's first member.
JsonReader atFirstValue(const std::string& text) {
    JsonReader reader(text);
    std::string_view key;
    if (!reader.beginObject() || !reader.nextKey(key)) {
        std::abort();
    }
    return reader;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text = "{\n  \"tasks\": [";
    text.append(reinterpret_cast<const char*>(data), size);

    JsonReader alone = atFirstValue(text);
    std::vector<TaskItem> aloneTasks;
    const Status aloneStatus = decodeTaskList(alone, DateCoding::iso8601, aloneTasks);

    JsonReader shared = atFirstValue(text);
    std::vector<TaskItem> sharedTasks;
    Status sharedStatus;
    if (auto readAhead = TaskListReadAhead::start(text, 0, 64)) {
        sharedStatus = readAhead->decode(shared, sharedTasks);
    } else {
        sharedStatus = decodeTaskList(shared, DateCoding::iso8601, sharedTasks);
    }

    if (aloneStatus.ok() != sharedStatus.ok()) {
        std::abort();
    }
    if (aloneStatus.ok() ? aloneTasks != sharedTasks || alone.offset() != shared.offset()
                         : aloneStatus.error() != sharedStatus.error()) {
        std::abort();
    }
    return 0;
}
