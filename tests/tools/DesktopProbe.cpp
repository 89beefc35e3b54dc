// daywyn-probe: the desktop app as daywyn-app starts it, plus what the screenshot and
// start-up scripts need and the shipped program must not carry. Built with the tests
// only. Usage:
//   daywyn-probe --exit-when-ready         leave after the drawer's first frame and say
//                                          how long that took; give up with status 3
//                                          when no frame came within a minute
//   daywyn-probe --screenshot PATH.png     save the drawer (and PATH-end.png, scrolled to
//                                          its end, and PATH-screen.png) and leave
//   daywyn-probe --settings-screenshots DIR
//                                          save Quick Add, every settings page and the
//                                          welcome window into DIR and leave
//   daywyn-probe --task-sync-screenshots DIR [SERVER SILENT-SERVER]
//                                          save the Calendars page's task sync section
//                                          (with servers: going through its set-up)
#include <cstdio>
#include <cstring>
#include <sys/resource.h>

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>
#include <QString>
#include <QTimer>

#include "app/qt/AppEnvironment.h"
#include "app/qt/DesktopApp.h"
#include "calendar/qt/CalendarManager.h"
#include "shell/qt/EdgePanelController.h"
#include "tools/SettingsScreenshots.h"

namespace daywyn {
namespace {

// Saves the drawer as it opens to `path`, and scrolled to its end beside it
// ("drawer.png" and "drawer-end.png"), so every section can be looked at.
bool saveScreenshots(QQuickView& window, const QString& path) {
    const auto beside = [&path](QLatin1String suffix) {
        QString named = path;
        return named.insert(path.endsWith(QLatin1String(".png")) ? path.size() - 4 : path.size(),
                            suffix);
    };
    const QImage top = window.grabWindow();
    if (auto* list = window.rootObject()->findChild<QQuickItem*>(QStringLiteral("taskList"))) {
        QMetaObject::invokeMethod(list, "positionViewAtEnd");
    }
    const QImage end = window.grabWindow();
    // The whole screen too, to see the handle and the drawer in place (xcb only).
    if (QScreen* screen = window.screen(); screen && QGuiApplication::platformName() == "xcb") {
        screen->grabWindow(0).save(beside(QLatin1String("-screen")));
    }
    if (top.isNull() || !top.save(path) || end.isNull() ||
        !end.save(beside(QLatin1String("-end")))) {
        std::fprintf(stderr, "Daywyn could not save the screenshot to %s.\n", qPrintable(path));
        return false;
    }
    return true;
}

// However the desktop misbehaves (no window manager, a frame that never comes), a
// measurement must end: after this long the probe says so and leaves.
constexpr int readyTimeoutMilliseconds = 60'000;

int usage() {
    std::fprintf(stderr, "Usage: daywyn-probe --exit-when-ready | --screenshot PATH.png | "
                         "--settings-screenshots FOLDER | --task-sync-screenshots FOLDER "
                         "[SERVER SILENT-SERVER]\n");
    return 2;
}

} // namespace
} // namespace daywyn

int main(int argc, char** argv) {
    using namespace daywyn;
    QElapsedTimer sinceLaunch;
    sinceLaunch.start();
    if (argc < 2) {
        return usage();
    }
    const bool exitWhenReady = std::strcmp(argv[1], "--exit-when-ready") == 0;
    const bool drawerShot = std::strcmp(argv[1], "--screenshot") == 0 && argc == 3;
    const bool settingsShots = std::strcmp(argv[1], "--settings-screenshots") == 0 && argc == 3;
    const bool syncShots =
        std::strcmp(argv[1], "--task-sync-screenshots") == 0 && (argc == 3 || argc == 5);
    if (!exitWhenReady && !drawerShot && !settingsShots && !syncShots) {
        return usage();
    }
    const QString target = argc >= 3 ? QString::fromLocal8Bit(argv[2]) : QString();
    const QString server = argc == 5 ? QString::fromLocal8Bit(argv[3]) : QString();
    const QString silentServer = argc == 5 ? QString::fromLocal8Bit(argv[4]) : QString();
    int qtArgc = 1;
    DesktopApp app(qtArgc, argv);
    if (const auto status = app.open(wallClock)) {
        return *status;
    }
    AppEnvironment& environment = app.environment();
    EdgePanelController& drawer = environment.drawerController();
    if (exitWhenReady || drawerShot) {
        // Shown at once, without the slide; leave after its first complete frame.
        drawer.setReducedMotion(true);
        QObject::connect(&drawer, &EdgePanelController::drawerShown, &drawer, [&] {
            if (drawerShot && !saveScreenshots(*drawer.drawerWindow(), target)) {
                QCoreApplication::exit(1);
                return;
            }
            if (exitWhenReady) {
                // CPU time of every thread since the program was started, loading its
                // libraries included; the wall time counts from main.
                rusage used{};
                ::getrusage(RUSAGE_SELF, &used);
                const auto ms = [](const timeval& t) {
                    return static_cast<long long>(t.tv_sec) * 1000 + t.tv_usec / 1000;
                };
                std::fprintf(stderr, "Drawer ready after %lld ms, %lld ms CPU.\n",
                             static_cast<long long>(sinceLaunch.elapsed()),
                             ms(used.ru_utime) + ms(used.ru_stime));
            }
            QCoreApplication::exit(0);
        });
        QTimer::singleShot(readyTimeoutMilliseconds, &drawer, [] {
            std::fprintf(stderr, "The drawer showed no frame within %d s; giving up.\n",
                         readyTimeoutMilliseconds / 1000);
            QCoreApplication::exit(3);
        });
    }
    app.start(false);
    if (settingsShots) {
        captureSettingsScreenshots(environment.quickCapture(), environment.settingsWindow(),
                                   environment.onboardingWindow(), target);
    }
    if (syncShots) {
        captureTaskSyncScreenshots(environment.settingsWindow(), target, server, silentServer);
    }
    CalendarManager& calendars = environment.calendarManager();
    if (drawerShot && calendars.isLoading()) {
        // The picture shows today's calendar events: show it once the first read is in.
        QObject::connect(&calendars, &CalendarManager::changed, &drawer, [&] {
            if (!calendars.isLoading() && !drawer.isVisible()) {
                drawer.show();
            }
        });
    } else if (exitWhenReady || drawerShot) {
        drawer.show();
    }
    return app.exec();
}
