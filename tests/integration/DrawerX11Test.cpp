// The real daywyn program on a private X server with the openbox window manager,
// driven with xdotool and xrandr as a user's mouse, keyboard and monitor settings
// drive it: the handle opens the drawer ready for typing, and a resolution change
// never strands the drawer off screen.
#include <memory>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRect>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "support/TaskBuilder.h"
#include "support/qt/PrivateDesktop.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

using test::eventually;

class DrawerX11Test : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        for (const char* tool : {"Xvfb", "openbox", "xdotool", "xprop", "xrandr"}) {
            if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty()) {
                missingTool = tool;
                return;
            }
        }
        desktop = std::make_unique<test::PrivateDesktop>(QStringLiteral("1440x900x24"));
        environment = desktop->environment();
        ready = desktop->ready();
        // A small netbook mode the test can switch the screen to and back.
        run(QStringLiteral("xrandr"),
            QStringLiteral("--newmode 1024x600 0 1024 0 0 0 600 0 0 0").split(QLatin1Char(' ')));
        run(QStringLiteral("xrandr"),
            QStringLiteral("--addmode screen 1024x600").split(QLatin1Char(' ')));
    }

    static void TearDownTestSuite() { desktop.reset(); }

    static void stop(QProcess* process) { test::stopProcess(process); }

    static QString run(const QString& program, const QStringList& args) {
        return desktop->run(program, args);
    }
    static QString xdotool(const QString& args) {
        return run(QStringLiteral("xdotool"), args.split(QLatin1Char(' ')));
    }

    void SetUp() override {
        if (missingTool) {
            GTEST_SKIP() << missingTool
                         << " is not installed (scripts/install-deps.sh installs it).";
        }
        ASSERT_TRUE(ready) << desktop->failure().toStdString();
    }
    void TearDown() override {
        stop(&app);
        if (ready) {
            run(QStringLiteral("xrandr"), QStringLiteral("--output screen --mode 1440x900 --fb "
                                                         "1440x900")
                                              .split(QLatin1Char(' ')));
        }
    }

    // The state file holds `tasks`; the app starts over it, welcome already seen.
    void startAppWith(const std::vector<TaskItem>& tasks, Instant now) {
        const auto clock = [now] {
            return now;
        };
        {
            // Closed before the app starts: the repository holds the file's lock.
            JSONTaskRepository repository(statePath(), std::make_shared<PosixFileSystem>(), clock,
                                          clock);
            const AppPreferences defaults;
            const std::vector<DailyReport> none;
            ASSERT_TRUE(repository.save(PersistedStateView(tasks, defaults, none)));
        }
        QDir(config.path()).mkpath(QStringLiteral("Daywyn"));
        QFile settings(config.filePath(QStringLiteral("Daywyn/Daywyn.conf")));
        ASSERT_TRUE(settings.open(QIODevice::WriteOnly));
        settings.write("[General]\nonboardingCompleted=true\n");
        settings.close();
        QProcessEnvironment env = environment;
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        app.setProcessEnvironment(env);
        app.start(QString::fromLatin1(DAYWYN_BINARY_PATH), {});
        ASSERT_TRUE(eventually([&] { return !handleWindow().isEmpty(); }))
            << app.readAllStandardError().toStdString();
    }
    static std::string statePath() { return JSONTaskRepository::defaultFilePath().value(); }
    QJsonArray savedTasks() const {
        QFile file(QString::fromStdString(statePath()));
        return file.open(QIODevice::ReadOnly)
                   ? QJsonDocument::fromJson(file.readAll())["tasks"].toArray()
                   : QJsonArray();
    }

    QString handleWindow() { return xdotool(QStringLiteral("search --name ^Daywyn.handle$")); }
    QRect geometryOf(const QString& window) {
        // "WINDOW=…\nX=…\nY=…\nWIDTH=…\nHEIGHT=…\nSCREEN=…"
        QRect r;
        for (const QString& line : xdotool(QStringLiteral("getwindowgeometry --shell ") + window)
                                       .split(QLatin1Char('\n'))) {
            const int value = line.section(QLatin1Char('='), 1).toInt();
            if (line.startsWith(QLatin1String("X=")))
                r.moveLeft(value);
            if (line.startsWith(QLatin1String("Y=")))
                r.moveTop(value);
            if (line.startsWith(QLatin1String("WIDTH=")))
                r.setWidth(value);
            if (line.startsWith(QLatin1String("HEIGHT=")))
                r.setHeight(value);
        }
        return r;
    }
    // The "Window shape extents" line xwininfo gives for a window.
    QString shapeOf(const QString& window) {
        const QString info = run(QStringLiteral("xwininfo"),
                                 {QStringLiteral("-id"), window, QStringLiteral("-shape")});
        const qsizetype at = info.indexOf(QLatin1String("Window shape extents:"));
        return at < 0 ? QString() : info.mid(at).section(QLatin1Char('\n'), 0, 0);
    }
    void clickHandle() {
        // Once the handle is cut to its bar, on the bar: the rest lets clicks through.
        eventually([&] { return !shapeOf(handleWindow()).isEmpty(); });
        xdotool(QStringLiteral("mousemove --window %1 2 29").arg(handleWindow()));
        QThread::msleep(100);
        xdotool(QStringLiteral("click 1"));
    }
    // The drawer once it is the active window: its id, or empty.
    QString activeDrawer() {
        QString id;
        eventually([&] {
            id = xdotool(QStringLiteral("getactivewindow"));
            return xdotool(QStringLiteral("getwindowname ") + id) == QStringLiteral("Daywyn");
        });
        return xdotool(QStringLiteral("getwindowname ") + id) == QStringLiteral("Daywyn")
                   ? id
                   : QString();
    }

    static inline const char* missingTool = nullptr;
    static inline std::unique_ptr<test::PrivateDesktop> desktop;
    static inline QProcessEnvironment environment;
    static inline bool ready = false;
    QTemporaryDir config;
    QProcess app;
};

