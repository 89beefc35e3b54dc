#include "persistence/TaskListReadAhead.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <iterator>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>

#include "model/RecordJson.h"

namespace daywyn {

namespace {

// Room for a run's tasks before they are read, so that its list is seldom moved as it
// grows: a task as the encoder writes it takes 500 bytes or more. Kept well under the
// size the allocator maps pages for: unmapping them again would interrupt the other
// core.
std::size_t likelyTasks(std::size_t bytes) {
    return bytes / 512;
}

// The first place of `what` at or after `from`. memmem, not string_view::find, whose
// search stops at every comma and newline of the text.
std::size_t findText(std::string_view text, std::string_view what, std::size_t from) {
    if (from >= text.size()) {
        return std::string_view::npos;
    }
    const void* found = ::memmem(text.data() + from, text.size() - from, what.data(), what.size());
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data())
                 : std::string_view::npos;
}

} // namespace

struct TaskListReadAhead::Shared {
    struct Run {
        std::size_t start = 0; // the guessed offset of its first element
        std::vector<TaskItem> items;
        std::size_t stop = 0; // where reading stopped: at or past the next run's start,
                              // or just past the list when `ended`
        bool ended = false;
        bool ok = false;
        bool done = false; // guarded by mutex
    };

    std::string_view text;
    std::vector<Run> runs;
    std::atomic<std::size_t> next{0};
    std::mutex mutex;
    std::condition_variable finished;

    // Takes the next run and reads it; false when every run is taken.
    bool readNext() {
        const std::size_t i = next.fetch_add(1);
        if (i >= runs.size()) {
            return false;
        }
        Run& run = runs[i];
        const std::size_t stopAt = i + 1 < runs.size() ? runs[i + 1].start : text.size();
        JsonReader reader(text);
        reader.rewind(run.start);
        run.items.reserve(likelyTasks(stopAt - run.start));
        bool ended = false;
        const bool ok = decodeTaskRun(reader, DateCoding::iso8601, run.items, stopAt, ended).ok();
        {
            const std::lock_guard lock(mutex);
            run.ok = ok;
            run.ended = ended;
            run.stop = reader.offset();
            run.done = true;
        }
        finished.notify_all();
        return true;
    }

    // No run is taken after this; waits for the ones being read.
    void close() {
        const std::size_t taken = std::min(next.exchange(runs.size()), runs.size());
        std::unique_lock lock(mutex);
        finished.wait(lock, [this, taken] {
            return std::all_of(runs.begin(), runs.begin() + static_cast<std::ptrdiff_t>(taken),
                               [](const Run& run) { return run.done; });
        });
    }
};

std::unique_ptr<TaskListReadAhead>
TaskListReadAhead::start(std::string_view text, std::size_t minimumBytes, std::size_t runBytes) {
    if (text.size() < minimumBytes || std::thread::hardware_concurrency() < 2) {
        return nullptr;
    }
    // The list as the encoder writes it: a member of the outermost object, on a line of
    // its own, its elements introduced by the same whitespace.
    constexpr std::string_view kTasks = "\n  \"tasks\": [";
    const std::size_t key = findText(text, kTasks, 0);
    if (key == std::string_view::npos) {
        return nullptr;
    }
    const std::size_t afterBracket = key + kTasks.size();
    const std::size_t first = text.find_first_not_of(" \t\r\n", afterBracket);
    if (first == std::string_view::npos || text[first] != '{') {
        return nullptr;
    }
    std::string lead = ",";
    lead.append(text.substr(afterBracket, first - afterBracket));
    lead.push_back('{');

    auto shared = std::make_shared<Shared>();
    shared->text = text;
    shared->runs.emplace_back().start = first;
    for (std::size_t from = first + runBytes; from < text.size(); from += runBytes) {
        const std::size_t found = findText(text, lead, from);
        if (found == std::string_view::npos) {
            break;
        }
        shared->runs.emplace_back().start = found + lead.size() - 1;
        from = found;
    }
    if (shared->runs.size() < 2) {
        return nullptr;
    }
    try {
        // Detached: waiting for a helper that has not yet been given a core would cost
        // more than its work. It holds the shared state, and touches the text only in
        // a run taken before close().
        std::thread([shared] {
            while (shared->readNext()) {
            }
        }).detach();
    } catch (const std::system_error&) {
        return nullptr; // no thread to spare: all of it is read on the caller's thread
    }
    return std::unique_ptr<TaskListReadAhead>(new TaskListReadAhead(std::move(shared)));
}

TaskListReadAhead::TaskListReadAhead(std::shared_ptr<Shared> shared)
    : shared_(std::move(shared)) {}

TaskListReadAhead::~TaskListReadAhead() {
    shared_->close();
}

Status TaskListReadAhead::decode(JsonReader& reader, std::vector<TaskItem>& out) {
    Shared& shared = *shared_;
    const std::size_t listAt = reader.offset();
    if (!reader.beginArray() || !reader.nextElement() ||
        reader.nextValueOffset() != shared.runs.front().start) {
        // Not the list the runs were cut from: read it alone, from the start.
        shared.close();
        reader.rewind(listAt);
        return decodeTaskList(reader, DateCoding::iso8601, out);
    }
    while (shared.readNext()) {
    }
    shared.close();

    std::size_t total = 0;
    for (const auto& run : shared.runs) {
        total += run.items.size();
    }
    out.reserve(out.size() + total);
    std::size_t at = shared.runs.front().start; // proven: the list's first element
    for (auto& run : shared.runs) {
        if (run.start != at || !run.ok) {
            break;
        }
        std::move(run.items.begin(), run.items.end(), std::back_inserter(out));
        if (run.ended) {
            reader.rewind(run.stop);
            return {};
        }
        at = run.stop;
    }
    // From the first run that does not follow on, this thread reads on by itself.
    reader.rewind(at);
    bool ended = false;
    return decodeTaskRun(reader, DateCoding::iso8601, out, reader.text().size(), ended);
}

} // namespace daywyn
