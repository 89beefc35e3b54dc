#include "calendar/CalendarEventItem.h"

#include <gtest/gtest.h>

#include "calendar/CalendarChoice.h"
#include "calendar/CalendarDay.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

constexpr double kHour = 3600.0;
constexpr double kReferenceDate = 978'307'200.0;

CalendarEventItem item(std::string id, Instant start, std::string title = "Event") {
    CalendarEventItem event;
    event.id = std::move(id);
    event.title = std::move(title);
    event.start = start;
    event.end = start + kHour;
    return event;
}

TEST(CalendarEventItem, OccurrenceIdWritesTheStartAsShortestSecondsSince2001) {
    // A whole number of seconds keeps its ".0"; a fraction is written exactly.
    EXPECT_EQ(CalendarEventItem::occurrenceId("cal", "ev", Instant{kReferenceDate + 784111800.0}),
              "cal|ev|784111800.0");
    EXPECT_EQ(CalendarEventItem::occurrenceId("cal", "ev", Instant{kReferenceDate + 0.5}),
              "cal|ev|0.5");
    EXPECT_EQ(CalendarEventItem::occurrenceId("c", "e", Instant{kReferenceDate - 60.0}),
              "c|e|-60.0");
    // Two occurrences of one repeating event differ only in their start.
    EXPECT_NE(CalendarEventItem::occurrenceId("c", "e", Instant{kReferenceDate}),
              CalendarEventItem::occurrenceId("c", "e", Instant{kReferenceDate + 86400.0}));
}

TEST(CalendarEventItem, HexColorTruncatesEachComponent) {
    EXPECT_EQ(CalendarEventItem::hexColor(std::nullopt), "#7D7D7D");
    EXPECT_EQ(CalendarEventItem::hexColor(RgbColor{0.999, 0.999, 0.999}), "#FEFEFE");
    EXPECT_EQ(CalendarEventItem::hexColor(RgbColor{1.0, 0.0, 0.5}), "#FF007F");
    // The brand's coral, as the design gives it in components.
    EXPECT_EQ(CalendarEventItem::hexColor(RgbColor{1.0, 0.408, 0.259}), "#FF6842");
    // Out-of-range components are held to the scale rather than wrapping.
    EXPECT_EQ(CalendarEventItem::hexColor(RgbColor{1.5, -0.2, 0.0}), "#FF0000");
}

TEST(CalendarEventItem, ColorTextFromASourceBecomesUpperCaseHex) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {
        {"#62a0ea", "#62A0EA"},   {"#abc", "#AABBCC"},    {"#ffff00008080", "#FF0080"},
        {" #3465A4 ", "#3465A4"}, {"", "#7D7D7D"},        {"red", "#7D7D7D"},
        {"#12345", "#7D7D7D"},    {"#GG0000", "#7D7D7D"}, {"#62a0ea80", "#7D7D7D"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(CalendarEventItem::hexColorFromText(c.text), c.expected);
    }
}

TEST(CalendarEventItem, DeduplicatedSortsByStartAndKeepsTheFirstOfEachId) {
    const Instant nine{1'800'000'000.0};
    auto first = item("a", nine, "first");
    auto duplicate = item("a", nine, "second");
    auto early = item("b", nine - kHour);
    auto sameStartOther = item("c", nine);
    const auto result = CalendarEventItem::deduplicated({first, sameStartOther, duplicate, early});
    ASSERT_EQ(result.size(), 3u);
    EXPECT_EQ(result[0].id, "b");
    // Equal starts keep their input order, and the first "a" wins.
    EXPECT_EQ(result[1].title, "first");
    EXPECT_EQ(result[2].id, "c");
    // A later duplicate with an earlier start wins because it sorts first.
    auto earlierCopy = item("a", nine - 2 * kHour, "earlier copy");
    EXPECT_EQ(CalendarEventItem::deduplicated({first, earlierCopy}).front().title, "earlier copy");
    EXPECT_TRUE(CalendarEventItem::deduplicated({}).empty());
}

TEST(CalendarChoice, SortsBySourceThenTitleIgnoringCase) {
    std::vector<CalendarChoice> choices{
        {"1", "work", "On This Computer", "#000000"},
        {"2", "Birthdays", "personal", "#000000"},
        {"3", "Home", "On This Computer", "#000000"},
        {"4", "Anniversaries", "Personal", "#000000"},
        {"5", "Zoo", "Family", "#000000"},
        {"6", "École", "Family", "#000000"},
    };
    CalendarChoice::sort(choices, "en_US");
    std::vector<std::string> order;
    for (const auto& choice : choices) {
        order.push_back(choice.id);
    }
    // "personal" and "Personal" compare equal, so their titles decide; accents sort
    // the way a reader expects, not by byte value.
    EXPECT_EQ(order, (std::vector<std::string>{"6", "5", "3", "1", "4", "2"}));
}

TEST(CalendarDay, FollowsTheZoneThroughDaylightSavingDays) {
    const Calendar ny = test::newYork();
    const auto spring = calendarDay(at(ny, 2026, 3, 8, 15), ny);
    ASSERT_TRUE(spring);
    EXPECT_EQ(isoText(spring->start), "2026-03-08T05:00:00Z");
    EXPECT_EQ(spring->end - spring->start, 23 * kHour);
    const auto fall = calendarDay(at(ny, 2026, 11, 1, 0, 30), ny);
    ASSERT_TRUE(fall);
    EXPECT_EQ(fall->end - fall->start, 25 * kHour);

    const Calendar berlin = test::berlin();
    const auto berlinFall = calendarDay(at(berlin, 2026, 10, 25, 23, 59), berlin);
    ASSERT_TRUE(berlinFall);
    EXPECT_EQ(isoText(berlinFall->start), "2026-10-24T22:00:00Z");
    EXPECT_EQ(isoText(berlinFall->end), "2026-10-25T23:00:00Z");
    const auto ordinary = calendarDay(at(berlin, 2026, 7, 1, 12), berlin);
    ASSERT_TRUE(ordinary);
    EXPECT_EQ(ordinary->end - ordinary->start, 24 * kHour);
}

TEST(CalendarDay, OverlapTakesEventsReachingIntoTheDayButNotTouchingIt) {
    const DayInterval day{Instant{0.0}, Instant{24 * kHour}};
    // Yesterday 23:00 to today 01:00.
    EXPECT_TRUE(day.overlaps(Instant{-kHour}, Instant{kHour}));
    // Ending exactly at midnight or starting exactly at the next one: not today.
    EXPECT_FALSE(day.overlaps(Instant{-kHour}, Instant{0.0}));
    EXPECT_FALSE(day.overlaps(Instant{24 * kHour}, Instant{25 * kHour}));
    EXPECT_TRUE(day.overlaps(Instant{23 * kHour}, Instant{26 * kHour}));
    // A moment-long event at midnight belongs to the day it starts.
    EXPECT_TRUE(day.overlaps(Instant{0.0}, Instant{0.0}));
    EXPECT_FALSE(day.overlaps(Instant{24 * kHour}, Instant{24 * kHour}));
}

} // namespace
} // namespace daywyn