TEST_F(DrawerX11Test, TheHandleOpensTheDrawerReadyToTypeATaskWithoutTouchingAnother) {
    const Instant now = test::at(test::utc(), 2026, 11, 21, 9);
    ASSERT_NO_FATAL_FAILURE(
        startAppWith({test::TaskBuilder("Water plants").createdAt(now - 60),
                      test::TaskBuilder("Call Ama").createdAt(now - 60).running(now - 600)},
                     now));
    // The handle stays out of task lists and shows no box around its bar.
    const QString handle = handleWindow();
    EXPECT_TRUE(eventually([&] {
        return run(QStringLiteral("xprop"),
                   {QStringLiteral("-id"), handle, QStringLiteral("_NET_WM_STATE")})
            .contains(QLatin1String("_NET_WM_STATE_SKIP_TASKBAR"));
    }));
    EXPECT_TRUE(eventually([&] { return shapeOf(handle).contains(QLatin1String("6x42")); }))
        << shapeOf(handle).toStdString();

    clickHandle();
    ASSERT_FALSE(activeDrawer().isEmpty());
    xdotool(QStringLiteral("type --delay 10 Pay rent at noon"));
    xdotool(QStringLiteral("key Return"));
    ASSERT_TRUE(eventually([&] { return savedTasks().size() == 3; }));
    for (const auto& task : savedTasks()) {
        const QJsonObject t = task.toObject();
        EXPECT_FALSE(t["isComplete"].toBool()) << t["title"].toString().toStdString();
        if (t["title"] == QStringLiteral("Call Ama")) {
            EXPECT_TRUE(t.contains(QStringLiteral("liveSessionStartedAt")));
        }
    }
}

TEST_F(DrawerX11Test, AfterTheScreenShrinksAndGrowsTheHandleStillOpensTheDrawerOnScreen) {
    const Instant now = test::at(test::utc(), 2026, 11, 21, 9);
    ASSERT_NO_FATAL_FAILURE(startAppWith({test::TaskBuilder("Water plants").createdAt(now)}, now));
    clickHandle();
    ASSERT_FALSE(activeDrawer().isEmpty());
    // The screen changes while the drawer is still sliding away.
    xdotool(QStringLiteral("key Escape"));

    for (const QSize size : {QSize(1024, 600), QSize(1440, 900)}) {
        const QString mode = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
        run(QStringLiteral("xrandr"),
            {QStringLiteral("--output"), QStringLiteral("screen"), QStringLiteral("--mode"), mode,
             QStringLiteral("--fb"), mode});
        // The handle follows the screen at once.
        EXPECT_TRUE(eventually([&] {
            return QRect(QPoint(0, 0), size).contains(geometryOf(handleWindow()));
        })) << mode.toStdString();
    }
    clickHandle();
    const QString drawer = activeDrawer();
    ASSERT_FALSE(drawer.isEmpty());
    EXPECT_TRUE(eventually([&] {
        return QRect(0, 0, 1440, 900).contains(geometryOf(drawer)) &&
               geometryOf(drawer).height() > 300;
    })) << geometryOf(drawer).y();
}

} // namespace
} // namespace daywyn
