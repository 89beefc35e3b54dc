#include "persistence/FileBytes.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace daywyn {

namespace {

// Large files are read into memory of their own in 2 MB pages where the kernel has them
// (transparent huge pages, asked for per mapping). Each fresh small page costs a fault
// on first touch, several microseconds on virtual machines that shadow the guest's page
// tables: 5,000 of them for a 20 MB file, and the same again whenever a mapping of the
// file itself is touched after being made. Below this size the file is copied into an
// ordinary allocation.
constexpr std::size_t kHugeBufferFrom = 256 * 1024;
constexpr std::size_t kHugePage = 2 * 1024 * 1024;

// `length` bytes rounded up to whole 2 MB pages, zeroed and aligned to 2 MB so that
// each of them can be one huge page; the length mapped is stored in `mapped`. Null
// when no memory could be mapped.
void* hugePageBuffer(std::size_t length, std::size_t& mapped) {
    const std::size_t rounded = (length + kHugePage - 1) / kHugePage * kHugePage;
    // Mapped a page larger, to cut an aligned run out of it.
    const std::size_t reserved = rounded + kHugePage;
    void* region =
        ::mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (region == MAP_FAILED) {
        return nullptr;
    }
    const auto start = reinterpret_cast<std::uintptr_t>(region);
    const std::uintptr_t aligned = (start + kHugePage - 1) / kHugePage * kHugePage;
    if (aligned > start) {
        ::munmap(region, aligned - start);
    }
    if (const std::uintptr_t end = aligned + rounded; end < start + reserved) {
        ::munmap(reinterpret_cast<void*>(end), start + reserved - end);
    }
    void* buffer = reinterpret_cast<void*>(aligned);
    // Only advice: without huge pages the buffer is made of small ones.
    ::madvise(buffer, rounded, MADV_HUGEPAGE);
    mapped = rounded;
    return buffer;
}

// Reads `size` bytes of fd from its start into `out`: 0 or the errno value.
int readAll(int fd, char* out, std::size_t size) {
    std::size_t used = 0;
    while (used < size) {
        const ssize_t n = ::pread(fd, out + used, size - used, static_cast<off_t>(used));
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return errno;
        }
        if (n == 0) {
            return EIO;
        }
        used += static_cast<std::size_t>(n);
    }
    return 0;
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
    if (size >= kHugeBufferFrom) {
        if (void* buffer = hugePageBuffer(size + kSlack, mappingLength_)) {
            mapping_ = buffer;
            auto* bytes = static_cast<char*>(buffer);
            // Fresh anonymous pages read as zeros: the slack needs no clearing.
            if (const int error = readAll(fd, bytes, size); error != 0) {
                release();
                return error;
            }
            data_ = bytes;
            size_ = size;
            readable_ = size + kSlack;
            return 0;
        }
    }
    copy_.reset(new char[size + kSlack]);
    if (const int error = readAll(fd, copy_.get(), size); error != 0) {
        copy_.reset();
        return error;
    }
    std::memset(copy_.get() + size, 0, kSlack);
    data_ = copy_.get();
    size_ = size;
    readable_ = size + kSlack;
    return 0;
}

} // namespace daywyn
