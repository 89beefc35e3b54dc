#include "parsing/TaskDateParser.h"

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

Instant utc(const char* isoText) {
    const auto instant = parseIsoText(isoText);
    EXPECT_TRUE(instant.has_value()) << isoText;
    return instant.value_or(Instant{});
}

struct ClockChangeCase {
    const char* zone;
    const char* now;
    const char* title;
    std::optional<Instant> day;
    std::optional<Instant> start;
};

TEST(TaskDateParser, WallTimesAcrossClockChangesTakeTheNextOrFirstExistingTime) {
    // Expected instants are written in UTC so they do not lean on the calendar under test.
    const ClockChangeCase cases[] = {
        // 02:30 does not exist on 8 March 2026 in New York: 03:00 EDT.
        {"America/New_York",
         "2026-03-08T15:00:00Z",
         "Bake at 2:30",
         {},
         utc("2026-03-08T07:00:00Z")},
        {"America/New_York", "2026-03-08T04:30:00Z", "tomorrow at 9", utc("2026-03-08T05:00:00Z"),
         utc("2026-03-08T13:00:00Z")},
        {"America/New_York",
         "2026-03-08T15:00:00Z",
         "Plan tomorrow",
         utc("2026-03-09T04:00:00Z"),
         {}},
        // 01:30 happens twice on 1 November 2026 in New York: the first, in EDT.
        {"America/New_York",
         "2026-11-01T15:00:00Z",
         "Feed cat at 1:30am",
         {},
         utc("2026-11-01T05:30:00Z")},
        // 02:30 does not exist on 29 March 2026 in Berlin: 03:00 CEST.
        {"Europe/Berlin", "2026-03-29T10:00:00Z", "Bake at 2:30", {}, utc("2026-03-29T01:00:00Z")},
        {"Europe/Berlin", "2026-03-28T12:00:00Z", "tomorrow at two", utc("2026-03-28T23:00:00Z"),
         utc("2026-03-29T01:00:00Z")},
        // 02:30 happens twice on 25 October 2026 in Berlin: the first, in CEST.
        {"Europe/Berlin", "2026-10-25T10:00:00Z", "today at 2:30", utc("2026-10-24T22:00:00Z"),
         utc("2026-10-25T00:30:00Z")},
        // Santiago skips midnight on 6 September 2026, so that day starts at 01:00;
        // the next day still starts at its midnight.
        {"America/Santiago",
         "2026-09-06T15:00:00Z",
         "Vote tomorrow",
         utc("2026-09-07T03:00:00Z"),
         {}},
    };
    for (const ClockChangeCase& row : cases) {
        SCOPED_TRACE(std::string(row.zone) + " " + row.now + ": " + row.title);
        const Calendar calendar(row.zone, "en_US");
        std::string title = row.title;

        const TaskDateMatch match = TaskDateParser::parse(title, utc(row.now), calendar);

        EXPECT_EQ(match.day, row.day);
        EXPECT_EQ(match.start, row.start);
    }
}

TEST(TaskDateParser, CutsOutOnlyTheMatchedTextAndKeepsTheRestByteForByte) {
    const Calendar newYork = test::newYork();
    const Instant now = at(newYork, 2026, 3, 4, 8);
    struct Row {
        const char* before;
        const char* after;
    };
    const Row rows[] = {
        {"Café tomorrow at 9 ☕", "Café   ☕"},
        {"tomorrow, at 7 pm: gym", ", : gym"},
        {"Nothing to see \xff here", "Nothing to see \xff here"},
        {"Today TODAY", " TODAY"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        std::string title = row.before;
        TaskDateParser::parse(title, now, newYork);
        EXPECT_EQ(title, row.after);
    }
}

} // namespace
} // namespace daywyn
