#include "support/FakeFileSystem.h"

#include <algorithm>
#include <cerrno>

namespace daywyn::test {

namespace {

const char* stepName(FakeFileSystem::Step step) {
    using Step = FakeFileSystem::Step;
    switch (step) {
    case Step::exists:
        return "exists";
    case Step::read:
        return "read";
    case Step::createDirectories:
        return "createDirectories";
    case Step::open:
        return "open";
    case Step::write:
        return "write";
    case Step::sync:
        return "sync";
    case Step::close:
        return "close";
    case Step::rename:
        return "rename";
    case Step::link:
        return "link";
    case Step::move:
        return "move";
    case Step::syncDirectory:
        return "syncDirectory";
    case Step::remove:
        return "remove";
    case Step::lock:
        return "lock";
    }
    return "?";
}

} // namespace

void FakeFileSystem::failNext(Step step, int error, int skip) {
    std::lock_guard guard(mutex_);
    faults_[step] = Fault{error, skip};
}

void FakeFileSystem::limitSpace(std::size_t bytes) {
    std::lock_guard guard(mutex_);
    limited_ = true;
    spaceLeft_ = bytes;
}

void FakeFileSystem::chunkWrites(std::size_t maxBytes, bool interrupt) {
    std::lock_guard guard(mutex_);
    maxChunk_ = maxBytes;
    interrupt_ = interrupt;
}

std::vector<std::string> FakeFileSystem::calls() const {
    std::lock_guard guard(mutex_);
    return calls_;
}

int FakeFileSystem::enter(Step step, const std::string& what) {
    std::lock_guard guard(mutex_);
    calls_.push_back(std::string(stepName(step)) + (what.empty() ? "" : " " + what));
    auto fault = faults_.find(step);
    if (fault == faults_.end()) {
        return 0;
    }
    if (fault->second.skip > 0) {
        --fault->second.skip;
        return 0;
    }
    const int error = fault->second.error;
    faults_.erase(fault);
    return error;
}

bool FakeFileSystem::exists(const std::string& path) {
    if (enter(Step::exists, path) != 0) {
        return true;
    }
    return real_.exists(path);
}

int FakeFileSystem::readFile(const std::string& path, FileBytes& contents) {
    if (const int error = enter(Step::read, path)) {
        return error;
    }
    return real_.readFile(path, contents);
}

int FakeFileSystem::createDirectories(const std::string& path) {
    if (const int error = enter(Step::createDirectories, path)) {
        return error;
    }
    return real_.createDirectories(path);
}

int FakeFileSystem::openExclusive(const std::string& path, unsigned mode, int& fd) {
    if (const int error = enter(Step::open, path)) {
        return error;
    }
    return real_.openExclusive(path, mode, fd);
}

int FakeFileSystem::write(int fd, const char* data, std::size_t size, std::size_t& written) {
    written = 0;
    if (const int error = enter(Step::write, "")) {
        return error;
    }
    std::size_t take = size;
    {
        std::lock_guard guard(mutex_);
        if (interrupt_) {
            interruptNext_ = !interruptNext_;
            if (interruptNext_) {
                return EINTR;
            }
        }
        if (maxChunk_ > 0) {
            take = std::min(take, maxChunk_);
        }
        if (limited_) {
            if (spaceLeft_ == 0) {
                return ENOSPC;
            }
            take = std::min(take, spaceLeft_);
        }
    }
    const int error = real_.write(fd, data, take, written);
    std::lock_guard guard(mutex_);
    if (limited_) {
        spaceLeft_ -= written;
    }
    return error;
}

int FakeFileSystem::sync(int fd) {
    if (const int error = enter(Step::sync, "")) {
        return error;
    }
    return real_.sync(fd);
}

int FakeFileSystem::close(int fd) {
    // The descriptor is released even when the close "fails", as on Linux.
    const int error = enter(Step::close, "");
    const int realError = real_.close(fd);
    return error != 0 ? error : realError;
}

int FakeFileSystem::rename(const std::string& from, const std::string& to) {
    if (const int error = enter(Step::rename, from + " -> " + to)) {
        return error;
    }
    return real_.rename(from, to);
}

int FakeFileSystem::link(const std::string& from, const std::string& to) {
    if (const int error = enter(Step::link, from + " -> " + to)) {
        return error;
    }
    return real_.link(from, to);
}

int FakeFileSystem::moveNoReplace(const std::string& from, const std::string& to) {
    if (const int error = enter(Step::move, from + " -> " + to)) {
        return error;
    }
    return real_.moveNoReplace(from, to);
}

int FakeFileSystem::syncDirectory(const std::string& path) {
    if (const int error = enter(Step::syncDirectory, path)) {
        return error;
    }
    return real_.syncDirectory(path);
}

int FakeFileSystem::remove(const std::string& path) {
    if (const int error = enter(Step::remove, path)) {
        return error;
    }
    return real_.remove(path);
}

int FakeFileSystem::lockExclusive(const std::string& path, int& fd) {
    if (const int error = enter(Step::lock, path)) {
        return error;
    }
    return real_.lockExclusive(path, fd);
}

} // namespace daywyn::test
