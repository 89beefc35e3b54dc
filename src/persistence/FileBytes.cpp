#include "persistence/FileBytes.h"

#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace daywyn {

namespace {

// Below this a copy costs no more than setting up a mapping.
constexpr std::size_t kMapAtLeast = 256 * 1024;

std::size_t pageSize() {
    static const std::size_t size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return size;
}

} // namespace

FileBytes::FileBytes(std::string_view bytes)
    : copy_(new char[bytes.size() + kSlack]) {
    std::memcpy(copy_.get(), bytes.data(), bytes.size());
    std::memset(copy_.get() + bytes.size(), 0, kSlack);
    data_ = copy_.get();
    size_ = bytes.size();
    readable_ = size_ + kSlack;
}

FileBytes::~FileBytes() {
    release();
}

FileBytes::FileBytes(FileBytes&& other) noexcept {
    *this = std::move(other);
}

FileBytes& FileBytes::operator=(FileBytes&& other) noexcept {
    if (this != &other) {
        release();
        data_ = std::exchange(other.data_, "");
        size_ = std::exchange(other.size_, 0);
        readable_ = std::exchange(other.readable_, 0);
        copy_ = std::move(other.copy_);
        mapping_ = std::exchange(other.mapping_, nullptr);
        mappingLength_ = std::exchange(other.mappingLength_, 0);
    }
    return *this;
}

void FileBytes::release() {
    if (mapping_ != nullptr) {
        ::munmap(mapping_, mappingLength_);
        mapping_ = nullptr;
        mappingLength_ = 0;
    }
    copy_.reset();
    data_ = "";
    size_ = 0;
    readable_ = 0;
}

int FileBytes::read(int fd, std::size_t size) {
    release();
    if (size >= kMapAtLeast) {
        // One anonymous reservation covers the file rounded up to whole pages plus the
        // slack; the file is then mapped over its start. The bytes after the end of the
        // file in its last page read as zero, and so does the reservation after it.
        const std::size_t page = pageSize();
        const std::size_t fileLength = (size + page - 1) / page * page;
        const std::size_t length = (size + kSlack + page - 1) / page * page;
        void* reserved =
            ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (reserved != MAP_FAILED) {
            // MAP_POPULATE makes every page present now, instead of one fault per page
            // as the parser walks it. The file is only ever replaced by a rename, never
            // rewritten in place, so these pages keep the bytes they were read with.
            void* file = ::mmap(reserved, fileLength, PROT_READ,
                                MAP_PRIVATE | MAP_FIXED | MAP_POPULATE, fd, 0);
            if (file != MAP_FAILED) {
                mapping_ = reserved;
                mappingLength_ = length;
                data_ = static_cast<const char*>(file);
                size_ = size;
                readable_ = size + kSlack;
                return 0;
            }
            ::munmap(reserved, length);
        }
        // Not mappable (some file systems): read it instead.
    }
    copy_.reset(new char[size + kSlack]);
    std::size_t used = 0;
    while (used < size) {
        const ssize_t n = ::pread(fd, copy_.get() + used, size - used, static_cast<off_t>(used));
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            const int error = errno;
            copy_.reset();
            return error;
        }
        if (n == 0) {
            copy_.reset();
            return EIO;
        }
        used += static_cast<std::size_t>(n);
    }
    std::memset(copy_.get() + size, 0, kSlack);
    data_ = copy_.get();
    size_ = size;
    readable_ = size + kSlack;
    return 0;
}

} // namespace daywyn
