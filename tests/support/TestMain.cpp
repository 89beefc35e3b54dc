// The entry point of every core test program.
#include <gtest/gtest.h>

#include "support/HermeticGuard.h"

int main(int argc, char** argv) {
    if (!daywyn::test::runningHermetically()) {
        return 2;
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
