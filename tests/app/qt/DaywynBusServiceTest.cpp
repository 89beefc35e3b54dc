#include "app/qt/DaywynBusService.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "cli/BusAddress.h"
#include "cli/CommandLine.h"
#include "daywyn_adaptor.h"
#include "daywyn_interface.h"
#include "shell/qt/EdgePanelController.h"
#include "shell/qt/QuickCaptureController.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "sync/qt/SyncController.h"

namespace daywyn {
namespace {

// The service on the private session bus, called from a second connection through the
// proxy made from the same interface description, as another process would.
class DaywynBusServiceTest : public ::testing::Test {
protected:
    DaywynBusServiceTest()
        : clock(Instant{1779440400.0})
        , environment(nullptr, test::berlin(), clock.function())
        , service(environment) {
        environment.start();
        environment.drawerController().setReducedMotion(true);
        QDBusConnection bus = QDBusConnection::sessionBus();
        registered = service.registerOn(bus);
    }
    ~DaywynBusServiceTest() override {
        QDBusConnection::sessionBus().unregisterService(QString::fromLatin1(kBusName));
        QDBusConnection::sessionBus().unregisterObject(QString::fromLatin1(kBusObjectPath));
    }

    // Runs a verb line from a separate connection and waits for the answer.
    CommandOutput run(const QStringList& line) {
        QDBusConnection client =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("client"));
        OrgDaywynDaywynInterface proxy(QString::fromLatin1(kBusName),
                                       QString::fromLatin1(kBusObjectPath), client);
        QDBusPendingCallWatcher watcher(proxy.Run(line));
        EXPECT_TRUE(test::waitUntil([&] { return watcher.isFinished(); }));
        QDBusPendingReply<int, QString, QString> reply = watcher;
        EXPECT_FALSE(reply.isError()) << reply.error().message().toStdString();
        return CommandOutput{reply.argumentAt<0>(), reply.argumentAt<1>().toStdString(),
                             reply.argumentAt<2>().toStdString()};
    }

    test::ManualClock clock;
    AppEnvironment environment;
    DaywynBusService service;
    bool registered = false;
};

TEST_F(DaywynBusServiceTest, VerbLinesRunOnTheAppsOwnStore) {
    ASSERT_TRUE(registered);
    const CommandOutput added = run(
        {QStringLiteral("add"), QStringLiteral("--json"), QStringLiteral("Water plants at 10")});
    ASSERT_EQ(added.status, 0) << added.err;
    const TaskItem& task = environment.store().tasks().back();
    EXPECT_EQ(task.title, "Water plants");
    EXPECT_NE(added.out.find(task.id.text()), std::string::npos);

    EXPECT_EQ(run({QStringLiteral("done"), QString::fromStdString(task.id.text().substr(0, 8))}),
              (CommandOutput{0, "Done: Water plants.\n", ""}));
    EXPECT_TRUE(environment.store().tasks().back().isComplete);

    // The add-task action from outside: the title exactly as given, with a start.
    const CommandOutput literal =
        run({QStringLiteral("add"), QStringLiteral("--literal"), QStringLiteral("--at"),
             QStringLiteral("2026-03-04T08:15:00Z"), QStringLiteral("  Call Ama at 10 ")});
    EXPECT_EQ(literal, (CommandOutput{0, "Added Call Ama at 10 to Daywyn.\n", ""}));
    EXPECT_EQ(environment.store().tasks().back().scheduledStart,
              parseIsoText("2026-03-04T08:15:00Z"));

    const CommandOutput unknown = run({QStringLiteral("frobnicate")});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(run({QStringLiteral("add"), QStringLiteral(" ")}).err, "Give the task a title.\n");
}

TEST_F(DaywynBusServiceTest, AHandedOverChangeIsSavedBeforeTheAnswerAndShownAfterIt) {
    TodayTaskStore& store = environment.store();
    int observed = 0;
    std::size_t tasksSeen = 0;
    const auto observer = store.addObserver([&] {
        ++observed;
        tasksSeen = store.tasks().size();
    });
    const std::size_t before = store.tasks().size();
    QString out;
    QString err;
    for (const char* title : {"Water plants", "Call Ama"}) {
        EXPECT_EQ(service.Run({QStringLiteral("add"), QString::fromUtf8(title)}, out, err), 0)
            << err.toStdString();
    }
    EXPECT_EQ(store.tasks().size(), before + 2);
    EXPECT_EQ(observed, 0);
    // Once the event loop turns (the answers are on their way), the screens hear of it.
    EXPECT_TRUE(test::waitUntil([&] { return observed > 0; }));
    EXPECT_EQ(tasksSeen, before + 2);
    store.removeObserver(observer);
}

TEST_F(DaywynBusServiceTest, SyncIsRunByTheAppWhichKeepsTheSyncState) {
    ASSERT_TRUE(registered);
    // The app answers for the pass itself rather than sending the user away.
    const CommandOutput pass = run({QStringLiteral("sync"), QStringLiteral("--json")});
    EXPECT_EQ(pass,
              (CommandOutput{1, "", std::string(sync::SyncController::notSetUpSentence()) + "\n"}));
    // Setting up reads the password from the terminal, which the app does not have.
    const CommandOutput setup = run({QStringLiteral("sync"), QStringLiteral("setup"),
                                     QStringLiteral("https://dav.example.org/")});
    EXPECT_EQ(setup.status, 1);
    EXPECT_EQ(setup.err.rfind("Daywyn is running and keeps the sync state", 0), 0U) << setup.err;
}

TEST_F(DaywynBusServiceTest, WindowVerbsDriveTheDrawerAndQuickAdd) {
    ASSERT_TRUE(registered);
    EdgePanelController& drawer = environment.drawerController();
    EXPECT_EQ(run({QStringLiteral("show")}).status, 0);
    EXPECT_TRUE(drawer.isVisible());
    run({QStringLiteral("toggle")});
    EXPECT_FALSE(drawer.isVisible());
    run({QStringLiteral("show")});
    run({QStringLiteral("hide")});
    EXPECT_FALSE(drawer.isVisible());
    EXPECT_EQ(run({QStringLiteral("quick-add")}).status, 0);
    EXPECT_TRUE(environment.quickCapture().isPanelVisible());
    EXPECT_FALSE(drawer.isVisible());
}

TEST_F(DaywynBusServiceTest, TheAdaptorServesTheInterfaceTheCommandLineCalls) {
    // The command line calls kBusInterface by name; the adaptor is made from the XML.
    EXPECT_STREQ(DaywynAdaptor::staticMetaObject
                     .classInfo(DaywynAdaptor::staticMetaObject.indexOfClassInfo("D-Bus Interface"))
                     .value(),
                 kBusInterface);
}

} // namespace
} // namespace daywyn
