#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace daywyn {

// A whole file's bytes, read-only, followed by at least kSlack readable zero bytes, so
// that a parser that reads a little past the end (simdjson) can work on them in place.
// Large files are mapped rather than copied: the page cache's own pages, made present
// in one call, cost far less than faulting in and filling a fresh buffer of the same
// size.
class FileBytes {
public:
    static constexpr std::size_t kSlack = 64;

    FileBytes() = default;
    // A copy of the given bytes (files too small to be worth mapping, tests).
    explicit FileBytes(std::string_view bytes);
    ~FileBytes();
    FileBytes(FileBytes&& other) noexcept;
    FileBytes& operator=(FileBytes&& other) noexcept;
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    // Reads `size` bytes of the open regular file fd from its start: mapped when large,
    // else copied. Returns 0 or the errno value of the failure; a file that holds fewer
    // bytes than `size` by the time it is read is an error (EIO).
    int read(int fd, std::size_t size);

    const char* data() const { return data_; }
    std::size_t size() const { return size_; }
    // Bytes that may be read from data(): size() and the slack after it.
    std::size_t readable() const { return readable_; }
    std::string_view view() const { return {data_, size_}; }

private:
    void release();

    const char* data_ = "";
    std::size_t size_ = 0;
    std::size_t readable_ = 0;
    std::unique_ptr<char[]> copy_;
    void* mapping_ = nullptr;
    std::size_t mappingLength_ = 0;
};

} // namespace daywyn
