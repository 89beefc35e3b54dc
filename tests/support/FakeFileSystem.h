#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "persistence/PosixFileSystem.h"

namespace daywyn::test {

// The real file system (tests point it at a temporary folder) with faults on demand:
// any step can fail with a chosen errno, the disk can fill up after N bytes, and
// writes can come back short or interrupted. Records every call in order.
class FakeFileSystem : public FileSystem {
public:
    enum class Step {
        exists,
        read,
        createDirectories,
        open,
        write,
        sync,
        close,
        rename,
        link,
        move,
        syncDirectory,
        remove,
        lock
    };

    // The next call of `step` after `skip` successful ones fails with `error`.
    void failNext(Step step, int error, int skip = 0);
    // From now on the disk takes `bytes` more bytes, then fails writes with ENOSPC.
    void limitSpace(std::size_t bytes);
    // Each write takes at most `maxBytes`; with `interrupt`, every other call is EINTR.
    void chunkWrites(std::size_t maxBytes, bool interrupt);
    // Calls so far, as "rename <from>" and the like (paths as given).
    std::vector<std::string> calls() const;

    bool exists(const std::string& path) override;
    int readFile(const std::string& path, FileBytes& contents) override;
    int createDirectories(const std::string& path) override;
    int openExclusive(const std::string& path, unsigned mode, int& fd) override;
    int write(int fd, const char* data, std::size_t size, std::size_t& written) override;
    int sync(int fd) override;
    int close(int fd) override;
    int rename(const std::string& from, const std::string& to) override;
    int link(const std::string& from, const std::string& to) override;
    int moveNoReplace(const std::string& from, const std::string& to) override;
    int syncDirectory(const std::string& path) override;
    int remove(const std::string& path) override;
    int lockExclusive(const std::string& path, int& fd) override;

private:
    struct Fault {
        int error = 0;
        int skip = 0;
    };
    // Records the call and answers the injected error, if one is due (0 otherwise).
    int enter(Step step, const std::string& what);

    PosixFileSystem real_;
    mutable std::mutex mutex_;
    std::map<Step, Fault> faults_;
    std::vector<std::string> calls_;
    bool limited_ = false;
    std::size_t spaceLeft_ = 0;
    std::size_t maxChunk_ = 0;
    bool interrupt_ = false;
    bool interruptNext_ = false;
};

} // namespace daywyn::test
