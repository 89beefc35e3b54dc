#include "store/Recurrence.h"

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

TEST(Recurrence, EachRuleStepsByCalendarDaysKeepingTheTimeOfDay) {
    const Calendar ny = test::newYork();
    struct Case {
        const char* name;
        TaskRecurrence rule;
        Instant after;
        std::optional<Instant> expected;
    };
    const Case cases[] = {
        {"none", TaskRecurrence::none, test::at(ny, 2026, 3, 2, 9), std::nullopt},
        {"daily over the spring-forward", TaskRecurrence::daily, test::at(ny, 2026, 3, 7, 9),
         test::at(ny, 2026, 3, 8, 9)},
        {"weekdays on a Tuesday", TaskRecurrence::weekdays, test::at(ny, 2026, 3, 3, 9),
         test::at(ny, 2026, 3, 4, 9)},
        {"weekdays on a Friday", TaskRecurrence::weekdays, test::at(ny, 2026, 3, 6, 18),
         test::at(ny, 2026, 3, 9, 18)},
        {"weekly over the fall-back", TaskRecurrence::weekly, test::at(ny, 2026, 10, 29, 9),
         test::at(ny, 2026, 11, 5, 9)},
        {"monthly from the 31st", TaskRecurrence::monthly, test::at(ny, 2026, 1, 31, 9),
         test::at(ny, 2026, 2, 28, 9)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(nextOccurrence(c.rule, c.after, ny), c.expected);
    }
}

TEST(Recurrence, TheNextCopyIsDueAfterTheCompletionAndKeepsItsShape) {
    const Calendar berlin = test::berlin();
    const auto t = [&](int y, int m, int d, int h = 0, int min = 0) {
        return test::at(berlin, y, m, d, h, min);
    };
    struct Case {
        const char* name;
        TaskItem task;
        Instant completed;
        Instant expectedDue;
    };
    const Case cases[] = {
        {"daily, completed late",
         TaskBuilder().repeating(TaskRecurrence::daily).startingAt(t(2026, 3, 4, 9)),
         t(2026, 3, 5, 10), t(2026, 3, 6, 9)},
        {"weekdays, Friday evening",
         TaskBuilder().repeating(TaskRecurrence::weekdays).startingAt(t(2026, 3, 6, 8)),
         t(2026, 3, 6, 19), t(2026, 3, 9, 8)},
        {"weekdays anchored years back",
         TaskBuilder().repeating(TaskRecurrence::weekdays).startingAt(t(2021, 6, 7, 8)),
         t(2026, 3, 7, 12), t(2026, 3, 9, 8)},
        {"daily anchored years back",
         TaskBuilder().repeating(TaskRecurrence::daily).startingAt(t(2019, 1, 1, 20)),
         t(2026, 3, 29, 12), t(2026, 3, 29, 20)},
        {"weekly without a plan", TaskBuilder().repeating(TaskRecurrence::weekly),
         t(2026, 3, 5, 10), t(2026, 3, 12)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto next = makeNextOccurrence(c.task, c.completed, berlin);
        ASSERT_TRUE(next.has_value());
        EXPECT_EQ(next->scheduledStart.value_or(next->scheduledDay.value_or(Instant{})),
                  c.expectedDue);
        EXPECT_EQ(next->scheduledStart.has_value(), c.task.scheduledStart.has_value());
        EXPECT_EQ(next->createdAt, c.completed);
    }
}

TEST(Recurrence, TheNextCopyStartsFreshWithItsBlockReminderAndChecklist) {
    const Calendar ny = test::newYork();
    const Instant start = test::at(ny, 2026, 3, 5, 9);
    const TaskItem block = TaskBuilder("Stand-up")
                               .repeating(TaskRecurrence::daily)
                               .estimate(15)
                               .startingAt(start)
                               .endingAt(start + 900.0)
                               .reminder(start - 300.0)
                               .checklistItem("Notes", true)
                               .checklistItem("Board")
                               .session(start, start + 900.0)
                               .pinned(1);
    const TaskItem reminderOnly =
        TaskBuilder().repeating(TaskRecurrence::daily).reminder(start).plannedFor(start);

    const auto next = makeNextOccurrence(block, start + 1200.0, ny);
    const auto noReminder = makeNextOccurrence(reminderOnly, start, ny);

    ASSERT_TRUE(next && noReminder);
    EXPECT_EQ(next->scheduledEnd, *next->scheduledStart + 900.0);
    EXPECT_EQ(next->reminderDate, *next->scheduledStart - 300.0);
    EXPECT_EQ(next->estimatedMinutes, 15);
    ASSERT_EQ(next->checklist->size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(next->checklist->at(i).title, block.checklist->at(i).title);
        EXPECT_NE(next->checklist->at(i).id, block.checklist->at(i).id);
        EXPECT_FALSE(next->checklist->at(i).isComplete);
    }
    EXPECT_TRUE(next->sessions.empty());
    EXPECT_EQ(next->priorityRank, std::nullopt);
    EXPECT_EQ(noReminder->reminderDate, std::nullopt);

    TaskItem alreadyRepeated = block;
    alreadyRepeated.nextOccurrenceCreated = true;
    EXPECT_EQ(makeNextOccurrence(alreadyRepeated, start, ny), std::nullopt);
}

} // namespace
} // namespace daywyn
