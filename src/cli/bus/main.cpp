// daywyn: with a verb, the command line; with none, the desktop app, handed over to
// daywyn-app (beside this program in the build tree, in libexec once installed) so that
// a verb never loads Qt's windowing, QML or multimedia libraries.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include "cli/bus/CommandLineClient.h"

namespace {

int startDesktopApp(char** argv) {
    const std::string app = daywyn::helperProgramPath("daywyn-app");
    if (app.empty()) {
        std::fprintf(stderr, "Daywyn could not find daywyn-app; is it installed?\n");
        return 1;
    }
    ::execv(app.c_str(), argv);
    std::fprintf(stderr, "Daywyn could not start %s: %s\n", app.c_str(), std::strerror(errno));
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return startDesktopApp(argv);
    }
    return daywyn::runCommandLine(std::vector<std::string>(argv + 1, argv + argc),
                                  daywyn::systemClock);
}
