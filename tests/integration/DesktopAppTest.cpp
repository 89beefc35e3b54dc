// The real daywyn binary on the private session bus the test runner provides.
#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <gtest/gtest.h>

#include "support/Process.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

const QString kService = QStringLiteral("org.daywyn.Daywyn");

QString dataFolder() {
    return qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/Daywyn");
}

QStringList taskTitles() {
    QFile file(dataFolder() + QStringLiteral("/daywyn.json"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QStringList titles;
    for (const QJsonValue& task : QJsonDocument::fromJson(file.readAll())["tasks"].toArray()) {
        titles << task["title"].toString();
    }
    return titles;
}

bool serviceRunning() {
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(kService).value();
}

// The running app on the bus, ended when the test ends (by its own process id).
class RunningApp {
public:
    RunningApp() {
        process_.setProgram(QStringLiteral(DAYWYN_BINARY_PATH));
        process_.setProcessChannelMode(QProcess::ForwardedChannels);
        process_.start();
        started_ = test::waitUntil(serviceRunning);
    }
    ~RunningApp() {
        process_.terminate();
        process_.waitForFinished(5000);
    }
    bool started() const { return started_; }
    // Ends the app as a log-out does; its exit status, or -1 when it did not exit cleanly.
    int stop() {
        process_.terminate();
        if (!process_.waitForFinished(5000) || process_.exitStatus() != QProcess::NormalExit) {
            return -1;
        }
        return process_.exitCode();
    }
    bool running() const { return process_.state() == QProcess::Running; }

private:
    QProcess process_;
    bool started_ = false;
};

TEST(DesktopApp, ASecondLaunchShowsTheRunningInstanceAndLeaves) {
    RunningApp first;
    ASSERT_TRUE(first.started());
    const test::ProcessResult second = test::runProcess({DAYWYN_BINARY_PATH});
    EXPECT_EQ(second.status, 0) << second.err;
    EXPECT_TRUE(first.running());
    EXPECT_EQ(first.stop(), 0);
    EXPECT_FALSE(serviceRunning());
}

TEST(DesktopApp, RefusesToStartWhileAnotherProcessWrites) {
    QDir().mkpath(dataFolder());
    const QByteArray lockPath = (dataFolder() + QStringLiteral("/daywyn.lock")).toLocal8Bit();
    const int fd = ::open(lockPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::flock(fd, LOCK_EX | LOCK_NB), 0);

    const test::ProcessResult app = test::runProcess({DAYWYN_BINARY_PATH});
    ::close(fd);
    EXPECT_NE(app.status, 0);
    EXPECT_NE(app.err.find("Daywyn is open in another process; try again when it has closed."),
              std::string::npos)
        << app.err;
    EXPECT_FALSE(serviceRunning());
}

TEST(DesktopApp, WritingVerbsAndAddTaskAreAnsweredByTheRunningApp) {
    RunningApp app;
    ASSERT_TRUE(app.started());

    const test::ProcessResult add = test::runProcess({DAYWYN_BINARY_PATH, "add", "Water plants"});
    EXPECT_EQ(add.status, 0) << add.err;

    QDBusInterface daywyn(kService, QStringLiteral("/org/daywyn/Daywyn"), kService);
    QDBusMessage reply = daywyn.call(
        QStringLiteral("Run"),
        QStringList{QStringLiteral("add"), QStringLiteral("--literal"), QStringLiteral("--at"),
                    QStringLiteral("2026-03-04T08:15:00Z"), QStringLiteral("  Buy milk ")});
    ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    EXPECT_EQ(reply.arguments().value(0).toInt(), 0);
    EXPECT_EQ(reply.arguments().value(1).toString(), QStringLiteral("Added Buy milk to Daywyn.\n"));

    reply = daywyn.call(
        QStringLiteral("Run"),
        QStringList{QStringLiteral("add"), QStringLiteral("--literal"), QStringLiteral(" ")});
    EXPECT_EQ(reply.arguments().value(0).toInt(), 1);
    EXPECT_EQ(reply.arguments().value(2).toString(), QStringLiteral("Give the task a title.\n"));
    reply = daywyn.call(QStringLiteral("Run"),
                        QStringList{QStringLiteral("add"), QStringLiteral("--at"),
                                    QStringLiteral("tomorrow"), QStringLiteral("Later")});
    EXPECT_EQ(reply.arguments().value(0).toInt(), 2);

    // The app saved both before answering; it is still the only writer.
    const QStringList titles = taskTitles();
    EXPECT_TRUE(titles.contains(QStringLiteral("Water plants"))) << titles.join(", ").toStdString();
    EXPECT_TRUE(titles.contains(QStringLiteral("Buy milk")));
    EXPECT_FALSE(titles.contains(QStringLiteral("Later")));
}

TEST(DesktopApp, ACallOnTheBusStartsTheAppWhenItIsNotRunning) {
    const QString services =
        qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/dbus-1/services");
    QDir().mkpath(services);
    test::writeFile((services + QStringLiteral("/org.daywyn.Daywyn.service")).toStdString(),
                    "[D-BUS Service]\nName=org.daywyn.Daywyn\nExec=" DAYWYN_APP_PATH "\n");
    ASSERT_FALSE(serviceRunning());

    QDBusInterface daywyn(kService, QStringLiteral("/org/daywyn/Daywyn"), kService);
    const QDBusMessage reply = daywyn.call(
        QStringLiteral("Run"), QStringList{QStringLiteral("add"), QStringLiteral("--literal"),
                                           QStringLiteral("Call Ama")});
    ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    EXPECT_EQ(reply.arguments().value(1).toString(), QStringLiteral("Added Call Ama to Daywyn.\n"));
    EXPECT_TRUE(taskTitles().contains(QStringLiteral("Call Ama")));

    // The bus started it; end it by the process id the bus reports.
    const uint pid = QDBusConnection::sessionBus().interface()->servicePid(kService).value();
    ASSERT_GT(pid, 0u);
    ::kill(static_cast<pid_t>(pid), SIGTERM);
    EXPECT_TRUE(test::waitUntil([] { return !serviceRunning(); }));
}

} // namespace
} // namespace daywyn
