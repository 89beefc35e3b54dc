#include "store/TaskTimer.h"

#include <gtest/gtest.h>

#include "store/StoreUnderTest.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

const Calendar kBerlin = test::berlin();
const Instant kNow = test::at(kBerlin, 2026, 3, 5, 14, 0);

TEST(TaskTimer, StartingATaskStopsTheOneThatRuns) {
    const TaskItem a = TaskBuilder("A").running(kNow - 600.0);
    const TaskItem b = TaskBuilder("B");
    test::StoreUnderTest s({a, b}, kNow, kBerlin);

    s.store.toggleTimer(b.id, kNow);

    ASSERT_EQ(s.at(0).sessions.size(), 1u);
    EXPECT_EQ(s.at(0).sessions[0].start, kNow - 600.0);
    EXPECT_EQ(s.at(0).sessions[0].end, kNow);
    EXPECT_FALSE(s.at(0).isRunning());
    EXPECT_EQ(s.at(1).liveSessionStartedAt, kNow);
    EXPECT_EQ(s.store.activeTask(), &s.at(1));

    s.store.toggleTimer(b.id, kNow);
    EXPECT_TRUE(s.at(1).sessions.empty()) << "a zero-length span is not a session";
    EXPECT_EQ(s.store.activeTask(), nullptr);
    EXPECT_EQ(s.changes, 2);
}

TEST(TaskTimer, ACompletedTaskNeverStartsButTheToggleStillSaves) {
    const TaskItem done = TaskBuilder("Done").completedAt(kNow - 60.0);
    test::StoreUnderTest s({done}, kNow, kBerlin);

    s.store.toggleTimer(done.id, kNow);

    EXPECT_FALSE(s.at(0).isRunning());
    EXPECT_EQ(s.repo->saveCount(), 2);
}

TEST(TaskTimer, StoppingForgetsTheBudgetAlertsNotYetReached) {
    struct Case {
        std::optional<long long> estimate;
        double recordedMinutes;
        BudgetAlertSet expected;
    };
    const BudgetAlertSet both{BudgetAlertKind::approaching, BudgetAlertKind::exceeded};
    const Case cases[] = {
        {30, 26, {BudgetAlertKind::approaching}},
        {30, 24, {}},
        {30, 30, both},
        {3, 0.5, {BudgetAlertKind::approaching}}, // the warning point never goes below 0
        {std::nullopt, 90, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.estimate.value_or(-1) << " min estimate, "
                                        << c.recordedMinutes << " min recorded");
        TaskItem task = TaskBuilder().running(kNow - c.recordedMinutes * 60.0);
        task.estimatedMinutes = c.estimate;
        task.scheduledBudgetAlerts = both;

        stopLiveSession(task, kNow, 5);

        EXPECT_EQ(task.scheduledBudgetAlerts, c.expected);
    }
}

TEST(TaskTimer, ExtendingAnEndThatHasPassedCountsFromNow) {
    struct Case {
        const char* name;
        std::optional<Instant> end;
        long long minutes;
        std::optional<Instant> expected;
    };
    const Case cases[] = {
        {"passed 20 minutes ago", kNow - 1200.0, 10, kNow + 600.0},
        {"still ahead", kNow + 300.0, 25, kNow + 1800.0},
        {"no end yet", std::nullopt, 10, kNow + 600.0},
        {"by nothing", kNow - 1200.0, 0, kNow - 1200.0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TaskItem task = TaskBuilder("Block");
        task.scheduledEnd = c.end;
        task.notifiedOverdueEnd = c.end;
        test::StoreUnderTest s({task}, kNow, kBerlin);

        s.store.extendScheduledEnd(task.id, c.minutes, kNow, kBerlin);

        EXPECT_EQ(s.at(0).scheduledEnd, c.expected);
        EXPECT_EQ(s.at(0).notifiedOverdueEnd, c.minutes < 1 ? c.end : std::nullopt);
    }
}

TEST(TaskTimer, SessionsCanBeAddedEditedAndDeletedWithUndo) {
    const TaskItem task = TaskBuilder("Essay").session(kNow - 7200.0, kNow - 3600.0);
    test::StoreUnderTest s({task}, kNow, kBerlin);

    s.store.addSession(task.id, {kNow - 600.0, kNow - 600.0});
    EXPECT_EQ(s.at(0).sessions.size(), 1u) << "a session must end after it starts";
    s.store.addSession(task.id, {kNow - 900.0, kNow - 300.0});
    s.store.updateSession(task.sessions[0].id, task.id, {kNow - 5400.0, kNow - 3600.0});
    EXPECT_EQ(s.at(0).recordedDuration(), 1800.0 + 600.0);

    EXPECT_EQ(s.store.deleteSession(task.sessions[0].id, task.id), std::nullopt);
    EXPECT_EQ(s.store.undoDescription(), "Delete work session");
    EXPECT_EQ(s.at(0).sessions.size(), 1u);

    EXPECT_EQ(s.store.undoLastDeletion(), std::nullopt);
    ASSERT_EQ(s.at(0).sessions.size(), 2u);
    EXPECT_EQ(s.at(0).sessions[0].id, task.sessions[0].id);
    EXPECT_EQ(s.repo->lastSaved().tasks, s.store.tasks());
}

} // namespace
} // namespace daywyn
