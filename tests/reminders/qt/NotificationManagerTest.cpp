#include "reminders/qt/NotificationManager.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFile>
#include <QSignalSpy>
#include <gtest/gtest.h>

#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "reminders/qt/FakeNotificationServer.h"
#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

using test::FakeNotificationServer;
using test::TaskBuilder;

const QStringList kWithActions{QStringLiteral("actions"), QStringLiteral("body")};

// A store over the given tasks and preferences, a manager on the private session bus
// and a clock the test moves. The manager is rebuilt by restart(), as after a quit.
class NotificationManagerTest : public ::testing::Test {
protected:
    NotificationManagerTest()
        : calendar(test::berlin())
        , clock(test::at(calendar, 2026, 11, 21, 10, 0)) {}

    void open(std::vector<TaskItem> tasks, const AppPreferences& preferences,
              std::unique_ptr<TaskRepository> repository = nullptr) {
        if (!repository) {
            PersistedState state;
            state.tasks = std::move(tasks);
            state.preferences = preferences;
            repository = test::FakeRepository::holding(state);
        }
        store = std::make_unique<TodayTaskStore>(std::move(repository), clock.now(), calendar);
        restart();
    }
    void restart() {
        manager.reset();
        manager = std::make_unique<NotificationManager>(*store, calendar, clock.function(),
                                                        NotificationManager::defaultStatePath(),
                                                        QDBusConnection::sessionBus());
        manager->configure({});
    }
    // Moves the clock and lets the manager deliver what fell due.
    void advance(double seconds) {
        clock.advance(seconds);
        manager->catchUp();
    }
    // Everything the manager sent before now has reached the server: a call on the
    // same connection is answered only after the ones before it.
    void settle() {
        const int before = server->getCapabilitiesCalls();
        QDBusConnection::sessionBus().asyncCall(QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.Notifications"),
            QStringLiteral("/org/freedesktop/Notifications"),
            QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("GetCapabilities")));
        ASSERT_TRUE(test::waitUntil([&] { return server->getCapabilitiesCalls() > before; }));
    }
    // A notification server on the bus, offering actions unless told otherwise.
    void startServer(QStringList capabilities = kWithActions) {
        server = std::make_unique<FakeNotificationServer>(std::move(capabilities));
        ASSERT_TRUE(server->start());
    }
    bool capabilitiesKnown() {
        return test::waitUntil([&] { return manager->capabilitiesKnown(); });
    }
    bool waitForCalls(std::size_t count) {
        return test::waitUntil([&] { return server && server->calls().size() >= count; });
    }
    static AppPreferences only(void (*enable)(AppPreferences&)) {
        AppPreferences p;
        p.dailyReviewEnabled = false;
        enable(p);
        return p;
    }

    Calendar calendar;
    test::ManualClock clock;
    std::unique_ptr<FakeNotificationServer> server;
    std::unique_ptr<TodayTaskStore> store;
    std::unique_ptr<NotificationManager> manager;
};

const auto kEndAlerts = [](AppPreferences& p) {
    p.scheduledEndAlertsEnabled = true;
};
const auto kTaskReminders = [](AppPreferences& p) {
    p.taskRemindersEnabled = true;
};

