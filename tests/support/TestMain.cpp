// The entry point of every core test program. It refuses to run outside the sealed
// environment of scripts/hermetic-test.sh, so a test can never touch the user's
// real data folder.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    const char* hermetic = std::getenv("DAYWYN_HERMETIC");
    const char* data = std::getenv("XDG_DATA_HOME");
    if (!hermetic || std::strcmp(hermetic, "1") != 0 || !data ||
        !std::strstr(data, "daywyn-test.")) {
        std::fprintf(stderr, "These tests run only inside scripts/hermetic-test.sh (ctest does "
                             "that), never against your real data folder.\n");
        return 2;
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
