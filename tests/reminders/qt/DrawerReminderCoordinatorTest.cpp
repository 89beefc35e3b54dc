#include "reminders/qt/DrawerReminderCoordinator.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QSignalSpy>
#include <gtest/gtest.h>

#include "persistence/qt/UserSettings.h"
#include "reminders/qt/ReminderPresenter.h"
#include "reminders/qt/ScreenLockWatcher.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

// Records what the coordinator asks of the drawer and presses buttons like a user.
class FakePresenter : public ReminderPresenter {
public:
    void presentReminder(const DrawerReminder& reminder, bool playChime,
                         Callbacks callbacks) override {
        shown.push_back(reminder.id);
        chimes.push_back(playChime);
        visible = true;
        buttons = std::move(callbacks);
    }
    void dismissReminder() override { visible = false; }
    void showDrawer() override { ++drawerShown; }

    std::vector<std::string> shown;
    std::vector<bool> chimes;
    bool visible = false;
    int drawerShown = 0;
    Callbacks buttons;
};

// A coordinator over the hermetic settings file, at 10:00 in Berlin.
class DrawerReminderCoordinatorTest : public ::testing::Test {
protected:
    DrawerReminderCoordinatorTest()
        : calendar(test::berlin())
        , clock(test::at(calendar, 2026, 11, 21, 10, 0)) {
        build();
    }
    // As at a start of the app: the settings file read afresh.
    void build() {
        coordinator.reset();
        settings = std::make_unique<UserSettings>(UserSettings::defaultFilePath());
        coordinator =
            std::make_unique<DrawerReminderCoordinator>(*settings, calendar, clock.function());
        coordinator->setPresenter(&presenter);
    }
    DrawerReminderDecision check(const std::vector<TaskItem>& tasks) {
        return coordinator->check(tasks, {}, clock.now());
    }
    // As the settings window writes: through the same store.
    void write(const char* key, const QVariant& value) {
        settings->setValue(QString::fromLatin1(key), value);
    }

    Calendar calendar;
    test::ManualClock clock;
    FakePresenter presenter;
    std::unique_ptr<UserSettings> settings;
    std::unique_ptr<DrawerReminderCoordinator> coordinator;
};

TEST_F(DrawerReminderCoordinatorTest, ShowsTheOldestFirstAndTheNextThirtySecondsLater) {
    const std::vector<TaskItem> tasks = {TaskBuilder("Stretch").startingAt(clock.now()),
                                         TaskBuilder("Call Ama").startingAt(clock.now() - 60)};
    const std::string stretch = "task:" + tasks[0].id.text();
    const std::string ama = "task:" + tasks[1].id.text();

    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::present);
    clock.advance(15);
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::nothing);
    clock.advance(15);
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::present);
    clock.advance(30);
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::nothing);

    ASSERT_EQ(presenter.shown.size(), 2u);
    EXPECT_EQ(presenter.shown[0].rfind(ama, 0), 0u);
    EXPECT_EQ(presenter.shown[1].rfind(stretch, 0), 0u);
    EXPECT_EQ(presenter.chimes, (std::vector<bool>{true, true}));
}

TEST_F(DrawerReminderCoordinatorTest, ASnoozedReminderComesBackInTenMinutesEvenAfterARestart) {
    const std::vector<TaskItem> tasks = {TaskBuilder("Stretch").startingAt(clock.now())};
    ASSERT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::present);
    presenter.buttons.snooze();
    EXPECT_FALSE(presenter.visible);

    // Daywyn restarts in between; seen and snoozed come back from the settings file.
    clock.advance(300);
    build();
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::nothing);
    clock.advance(300);
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::present);
    ASSERT_EQ(presenter.shown.size(), 2u);
    EXPECT_EQ(presenter.shown[1], presenter.shown[0]);

    // Dismissed this time: it stays seen and does not return.
    presenter.buttons.dismiss();
    clock.advance(60);
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::nothing);
    EXPECT_EQ(presenter.drawerShown, 0);
}

