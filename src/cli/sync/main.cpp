// daywyn-sync: `daywyn sync` and `daywyn sync setup`, a program of its own so that Qt's
// network library and libsecret are loaded by the one verb that talks to a CalDAV
// server, not by every `daywyn` run.
//
// Usage (by daywyn only): daywyn-sync NOW sync [OPTIONS] [setup URL]
// NOW is the caller's instant in ISO 8601, so that both agree on "today".
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include <QCoreApplication>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "cli/sync/SyncCommand.h"

int main(int argc, char** argv) {
    const auto now = argc > 2 ? daywyn::parseIsoText(argv[1]) : std::nullopt;
    if (!now) {
        std::fprintf(stderr, "daywyn-sync is run by 'daywyn sync'; use that.\n");
        return 2;
    }
    // The network's replies arrive through an event loop, which needs the application.
    QCoreApplication application(argc, argv);
    const std::vector<std::string> args(argv + 2, argv + argc);
    return daywyn::runSyncCommand(args, *now, daywyn::Calendar(), std::cin, std::cout, std::cerr);
}
