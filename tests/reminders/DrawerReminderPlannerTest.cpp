#include "reminders/DrawerReminderPlanner.h"

#include <gtest/gtest.h>

#include "base/DoubleText.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;
using test::TaskBuilder;

const Calendar& ny() {
    static const Calendar calendar = test::newYork();
    return calendar;
}

// Friday 20 November 2026, 09:00 in New York.
const Instant kNow = at(ny(), 2026, 11, 20, 9);

CalendarEventItem event(std::string id, std::string title, Instant start, bool allDay = false) {
    CalendarEventItem e;
    e.id = std::move(id);
    e.title = std::move(title);
    e.start = start;
    e.end = start + 1800;
    e.isAllDay = allDay;
    return e;
}

TEST(DrawerReminderPlanner, TaskDatesAreDueForFiveMinutes) {
    struct Case {
        const char* name;
        double offset; // seconds from now to the start
        bool due;
    };
    const Case cases[] = {
        {"starting exactly now", 0, true},
        {"300 s ago", -300, true},
        {"301 s ago", -301, false},
        {"one second ahead", 1, false},
        {"a fraction past the limit", -300.5, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const TaskItem task = TaskBuilder("Stretch").startingAt(kNow + c.offset);
        const auto due = DrawerReminderPlanner::candidates({task}, {}, kNow, ny());
        EXPECT_EQ(due.size(), c.due ? 1u : 0u);
    }
}

TEST(DrawerReminderPlanner, StartAndReminderMakeTwoRemindersKeyedByTheirDates) {
    // given a task with both dates inside the window
    const Instant start = kNow - 60.25;
    const TaskItem task = TaskBuilder("Stretch").startingAt(start).reminder(kNow - 120);
    // when
    const auto due = DrawerReminderPlanner::candidates({task}, {}, kNow, ny());
    // then oldest first
    ASSERT_EQ(due.size(), 2u);
    EXPECT_EQ(due[0], (DrawerReminder{"reminder:" + task.id.text() + ":1795183080.0",
                                      "A task to remember", "Stretch", kNow - 120}));
    EXPECT_EQ(due[1],
              (DrawerReminder{"task:" + task.id.text() + ":" + shortestDoubleText(start.seconds),
                              "Time for your task", "Stretch", start}));
    EXPECT_EQ(due[1].id, "task:" + task.id.text() + ":1795183139.75");
}

TEST(DrawerReminderPlanner, EventsAreDueFiveMinutesBeforeTheyStart) {
    struct Case {
        const char* name;
        CalendarEventItem event;
        bool due;
    };
    const Case cases[] = {
        {"in exactly five minutes", event("e1", "Standup", kNow + 300), true},
        {"in one minute", event("e2", "Standup", kNow + 60), true},
        {"in six minutes", event("e3", "Standup", kNow + 360), false},
        {"starting now", event("e4", "Standup", kNow), false},
        {"already started", event("e5", "Standup", kNow - 60), false},
        {"all day", event("e6", "Holiday", kNow + 120, true), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto due = DrawerReminderPlanner::candidates({}, {c.event}, kNow, ny());
        ASSERT_EQ(due.size(), c.due ? 1u : 0u);
        if (c.due) {
            EXPECT_EQ(due[0].id, "event:" + c.event.id);
            EXPECT_EQ(due[0].title, "Your calendar event starts soon");
            EXPECT_EQ(due[0].due, c.event.start - 300);
        }
    }
}

TEST(DrawerReminderPlanner, EventDetailShowsTheStartTimeInTheCalendarsZone) {
    const auto standup = event("e1", "Standup", at(ny(), 2026, 11, 20, 9, 4));
    const auto due = DrawerReminderPlanner::candidates({}, {standup}, kNow, ny());
    ASSERT_EQ(due.size(), 1u);
    EXPECT_EQ(due[0].detail, "Standup · 9:04\u202FAM");

    const Calendar berlin = test::berlin();
    const auto review = event("e2", "Review", at(berlin, 2026, 11, 20, 15, 4));
    const auto inBerlin =
        DrawerReminderPlanner::candidates({}, {review}, at(berlin, 2026, 11, 20, 15), berlin);
    ASSERT_EQ(inBerlin.size(), 1u);
    EXPECT_EQ(inBerlin[0].detail, "Review · 15:04");
}

TEST(DrawerReminderPlanner, CompletedTasksAndEmptyInputsYieldNothing) {
    const TaskItem done = TaskBuilder("Done").startingAt(kNow).reminder(kNow).completedAt(kNow);
    EXPECT_TRUE(DrawerReminderPlanner::candidates({done}, {}, kNow, ny()).empty());
    EXPECT_TRUE(DrawerReminderPlanner::candidates({}, {}, kNow, ny()).empty());
}

TEST(DrawerReminderPlanner, EqualDuesKeepTasksInListOrderBeforeEvents) {
    // given two tasks and an event all due at the same moment, and an older task
    const Instant due = kNow - 30;
    const TaskItem first = TaskBuilder("First").startingAt(due);
    const TaskItem second = TaskBuilder("Second").startingAt(due);
    const TaskItem older = TaskBuilder("Older").startingAt(due - 100);
    // when
    const auto out = DrawerReminderPlanner::candidates(
        {first, second, older}, {event("e1", "Standup", due + 300)}, kNow, ny());
    // then
    ASSERT_EQ(out.size(), 4u);
    EXPECT_EQ(out[0].detail, "Older");
    EXPECT_EQ(out[1].detail, "First");
    EXPECT_EQ(out[2].detail, "Second");
    EXPECT_EQ(out[3].id, "event:e1");
}

} // namespace
} // namespace daywyn
