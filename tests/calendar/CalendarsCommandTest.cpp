#include "calendar/CalendarsCommand.h"

#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

// Two calendars of two sources, with today's events of each, as a reader gives them.
struct FakeCalendars : CalendarReader {
    CalendarSnapshot snapshot;
    std::vector<CalendarQuery> queries;
    CalendarSnapshot readCalendars(const CalendarQuery& query) override {
        queries.push_back(query);
        CalendarSnapshot answer = snapshot;
        std::erase_if(answer.events, [&query](const SourceEvent& e) {
            return std::find(query.calendarIdentifiers.begin(), query.calendarIdentifiers.end(),
                             e.calendarIdentifier) == query.calendarIdentifiers.end();
        });
        return answer;
    }
};

struct Given {
    Calendar calendar = test::berlin();
    Instant now = test::at(calendar, 2026, 3, 10, 9);
    TodayTaskStore store{nullptr, now, calendar};
    FakeCalendars calendars;
    Given() {
        calendars.snapshot.status = CalendarAccessStatus::fullAccess;
        calendars.snapshot.calendars = {{"w1", "Work", "Online", "#62a0ea"},
                                        {"ics:home.ics", "Home", "Calendar files", ""}};
        calendars.snapshot.events = {{"e1", "w1", "Standup", test::at(calendar, 2026, 3, 10, 9, 30),
                                      test::at(calendar, 2026, 3, 10, 9, 45), false,
                                      "https://meet.example.org/x"},
                                     {"e2", "ics:home.ics", "", test::at(calendar, 2026, 3, 10),
                                      test::at(calendar, 2026, 3, 11), true, std::nullopt}};
    }
    CommandOutput run(std::vector<std::string> args, bool withCalendars = true) {
        return runCommand(store, args, now, calendar, nullptr,
                          withCalendars ? &calendars : nullptr);
    }
    const std::vector<std::string>& selected() const {
        return store.preferences().selectedCalendarIdentifiers;
    }
};

TEST(CalendarsCommand, ListsEveryCalendarWithIdSourceAndColourAndWhetherItIsChosen) {
    Given given;
    EXPECT_EQ(given.run({"calendars"}).out,
              "Calendar events in the drawer: off\n\nCalendars ([x] chosen):\n"
              "  [ ] Home \u2014 Calendar files  #7D7D7D  ics:home.ics\n"
              "  [ ] Work \u2014 Online  #62A0EA  w1\n\n"
              "No calendars are selected in Settings.\n");
    given.run({"calendars", "select", "w1"});
    EXPECT_EQ(
        given.run({"calendars", "--json"}).out,
        "{\"calendars\":[{\"colorHex\":\"#7D7D7D\",\"id\":\"ics:home.ics\",\"selected\":"
        "false,\"sourceTitle\":\"Calendar files\",\"title\":\"Home\"},{\"colorHex\":"
        "\"#62A0EA\",\"id\":\"w1\",\"selected\":true,\"sourceTitle\":\"Online\",\"title\":"
        "\"Work\"}],\"integrationEnabled\":false,\"selectedCalendarIdentifiers\":[\"w1\"]}\n");
    // Without any calendar to read, the choice is still shown.
    EXPECT_EQ(given.run({"calendars"}, false).out,
              "Calendar events in the drawer: off\nSelected calendars:\n  w1\n");
}

TEST(CalendarsCommand, SwitchesEventsAndChoosesCalendarsThroughTheStore) {
    Given given;
    EXPECT_EQ(given.run({"calendars", "on"}).status, 0);
    EXPECT_TRUE(given.store.preferences().calendarIntegrationEnabled);
    given.run({"calendars", "select", "w1", "ics:home.ics", "w1"});
    EXPECT_EQ(given.selected(), (std::vector<std::string>{"w1", "ics:home.ics"}));
    given.run({"calendars", "unselect", "w1", "never-selected"});
    EXPECT_EQ(given.selected(), (std::vector<std::string>{"ics:home.ics"}));
    given.run({"calendars", "select", "--all"});
    EXPECT_EQ(given.selected(), (std::vector<std::string>{"ics:home.ics", "w1"}));
    given.run({"calendars", "unselect", "--all"});
    EXPECT_TRUE(given.selected().empty());
    given.run({"calendars", "off"});
    EXPECT_FALSE(given.store.preferences().calendarIntegrationEnabled);
}

