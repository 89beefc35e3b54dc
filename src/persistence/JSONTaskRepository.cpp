#include "persistence/JSONTaskRepository.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "base/JsonRead.h"
#include "model/RecordJson.h"
#include "persistence/AtomicFile.h"
#include "persistence/StateFileDecoding.h"
#include "persistence/XdgPaths.h"

namespace daywyn {

namespace {

constexpr std::string_view kFileName = "daywyn.json";
constexpr std::string_view kLockName = "daywyn.lock";
// Written in full and flushed before it replaces the state file. One writer holds the
// lock, so one fixed name is enough and a crash leaves at most one such file.
constexpr std::string_view kSavingSuffix = ".saving";
// A second name for the file being replaced, so that replacing it frees nothing.
constexpr std::string_view kPreviousSuffix = ".previous";

} // namespace

JSONTaskRepository::JSONTaskRepository(std::string filePath, std::shared_ptr<FileSystem> fileSystem,
                                       Clock now, Clock wallClock)
    : filePath_(std::move(filePath))
    , directory_(parentDirectory(filePath_))
    , fs_(std::move(fileSystem))
    , now_(std::move(now))
    , wallClock_(std::move(wallClock)) {}

JSONTaskRepository::~JSONTaskRepository() {
    waitForRemoval();
    if (lockFd_ >= 0) {
        fs_->close(lockFd_);
    }
}

Result<std::string> JSONTaskRepository::defaultFilePath(const Environment& environment) {
    auto folder = daywynFolder(XdgBase::data, environment);
    if (!folder) {
        return Error{folder.error()};
    }
    return folder.value() + "/" + std::string(kFileName);
}

std::string JSONTaskRepository::corruptFileMessage(std::string_view movedName) {
    return "Daywyn could not read its data. The original was preserved as " +
           std::string(movedName) + ".";
}

std::string JSONTaskRepository::corruptFileName(Instant at) {
    std::string stamp = isoText(at);
    for (char& c : stamp) {
        if (c == ':') {
            c = '-';
        }
    }
    return "daywyn-corrupt-" + stamp + ".json";
}

Status JSONTaskRepository::acquireWriterLock() {
    if (holdsWriterLock()) {
        return {};
    }
    if (const int error = fs_->createDirectories(directory_); error != 0) {
        return Error{describeSystemError(error)};
    }
    int fd = -1;
    const int error = fs_->lockExclusive(directory_ + "/" + std::string(kLockName), fd);
    if (error == EWOULDBLOCK || error == EAGAIN) {
        return Error{std::string(kOtherWriterMessage)};
    }
    if (error != 0) {
        return Error{describeSystemError(error)};
    }
    lockFd_ = fd;
    return {};
}

Result<std::optional<PersistedState>> JSONTaskRepository::load() {
    if (!fs_->exists(filePath_)) {
        return std::optional<PersistedState>{};
    }
    // Whatever goes wrong below, the reason is dropped: the user is told where the
    // original went, and the bytes are kept there for a later look.
    auto moveAside = [this]() -> Result<std::optional<PersistedState>> {
        const std::string name = corruptFileName(wallClock_());
        // A failed move (a taken name, no permission) leaves the file where it is; the
        // next save replaces it, which the user has been told about.
        fs_->moveNoReplace(filePath_, directory_ + "/" + name);
        return Error{corruptFileMessage(name)};
    };
    FileBytes bytes;
    if (fs_->readFile(filePath_, bytes) != 0) {
        return moveAside();
    }
    // A parser of this load's own: its index of the file (about four bytes per byte of
    // text) goes with it. A program loads the file once; a kept parser would hold that
    // index for the rest of its life.
    JsonParser parser;
    auto decoded = decodeStateFile(bytes, parser);
    if (!decoded) {
        return moveAside();
    }
    if (auto* legacy = std::get_if<LegacyPersistedState>(&decoded.value())) {
        return std::optional<PersistedState>(legacy->migrated(now_()));
    }
    auto& state = std::get<PersistedState>(decoded.value());
    // A later version is rewritten as this one at start-up; this one need not be.
    loadedCurrentFormat_ = state.version == PersistedState::kCurrentVersion;
    return std::optional<PersistedState>(std::move(state));
}

Status JSONTaskRepository::save(const PersistedStateView& state) {
    if (const int error = fs_->createDirectories(directory_); error != 0) {
        return Error{describeSystemError(error)};
    }
    if (auto locked = acquireWriterLock(); !locked) {
        return locked;
    }
    // Written from the encoder's buffer: copying the whole file into a string first
    // cost a tenth of a command-line `add`.
    JsonBuffer buffer;
    encodeStateFile(state, buffer);
    return replaceFile(std::string_view(buffer.GetString(), buffer.GetSize()));
}

// Why the previous file gets a second name before it is replaced.
//
// A durable replace is: write a temporary file, fsync it, rename it over the state
// file, fsync the folder. The rename drops the last name of the old file, so the
// journal commit that the folder's fsync waits for also frees the old file's blocks,
// and on a disk mounted with `discard` (as here) that commit waits for the discards:
// about 13 ms of a 20 ms save for a 6 MB file, where writing the same bytes under a
// fresh name costs about 2 ms.
//
// So before the rename the current file is hard-linked as `daywyn.json.previous`:
// the rename then only drops one of two names and frees nothing, and the old blocks
// are released when a background thread removes that name, off the caller's thread.
// Measured on this disk with 6 MB saves 20 ms apart (medians of 40): plain replace
// 7.6-7.9 ms, with the link 4.8-5.6 ms; the disk is shared and noisy, so the figures
// vary run to run, but the order did not. Every step keeps a whole daywyn.json in place, so a crash
// at any moment leaves the old or the new file; `.previous` is never read, and one left by a crash
// is removed by the next save. Reusing the old file's blocks for the next generation (writing into
// it in place) would be cheaper still, but a reader that opened the file a moment earlier would
// then see it change under it; with links, a file once named daywyn.json never changes.
Status JSONTaskRepository::replaceFile(std::string_view bytes) {
    const std::string saving = filePath_ + std::string(kSavingSuffix);
    const std::string previous = filePath_ + std::string(kPreviousSuffix);

    int error = writeNewFile(*fs_, saving, bytes, 0600);
    if (error == EEXIST) {
        // Left by a crash; this process holds the lock, so nobody else writes it.
        fs_->remove(saving);
        error = writeNewFile(*fs_, saving, bytes, 0600);
    }
    if (error != 0) {
        return Error{describeSystemError(error)};
    }

    waitForRemoval();
    int linkError = fs_->link(filePath_, previous);
    if (linkError == EEXIST) {
        fs_->remove(previous);
        linkError = fs_->link(filePath_, previous);
    }
    // ENOENT is the first save; a file system without hard links just pays for the
    // freeing in the rename below.
    const bool keptPrevious = linkError == 0;

    if (const int renameError = fs_->rename(saving, filePath_); renameError != 0) {
        fs_->remove(saving);
        if (keptPrevious) {
            fs_->remove(previous); // still a name of the current file: frees nothing
        }
        return Error{describeSystemError(renameError)};
    }
    const int syncError = fs_->syncDirectory(directory_);
    if (keptPrevious) {
        try {
            remover_ = std::thread([fs = fs_, previous] { fs->remove(previous); });
        } catch (const std::system_error&) {
            fs_->remove(previous); // no thread to spare: slower, still correct
        }
    }
    if (syncError != 0) {
        return Error{describeSystemError(syncError)};
    }
    return {};
}

void JSONTaskRepository::waitForRemoval() {
    if (remover_.joinable()) {
        remover_.join();
    }
}

} // namespace daywyn
