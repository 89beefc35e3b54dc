// The daywyn command line against the app's bus name on the private session bus.
#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <gtest/gtest.h>

#include "support/Process.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

const QString kService = QStringLiteral("org.daywyn.Daywyn");

// Stands at the app's object path and accepts every call without ever answering,
// like an app that hangs.
class SilentApp : public QDBusVirtualObject {
public:
    int calls = 0;
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        if (message.member() == QLatin1String("Run")) {
            ++calls;
        }
        return true;
    }
};

std::string stateFile() {
    return qEnvironmentVariable("XDG_DATA_HOME").toStdString() + "/Daywyn/daywyn.json";
}

QString mapsOf(qint64 pid) {
    QFile maps(QStringLiteral("/proc/%1/maps").arg(pid));
    return maps.open(QIODevice::ReadOnly) ? QString::fromUtf8(maps.readAll()) : QString();
}

TEST(CommandLineOverTheBus, AnAppThatNeverAnswersGetsABoundedWaitAndNothingIsWrittenTwice) {
    ASSERT_EQ(test::runProcess({DAYWYN_BINARY_PATH, "add", "First"}).status, 0);
    const std::string before = test::readFile(stateFile());

    // Like the app, it holds the state file's writer lock while it is on the bus.
    const std::string lockFile =
        qEnvironmentVariable("XDG_DATA_HOME").toStdString() + "/Daywyn/daywyn.lock";
    const int lock = ::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(lock, 0);
    ASSERT_EQ(::flock(lock, LOCK_EX | LOCK_NB), 0);
    SilentApp app;
    QDBusConnection bus = QDBusConnection::sessionBus();
    ASSERT_TRUE(bus.registerVirtualObject(QStringLiteral("/org/daywyn/Daywyn"), &app));
    ASSERT_TRUE(bus.registerService(kService));

    QProcess verb;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DAYWYN_BUS_TIMEOUT_MS"), QStringLiteral("1500"));
    verb.setProcessEnvironment(environment);
    verb.start(QStringLiteral(DAYWYN_BINARY_PATH),
               {QStringLiteral("add"), QStringLiteral("Second")});
    ASSERT_TRUE(verb.waitForStarted());

    // While it waits for the answer, the process has loaded all it ever will.
    ASSERT_TRUE(test::waitUntil([&] { return app.calls == 1; }));
    const QString maps = mapsOf(verb.processId());
    EXPECT_TRUE(maps.contains(QStringLiteral("libsystemd"))) << maps.toStdString();
    for (const char* library : {"libQt6Core", "libQt6Gui", "libQt6Qml", "libQt6Quick",
                                "libQt6Widgets", "libQt6Multimedia", "libQt6Network"}) {
        EXPECT_FALSE(maps.contains(QLatin1String(library))) << library;
    }

    ASSERT_TRUE(test::waitUntil([&] { return verb.state() == QProcess::NotRunning; }));
    EXPECT_EQ(verb.exitCode(), 1);
    EXPECT_EQ(verb.readAllStandardError().toStdString(),
              "Daywyn is running but did not answer in time; check 'daywyn today' before trying "
              "again.\n");
    // Not carried out here as well: the app may still do it.
    EXPECT_EQ(test::readFile(stateFile()), before);
    EXPECT_EQ(app.calls, 1);
    bus.unregisterService(kService);
    ::close(lock);
}

TEST(CommandLineOverTheBus, AWriterThatIsNotTheAppIsNamedAndNothingIsWritten) {
    ASSERT_EQ(test::runProcess({DAYWYN_BINARY_PATH, "add", "First"}).status, 0);
    const std::string before = test::readFile(stateFile());
    // Another process holds the writer lock, and nobody owns the app's name on the bus.
    const std::string lockFile =
        qEnvironmentVariable("XDG_DATA_HOME").toStdString() + "/Daywyn/daywyn.lock";
    const int lock = ::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(lock, 0);
    ASSERT_EQ(::flock(lock, LOCK_EX | LOCK_NB), 0);
    ASSERT_FALSE(QDBusConnection::sessionBus().interface()->isServiceRegistered(kService).value());

    for (const std::vector<std::string>& line :
         {std::vector<std::string>{"add", "Second"}, {"done", "0"}}) {
        const auto refused = test::runProcess({DAYWYN_BINARY_PATH, line[0], line[1]});
        EXPECT_EQ(refused.status, 1) << line[0];
        EXPECT_EQ(refused.err,
                  "Daywyn is open in another process; try again when it has closed.\n");
    }
    EXPECT_EQ(test::readFile(stateFile()), before);
    ::close(lock);
}

TEST(CommandLineOverTheBus, WindowVerbsStartTheAppAndWritingVerbsReachIt) {
    const QString services =
        qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/dbus-1/services");
    QDir().mkpath(services);
    test::writeFile((services + QStringLiteral("/org.daywyn.Daywyn.service")).toStdString(),
                    "[D-BUS Service]\nName=org.daywyn.Daywyn\nExec=" DAYWYN_APP_PATH "\n");

    const auto shown = test::runProcess({DAYWYN_BINARY_PATH, "show"});
    EXPECT_EQ(shown.status, 0) << shown.err;
    QDBusConnectionInterface* names = QDBusConnection::sessionBus().interface();
    ASSERT_TRUE(names->isServiceRegistered(kService).value());

    const auto added = test::runProcess({DAYWYN_BINARY_PATH, "add", "Water plants at 10"});
    EXPECT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.out.find("Added Water plants to Daywyn.\n"), 0u) << added.out;
    EXPECT_NE(test::readFile(stateFile()).find("Water plants"), std::string::npos);

    const uint pid = names->servicePid(kService).value();
    ASSERT_GT(pid, 0u);
    ::kill(static_cast<pid_t>(pid), SIGTERM);
    EXPECT_TRUE(test::waitUntil([names] { return !names->isServiceRegistered(kService).value(); }));
}

TEST(CommandLineOverTheBus, WithoutAServiceFileAWindowVerbStartsTheAppItself) {
    // As in the build tree before `make install`: the bus cannot start Daywyn.
    const auto opened = test::runProcess({DAYWYN_BINARY_PATH, "quick-add"});
    EXPECT_EQ(opened.status, 0) << opened.err;
    QDBusConnectionInterface* names = QDBusConnection::sessionBus().interface();
    ASSERT_TRUE(names->isServiceRegistered(kService).value());
    const uint pid = names->servicePid(kService).value();
    ASSERT_GT(pid, 0u);
    ::kill(static_cast<pid_t>(pid), SIGTERM);
    EXPECT_TRUE(test::waitUntil([names] { return !names->isServiceRegistered(kService).value(); }));
}

} // namespace
} // namespace daywyn
