#include "calendar/CalendarsCommand.h"

#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

struct Given {
    Calendar calendar = test::berlin();
    Instant now = test::at(calendar, 2026, 3, 10, 9);
    TodayTaskStore store{nullptr, now, calendar};
    CommandOutput run(std::vector<std::string> args) {
        return runCommand(store, args, now, calendar);
    }
};

TEST(CalendarsCommand, SwitchesEventsAndChoosesCalendarsThroughTheStore) {
    Given given;
    EXPECT_EQ(given.run({"calendars"}).out,
              "Calendar events in the drawer: off\nNo calendars are selected.\n");
    EXPECT_EQ(given.run({"calendars", "on"}).status, 0);
    EXPECT_TRUE(given.store.preferences().calendarIntegrationEnabled);
    given.run({"calendars", "select", "work", "ics:team.ics", "work"});
    EXPECT_EQ(given.store.preferences().selectedCalendarIdentifiers,
              (std::vector<std::string>{"work", "ics:team.ics"}));
    const auto after = given.run({"calendars", "unselect", "work", "never-selected"});
    EXPECT_EQ(after.out, "Calendar events in the drawer: on\nSelected calendars:\n"
                         "  ics:team.ics\n");
    given.run({"calendars", "off"});
    EXPECT_FALSE(given.store.preferences().calendarIntegrationEnabled);
}

TEST(CalendarsCommand, RefusesMistypedActionsBeforeTouchingTheStore) {
    Given given;
    for (const auto& args : std::vector<std::vector<std::string>>{{"calendars", "enable"},
                                                                  {"calendars", "on", "work"},
                                                                  {"calendars", "select"},
                                                                  {"calendars", "--all"}}) {
        SCOPED_TRACE(args.back());
        const auto output = given.run(args);
        EXPECT_EQ(output.status, 2);
        EXPECT_FALSE(output.err.empty());
    }
    EXPECT_FALSE(given.store.preferences().calendarIntegrationEnabled);
    // Changes go to the running app when there is one; showing does not.
    EXPECT_EQ(verbAccess({"calendars", "select", "x"}), VerbAccess::writing);
    EXPECT_EQ(verbAccess({"calendars"}), VerbAccess::reading);
}

} // namespace
} // namespace daywyn
