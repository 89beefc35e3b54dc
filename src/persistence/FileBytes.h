#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace daywyn {

// A whole file's bytes, read-only, followed by at least kSlack readable zero bytes, so
// that a parser that reads a little past the end (simdjson) can work on them in place.
// Large files are read into memory made of 2 MB pages where the system has them: a
// few faults instead of one per 4 KB page, each costly on a virtual machine.
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

    // Reads `size` bytes of the open regular file fd from its start. Returns 0 or the errno value
    // of the failure; a file that holds fewer bytes than `size` by the time it is read is an error
    // (EIO).
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
