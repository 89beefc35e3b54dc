#pragma once

#include "persistence/FileSystem.h"

namespace daywyn {

// The real file system through POSIX calls. Stateless and safe to share between
// threads.
class PosixFileSystem : public FileSystem {
public:
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
};

} // namespace daywyn
