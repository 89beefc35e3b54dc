#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/Result.h"
#include "persistence/FileSystem.h"
#include "sync/SyncState.h"

namespace daywyn::sync {

// The state as JSON (sorted keys, ISO dates), and back. The error is one sentence
// naming the first problem.
std::string encodeSyncState(const SyncState& state);
Result<SyncState> decodeSyncState(std::string_view json);

// What a load found. A file that cannot be read as a sync state is moved aside (never
// overwritten) and the pass starts afresh; `notice` then says so in a sentence.
struct LoadedSyncState {
    SyncState state;
    std::string notice;
};

// The sync state's file, written atomically.
class SyncStateFile {
public:
    using Environment = std::function<const char*(const char*)>;

    SyncStateFile(std::string path, std::shared_ptr<FileSystem> fileSystem);

    // `$XDG_STATE_HOME/Daywyn/sync/state.json`, or `~/.local/state/Daywyn/sync/state.json`
    // when that variable is unset, empty or relative.
    static Result<std::string> defaultPath(const Environment& environment = {});

    const std::string& path() const { return path_; }

    // Nothing there: a fresh state. A file that does not decode is moved aside to
    // "state-corrupt-<UTC time of now>.json" beside it, and the state is fresh. The
    // Error is for a file that cannot be read at all (it is left as it is).
    Result<LoadedSyncState> load(Instant now);
    // Creates the folder when needed. The Error is the system's reason in a sentence.
    Status save(const SyncState& state);

private:
    std::string path_;
    std::shared_ptr<FileSystem> fs_;
};

} // namespace daywyn::sync
