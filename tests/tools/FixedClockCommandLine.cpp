// daywyn-at: the daywyn program with its clock stopped at a given instant, so that the
// tests of dates ("tomorrow at 10", the file name a broken state file is moved to) know
// what "now" is. Built with the tests only, beside daywyn so that it finds the same
// helper programs. Usage: daywyn-at INSTANT VERB …   (INSTANT as 2026-03-04T08:15:00Z)
#include <cstdio>
#include <string>
#include <vector>

#include "base/Instant.h"
#include "cli/bus/CommandLineClient.h"

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "Usage: daywyn-at INSTANT VERB [ARGUMENTS]\n");
        return 2;
    }
    const auto at = daywyn::parseIsoText(argv[1]);
    if (!at) {
        std::fprintf(stderr, "daywyn-at: %s is not an instant such as 2026-03-04T08:15:00Z.\n",
                     argv[1]);
        return 2;
    }
    const daywyn::Instant fixed = *at;
    return daywyn::runCommandLine(std::vector<std::string>(argv + 2, argv + argc),
                                  [fixed] { return fixed; });
}
