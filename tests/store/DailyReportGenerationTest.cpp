#include <gtest/gtest.h>

#include "store/StoreUnderTest.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

const Calendar kNewYork = test::newYork();

Instant march(int day, int hour = 0, int minute = 0) {
    return test::at(kNewYork, 2026, 3, day, hour, minute);
}

AppPreferences reviewAt(int hour, int minute = 0) {
    AppPreferences preferences;
    preferences.dailyReviewHour = hour;
    preferences.dailyReviewMinute = minute;
    return preferences;
}

DailyReport reportFor(Instant day) {
    return DailyReport{Uuid::random(), day, day + 3600.0, {}};
}

TEST(DailyReportGeneration, ReportsYesterdayUntilTheReviewTimeAndTodayFromIt) {
    const std::vector<TaskItem> tasks = {TaskBuilder().session(march(4, 9), march(5, 17))};
    struct Case {
        Instant now;
        Instant expectedDay;
    };
    for (const auto& c : {Case{march(5, 17, 59), march(4)}, Case{march(5, 18), march(5)}}) {
        SCOPED_TRACE(isoText(c.now));
        test::StoreUnderTest s(tasks, c.now, kNewYork, reviewAt(18));

        const auto report = s.store.generateDueReportIfNeeded(c.now, kNewYork);

        ASSERT_TRUE(report.has_value());
        EXPECT_EQ(report->day, c.expectedDay);
        EXPECT_EQ(report->generatedAt, c.now);
        EXPECT_EQ(s.store.reports(), std::vector<DailyReport>{*report});
        EXPECT_EQ(s.repo->lastSaved().reports, s.store.reports());
        EXPECT_EQ(s.store.generateDueReportIfNeeded(c.now + 1.0, kNewYork), std::nullopt);
    }
}

TEST(DailyReportGeneration, SummarisesWhatWasDoneRecordedAndLeftOpenThatDay) {
    const Instant day = march(5);
    const std::vector<TaskItem> tasks = {
        TaskBuilder("finished")
            .estimate(30)
            .completedAt(march(5, 11))
            .session(march(5, 10), march(5, 10, 40)),
        TaskBuilder("finished after the review").plannedFor(day).completedAt(march(5, 22)),
        TaskBuilder("worked across midnight")
            .plannedFor(march(9))
            .session(march(4, 23), march(5, 1)),
        TaskBuilder("running at the review").running(march(5, 17, 30)).createdAt(march(1)),
        TaskBuilder("planned and untouched").startingAt(march(5, 15)),
        TaskBuilder("finished the day before").completedAt(march(4, 20)).plannedFor(day),
        TaskBuilder("planned tomorrow").plannedFor(march(6)),
    };
    test::StoreUnderTest s(tasks, march(6, 8), kNewYork, reviewAt(18));

    const auto report = s.store.generateDueReportIfNeeded(march(6, 8), kNewYork);

    ASSERT_TRUE(report.has_value());
    const std::vector<DailyTaskSummary> expected = {
        {tasks[0].id, "finished", true, 30, 2400.0},
        {tasks[1].id, "finished after the review", false, std::nullopt, 0.0},
        {tasks[2].id, "worked across midnight", false, std::nullopt, 3600.0},
        {tasks[3].id, "running at the review", false, std::nullopt, 1800.0},
        {tasks[4].id, "planned and untouched", false, std::nullopt, 0.0},
    };
    EXPECT_EQ(report->tasks, expected);
}

TEST(DailyReportGeneration, ADayWithNothingToReportStoresNothingAndIsTriedAgain) {
    const TaskItem task = TaskBuilder().plannedFor(march(1)).createdAt(march(1));
    test::StoreUnderTest s({task}, march(5, 19), kNewYork, reviewAt(18));
    const int saves = s.repo->saveCount();

    EXPECT_EQ(s.store.generateDueReportIfNeeded(march(5, 19), kNewYork), std::nullopt);
    EXPECT_EQ(s.repo->saveCount(), saves);
    EXPECT_EQ(s.changes, 0);

    s.store.addSession(task.id, {march(5, 9), march(5, 9, 30)});
    const auto report = s.store.generateDueReportIfNeeded(march(5, 20), kNewYork);
    ASSERT_TRUE(report.has_value());
    EXPECT_EQ(report->day, march(5));
}

TEST(DailyReportGeneration, KeepsReportsNewestDayFirstAndSkipsMissedDays) {
    const std::vector<TaskItem> tasks = {TaskBuilder().plannedFor(march(5)).createdAt(march(1)),
                                         TaskBuilder().plannedFor(march(12)).createdAt(march(1))};
    // A report already made for the 13th after an earlier review time.
    test::StoreUnderTest s(tasks, march(13, 1), kNewYork, reviewAt(18),
                           {reportFor(march(13)), reportFor(march(2))});

    const auto report = s.store.generateDueReportIfNeeded(march(13, 1), kNewYork);

    ASSERT_TRUE(report.has_value());
    EXPECT_EQ(report->day, march(12)) << "the days after the 5th are never caught up";
    ASSERT_EQ(s.store.reports().size(), 3u);
    EXPECT_EQ(s.store.reports()[0].day, march(13));
    EXPECT_EQ(s.store.reports()[1].day, march(12));
    EXPECT_EQ(s.store.reports()[2].day, march(2));
}

TEST(DailyReportGeneration, AReviewTimeSkippedByTheSpringForwardFallsAtTheNextValidTime) {
    // 02:30 does not exist in New York on 8 March 2026: the clocks jump from 02:00 EST to
    // 03:00 EDT, the first existing time, which becomes the review time.
    const std::vector<TaskItem> tasks = {TaskBuilder().running(march(8, 1)).createdAt(march(1)),
                                         TaskBuilder().plannedFor(march(7))};
    const Instant justBefore = test::at(kNewYork, 2026, 3, 8, 1, 59, 59);
    test::StoreUnderTest s(tasks, justBefore, kNewYork, reviewAt(2, 30));

    const auto early = s.store.generateDueReportIfNeeded(justBefore, kNewYork);
    const auto onTime = s.store.generateDueReportIfNeeded(justBefore + 1.0, kNewYork);

    ASSERT_TRUE(early && onTime);
    EXPECT_EQ(early->day, march(7));
    EXPECT_EQ(onTime->day, march(8));
    // 01:00 EST to 03:00 EDT is one hour.
    EXPECT_EQ(onTime->tasks.at(0).actualSeconds, 3600.0);
}

TEST(DailyReportGeneration, NothingIsMadeWhileReviewsAreOff) {
    AppPreferences off = reviewAt(18);
    off.dailyReviewEnabled = false;
    test::StoreUnderTest s({TaskBuilder().completedAt(march(5, 10))}, march(5, 19), kNewYork, off);

    EXPECT_EQ(s.store.generateDueReportIfNeeded(march(5, 19), kNewYork), std::nullopt);
}

} // namespace
} // namespace daywyn
