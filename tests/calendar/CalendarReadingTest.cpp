#include "calendar/CalendarReading.h"

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

constexpr double kHour = 3600.0;

struct Given {
    Calendar calendar = test::berlin();
    DayInterval day = *calendarDay(at(calendar, 2026, 3, 29, 12), calendar);
    CalendarSnapshot snapshot;
    int freshCount = 0;
    std::function<std::string()> fresh = [this] {
        return "fresh-" + std::to_string(++freshCount);
    };

    Given() {
        snapshot.status = CalendarAccessStatus::fullAccess;
        snapshot.calendars = {{"work", "Work", "Online", "#3465a4"},
                              {"home", "Home", "On This Computer", ""}};
    }
    SourceEvent event(std::string calendarId, std::string id, Instant start, double hours = 1.0) {
        return SourceEvent{std::move(id), std::move(calendarId), "Meeting",
                           start,         start + hours * kHour, false,
                           std::nullopt};
    }
};

TEST(DayEventItems, TakesOnlySelectedCalendarsAndGivesThemTheirColour) {
    Given given;
    given.snapshot.events = {given.event("work", "w1", at(given.calendar, 2026, 3, 29, 9)),
                             given.event("home", "h1", at(given.calendar, 2026, 3, 29, 8)),
                             given.event("gone", "g1", at(given.calendar, 2026, 3, 29, 7))};
    const auto items = dayEventItems(given.snapshot, {"work", "gone"}, given.day, given.fresh);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].calendarTitle, "Work");
    EXPECT_EQ(items[0].colorHex, "#3465A4");
    EXPECT_EQ(items[0].id, CalendarEventItem::occurrenceId("work", "w1", items[0].start));

    const auto home = dayEventItems(given.snapshot, {"home"}, given.day, given.fresh);
    ASSERT_EQ(home.size(), 1u);
    EXPECT_EQ(home[0].colorHex, "#7D7D7D");
    // An empty selection shows nothing even though calendars exist.
    EXPECT_TRUE(dayEventItems(given.snapshot, {}, given.day, given.fresh).empty());
}

TEST(DayEventItems, KeepsEventsOverlappingTheDayAndDropsOthers) {
    Given given;
    const Instant start = given.day.start;
    given.snapshot.events = {
        given.event("work", "overnight", start - kHour, 2.0), // yesterday 23:00 - 01:00
        given.event("work", "yesterday", start - 2 * kHour),  // ends at 23:00 yesterday
        given.event("work", "late", given.day.end - kHour),   // 23:00 today
        given.event("work", "tomorrow", given.day.end),       // midnight tonight
    };
    std::vector<std::string> ids;
    for (const auto& item : dayEventItems(given.snapshot, {"work"}, given.day, given.fresh)) {
        ids.push_back(item.eventIdentifier);
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"overnight", "late"}));
}

TEST(DayEventItems, RepairsMissingTitlesIdentifiersAndBackwardEnds) {
    Given given;
    const Instant nine = at(given.calendar, 2026, 3, 29, 9);
    auto untitled = given.event("work", "", nine);
    untitled.title = "  ";
    auto backwards = given.event("work", "b", nine + kHour);
    backwards.end = nine;
    backwards.title = " Standup ";
    given.snapshot.events = {untitled, backwards};
    const auto items = dayEventItems(given.snapshot, {"work"}, given.day, given.fresh);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].title, "Untitled event");
    EXPECT_EQ(items[0].eventIdentifier, "fresh-1");
    EXPECT_EQ(items[1].title, "Standup");
    EXPECT_EQ(items[1].end, items[1].start);
}

TEST(DayEventItems, DuplicateOccurrencesFromOverlappingSourcesAreShownOnce) {
    Given given;
    const Instant nine = at(given.calendar, 2026, 3, 29, 9);
    auto first = given.event("work", "same", nine);
    auto second = first;
    second.title = "Copy";
    given.snapshot.events = {first, second};
    const auto items = dayEventItems(given.snapshot, {"work"}, given.day, given.fresh);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].title, "Meeting");
}