TEST_F(NotificationManagerTest, EndOfBlockNotificationOffersItsActionsOnlyToServersThatShowThem) {
    for (const bool actions : {true, false}) {
        SCOPED_TRACE(actions ? "server with actions" : "server without actions");
        startServer(actions ? kWithActions : QStringList{QStringLiteral("body")});
        // Given a block ending in 30 s (the five-minute warning already passed).
        open({TaskBuilder("Draft essay").endingAt(clock.now() + 30)}, only(kEndAlerts));
        ASSERT_TRUE(capabilitiesKnown());
        EXPECT_EQ(manager->pending().size(), 1u);
        // The store remembers it, so the rules do not ask for it again.
        EXPECT_EQ(store->tasks()[0].notifiedOverdueEnd, clock.now() + 30);

        advance(30);

        ASSERT_TRUE(waitForCalls(1));
        const auto& call = server->calls().front();
        EXPECT_EQ(call.appName, QStringLiteral("Daywyn"));
        EXPECT_EQ(call.summary, QStringLiteral("Make more room?"));
        EXPECT_EQ(call.hints.value(QStringLiteral("desktop-entry")).toString(),
                  QStringLiteral("daywyn"));
        if (actions) {
            EXPECT_EQ(call.body, QStringLiteral("Draft essay reached its scheduled end. Finish it "
                                                "or extend the time."));
            EXPECT_EQ(call.actions, (QStringList{"default", "Show Daywyn", "DAYWYN_FINISH",
                                                 "Finish", "DAYWYN_EXTEND_10", "Add 10 min",
                                                 "DAYWYN_EXTEND_25", "Add 25 min"}));
        } else {
            EXPECT_TRUE(call.body.endsWith(
                QStringLiteral("Open the Daywyn drawer to finish the task or give it more time.")));
            EXPECT_TRUE(call.actions.isEmpty());
        }
        // Delivered once; nothing waits, so no timer wakes the app.
        EXPECT_TRUE(manager->pending().empty());
        EXPECT_FALSE(manager->nextDelivery().has_value());
        manager.reset();
        server.reset();
        QFile::remove(NotificationManager::defaultStatePath());
    }
}

TEST_F(NotificationManagerTest, AddTenOnOurNotificationPushesTheEndInTheSavedFile) {
    startServer();
    const Instant end = clock.now() + 5 * 60 + 20;
    const TaskItem task = TaskBuilder("Draft essay").endingAt(end);
    const std::string path = JSONTaskRepository::defaultFilePath().value();
    {
        PersistedState seeded;
        seeded.tasks = {task};
        seeded.preferences = only(kEndAlerts);
        JSONTaskRepository seeder(path, std::make_shared<PosixFileSystem>(), clock.function(),
                                  clock.function());
        ASSERT_TRUE(seeder.save(seeded));
    }
    auto repository = std::make_unique<JSONTaskRepository>(
        path, std::make_shared<PosixFileSystem>(), clock.function(), clock.function());
    ASSERT_TRUE(repository->acquireWriterLock());
    open({}, {}, std::move(repository));
    ASSERT_TRUE(capabilitiesKnown());

    // The "ends in 5 minutes" warning goes out 20 s from now.
    advance(20);
    ASSERT_TRUE(waitForCalls(1));
    EXPECT_EQ(server->calls()[0].summary, QStringLiteral("Time is nearly up"));
    QSignalSpy handled(manager.get(), &NotificationManager::responseHandled);
    server->invokeAction(server->calls()[0].id, QStringLiteral("DAYWYN_EXTEND_10"));
    ASSERT_TRUE(test::waitUntil([&] { return handled.count() == 1; }));

    JSONTaskRepository reader(path, std::make_shared<PosixFileSystem>(), clock.function(),
                              clock.function());
    const auto saved = reader.load();
    ASSERT_TRUE(saved && saved.value());
    EXPECT_EQ(saved.value()->tasks.at(0).scheduledEnd, end + 600);
}

TEST_F(NotificationManagerTest, SignalsAboutNotificationsWeDidNotSendChangeNothing) {
    startServer();
    const Instant end = clock.now() + 30;
    open({TaskBuilder("Draft essay").endingAt(end)}, only(kEndAlerts));
    ASSERT_TRUE(capabilitiesKnown());
    advance(30);
    ASSERT_TRUE(waitForCalls(1));
    const uint ours = server->calls()[0].id;
    QSignalSpy handled(manager.get(), &NotificationManager::responseHandled);

    // Another program's notification, then someone other than the server naming ours.
    server->invokeAction(ours + 41, QStringLiteral("DAYWYN_FINISH"));
    QDBusConnection impostor =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("impostor"));
    QDBusMessage forged = QDBusMessage::createSignal(
        QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("ActionInvoked"));
    forged << ours << QStringLiteral("DAYWYN_FINISH");
    impostor.send(forged);
    // A round trip through the bus: the forged signal was routed before this returns.
    impostor.interface()->isServiceRegistered(QStringLiteral("org.freedesktop.Notifications"));
    // Then our own notification is clicked, which is acted on.
    server->invokeAction(ours, QStringLiteral("default"));
    ASSERT_TRUE(test::waitUntil([&] { return handled.count() >= 1; }));
    settle();

    EXPECT_EQ(handled.count(), 1);
    EXPECT_EQ(handled.at(0).at(1).toString(), QStringLiteral("default"));
    EXPECT_FALSE(store->tasks().at(0).completedAt.has_value());
    QDBusConnection::disconnectFromBus(QStringLiteral("impostor"));
}

