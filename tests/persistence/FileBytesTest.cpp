#include "persistence/FileBytes.h"

#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "persistence/PosixFileSystem.h"
#include "support/Process.h"

namespace daywyn {
namespace {

namespace fs = std::filesystem;

class FileBytesTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() / ("daywyn-filebytes-" + std::to_string(::getpid()));
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }

    // Writes `bytes` to a file and reads it back through the real file system.
    FileBytes roundTrip(const std::string& bytes, int& error) {
        const std::string path = (folder / "file").string();
        test::writeFile(path, bytes);
        FileBytes read;
        error = PosixFileSystem().readFile(path, read);
        return read;
    }

    static void expectSlackIsZero(const FileBytes& bytes) {
        ASSERT_GE(bytes.readable(), bytes.size() + FileBytes::kSlack);
        for (std::size_t i = bytes.size(); i < bytes.size() + FileBytes::kSlack; ++i) {
            ASSERT_EQ(bytes.data()[i], '\0') << "at " << i;
        }
    }

    fs::path folder;
};

TEST_F(FileBytesTest, SmallAndLargeFilesReadWholeWithZeroSlackAfterThem) {
    // Sizes around the page size and the mapping threshold, where the slack either fits
    // in the file's last page or needs the page after it.
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{4095}, std::size_t{4096},
          std::size_t{256 * 1024 - 1}, std::size_t{256 * 1024}, 64 * page, 64 * page - 1,
          64 * page - 64, 64 * page + 1, std::size_t{3 * 1024 * 1024 + 7}}) {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<char>('a' + (i * 7 + i / 4096) % 26);
        }
        int error = -1;
        const FileBytes read = roundTrip(bytes, error);
        ASSERT_EQ(error, 0) << size;
        ASSERT_EQ(read.size(), size);
        EXPECT_TRUE(read.view() == bytes) << size;
        expectSlackIsZero(read);
    }
}

TEST_F(FileBytesTest, MovedBytesStayReadableAndACopyHasItsOwnSlack) {
    int error = -1;
    const std::string large(1024 * 1024, 'x');
    FileBytes first = roundTrip(large, error);
    ASSERT_EQ(error, 0);
    FileBytes moved = std::move(first);
    EXPECT_EQ(first.size(), 0u);
    EXPECT_TRUE(moved.view() == large);
    moved = FileBytes(std::string_view("{}"));
    EXPECT_EQ(moved.view(), "{}");
    expectSlackIsZero(moved);
}

TEST_F(FileBytesTest, FoldersAndMissingFilesAreErrors) {
    FileBytes read;
    PosixFileSystem real;
    EXPECT_EQ(real.readFile(folder.string(), read), EISDIR);
    EXPECT_EQ(real.readFile((folder / "missing").string(), read), ENOENT);
    // Bytes shorter than the size asked for: the file changed under the reader.
    const std::string path = (folder / "short").string();
    test::writeFile(path, "abc");
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(read.read(fd, 10), EIO);
    // The same for a size read into memory of its own, and nothing is left readable.
    EXPECT_EQ(read.read(fd, 3 * 1024 * 1024), EIO);
    EXPECT_EQ(read.size(), 0u);
    EXPECT_EQ(read.readable(), 0u);
    ::close(fd);
}

TEST_F(FileBytesTest, ReadingAgainReplacesTheBytesOfALargerOrSmallerFile) {
    // From a large file to a small one and back: each read holds exactly the new bytes
    // and its own zero slack, whatever the previous read left behind.
    FileBytes reused;
    for (const std::size_t size : {std::size_t{5 * 1024 * 1024}, std::size_t{100},
                                   std::size_t{2 * 1024 * 1024 - FileBytes::kSlack},
                                   std::size_t{2 * 1024 * 1024 - FileBytes::kSlack + 1}}) {
        const std::string bytes(size, static_cast<char>('a' + size % 26));
        const std::string path = (folder / "again").string();
        test::writeFile(path, bytes);
        ASSERT_EQ(PosixFileSystem().readFile(path, reused), 0) << size;
        ASSERT_EQ(reused.size(), size);
        EXPECT_TRUE(reused.view() == bytes) << size;
        expectSlackIsZero(reused);
    }
}

} // namespace
} // namespace daywyn