TEST(CalendarsCommand, UnknownIdsAndAnUnreadableListChangeNothingAndSaySo) {
    Given given;
    const auto mistyped = given.run({"calendars", "select", "w1", "w2"});
    EXPECT_EQ(mistyped.status, 1);
    EXPECT_EQ(mistyped.err, "No calendar has the id \"w2\"; nothing was changed. Run 'daywyn "
                            "calendars' to see the ids.\n");
    EXPECT_TRUE(given.selected().empty());
    // Where no calendar can be read, ids are taken on trust, but --all has no list.
    EXPECT_EQ(given.run({"calendars", "select", "w2"}, false).status, 0);
    const auto all = given.run({"calendars", "select", "--all"}, false);
    EXPECT_EQ(all.status, 1);
    EXPECT_NE(all.err.find("no calendar list"), std::string::npos);
    given.calendars.snapshot.status = CalendarAccessStatus::unavailable;
    EXPECT_EQ(given.run({"calendars", "select", "--all"}).status, 1);
    EXPECT_EQ(given.selected(), (std::vector<std::string>{"w2"}));
}

TEST(CalendarsCommand, RefusesMistypedActionsBeforeTouchingTheStore) {
    Given given;
    for (const auto& args :
         std::vector<std::vector<std::string>>{{"calendars", "enable"},
                                               {"calendars", "on", "work"},
                                               {"calendars", "select"},
                                               {"calendars", "--all"},
                                               {"calendars", "on", "--all"},
                                               {"calendars", "select", "--all", "w1"}}) {
        SCOPED_TRACE(args.back());
        const auto output = given.run(args);
        EXPECT_EQ(output.status, 2);
        EXPECT_FALSE(output.err.empty());
    }
    EXPECT_FALSE(given.store.preferences().calendarIntegrationEnabled);
    EXPECT_TRUE(given.selected().empty());
    // Changes go to the running app when there is one; showing does not.
    EXPECT_EQ(verbAccess({"calendars", "select", "x"}), VerbAccess::writing);
    EXPECT_EQ(verbAccess({"calendars", "unselect", "--all"}), VerbAccess::writing);
    EXPECT_EQ(verbAccess({"calendars"}), VerbAccess::reading);
    EXPECT_EQ(verbAccess({"calendars", "--json"}), VerbAccess::reading);
}

TEST(TodayCommand, ShowsTheDaysEventsOfTheChosenCalendarsOnlyWhileEventsAreOn) {
    Given given;
    const auto withoutEvents = given.run({"today"});
    EXPECT_EQ(withoutEvents.out.find("Events"), std::string::npos);
    // Off: the calendars are not even read.
    EXPECT_TRUE(given.calendars.queries.empty());
    given.run({"calendars", "on"});
    given.run({"calendars", "select", "w1", "ics:home.ics"});
    given.calendars.queries.clear();
    const std::string text = given.run({"today"}).out;
    ASSERT_EQ(given.calendars.queries.size(), 1u);
    EXPECT_EQ(given.calendars.queries[0].day.start, test::at(given.calendar, 2026, 3, 10));
    EXPECT_NE(text.find("\nEvents (2)\n  All day  Untitled event  (Home)\n"
                        "  09:30 \u2013 09:45  Standup  (Work)  "
                        "https://meet.example.org/x\n"),
              std::string::npos)
        << text;
    const std::string json = given.run({"today", "--json"}).out;
    EXPECT_NE(json.find("\"events\":[{\"calendarIdentifier\":\"ics:home.ics\",\"calendarTitle\":"
                        "\"Home\",\"colorHex\":\"#7D7D7D\",\"end\":\"2026-03-10T23:00:00Z\","
                        "\"eventIdentifier\":\"e2\",\"id\":\"ics:home.ics|e2|794790000.0\","
                        "\"isAllDay\":true,\"start\":\"2026-03-09T23:00:00Z\",\"title\":"
                        "\"Untitled event\"},{"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find("\"url\":\"https://meet.example.org/x\"}],\"priorities\""),
              std::string::npos);
    // A calendar service that cannot be reached is explained, not hidden.
    given.calendars.snapshot = {};
    EXPECT_NE(given.run({"today"}).out.find(
                  "Events (0)\n  Calendar integration is enabled, but access to your calendars "
                  "is missing.\n  Calendar access is unavailable. Change it in Settings if "
                  "desired.\n"),
              std::string::npos);
}

} // namespace
} // namespace daywyn
