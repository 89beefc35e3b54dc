// System notifications through the whole app on a private session bus: the app idles
// between reminders and each one reaches the notification server at its moment. The
// lateness of every delivery is logged (never asserted: time is the machine's).
#include <algorithm>
#include <cstdio>

#include <QDateTime>
#include <QSignalSpy>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "reminders/qt/FakeNotificationServer.h"
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

TEST(NotificationDelivery, EachReminderReachesTheServerAtItsMomentWhileTheAppIdles) {
    test::FakeNotificationServer server({QStringLiteral("actions"), QStringLiteral("body")});
    ASSERT_TRUE(server.start());
    const Instant start = wallClock();
    const int count = 7;
    PersistedState state;
    state.preferences.taskRemindersEnabled = true;
    state.preferences.dailyReviewEnabled = false;
    for (int k = 0; k < count; ++k) {
        state.tasks.push_back(test::TaskBuilder("Reminder " + std::to_string(k))
                                  .startingAt(start + 2.5 + 0.4 * k + 0.013 * k));
    }
    AppEnvironment app(test::FakeRepository::holding(state), Calendar(), wallClock);
    app.start();
    QSignalSpy sent(&app.notificationManager(), &NotificationManager::delivered);
    ASSERT_EQ(app.notificationManager().pending().size(), std::size_t(count));

    std::vector<double> lateness;
    for (int k = 0; k < count; ++k) {
        ASSERT_TRUE(test::waitUntil([&] { return server.calls().size() > std::size_t(k); }));
        const auto& call = server.calls()[std::size_t(k)];
        EXPECT_EQ(call.body.toStdString(), "Reminder " + std::to_string(k));
        const Instant due = state.tasks[std::size_t(k)].scheduledStart.value();
        lateness.push_back(call.receivedAt - due.seconds);
        // When the app's timer sent it, and when the server had it.
        const double sentAt = sent.at(k).at(2).toDouble();
        std::printf("delivery %d: sent %+.1f ms, received %+.1f ms after its moment\n", k,
                    (sentAt - due.seconds) * 1000.0, lateness.back() * 1000.0);
    }
    std::sort(lateness.begin(), lateness.end());
    const double median = lateness[lateness.size() / 2];
    std::printf("median lateness over %d deliveries: %.1f ms (max %.1f ms)\n", count,
                median * 1000.0, lateness.back() * 1000.0);
    ::testing::Test::RecordProperty("medianLatenessMilliseconds", static_cast<int>(median * 1000));
    // Each once, and nothing left to wake the app.
    EXPECT_EQ(server.calls().size(), std::size_t(count));
    EXPECT_TRUE(app.notificationManager().pending().empty());
    EXPECT_FALSE(app.notificationManager().nextDelivery().has_value());
}

TEST(NotificationDelivery, TheAppReschedulesOnEveryChangeAndAClickShowsTheDrawer) {
    test::FakeNotificationServer server({QStringLiteral("actions")});
    ASSERT_TRUE(server.start());
    test::ManualClock clock(test::at(test::berlin(), 2026, 11, 21, 10, 0));
    PersistedState state;
    state.tasks = {test::TaskBuilder("Call the bank").startingAt(clock.now() + 600)};
    AppEnvironment app(test::FakeRepository::holding(state), test::berlin(), clock.function());
    app.start();
    NotificationManager& notifications = app.notificationManager();
    const auto waiting = [&](const std::string& prefix) {
        const auto pending = notifications.pending();
        return std::any_of(pending.begin(), pending.end(),
                           [&](const auto& p) { return p.identifier.rfind(prefix, 0) == 0; });
    };
    EXPECT_FALSE(waiting("daywyn.task."));

    // Any saved change reconciles: here a switch turned on from elsewhere.
    app.store().updatePreferences([](AppPreferences& p) { p.taskRemindersEnabled = true; });
    EXPECT_TRUE(waiting("daywyn.task."));
    app.store().completeTask(app.store().tasks()[0].id, clock.now(), test::berlin());
    EXPECT_FALSE(waiting("daywyn.task."));

    notifications.sendTestNotification();
    clock.advance(3);
    app.performMaintenance();
    ASSERT_TRUE(test::waitUntil([&] { return server.calls().size() == 1; }));
    ASSERT_TRUE(test::waitUntil([&] { return notifications.capabilitiesKnown(); }));
    server.invokeAction(server.calls()[0].id, QStringLiteral("default"));
    EXPECT_TRUE(test::waitUntil([&] { return app.drawerController().isVisible(); }));
}

} // namespace
} // namespace daywyn
