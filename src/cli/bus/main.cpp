// daywyn: with a verb, the command line; with none, the desktop app, handed over to
// daywyn-app (beside this program in the build tree, in libexec once installed) so that
// a verb never loads Qt's windowing, QML or multimedia libraries.
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include "cli/bus/CommandLineClient.h"

namespace {

std::string folderOfThisProgram() {
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    if (length <= 0) {
        return ".";
    }
    std::string text(path, static_cast<std::size_t>(length));
    return text.substr(0, text.rfind('/'));
}

int startDesktopApp(char** argv) {
    const std::string folder = folderOfThisProgram();
    for (const std::string& app : {folder + "/daywyn-app", folder + "/" DAYWYN_APP_FROM_BINDIR}) {
        if (::access(app.c_str(), X_OK) == 0) {
            ::execv(app.c_str(), argv);
            std::fprintf(stderr, "Daywyn could not start %s: %s\n", app.c_str(),
                         std::strerror(errno));
            return 1;
        }
    }
    std::fprintf(stderr, "Daywyn could not find daywyn-app beside %s; is it installed?\n",
                 folder.c_str());
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return startDesktopApp(argv);
    }
    return daywyn::runCommandLine(std::vector<std::string>(argv + 1, argv + argc));
}
