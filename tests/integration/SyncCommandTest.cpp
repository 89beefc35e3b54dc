// `daywyn sync` as a user runs it: the light program starts daywyn-sync, which finds
// the task list on a real Radicale server, keeps the password in a real keyring
// (gnome-keyring-daemon on the test's private bus) and syncs two data folders.
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "RadicaleServer.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

struct Ran {
    int status = -1;
    std::string out;
    std::string err;
};

class SyncCommand : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(server.start()) << server.problem().toStdString();
        ASSERT_TRUE(test::startUnlockedKeyring(keyring));
    }
    void TearDown() override { test::stopProcess(&keyring); }

    // `daywyn ARGS` with the data and state folders of machine `machine` (0 or 1).
    Ran daywyn(int machine, const QStringList& args, const QByteArray& input = {}) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        const QString home = machines[machine].path();
        environment.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
        environment.insert(QStringLiteral("XDG_STATE_HOME"), home + QStringLiteral("/state"));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(DAYWYN_BINARY_PATH), args);
        process.write(input);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(60000));
        return Ran{process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                   process.readAllStandardOutput().toStdString(),
                   process.readAllStandardError().toStdString()};
    }

    Ran setup(int machine, const QString& password = QStringLiteral("secret")) {
        return daywyn(machine,
                      {QStringLiteral("sync"), QStringLiteral("setup"), server.url().toString(),
                       QStringLiteral("--user"), QStringLiteral("ama"),
                       QStringLiteral("--password-stdin")},
                      password.toUtf8() + "\n");
    }

    test::RadicaleServer server;
    QProcess keyring;
    QTemporaryDir machines[2];
};

TEST_F(SyncCommand, SetsUpOnceAndCarriesTasksBetweenTwoDataFolders) {
    const Ran before = daywyn(0, {QStringLiteral("sync"), QStringLiteral("status")});
    EXPECT_EQ(before.status, 0);
    EXPECT_EQ(before.out, "Task sync is not set up. Run 'daywyn sync setup URL' to choose a "
                          "CalDAV server.\n");

    const Ran made = setup(0);
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_NE(made.out.find("Made the task list \"Daywyn\""), std::string::npos) << made.out;
    // The second machine finds the list the first one made.
    const Ran found = setup(1);
    ASSERT_EQ(found.status, 0) << found.err;
    EXPECT_NE(found.out.find("Found the task list \"Daywyn\""), std::string::npos) << found.out;

    ASSERT_EQ(daywyn(0, {QStringLiteral("add"), QStringLiteral("Call Ama tomorrow at 10")}).status,
              0);
    const Ran sent = daywyn(0, {QStringLiteral("sync"), QStringLiteral("--json")});
    ASSERT_EQ(sent.status, 0) << sent.err;
    // The first run's sample tasks and the one added.
    const std::size_t count = std::stoul(sent.out.substr(sent.out.find("\"pushed\":") + 9));
    EXPECT_GE(count, 1U) << sent.out;

    const Ran received = daywyn(1, {QStringLiteral("sync")});
    ASSERT_EQ(received.status, 0) << received.err;
    EXPECT_EQ(received.out, "Received " + std::to_string(count) + " changes.\n");
    const Ran plan = daywyn(1, {QStringLiteral("today"), QStringLiteral("--json")});
    EXPECT_NE(plan.out.find("Call Ama"), std::string::npos) << plan.out;

    const Ran status =
        daywyn(1, {QStringLiteral("sync"), QStringLiteral("status"), QStringLiteral("--json")});
    ASSERT_EQ(status.status, 0) << status.err;
    EXPECT_NE(status.out.find("\"listName\":\"Daywyn\""), std::string::npos) << status.out;
    EXPECT_NE(status.out.find("\"lastError\":\"\""), std::string::npos) << status.out;
    EXPECT_NE(status.out.find("\"pendingChanges\":0"), std::string::npos) << status.out;

    // A change made with the command line is noted and sent by the next pass.
    ASSERT_EQ(daywyn(1, {QStringLiteral("add"), QStringLiteral("Water plants")}).status, 0);
    const Ran waiting = daywyn(1, {QStringLiteral("sync"), QStringLiteral("status")});
    EXPECT_NE(waiting.out.find("1 change waits to be sent."), std::string::npos) << waiting.out;
}

TEST_F(SyncCommand, RefusalsAreSentencesAndChangeNothing) {
    const Ran wrong = setup(0, QStringLiteral("not-the-password"));
    EXPECT_EQ(wrong.status, 1);
    EXPECT_EQ(wrong.err, "The sync server refused the user name or password.\n");
    const Ran notSetUp = daywyn(0, {QStringLiteral("sync")});
    EXPECT_EQ(notSetUp.status, 1);
    EXPECT_EQ(notSetUp.err, "Task sync is not set up. Run 'daywyn sync setup URL' to choose a "
                            "CalDAV server.\n");

    const Ran plain = daywyn(0,
                             {QStringLiteral("sync"), QStringLiteral("setup"),
                              QStringLiteral("http://dav.example.com/"), QStringLiteral("--user"),
                              QStringLiteral("ama"), QStringLiteral("--password-stdin")},
                             "secret\n");
    EXPECT_EQ(plain.status, 1);
    EXPECT_EQ(plain.err, "Daywyn sends your password only over https; dav.example.com is not "
                         "this computer, so use an https address.\n");

    const Ran usage =
        daywyn(0, {QStringLiteral("sync"), QStringLiteral("--user"), QStringLiteral("ama")});
    EXPECT_EQ(usage.status, 2);
    EXPECT_EQ(usage.err, "daywyn sync: --user, --list and --password-stdin go with setup. Run "
                         "'daywyn sync --help' for usage.\n");

    // The server goes away after setup: the pass says so and the task stays.
    ASSERT_EQ(setup(0).status, 0);
    ASSERT_EQ(daywyn(0, {QStringLiteral("add"), QStringLiteral("Keep me")}).status, 0);
    server.stop();
    const Ran down = daywyn(0, {QStringLiteral("sync")});
    EXPECT_EQ(down.status, 1);
    EXPECT_NE(down.err.find("The sync server could not be reached"), std::string::npos) << down.err;
    EXPECT_NE(daywyn(0, {QStringLiteral("today")}).out.find("Keep me"), std::string::npos);
    const Ran status = daywyn(0, {QStringLiteral("sync"), QStringLiteral("status")});
    EXPECT_NE(status.out.find("stopped: The sync server could not be reached"), std::string::npos)
        << status.out;
}

} // namespace
} // namespace daywyn
