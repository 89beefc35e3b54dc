#include "persistence/PosixFileSystem.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace daywyn {

namespace {

int openRetrying(const char* path, int flags, unsigned mode) {
    int fd;
    do {
        fd = ::open(path, flags, static_cast<mode_t>(mode));
    } while (fd < 0 && errno == EINTR);
    return fd;
}

} // namespace

bool PosixFileSystem::exists(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0) {
        return true;
    }
    return errno != ENOENT && errno != ENOTDIR;
}

int PosixFileSystem::readFile(const std::string& path, FileBytes& contents) {
    const int fd = openRetrying(path.c_str(), O_RDONLY | O_CLOEXEC, 0);
    if (fd < 0) {
        return errno;
    }
    struct stat info {};
    int error = 0;
    if (::fstat(fd, &info) != 0) {
        error = errno;
    } else if (!S_ISREG(info.st_mode)) {
        error = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
    } else {
        error = contents.read(fd, static_cast<std::size_t>(info.st_size));
    }
    ::close(fd);
    return error;
}

int PosixFileSystem::createDirectories(const std::string& path) {
    if (path.empty()) {
        return 0;
    }
    // Walk from the root so every missing parent is made; an existing one is fine.
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string prefix = path.substr(0, end);
        if (!prefix.empty() && ::mkdir(prefix.c_str(), 0700) != 0 && errno != EEXIST) {
            return errno;
        }
        if (end == std::string::npos) {
            break;
        }
    }
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        return errno;
    }
    return S_ISDIR(info.st_mode) ? 0 : ENOTDIR;
}

int PosixFileSystem::openExclusive(const std::string& path, unsigned mode, int& fd) {
    fd = openRetrying(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    return fd < 0 ? errno : 0;
}

int PosixFileSystem::write(int fd, const char* data, std::size_t size, std::size_t& written) {
    written = 0;
    const ssize_t n = ::write(fd, data, size);
    if (n < 0) {
        return errno;
    }
    written = static_cast<std::size_t>(n);
    return 0;
}

int PosixFileSystem::sync(int fd) {
    return ::fsync(fd) == 0 ? 0 : errno;
}

int PosixFileSystem::close(int fd) {
    // On Linux the descriptor is gone even when close reports EINTR: never retry.
    if (::close(fd) != 0 && errno != EINTR) {
        return errno;
    }
    return 0;
}

int PosixFileSystem::rename(const std::string& from, const std::string& to) {
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int PosixFileSystem::link(const std::string& from, const std::string& to) {
    return ::link(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int PosixFileSystem::moveNoReplace(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    // File systems without RENAME_NOREPLACE: a hard link also refuses a taken name.
    if (::link(from.c_str(), to.c_str()) != 0) {
        return errno;
    }
    return ::unlink(from.c_str()) == 0 ? 0 : errno;
}

int PosixFileSystem::syncDirectory(const std::string& path) {
    const int fd = openRetrying(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    if (fd < 0) {
        return errno;
    }
    const int result = ::fsync(fd) == 0 ? 0 : errno;
    ::close(fd);
    return result;
}

int PosixFileSystem::remove(const std::string& path) {
    return ::unlink(path.c_str()) == 0 ? 0 : errno;
}

int PosixFileSystem::lockExclusive(const std::string& path, int& fd) {
    fd = openRetrying(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) {
        return errno;
    }
    int result;
    do {
        result = ::flock(fd, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        const int error = errno;
        ::close(fd);
        fd = -1;
        return error;
    }
    return 0;
}

} // namespace daywyn
