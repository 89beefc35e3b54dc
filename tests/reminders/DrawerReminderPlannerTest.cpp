#include "reminders/DrawerReminderPlanner.h"

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

const Calendar kNy = test::newYork();
// Friday 20 November 2026, 09:00 in New York (1795183200 seconds since 1970).
const Instant kNow = test::at(kNy, 2026, 11, 20, 9);

CalendarEventItem event(std::string id, Instant start, bool allDay = false) {
    return {id, "eid", "cal", "Work", "#FF6842", "Standup", start, start + 1800, allDay, {}};
}

std::vector<DrawerReminder> candidates(const std::vector<TaskItem>& tasks,
                                       const std::vector<CalendarEventItem>& events = {}) {
    return DrawerReminderPlanner::candidates(tasks, events, kNow, kNy);
}

TEST(DrawerReminderPlanner, TaskDatesAreDueForFiveMinutes) {
    const std::pair<double, bool> cases[] = {
        {0, true}, {-300, true}, {-301, false}, {-300.5, false}, {1, false}};
    for (const auto& [offset, due] : cases) {
        SCOPED_TRACE(offset);
        EXPECT_EQ(candidates({TaskBuilder().startingAt(kNow + offset)}).size(), due ? 1u : 0u);
        EXPECT_EQ(candidates({TaskBuilder().reminder(kNow + offset)}).size(), due ? 1u : 0u);
    }
}

TEST(DrawerReminderPlanner, EventsAreDueFiveMinutesBeforeTheyStart) {
    const std::pair<CalendarEventItem, bool> cases[] = {
        {event("in 5 min", kNow + 300), true},  {event("in 1 min", kNow + 60), true},
        {event("in 6 min", kNow + 360), false}, {event("now", kNow), false},
        {event("started", kNow - 60), false},   {event("all day", kNow + 120, true), false}};
    for (const auto& [e, due] : cases) {
        SCOPED_TRACE(e.id);
        const auto out = candidates({}, {e});
        ASSERT_EQ(out.size(), due ? 1u : 0u);
        if (due) {
            EXPECT_EQ(out[0].id, "event:" + e.id);
            EXPECT_EQ(out[0].due, e.start - 300);
        }
    }
}

TEST(DrawerReminderPlanner, RemindersCarryTheirDatesAndComeOldestFirst) {
    // given two tasks due together, one with an older reminder too, an event due
    // with them, and a completed task
    const Instant due = kNow - 60.25;
    const TaskItem first = TaskBuilder("First").startingAt(due).reminder(kNow - 120);
    const TaskItem second = TaskBuilder("Second").startingAt(due);
    const TaskItem done = TaskBuilder("Done").startingAt(kNow).completedAt(kNow);
    // when
    const auto out = candidates({done, second, first}, {event("ev-1", kNow + 239.75)});
    // then
    const std::string firstId = first.id.text();
    ASSERT_EQ(out.size(), 4u);
    EXPECT_EQ(out[0], (DrawerReminder{"reminder:" + firstId + ":1795183080.0", "A task to remember",
                                      "First", kNow - 120}));
    EXPECT_EQ(out[1], (DrawerReminder{"task:" + second.id.text() + ":1795183139.75",
                                      "Time for your task", "Second", due}));
    EXPECT_EQ(out[2].id, "task:" + firstId + ":1795183139.75");
    EXPECT_EQ(out[3].id, "event:ev-1");
    EXPECT_EQ(out[3].title, "Your calendar event starts soon");
    EXPECT_EQ(out[3].detail, "Standup · 9:03\u202FAM");
    EXPECT_TRUE(candidates({}, {}).empty());
}

} // namespace
} // namespace daywyn
