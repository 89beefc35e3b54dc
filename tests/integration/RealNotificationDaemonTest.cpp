// A task reminder delivered to a real notification daemon from Debian (dunst, on a
// private X server and the test's private session bus), and the click on it, made
// through dunst's own control program, showing the drawer. The mock-server tests check
// the protocol in detail; this one checks that a real server takes what Daywyn sends.
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDateTime>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "reminders/qt/NotificationManager.h"
#include "shell/qt/EdgePanelController.h"
#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

Instant wallClock() {
    return Instant{static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0};
}

class RealNotificationDaemonTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* tool : {"Xvfb", "dunst", "dunstctl"}) {
            if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty()) {
                GTEST_SKIP() << tool << " is not installed (scripts/install-deps.sh installs it).";
            }
        }
        // -displayfd picks a free display and writes its number once the server listens.
        xvfb.start(QStringLiteral("Xvfb"),
                   {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                    QStringLiteral("0"), QStringLiteral("1024x768x24"), QStringLiteral("-nolisten"),
                    QStringLiteral("tcp")});
        QString number;
        ASSERT_TRUE(test::waitUntil([&] {
            xvfb.waitForReadyRead(20);
            number += QString::fromLatin1(xvfb.readAllStandardOutput());
            return number.contains(QLatin1Char('\n'));
        })) << "Xvfb did not start";
        environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), QLatin1Char(':') + number.trimmed());
        dunst.setProcessEnvironment(environment);
        dunst.start(QStringLiteral("dunst"),
                    {QStringLiteral("-config"), QStringLiteral("/dev/null")});
        ASSERT_TRUE(test::waitUntil([] {
            return QDBusConnection::sessionBus().interface()->isServiceRegistered(
                QStringLiteral("org.freedesktop.Notifications"));
        })) << "dunst did not take the notification service";
    }
    void TearDown() override {
        test::stopProcess(&dunst);
        test::stopProcess(&xvfb);
    }

    QString dunstctl(const QStringList& arguments) {
        QProcess tool;
        tool.setProcessEnvironment(environment);
        tool.start(QStringLiteral("dunstctl"), arguments);
        tool.waitForFinished(10000);
        return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
    }

    QProcess xvfb;
    QProcess dunst;
    QProcessEnvironment environment;
};

TEST_F(RealNotificationDaemonTest, ATaskReminderIsShownAndClickingItShowsTheDrawer) {
    PersistedState state;
    state.preferences.taskRemindersEnabled = true;
    state.preferences.dailyReviewEnabled = false;
    state.tasks = {test::TaskBuilder("Call the bank").startingAt(wallClock() + 2.0)};
    AppEnvironment app(test::FakeRepository::holding(state), Calendar(), wallClock);
    app.drawerController().setReducedMotion(true);
    app.start();
    QSignalSpy delivered(&app.notificationManager(), &NotificationManager::delivered);

    ASSERT_TRUE(test::waitUntil([&] { return !delivered.isEmpty(); }));
    // dunst has it on screen.
    ASSERT_TRUE(test::waitUntil([&] {
        return dunstctl({QStringLiteral("count"), QStringLiteral("displayed")}) == "1";
    }));
    EXPECT_FALSE(app.drawerController().isVisible());

    // The click: dunst's default action on the newest notification.
    dunstctl({QStringLiteral("action"), QStringLiteral("0")});
    EXPECT_TRUE(test::waitUntil([&] { return app.drawerController().isVisible(); }));
}

} // namespace
} // namespace daywyn