TEST(DayEventItems, NothingWithoutAccess) {
    Given given;
    given.snapshot.events = {given.event("work", "w1", at(given.calendar, 2026, 3, 29, 9))};
    given.snapshot.status = CalendarAccessStatus::unavailable;
    EXPECT_TRUE(dayEventItems(given.snapshot, {"work"}, given.day, given.fresh).empty());
}

TEST(CalendarChoices, ComeSortedWithNormalisedColours) {
    const auto choices = calendarChoices(
        {{"b", "b", "Z source", "#fff"}, {"a", "A", "a source", "nonsense"}}, "en_US");
    ASSERT_EQ(choices.size(), 2u);
    EXPECT_EQ(choices[0], (CalendarChoice{"a", "A", "a source", "#7D7D7D"}));
    EXPECT_EQ(choices[1].colorHex, "#FFFFFF");
}

TEST(CalendarExplanations, SayWhyNoEventsAppear) {
    using Status = CalendarAccessStatus;
    const std::vector<CalendarChoice> calendars{{"work", "Work", "Online", "#000000"}};
    const struct {
        const char* name;
        Status status;
        bool enabled;
        std::vector<CalendarChoice> calendars;
        std::vector<std::string> selected;
        std::vector<std::string> expected;
    } cases[] = {
        {"off and never asked", Status::notDetermined, false, {}, {}, {}},
        {"off, no calendar service",
         Status::unavailable,
         false,
         {},
         {},
         {"Calendar access is unavailable. Change it in Settings if desired."}},
        {"on, no calendar service",
         Status::unavailable,
         true,
         {},
         {},
         {"Calendar integration is enabled, but access to your calendars is missing.",
          "Calendar access is unavailable. Change it in Settings if desired."}},
        {"on, still asking",
         Status::notDetermined,
         true,
         {},
         {},
         {"Calendar integration is enabled, but access to your calendars is missing.",
          "Calendar access status is unavailable."}},
        {"on, no calendars",
         Status::fullAccess,
         true,
         {},
         {"work"},
         {"No event calendars are currently available."}},
        {"on, selection names only vanished calendars",
         Status::fullAccess,
         true,
         calendars,
         {"gone"},
         {"No calendars are selected in Settings."}},
        {"on and showing", Status::fullAccess, true, calendars, {"work"}, {}},
        {"off with access", Status::fullAccess, false, calendars, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(calendarExplanations(c.status, c.enabled, c.calendars, c.selected), c.expected);
    }
}

} // namespace
} // namespace daywyn

namespace daywyn {
namespace {

TEST(EventRowText, ShowsAllDayOrTheTimeSpan) {
    const Calendar ny("America/New_York", "en_US");
    CalendarEventItem event;
    event.start = test::at(ny, 2026, 3, 8, 9);
    event.end = test::at(ny, 2026, 3, 8, 9, 30);
    EXPECT_EQ(eventTimeSpanText(event, ny), "9:00\u202fAM \u2013 9:30\u202fAM");
    event.end = event.start;
    EXPECT_EQ(eventTimeSpanText(event, ny), "9:00\u202fAM");
    event.isAllDay = true;
    EXPECT_EQ(eventTimeSpanText(event, ny), "All day");
}

TEST(EventRowText, OffersOnlyHttpsLinksAsMeetingLinks) {
    CalendarEventItem event;
    EXPECT_FALSE(meetingLink(event));
    const struct {
        const char* url;
        std::optional<std::string> expected;
    } cases[] = {
        {"https://meet.example.org/abc", "https://meet.example.org/abc"},
        {" HTTPS://Meet.example.org/x ", "HTTPS://Meet.example.org/x"},
        {"http://meet.example.org/abc", std::nullopt},
        {"javascript:alert(1)", std::nullopt},
        {"https://", std::nullopt},
        {"https://a b", std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.url);
        event.url = c.url;
        EXPECT_EQ(meetingLink(event), c.expected);
    }
}

} // namespace
} // namespace daywyn
