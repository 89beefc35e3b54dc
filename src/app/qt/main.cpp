// No verb: the desktop app. A verb: the command line.
#include <string>
#include <vector>

#include "shell/qt/CommandLineClient.h"
#include "shell/qt/DesktopApp.h"

int main(int argc, char** argv) {
    if (argc >= 2) {
        return daywyn::runCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    }
    return daywyn::runDesktopApp(argc, argv);
}
