#include "app/qt/DesktopApp.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDateTime>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QQuickItem>
#include <QQuickView>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QScreen>
#include <QSettings>
#include <QSocketNotifier>

#include "app/qt/AppEnvironment.h"
#include "app/qt/DaywynBusService.h"
#include "base/Version.h"
#include "calendar/qt/CalendarManager.h"
#include "cli/BusAddress.h"
#include "daywyn_interface.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "shell/qt/EdgePanelController.h"
#include "shell/qt/QuickCaptureController.h"
#include "shell/qt/TrayIcon.h"
#include "ui/qt/OnboardingWindow.h"
#include "ui/qt/SettingsScreenshots.h"
#include "ui/qt/SettingsWindow.h"
#include "ui/qt/Theme.h"

namespace daywyn {
namespace {

Instant wallClock() {
    return Instant{static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0};
}

// Asks the running instance to show its drawer; true when one answered.
bool showRunningInstance(QDBusConnection& bus) {
    OrgDaywynDaywynInterface running(QString::fromLatin1(kBusName),
                                     QString::fromLatin1(kBusObjectPath), bus);
    QDBusPendingReply<int, QString, QString> reply = running.Run({QStringLiteral("show")});
    reply.waitForFinished();
    return reply.isValid() && reply.argumentAt<0>() == 0;
}

// A log-out or `kill` ends the app through the event loop, so the writer lock and the
// repository are released in order. The handler only writes a byte: anything more is
// not safe inside a signal handler.
int quitPipe[2] = {-1, -1};

void onQuitSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(quitPipe[1], &byte, 1);
}

void quitOnTerminationSignals(QObject* owner) {
    if (::pipe2(quitPipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    auto* notifier = new QSocketNotifier(quitPipe[0], QSocketNotifier::Read, owner);
    QObject::connect(notifier, &QSocketNotifier::activated, owner, [] {
        char byte = 0;
        while (::read(quitPipe[0], &byte, 1) > 0) {
        }
        QCoreApplication::quit();
    });
    struct sigaction action {};
    action.sa_handler = onQuitSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGHUP, &action, nullptr);
}

void tellUser(const QString& sentence) {
    std::fprintf(stderr, "%s\n", sentence.toLocal8Bit().constData());
    // Started from the menu there is no terminal to read; on a real display say
    // it in a window too. Tests and the offscreen platform never block on a
    // dialog.
    if (QGuiApplication::platformName() != QLatin1String("offscreen") &&
        qEnvironmentVariableIsEmpty("DAYWYN_HERMETIC")) {
        QMessageBox::critical(nullptr, QStringLiteral("Daywyn"), sentence);
    }
}

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

} // namespace

int runDesktopApp(int argc, char** argv) {
    // On Wayland the drawer, the handle and the global shortcut need X11 window
    // placement, so Daywyn runs through XWayland when it is there.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && !qEnvironmentVariableIsEmpty("DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "xcb");
    }
    // The drawer is rectangles and text. Qt Quick's software renderer draws it in a few
    // milliseconds, while an OpenGL context costs about 90 MB and 300 ms at start on a
    // machine without a GPU driver. QT_QUICK_BACKEND still chooses, when set.
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND")) {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }
    QElapsedTimer sinceLaunch;
    sinceLaunch.start();
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Daywyn"));
    QCoreApplication::setOrganizationName(QStringLiteral("Daywyn"));
    QCoreApplication::setApplicationVersion(QString::fromUtf8(appVersion()));
    QGuiApplication::setDesktopFileName(QStringLiteral("daywyn"));
    QApplication::setQuitOnLastWindowClosed(false);

    // One instance per user: a second launch shows the first one's drawer and
    // leaves.
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected() && bus.interface()->isServiceRegistered(QString::fromLatin1(kBusName)) &&
        showRunningInstance(bus)) {
        return 0;
    }

    const auto path = JSONTaskRepository::defaultFilePath();
    if (!path) {
        tellUser(QString::fromStdString(path.error()));
        return 1;
    }
    auto repository = std::make_unique<JSONTaskRepository>(
        path.value(), std::make_shared<PosixFileSystem>(), wallClock, wallClock);
    if (const Status locked = repository->acquireWriterLock(); !locked) {
        tellUser(QString::fromStdString(locked.error()));
        return 1;
    }

    // $XDG_CONFIG_HOME/Daywyn/Daywyn.conf: the native format on Linux is INI in .conf.
    const QSettings settings(QStringLiteral("Daywyn"), QStringLiteral("Daywyn"));
    const bool dark = Theme::resolveDark(settings.value(QStringLiteral("appearance")).toString());
    AppEnvironment environment(std::move(repository), Calendar(), wallClock, dark);

    DaywynBusService service(environment);
    // Another instance may have won the name since the check above.
    if (bus.isConnected() && !service.registerOn(bus)) {
        showRunningInstance(bus);
        return 0;
    }

    EdgePanelController& drawer = environment.drawerController();
    // Measuring and screenshot hooks: show the drawer at once, without the slide,
    // and leave after its first complete frame.
    const QString screenshot = qEnvironmentVariable("DAYWYN_SCREENSHOT");
    const bool exitWhenReady = qEnvironmentVariableIntValue("DAYWYN_EXIT_WHEN_READY") == 1;
    if (exitWhenReady || !screenshot.isEmpty()) {
        drawer.setReducedMotion(true);
        QObject::connect(&drawer, &EdgePanelController::drawerShown, &app, [&] {
            if (!screenshot.isEmpty() && !saveScreenshots(*drawer.drawerWindow(), screenshot)) {
                QCoreApplication::exit(1);
                return;
            }
            if (exitWhenReady) {
                std::fprintf(stderr, "Drawer ready after %lld ms.\n",
                             static_cast<long long>(sinceLaunch.elapsed()));
            }
            QCoreApplication::exit(0);
        });
    }

    quitOnTerminationSignals(&app);
    environment.start();
    TrayIcon tray(drawer);
    tray.setQuickCapture(environment.quickCapture());
    tray.setSettingsOpener([&environment] { environment.settingsWindow().show(); });
    // Screenshot hook: Quick Add, each settings page and the welcome window, then exit.
    if (const QString folder = qEnvironmentVariable("DAYWYN_SETTINGS_SCREENSHOTS");
        !folder.isEmpty()) {
        captureSettingsScreenshots(environment.quickCapture(), environment.settingsWindow(),
                                   environment.onboardingWindow(), folder);
    } else if (!exitWhenReady && screenshot.isEmpty()) {
        environment.onboardingWindow().showIfNeeded();
    }
    CalendarManager& calendars = environment.calendarManager();
    if (!screenshot.isEmpty() && calendars.isLoading()) {
        // The picture shows today's calendar events: show it once the first read is in.
        QObject::connect(&calendars, &CalendarManager::changed, &drawer, [&] {
            if (!calendars.isLoading() && !drawer.isVisible()) {
                drawer.show();
            }
        });
    } else if (exitWhenReady || !screenshot.isEmpty()) {
        drawer.show();
    }
    return QApplication::exec();
}

} // namespace daywyn
