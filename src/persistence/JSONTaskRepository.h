#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "base/Clock.h"
#include "base/Instant.h"
#include "base/Result.h"
#include "persistence/FileSystem.h"
#include "store/TaskRepository.h"

namespace daywyn {

// The user's data in one JSON file, `Daywyn/daywyn.json` in the per-user data folder.
// Loads the current format, migrates the older one, moves an unreadable file aside
// instead of overwriting it, and saves the whole state durably and atomically. Only
// the process holding the writer lock (`Daywyn/daywyn.lock`) saves; anyone may load.
class JSONTaskRepository : public TaskRepository {
public:
    // Looks up an environment variable; null when unset.
    using Environment = std::function<const char*(const char*)>;

    // `now` is asked once per migration, for the instant the old tasks are created at;
    // `wallClock` names a moved-aside file. Neither is read anywhere else.
    JSONTaskRepository(std::string filePath, std::shared_ptr<FileSystem> fileSystem, Clock now,
                       Clock wallClock);
    // Waits for the removal of the previous generation and releases the writer lock.
    ~JSONTaskRepository() override;
    JSONTaskRepository(const JSONTaskRepository&) = delete;
    JSONTaskRepository& operator=(const JSONTaskRepository&) = delete;

    // `$XDG_DATA_HOME/Daywyn/daywyn.json`, or `~/.local/share/Daywyn/daywyn.json` when
    // that variable is unset, empty or relative (home from HOME, else the user database).
    static Result<std::string> defaultFilePath(const Environment& environment = {});

    const std::string& filePath() const { return filePath_; }

    // Makes this process the one writer of the folder until it exits (the lock dies
    // with the process, even after a crash). Creates the folder. Refused with
    // kOtherWriterMessage while another process holds it.
    Status acquireWriterLock();
    bool holdsWriterLock() const { return lockFd_ >= 0; }

    // Nothing there: empty. The current format (any version of 2 or more whose four
    // members decode): that state. The older format: migrated at now(). Anything else
    // is moved aside and the Error is corruptFileMessage of its new name.
    Result<std::optional<PersistedState>> load() override;
    bool loadedCurrentFormat() const override { return loadedCurrentFormat_; }

    // Replaces the file with the state, durably: a crash at any moment leaves a file
    // that loads as either the previous or this state. Takes the writer lock first if
    // this process does not hold it yet. The Error is the system's reason.
    Status save(const PersistedStateView& state) override;

    static constexpr std::string_view kOtherWriterMessage =
        "Daywyn is open in another process; try again when it has closed.";
    // "Daywyn could not read its data. The original was preserved as <name>."
    static std::string corruptFileMessage(std::string_view movedName);
    // "daywyn-corrupt-2026-03-04T08-15-00Z.json" for a failure at that UTC time.
    static std::string corruptFileName(Instant at);

private:
    Status replaceFile(std::string_view bytes);
    void waitForRemoval();

    std::string filePath_;
    std::string directory_;
    std::shared_ptr<FileSystem> fs_;
    Clock now_;
    Clock wallClock_;
    int lockFd_ = -1;
    bool loadedCurrentFormat_ = false;
    // Removes the previous generation's name off the caller's thread (see save()).
    std::thread remover_;
};

} // namespace daywyn