TEST_F(NotificationManagerTest, ARestartDeliversWhatFellDueWhileClosedOnceAndNeverTwice) {
    startServer();
    open({TaskBuilder("Call the bank").startingAt(clock.now() + 120)}, only(kTaskReminders));
    ASSERT_EQ(manager->pending().size(), 1u);
    EXPECT_EQ(manager->nextDelivery(), clock.now() + 120);

    // Daywyn quits; the start passes half an hour before it runs again.
    manager.reset();
    clock.advance(120 + 30 * 60);
    restart();

    ASSERT_TRUE(waitForCalls(1));
    EXPECT_EQ(server->calls()[0].summary, QStringLiteral("Scheduled now"));
    EXPECT_EQ(server->calls()[0].body, QStringLiteral("Call the bank"));
    // Another reconciliation, another restart: still the one notification.
    manager->refreshSchedules(store->tasks(), store->preferences(), clock.now());
    restart();
    advance(60);
    settle();
    EXPECT_EQ(server->calls().size(), 1u);
}

TEST_F(NotificationManagerTest, ANotificationOnScreenKeepsItsActionsAcrossARestartOfDaywyn) {
    startServer();
    open({TaskBuilder("Draft essay").endingAt(clock.now() + 30)}, only(kEndAlerts));
    ASSERT_TRUE(capabilitiesKnown());
    advance(30);
    ASSERT_TRUE(waitForCalls(1));
    const uint shown = server->calls()[0].id;
    settle();

    // Daywyn restarts while the notification is still on screen.
    restart();
    QSignalSpy handled(manager.get(), &NotificationManager::responseHandled);
    server->invokeAction(shown, QStringLiteral("DAYWYN_FINISH"));
    ASSERT_TRUE(test::waitUntil([&] { return handled.count() == 1; }));
    EXPECT_TRUE(store->tasks().at(0).isComplete);

    // A new server process hands out the same ids for other notifications.
    server.reset();
    startServer();
    server->invokeAction(shown, QStringLiteral("default"));
    server->invokeAction(shown + 1, QStringLiteral("default"));
    // Its own notification, clicked after those, is the only one acted on.
    manager->sendTestNotification();
    advance(3);
    ASSERT_TRUE(waitForCalls(1));
    server->invokeAction(server->calls()[0].id, QStringLiteral("default"));
    ASSERT_TRUE(test::waitUntil([&] { return handled.count() >= 2; }));
    EXPECT_EQ(handled.count(), 2);
    EXPECT_EQ(handled.at(1).at(0).toString(), QStringLiteral("daywyn.manual-test"));
}

TEST_F(NotificationManagerTest, ARestartMoreThanAnHourLateDropsTheRequest) {
    startServer();
    open({TaskBuilder("Call the bank").startingAt(clock.now() + 120)}, only(kTaskReminders));
    manager.reset();
    clock.advance(120 + 3600);
    restart();
    advance(1);
    settle();
    EXPECT_TRUE(server->calls().empty());
    EXPECT_TRUE(manager->pending().empty());
}

TEST_F(NotificationManagerTest, AMovedStartReplacesTheWaitingReminder) {
    startServer();
    open({TaskBuilder("Call the bank").startingAt(clock.now() + 3600)}, only(kTaskReminders));
    ASSERT_EQ(manager->nextDelivery(), clock.now() + 3600);

    std::vector<TaskItem> moved = store->tasks();
    moved[0].scheduledStart = clock.now() + 7200;
    manager->refreshSchedules(moved, store->preferences(), clock.now());

    ASSERT_EQ(manager->pending().size(), 1u);
    EXPECT_EQ(manager->pending()[0].fireAt, clock.now() + 7200);
    advance(3600);
    settle();
    EXPECT_TRUE(server->calls().empty());
    advance(3600);
    ASSERT_TRUE(waitForCalls(1));
}

