#include "persistence/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <unistd.h>

namespace daywyn {

int writeAll(FileSystem& fs, int fd, std::string_view bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        std::size_t written = 0;
        const int error = fs.write(fd, bytes.data() + done, bytes.size() - done, written);
        if (error == EINTR) {
            continue;
        }
        if (error != 0) {
            return error;
        }
        if (written == 0) {
            // A write that takes nothing without an error would loop forever.
            return ENOSPC;
        }
        done += written;
    }
    return 0;
}

int writeNewFile(FileSystem& fs, const std::string& path, std::string_view bytes, unsigned mode) {
    int fd = -1;
    if (const int error = fs.openExclusive(path, mode, fd); error != 0) {
        return error;
    }
    int error = writeAll(fs, fd, bytes);
    if (error == 0) {
        error = fs.sync(fd);
    }
    // Close even after a failure; its own error (delayed write-back on some file
    // systems) counts only when everything before went well.
    const int closeError = fs.close(fd);
    if (error == 0) {
        error = closeError;
    }
    if (error != 0) {
        fs.remove(path);
    }
    return error;
}

std::string parentDirectory(std::string_view path) {
    const auto slash = path.rfind('/');
    if (slash == std::string_view::npos) {
        return ".";
    }
    if (slash == 0) {
        return "/";
    }
    return std::string(path.substr(0, slash));
}

std::string lastPathComponent(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    const auto slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

Status writeFileAtomically(FileSystem& fs, const std::string& path, std::string_view bytes,
                           unsigned mode) {
    // Several writers (the app and the command line) may export at once: the temporary
    // name carries the process and a counter, and a taken name moves on to the next.
    static std::atomic<unsigned> counter{0};
    const std::string prefix =
        parentDirectory(path) + "/." + lastPathComponent(path) + "." + std::to_string(::getpid());
    std::string temporary;
    int error = EEXIST;
    for (int attempt = 0; attempt < 100 && error == EEXIST; ++attempt) {
        temporary = prefix + "-" + std::to_string(counter.fetch_add(1)) + ".tmp";
        error = writeNewFile(fs, temporary, bytes, mode);
    }
    if (error != 0) {
        return Error{describeSystemError(error)};
    }
    if (const int renameError = fs.rename(temporary, path); renameError != 0) {
        fs.remove(temporary);
        return Error{describeSystemError(renameError)};
    }
    if (const int syncError = fs.syncDirectory(parentDirectory(path)); syncError != 0) {
        return Error{describeSystemError(syncError)};
    }
    return {};
}

} // namespace daywyn
