#include "app/qt/DesktopApp.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDateTime>
#include <QMessageBox>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QSocketNotifier>

#include "app/qt/AppEnvironment.h"
#include "app/qt/DaywynBusService.h"
#include "base/Version.h"
#include "cli/BusAddress.h"
#include "daywyn_interface.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "shell/qt/TrayIcon.h"
#include "ui/qt/OnboardingWindow.h"

namespace daywyn {
namespace {

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

} // namespace

Instant wallClock() {
    return Instant{static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0};
}

namespace {

// Runs before QApplication exists: both choices are read when Qt starts.
int& beforeQt(int& argc) {
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
    return argc;
}

} // namespace

DesktopApp::DesktopApp(int& argc, char** argv)
    : application_(beforeQt(argc), argv) {
    QCoreApplication::setApplicationName(QStringLiteral("Daywyn"));
    QCoreApplication::setOrganizationName(QStringLiteral("Daywyn"));
    QCoreApplication::setApplicationVersion(QString::fromUtf8(appVersion()));
    QGuiApplication::setDesktopFileName(QStringLiteral("daywyn"));
    QApplication::setQuitOnLastWindowClosed(false);
}

DesktopApp::~DesktopApp() = default;

std::optional<int> DesktopApp::open(Clock clock) {
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
        path.value(), std::make_shared<PosixFileSystem>(), clock, wallClock);
    if (const Status locked = repository->acquireWriterLock(); !locked) {
        tellUser(QString::fromStdString(locked.error()));
        return 1;
    }
    environment_ =
        std::make_unique<AppEnvironment>(std::move(repository), Calendar(), std::move(clock));
    service_ = std::make_unique<DaywynBusService>(*environment_);
    // Another instance may have won the name since the check above.
    if (bus.isConnected() && !service_->registerOn(bus)) {
        showRunningInstance(bus);
        return 0;
    }
    quitOnTerminationSignals(&application_);
    return std::nullopt;
}

void DesktopApp::start(bool greet) {
    environment_->start();
    tray_ = std::make_unique<TrayIcon>(environment_->drawerController());
    tray_->setQuickCapture(environment_->quickCapture());
    AppEnvironment* environment = environment_.get();
    tray_->setSettingsOpener([environment] { environment->openSettings(); });
    if (greet) {
        environment_->onboardingWindow().showIfNeeded();
    }
}

int DesktopApp::exec() {
    return QApplication::exec();
}

int runDesktopApp(int argc, char** argv) {
    DesktopApp app(argc, argv);
    if (const auto status = app.open(wallClock)) {
        return *status;
    }
    app.start(true);
    return app.exec();
}

} // namespace daywyn
