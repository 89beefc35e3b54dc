#pragma once

#include <cstddef>
#include <string>

#include "persistence/FileBytes.h"

namespace daywyn {

// The file operations that saving and loading need, one system call each, so that
// tests can make any single step fail. Every operation returns 0 on success or the
// errno value of the failure, so callers can tell "already exists" from a real fault.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    // True when something is at the path, or when it cannot be told (a load then
    // reads and reports instead of assuming there is nothing).
    virtual bool exists(const std::string& path) = 0;
    // The whole content of a regular file.
    virtual int readFile(const std::string& path, FileBytes& contents) = 0;
    // Creates the folder and every missing parent (mode 0700); an existing folder is fine.
    virtual int createDirectories(const std::string& path) = 0;
    // Creates a new file for writing; fails with EEXIST when the name is taken.
    virtual int openExclusive(const std::string& path, unsigned mode, int& fd) = 0;
    // One write(2): it may write fewer bytes than asked, or fail with EINTR.
    virtual int write(int fd, const char* data, std::size_t size, std::size_t& written) = 0;
    // Flushes the file's data and metadata to the disk.
    virtual int sync(int fd) = 0;
    virtual int close(int fd) = 0;
    // Atomically replaces `to` with `from`.
    virtual int rename(const std::string& from, const std::string& to) = 0;
    // A second name for the same file; fails with EEXIST when `to` is taken.
    virtual int link(const std::string& from, const std::string& to) = 0;
    // Moves a file to a name that must be free; fails with EEXIST when it is taken.
    virtual int moveNoReplace(const std::string& from, const std::string& to) = 0;
    // Makes the renames and creations inside a folder durable.
    virtual int syncDirectory(const std::string& path) = 0;
    virtual int remove(const std::string& path) = 0;
    // Opens (creating) the file and takes an exclusive advisory lock on it without
    // waiting: EWOULDBLOCK when another open holds it. Closing fd releases it.
    virtual int lockExclusive(const std::string& path, int& fd) = 0;
};

// The system's description of an errno value ("No space left on device").
std::string describeSystemError(int error);

} // namespace daywyn