TEST_F(DrawerReminderCoordinatorTest, TheSettingsFileSwitchesPopOutsAndTheChime) {
    const std::vector<TaskItem> tasks = {TaskBuilder("Stretch").startingAt(clock.now())};
    write("inAppRemindersEnabled", false);
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::nothing);
    write("inAppRemindersEnabled", true);
    write("inAppRemindersPaused", true);
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::closeVisible);
    write("inAppRemindersPaused", false);
    // 10:00 lies outside active hours from 11 to 18.
    write("inAppActiveStart", 11);
    write("inAppActiveEnd", 18);
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::nothing);
    write("inAppActiveStart", 9);
    write("inAppReminderSoundEnabled", false);
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::present);
    EXPECT_EQ(presenter.chimes, (std::vector<bool>{false}));

    // The open button shows the drawer; the preview leaves the memory alone.
    presenter.buttons.open();
    EXPECT_EQ(presenter.drawerShown, 1);
    const DrawerReminderCoordinatorState before = coordinator->state();
    coordinator->preview(clock.now());
    EXPECT_EQ(coordinator->state(), before);
    EXPECT_TRUE(presenter.visible);
}

// logind on a stand-in "system bus": answers GetSessionByPID with one session path.
class FakeLogin : public QDBusVirtualObject {
public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        return connection.send(message.createReply(QVariant::fromValue(
            QDBusObjectPath(QStringLiteral("/org/freedesktop/login1/session/_32")))));
    }
};

void emitSignal(QDBusConnection& bus, const QString& path, const QString& interface,
                const QString& name, const QVariantList& arguments) {
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
    signal.setArguments(arguments);
    bus.send(signal);
}

TEST_F(DrawerReminderCoordinatorTest, AScreenLockClosesThePopOutAndHoldsTheNextUntilUnlock) {
    // The private session bus stands in for the system bus, where logind lives.
    QDBusConnection login =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("login"));
    FakeLogin logind;
    ASSERT_TRUE(login.registerVirtualObject(QStringLiteral("/org/freedesktop/login1"), &logind));
    ASSERT_TRUE(login.registerService(QStringLiteral("org.freedesktop.login1")));
    QDBusConnection desktop =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("desktop"));
    ScreenLockWatcher watcher(QDBusConnection::sessionBus(), login);
    QObject::connect(&watcher, &ScreenLockWatcher::lockedChanged, coordinator.get(),
                     &DrawerReminderCoordinator::setLocked);
    ASSERT_TRUE(test::waitUntil([&] { return !watcher.sessionPath().isEmpty(); }));
    QSignalSpy changes(&watcher, &ScreenLockWatcher::lockedChanged);
    const std::vector<TaskItem> tasks = {TaskBuilder("Stretch").startingAt(clock.now()),
                                         TaskBuilder("Call Ama").startingAt(clock.now() + 60)};
    ASSERT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::present);

    struct Source {
        const char* name;
        std::function<void(bool)> send;
    };
    const Source sources[] = {
        {"freedesktop screen saver",
         [&](bool on) {
             emitSignal(desktop, "/ScreenSaver", "org.freedesktop.ScreenSaver", "ActiveChanged",
                        {on});
         }},
        {"GNOME screen saver",
         [&](bool on) {
             emitSignal(desktop, "/org/gnome/ScreenSaver", "org.gnome.ScreenSaver", "ActiveChanged",
                        {on});
         }},
        {"logind session",
         [&](bool on) {
             emitSignal(login, "/org/freedesktop/login1/session/_32",
                        "org.freedesktop.login1.Session", on ? "Lock" : "Unlock", {});
         }},
    };
    for (const Source& source : sources) {
        SCOPED_TRACE(source.name);
        presenter.visible = true;
        changes.clear();
        source.send(true);
        ASSERT_TRUE(test::waitUntil([&] { return changes.count() == 1; }));
        EXPECT_FALSE(presenter.visible);
        clock.advance(60);
        EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::closeVisible);
        source.send(false);
        ASSERT_TRUE(test::waitUntil([&] { return changes.count() == 2; }));
    }
    // Unlocked, the next check shows what is due again.
    EXPECT_EQ(check(tasks).kind, DrawerReminderDecision::Kind::present);
    QDBusConnection::disconnectFromBus(QStringLiteral("login"));
    QDBusConnection::disconnectFromBus(QStringLiteral("desktop"));
}

} // namespace
} // namespace daywyn
