#include "parsing/QuickTaskParser.h"

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

struct WallTime {
    int dayOffset; // days after 4 March 2026
    int hour;
    int minute;
};

struct QuickCase {
    const char* text;
    const char* title;
    std::optional<long long> estimate;
    std::optional<int> dayOffset;
    std::optional<WallTime> start;
};

// Typed lines at 15:20 on Wednesday 4 March 2026 (so 09:00 has already passed).
const QuickCase kQuickCases[] = {
    {"Call Ama tomorrow at 10 for 20 minutes", "Call Ama", 20, 1, WallTime{1, 10, 0}},
    {"Write report for 2 hours", "Write report", 120, {}, {}},
    {"Nap for 1 hr", "Nap", 60, {}, {}},
    {"Breathe for 0 minutes", "Breathe", 1, {}, {}},
    {"Read for 900 min", "Read", 720, {}, {}},
    {"Hike for 13 hours", "Hike", 720, {}, {}},
    {"Tea for  5mins", "Tea", 5, {}, {}},
    {"Tea FOR 5 MINS please", "Tea please", 5, {}, {}},
    {"Stretch at 7:30pm", "Stretch", {}, {}, WallTime{0, 19, 30}},
    {"Stretch at 7:30 PM", "Stretch", {}, {}, WallTime{0, 19, 30}},
    {"Run at 9", "Run", {}, {}, WallTime{0, 9, 0}},
    {"Dinner at 19", "Dinner", {}, {}, WallTime{0, 19, 0}},
    {"Sleep at twelve am", "Sleep", {}, {}, WallTime{0, 0, 0}},
    {"Lunch at 12pm", "Lunch", {}, {}, WallTime{0, 12, 0}},
    {"Wake at 0am", "Wake", {}, {}, WallTime{0, 0, 0}},
    {"Odd at 13pm", "Odd", {}, {}, WallTime{0, 13, 0}},
    {"AT NINE PM Call", "Call", {}, {}, WallTime{0, 21, 0}},
    {"Party at 24", "Party at 24", {}, {}, {}},
    {"Call at 9:75", "Call :75", {}, {}, WallTime{0, 9, 0}},
    {"Meet at ninety", "Meet at ninety", {}, {}, {}},
    {"Chat 5 things", "Chat 5 things", {}, {}, {}},
    {"today tomorrow", "tomorrow", {}, 0, {}},
    {"tomorrow at 9", "", {}, 1, WallTime{1, 9, 0}},
    {"Call at 8 and at 9", "Call and at 9", {}, {}, WallTime{0, 8, 0}},
    {"Ask for 5 minutes then for 10 minutes", "Ask then for 10 minutes", 5, {}, {}},
    {"  Plan\t the\n  week\u3000 ", "Plan the week", {}, {}, {}},
    // Digits of other scripts are read as the numbers they are.
    {"Pray for \u0663 minutes", "Pray", 3, {}, {}},
    {"Walk for \uFF13 hours", "Walk", 180, {}, {}},
    // A count beyond a 64-bit integer sets no estimate, but its words are gone.
    {"Wait for 99999999999999999999 minutes", "Wait", {}, {}, {}},
    // Hour counts whose minutes would overflow clamp to the longest estimate.
    {"Wait for 153722867280912931 hours", "Wait", 720, {}, {}},
    {"Wait for 9223372036854775807 hrs", "Wait", 720, {}, {}},
};

TEST(QuickTaskParser, TakesEstimateDayAndTimeOutOfTheTitle) {
    for (const Calendar& calendar : {test::newYork(), test::berlin()}) {
        const Instant now = at(calendar, 2026, 3, 4, 15, 20);
        for (const QuickCase& row : kQuickCases) {
            SCOPED_TRACE(calendar.zoneId() + ": " + row.text);

            const TaskDraft draft = QuickTaskParser::draft(row.text, now, calendar);

            EXPECT_EQ(draft.title, row.title);
            EXPECT_EQ(draft.hasEstimate, row.estimate.has_value());
            EXPECT_EQ(draft.estimatedMinutes, row.estimate.value_or(25));
            EXPECT_EQ(draft.hasScheduledDay, row.dayOffset.has_value());
            if (row.dayOffset) {
                EXPECT_EQ(draft.scheduledDay, at(calendar, 2026, 3, 4 + *row.dayOffset));
            }
            EXPECT_EQ(draft.hasScheduledStart, row.start.has_value());
            if (row.start) {
                EXPECT_EQ(draft.scheduledStart, at(calendar, 2026, 3, 4 + row.start->dayOffset,
                                                   row.start->hour, row.start->minute));
            }
            // Nothing beyond what was said is derived.
            EXPECT_FALSE(draft.hasReminder);
            EXPECT_FALSE(draft.hasScheduledEnd);
        }
    }
}

TEST(QuickTaskParser, InvalidUtf8StaysVisibleAsReplacementCharacters) {
    const Calendar newYork = test::newYork();
    const TaskDraft draft =
        QuickTaskParser::draft("Pay \xff\xfe bill at 9", at(newYork, 2026, 3, 4), newYork);
    EXPECT_EQ(draft.title, "Pay \uFFFD\uFFFD bill");
    EXPECT_TRUE(draft.hasScheduledStart);
}

} // namespace
} // namespace daywyn
