// No verb: the desktop app. A verb: the command line.
#include <cstdio>
#include <cstring>

#include "base/Version.h"
#include "shell/qt/DesktopApp.h"

int main(int argc, char** argv) {
    if (argc >= 2 && (std::strcmp(argv[1], "--version") == 0 || std::strcmp(argv[1], "-v") == 0)) {
        std::printf("%s\n", daywyn::versionLine().c_str());
        return 0;
    }
    if (argc >= 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
        std::printf("Usage: daywyn [--version]\n\n"
                    "With no arguments, starts Daywyn.\n");
        return 0;
    }
    if (argc >= 2) {
        std::fprintf(stderr, "daywyn: unknown command \"%s\". Run 'daywyn --help' for usage.\n",
                     argv[1]);
        return 2;
    }
    return daywyn::runDesktopApp(argc, argv);
}
