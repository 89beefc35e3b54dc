#include "store/TaskDaySections.h"

#include <string>

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

std::vector<std::string> titles(const std::vector<const TaskItem*>& section) {
    std::vector<std::string> out;
    for (const auto* task : section) {
        out.push_back(task->title);
    }
    return out;
}

std::string sectionOf(const TaskDaySections& s, const std::string& title) {
    const std::pair<const char*, const std::vector<const TaskItem*>*> all[] = {
        {"priorities", &s.priorities},
        {"today", &s.today},
        {"carryOver", &s.carryOver},
        {"upcoming", &s.upcoming},
        {"completedToday", &s.completedToday}};
    std::string found = "hidden";
    for (const auto& [name, section] : all) {
        for (const auto* task : *section) {
            if (task->title == title) {
                found = found == "hidden" ? name : "more than one section";
            }
        }
    }
    return found;
}

TEST(TaskDaySections, EachTaskLandsInTheSectionOfItsRule) {
    // Sunday 29 March 2026 in Berlin has only 23 hours.
    const Calendar berlin = test::berlin();
    const auto t = [&](int day, int hour, int minute = 0, int second = 0) {
        return test::at(berlin, 2026, 3, day, hour, minute, second);
    };
    const Instant displayed = t(29, 12);
    std::vector<TaskItem> list = {
        TaskBuilder("pinned tomorrow").pinned(1).startingAt(t(30, 9)),
        TaskBuilder("pinned yesterday").pinned(2).plannedFor(t(28, 0)),
        TaskBuilder("running last week").running(t(29, 8)).startingAt(t(22, 9)),
        TaskBuilder("running next week").running(t(29, 8)).plannedFor(t(31, 0)),
        TaskBuilder("completed at midnight").completedAt(t(29, 0)),
        TaskBuilder("completed yesterday").completedAt(t(28, 23, 59, 59)).plannedFor(t(29, 0)),
        TaskBuilder("completed without a time").startingAt(t(29, 9)).completedAt(t(29, 9)),
        TaskBuilder("planned for the last minute").startingAt(t(29, 23, 59)),
        TaskBuilder("planned for next midnight").startingAt(t(30, 0)),
        TaskBuilder("created today").createdAt(t(29, 3)),
        TaskBuilder("created yesterday").createdAt(t(28, 22)),
        TaskBuilder("day wins over creation").createdAt(t(20, 10)).plannedFor(t(29, 0)),
    };
    list[6].completedAt.reset();

    const TaskDaySections sections = makeTaskSections(list, displayed, berlin);

    const std::pair<const char*, const char*> expected[] = {
        {"pinned tomorrow", "upcoming"},
        {"pinned yesterday", "priorities"},
        {"running last week", "today"},
        {"running next week", "today"},
        {"completed at midnight", "completedToday"},
        {"completed yesterday", "hidden"},
        {"completed without a time", "hidden"},
        {"planned for the last minute", "today"},
        {"planned for next midnight", "upcoming"},
        {"created today", "today"},
        {"created yesterday", "carryOver"},
        {"day wins over creation", "today"},
    };
    for (const auto& [title, section] : expected) {
        SCOPED_TRACE(title);
        EXPECT_EQ(sectionOf(sections, title), section);
    }
}

TEST(TaskDaySections, PrioritiesFollowTheirRankAndUpcomingTheirPlanDate) {
    const Calendar newYork = test::newYork();
    const Instant today = test::at(newYork, 2026, 11, 3, 10, 0);
    const Instant nextWeek = test::at(newYork, 2026, 11, 10, 9, 0);
    const std::vector<TaskItem> tasks = {
        TaskBuilder("third").pinned(3).createdAt(today),
        TaskBuilder("later").startingAt(nextWeek + 60.0),
        TaskBuilder("first").pinned(1).createdAt(today),
        TaskBuilder("next week A").startingAt(nextWeek),
        TaskBuilder("second").pinned(2).createdAt(today),
        TaskBuilder("next week B").startingAt(nextWeek),
        TaskBuilder("tomorrow").plannedFor(test::at(newYork, 2026, 11, 4)),
    };

    const TaskDaySections sections = makeTaskSections(tasks, today, newYork);

    EXPECT_EQ(titles(sections.priorities), (std::vector<std::string>{"first", "second", "third"}));
    EXPECT_EQ(titles(sections.upcoming),
              (std::vector<std::string>{"tomorrow", "next week A", "next week B", "later"}));
}

} // namespace
} // namespace daywyn
