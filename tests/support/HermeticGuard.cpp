#include "support/HermeticGuard.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace daywyn::test {

bool runningHermetically() {
    const char* hermetic = std::getenv("DAYWYN_HERMETIC");
    const char* data = std::getenv("XDG_DATA_HOME");
    if (!hermetic || std::strcmp(hermetic, "1") != 0 || !data ||
        !std::strstr(data, "daywyn-test.")) {
        std::fprintf(stderr, "These tests run only inside scripts/hermetic-test.sh (ctest does "
                             "that), never against your real data folder.\n");
        return false;
    }
    return true;
}

} // namespace daywyn::test
