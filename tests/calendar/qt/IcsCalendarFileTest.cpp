#include "calendar/system/IcsCalendarFile.h"

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

std::string fixture(const std::string& name) {
    std::ifstream in(std::string(DAYWYN_TEST_DATA_DIR) + "/calendar/" + name);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

struct Occurrence {
    std::string title;
    std::string start;
    std::string end;
    bool isAllDay;
    bool operator==(const Occurrence&) const = default;
};

void PrintTo(const Occurrence& o, std::ostream* out) {
    *out << o.title << " " << o.start << "-" << o.end << (o.isAllDay ? " all day" : "");
}

std::vector<Occurrence> occurrencesOn(const IcsCalendarFile& file, const Calendar& calendar,
                                      int year, int month, int day) {
    std::vector<Occurrence> result;
    for (const auto& event : file.occurrences(
             *calendarDay(at(calendar, year, month, day, 12), calendar), calendar, "cal")) {
        result.push_back({event.title, isoText(event.start), isoText(event.end), event.isAllDay});
    }
    std::sort(result.begin(), result.end(),
              [](const auto& a, const auto& b) { return a.start < b.start; });
    return result;
}

TEST(IcsCalendarFile, WeeklyEventSkipsItsExcludedDateAndShowsItsMovedOccurrence) {
    IcsCalendarFile file;
    ASSERT_TRUE(file.addText(fixture("weekly.ics")));
    EXPECT_EQ(file.name(), "Team");
    EXPECT_EQ(file.colorText(), "#62a0ea");
    const Calendar berlin = test::berlin();
    const struct {
        int day;
        std::vector<Occurrence> expected;
    } mondays[] = {
        {9,
         {{"Water the plants", "2026-03-09T07:00:00Z", "2026-03-09T07:15:00Z", false},
          {"Standup", "2026-03-09T08:00:00Z", "2026-03-09T08:30:00Z", false}}},
        // Excluded.
        {16, {{"Water the plants", "2026-03-16T07:00:00Z", "2026-03-16T07:15:00Z", false}}},
        // Moved to 11:00 with its own title.
        {23,
         {{"Water the plants", "2026-03-23T07:00:00Z", "2026-03-23T07:15:00Z", false},
          {"Standup (moved)", "2026-03-23T10:00:00Z", "2026-03-23T10:30:00Z", false}}},
        // After the change to summer time the standup stays at 09:00 in Berlin.
        {30,
         {{"Standup", "2026-03-30T07:00:00Z", "2026-03-30T07:30:00Z", false},
          {"Water the plants", "2026-03-30T07:00:00Z", "2026-03-30T07:15:00Z", false}}},
    };
    for (const auto& monday : mondays) {
        SCOPED_TRACE(monday.day);
        auto got = occurrencesOn(file, berlin, 2026, 3, monday.day);
        auto expected = monday.expected;
        const auto byTitle = [](const auto& a, const auto& b) {
            return a.start != b.start ? a.start < b.start : a.title < b.title;
        };
        std::sort(got.begin(), got.end(), byTitle);
        std::sort(expected.begin(), expected.end(), byTitle);
        EXPECT_EQ(got, expected);
    }
    // A Tuesday has only the daily event, whose rule began six years earlier.
    EXPECT_EQ(occurrencesOn(file, berlin, 2026, 3, 10).size(), 1u);
}

TEST(IcsCalendarFile, OvernightAllDayAndFloatingEventsLandOnTheirDays) {
    IcsCalendarFile file;
    ASSERT_TRUE(file.addText(fixture("overnight-and-all-day.ics")));
    const Calendar berlin = test::berlin();
    EXPECT_EQ(occurrencesOn(file, berlin, 2026, 3, 9),
              (std::vector<Occurrence>{
                  {"Night shift", "2026-03-09T22:00:00Z", "2026-03-10T00:00:00Z", false}}));
    // The night shift reaches past midnight; the holiday starts at Berlin's midnight;
    // the untitled floating event is noon on the user's own clock.
    EXPECT_EQ(occurrencesOn(file, berlin, 2026, 3, 10),
              (std::vector<Occurrence>{
                  {"Night shift", "2026-03-09T22:00:00Z", "2026-03-10T00:00:00Z", false},
                  {"Company holiday", "2026-03-09T23:00:00Z", "2026-03-10T23:00:00Z", true},
                  {"", "2026-03-10T11:00:00Z", "2026-03-10T12:00:00Z", false}}));
    EXPECT_TRUE(occurrencesOn(file, berlin, 2026, 3, 11).empty());

    // The same file read by someone in New York: the holiday and the floating event follow
    // the reader's zone.
    const Calendar ny = test::newYork();
    const auto tenth = occurrencesOn(file, ny, 2026, 3, 10);
    ASSERT_EQ(tenth.size(), 2u);
    EXPECT_EQ(tenth[0], (Occurrence{"Company holiday", "2026-03-10T04:00:00Z",
                                    "2026-03-11T04:00:00Z", true}));
    EXPECT_EQ(tenth[1].start, "2026-03-10T16:00:00Z");
}

TEST(IcsCalendarFile, EventInAZoneDefinedByTheFileKeepsItsOwnClock) {
    IcsCalendarFile file;
    ASSERT_TRUE(file.addText(fixture("other-zone.ics")));
    // 10:00 in New York, already on summer time on 10 March, is 15:00 in Berlin.
    EXPECT_EQ(occurrencesOn(file, test::berlin(), 2026, 3, 10),
              (std::vector<Occurrence>{
                  {"Call with New York", "2026-03-10T14:00:00Z", "2026-03-10T15:00:00Z", false}}));
}

TEST(IcsCalendarFile, AddedDatesJoinTheRuleAndFollowExclusionsAndChanges) {
    IcsCalendarFile file;
    ASSERT_TRUE(file.addText(fixture("added-dates.ics")));
    const Calendar berlin = test::berlin();
    const struct {
        int day;
        std::vector<Occurrence> expected;
    } days[] = {
        // The first start of an event with added dates and no rule.
        {3, {{"Review", "2026-03-03T09:00:00Z", "2026-03-03T10:00:00Z", false}}},
        // An added date on a Wednesday beside a Monday rule.
        {4, {{"Sync", "2026-03-04T08:00:00Z", "2026-03-04T08:30:00Z", false}}},
        // The added 15:00 was moved to 16:00: only the moved one shows.
        {5, {{"Review (moved)", "2026-03-05T15:00:00Z", "2026-03-05T16:00:00Z", false}}},
        // An added date that is also the rule's Monday shows once.
        {9, {{"Sync", "2026-03-09T08:00:00Z", "2026-03-09T08:30:00Z", false}}},
        // Added, then excluded.
        {10, {}},
        // An added date without a time starts at the event's time of day.
        {12, {{"Review", "2026-03-12T09:00:00Z", "2026-03-12T10:00:00Z", false}}},
    };
    for (const auto& day : days) {
        SCOPED_TRACE(day.day);
        EXPECT_EQ(occurrencesOn(file, berlin, 2026, 3, day.day), day.expected);
    }
}

TEST(IcsCalendarFile, RefusesTextThatIsNotACalendar) {
    IcsCalendarFile file;
    EXPECT_FALSE(file.addText(fixture("broken.ics")));
    EXPECT_FALSE(file.addText(""));
    EXPECT_FALSE(file.addText("BEGIN:VCARD\r\nFN:Ama\r\nEND:VCARD\r\n"));
    EXPECT_EQ(file.eventCount(), 0u);
    // An event whose end precedes its start is still read, not dropped or crashed on.
    ASSERT_TRUE(file.addText("BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:x\r\nSUMMARY:Odd\r\n"
                             "DTSTART:20260310T120000Z\r\nDTEND:20260310T110000Z\r\n"
                             "END:VEVENT\r\nEND:VCALENDAR\r\n"));
    EXPECT_EQ(occurrencesOn(file, test::berlin(), 2026, 3, 10).size(), 1u);
}

} // namespace
} // namespace daywyn