TEST_F(NotificationManagerTest, SwitchesAndTheTestNotificationNeedANotificationServer) {
    open({}, AppPreferences{});
    EXPECT_EQ(manager->authorizationStatus(), QStringLiteral("denied"));
    manager->setTaskRemindersEnabled(true);
    EXPECT_EQ(manager->errorMessage(), QStringLiteral("Notifications are off in System Settings."));
    EXPECT_FALSE(store->preferences().taskRemindersEnabled);
    manager->sendTestNotification();
    EXPECT_EQ(manager->errorMessage(),
              QStringLiteral("Allow notifications in System Settings to test delivery."));
    // Turning a switch off never needs the server.
    manager->setDailyReviewEnabled(false);
    EXPECT_EQ(manager->actionMessage(), QStringLiteral("Daily review reminders are disabled."));

    startServer();
    manager->setTaskRemindersEnabled(true);
    EXPECT_EQ(manager->actionMessage(), QStringLiteral("Task reminders are enabled."));
    EXPECT_TRUE(manager->errorMessage().isEmpty());
    EXPECT_TRUE(store->preferences().taskRemindersEnabled);
    manager->setUnfinishedReminderCadence(45);
    EXPECT_EQ(manager->errorMessage(),
              QStringLiteral("A nudge every 45 minutes is not offered; choose off, 30, 60 or 120 "
                             "minutes."));

    manager->sendTestNotification();
    EXPECT_EQ(manager->actionMessage(),
              QStringLiteral("Test notification scheduled. It should arrive in about three "
                             "seconds."));
    advance(3);
    ASSERT_TRUE(waitForCalls(1));
    EXPECT_EQ(server->calls()[0].summary, QStringLiteral("Daywyn reminders are ready"));
}

TEST_F(NotificationManagerTest, AServerStartingAfterDaywynGetsTheRemindersAndItsActions) {
    open({TaskBuilder("Draft essay").endingAt(clock.now() + 30)}, only(kEndAlerts));
    EXPECT_TRUE(manager->pending().empty());

    startServer();
    ASSERT_TRUE(capabilitiesKnown());
    EXPECT_EQ(manager->authorizationStatus(), QStringLiteral("authorized"));
    EXPECT_EQ(manager->pending().size(), 1u);
    advance(30);
    ASSERT_TRUE(waitForCalls(1));
    EXPECT_EQ(server->calls()[0].actions.size(), 8);
}

TEST_F(NotificationManagerTest, TheReviewNotificationMakesTheDaysReport) {
    startServer();
    clock.set(test::at(calendar, 2026, 11, 21, 20, 59, 30));
    open({TaskBuilder("Send invoices").completedAt(clock.now() - 3600)}, AppPreferences{});
    ASSERT_TRUE(store->reports().empty());

    advance(30);

    ASSERT_TRUE(waitForCalls(1));
    EXPECT_EQ(server->calls()[0].summary, QStringLiteral("Your daily rhythm"));
    EXPECT_EQ(store->reports().size(), 1u);
}

TEST_F(NotificationManagerTest, AnUnreadablePendingFileIsSetAsideAndTheRulesPlanAgain) {
    startServer();
    const QString path = NotificationManager::defaultStatePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile bad(path);
    ASSERT_TRUE(bad.open(QIODevice::WriteOnly));
    bad.write("{\"pending\": [");
    bad.close();

    open({TaskBuilder("Call the bank").startingAt(clock.now() + 120)}, only(kTaskReminders));

    EXPECT_TRUE(manager->errorMessage().startsWith(
        QStringLiteral("The pending reminders file is not valid JSON (")));
    EXPECT_TRUE(QFile::exists(path + QStringLiteral(".unreadable")));
    ASSERT_EQ(manager->pending().size(), 1u);
    EXPECT_EQ(manager->pending()[0].identifier, "daywyn.task." + store->tasks()[0].id.text());
}

} // namespace
} // namespace daywyn
