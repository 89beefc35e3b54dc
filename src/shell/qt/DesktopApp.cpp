#include "shell/qt/DesktopApp.h"

#include <cstdio>

#include <QCoreApplication>

#include "base/Version.h"

namespace daywyn {

int runDesktopApp(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Daywyn"));
    QCoreApplication::setApplicationVersion(QString::fromUtf8(appVersion()));
    // The drawer is not built yet: say so plainly instead of opening an empty window.
    std::printf("%s\n", versionLine().c_str());
    std::printf("The edge drawer, quick capture and reminders are on their way.\n"
                "Until then, run 'daywyn --help' to see what this version can do.\n");
    return 0;
}

} // namespace daywyn
