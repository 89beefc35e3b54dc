#include "model/TaskDraft.h"

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

TEST(TaskDraft, ValidationReportsTheFirstProblemInOrder) {
    const Instant ten{1772618400.0};
    TaskDraft everythingWrong;
    everythingWrong.title = "  \n ";
    everythingWrong.hasEstimate = true;
    everythingWrong.estimatedMinutes = 0;
    everythingWrong.hasScheduledStart = everythingWrong.hasScheduledEnd = true;
    everythingWrong.scheduledStart = everythingWrong.scheduledEnd = ten;
    EXPECT_EQ(everythingWrong.validationMessage(), "Give the task a title.");

    everythingWrong.title = "Plan";
    EXPECT_EQ(everythingWrong.validationMessage(), "Estimate must be greater than zero.");
    everythingWrong.hasEstimate = false; // the value is ignored while switched off
    EXPECT_EQ(everythingWrong.validationMessage(), "Scheduled end must follow the start.");
    everythingWrong.hasScheduledStart = false; // an end without a start is allowed
    EXPECT_EQ(everythingWrong.validationMessage(), std::nullopt);

    TaskDraft unicodeBlank;
    unicodeBlank.title = "\u00A0\u2003\u2028";
    EXPECT_EQ(unicodeBlank.validationMessage(), "Give the task a title.");
}

TEST(TaskDraft, SavingMapsSwitchesOntoTheTask) {
    const Calendar berlin = test::berlin();
    TaskDraft draft;
    draft.title = "  Plan the week \n";
    draft.hasScheduledStart = true;
    draft.scheduledStart = at(berlin, 2026, 3, 29, 10);
    draft.hasScheduledDay = true;
    draft.scheduledDay = at(berlin, 2026, 3, 30, 15);
    draft.estimatedMinutes = 40; // switched off: not stored
    draft.recurrence = TaskRecurrence::none;
    draft.checklist = {{Uuid::random(), "Groceries", false}, {Uuid::random(), " \t", true}};

    TaskItem task = test::TaskBuilder("old").estimate(10).repeating(TaskRecurrence::daily);
    draft.applyTo(task, berlin);
    EXPECT_EQ(task.title, "Plan the week");
    EXPECT_EQ(task.scheduledStart, draft.scheduledStart); // a start wins over a day
    EXPECT_FALSE(task.scheduledDay.has_value());
    EXPECT_FALSE(task.estimatedMinutes.has_value());
    EXPECT_FALSE(task.recurrence.has_value());
    ASSERT_TRUE(task.checklist.has_value());
    ASSERT_EQ(task.checklist->size(), 1u);
    EXPECT_EQ(task.checklist->front().title, "Groceries");

    draft.hasScheduledStart = false;
    draft.applyTo(task, berlin);
    EXPECT_EQ(task.scheduledDay, at(berlin, 2026, 3, 30)); // stored as the start of its day
    EXPECT_FALSE(task.scheduledStart.has_value());
}

TEST(TaskDraft, EditingATaskAndSavingUnchangedKeepsItsFields) {
    const Calendar ny = test::newYork();
    const TaskItem original = test::TaskBuilder("Review")
                                  .estimate(30)
                                  .reminder(at(ny, 2026, 5, 1, 8))
                                  .plannedFor(at(ny, 2026, 5, 1))
                                  .endingAt(at(ny, 2026, 5, 1, 12))
                                  .checklistItem("a", true)
                                  .repeating(TaskRecurrence::monthly);
    TaskItem copy = original;
    TaskDraft::from(original).applyTo(copy, ny);
    EXPECT_EQ(copy, original);
}

TEST(SessionDraft, EndBeforeStartIsReportedBeforeAFutureEnd) {
    const Instant now{1772612100.0};
    EXPECT_EQ(sessionValidationMessage({now + 20, now + 10}, now),
              "Session end must follow its start.");
    EXPECT_EQ(sessionValidationMessage({now - 60, now + 1}, now),
              "A past session cannot end in the future.");
    EXPECT_EQ(sessionValidationMessage({now - 60, now}, now), std::nullopt);
}

} // namespace
} // namespace daywyn
