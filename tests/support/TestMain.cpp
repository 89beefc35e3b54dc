// The entry point of every core test program.
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <gtest/gtest.h>

#include "support/HermeticGuard.h"

namespace {

// Each test starts with empty home and data folders, whether CTest runs it alone or
// the whole program runs at once: a file one test leaves behind must not decide
// another's outcome.
class EmptyFoldersPerTest : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo&) override {
        for (const char* name :
             {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"}) {
            const char* folder = std::getenv(name);
            std::error_code error;
            for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
                std::filesystem::remove_all(entry.path(), error);
            }
        }
    }
};

} // namespace

int main(int argc, char** argv) {
    if (!daywyn::test::runningHermetically()) {
        return 2;
    }
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::UnitTest::GetInstance()->listeners().Append(new EmptyFoldersPerTest);
    return RUN_ALL_TESTS();
}
