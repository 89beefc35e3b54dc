#include "ui/TaskRowText.h"

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

const Instant kNine{1779440400.0};

TEST(TaskRowText, TimeSummaryCountsSessionsAndTheRunningSpanInWholeMinutes) {
    const TaskItem estimated = TaskBuilder("Write")
                                   .estimate(25)
                                   .session(kNine, kNine + 10 * 60)
                                   .running(kNine + 20 * 60)
                                   .build();
    // 10 finished minutes plus 8 min 59 s running: still 18, minutes are never rounded up.
    EXPECT_EQ(TaskRowText::timeSummary(estimated, kNine + 28 * 60 + 59), "18 / 25 min");
    EXPECT_FALSE(TaskRowText::isOverEstimate(estimated, kNine + 28 * 60 + 59));
    EXPECT_TRUE(TaskRowText::isOverEstimate(estimated, kNine + 36 * 60));

    EXPECT_EQ(TaskRowText::timeSummary(TaskBuilder("Fresh").estimate(30), kNine), "0 / 30 min");
    EXPECT_EQ(TaskRowText::timeSummary(TaskBuilder("Plain"), kNine), "");
    EXPECT_EQ(TaskRowText::timeSummary(TaskBuilder("Just started").running(kNine), kNine), "0 min");
    // A clock set back below the live start does not subtract finished work.
    const TaskItem early = TaskBuilder("Early").session(kNine, kNine + 120).running(kNine + 600);
    EXPECT_EQ(TaskRowText::timeSummary(early, kNine + 300), "2 min");
}

TEST(TaskRowText, ChecklistProgressCountsDoneItems) {
    EXPECT_EQ(TaskRowText::checklistProgress(TaskBuilder("None")), "");
    EXPECT_EQ(TaskRowText::checklistProgress(TaskBuilder("Empty").emptyChecklist()), "");
    const TaskItem task = TaskBuilder("Pack")
                              .checklistItem("Passport", true)
                              .checklistItem("Charger", true)
                              .checklistItem("Book")
                              .build();
    EXPECT_EQ(TaskRowText::checklistProgress(task), "2/3");
}

// A session's length must never read like a time of day ("18:00").
TEST(TaskRowText, DurationTextReadsAsALengthOfTime) {
    EXPECT_EQ(TaskRowText::durationText(0), "under 1 min");
    EXPECT_EQ(TaskRowText::durationText(59.9), "under 1 min");
    EXPECT_EQ(TaskRowText::durationText(71), "1 min");
    EXPECT_EQ(TaskRowText::durationText(18 * 60), "18 min");
    EXPECT_EQ(TaskRowText::durationText(71 * 60 + 30), "1 h 11 min");
    EXPECT_EQ(TaskRowText::durationText(120 * 60), "2 h");
    EXPECT_EQ(TaskRowText::durationText(-5), "under 1 min");
}

TEST(TaskRowText, ClockTextShowsMinutesAndPaddedSeconds) {
    EXPECT_EQ(TaskRowText::clockText(0), "0:00");
    EXPECT_EQ(TaskRowText::clockText(245.9), "4:05");
    EXPECT_EQ(TaskRowText::clockText(72 * 60), "72:00");
    EXPECT_EQ(TaskRowText::clockText(-3), "0:00");
}

} // namespace
} // namespace daywyn
