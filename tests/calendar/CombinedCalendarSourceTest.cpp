#include "calendar/CombinedCalendarSource.h"

#include <gtest/gtest.h>

#include "support/FakeCalendarSource.h"

namespace daywyn {
namespace {

CalendarSnapshot snapshot(CalendarAccessStatus status, std::string calendarId,
                          std::optional<std::string> error = std::nullopt) {
    CalendarSnapshot result;
    result.status = status;
    if (!calendarId.empty()) {
        result.calendars.push_back({calendarId, calendarId, "Source", ""});
    }
    result.errorMessage = std::move(error);
    return result;
}

TEST(CombinedCalendarSource, AnswersOnceEverySourceHasAnswered) {
    test::FakeCalendarSource evolution;
    test::FakeCalendarSource files;
    CombinedCalendarSource combined({&evolution, &files});
    int answers = 0;
    CalendarSnapshot result;
    combined.read({}, [&](CalendarSnapshot s) {
        ++answers;
        result = std::move(s);
    });
    // The folder answers first; nothing is published until the slower service does.
    files.completeOldest(snapshot(CalendarAccessStatus::fullAccess, "ics:team.ics"));
    EXPECT_EQ(answers, 0);
    evolution.completeOldest(snapshot(CalendarAccessStatus::unavailable, "", "Boom."));
    ASSERT_EQ(answers, 1);
    // One reachable source is enough for access; the other's sentence is kept.
    EXPECT_EQ(result.status, CalendarAccessStatus::fullAccess);
    ASSERT_EQ(result.calendars.size(), 1u);
    EXPECT_EQ(result.errorMessage, "Boom.");
}

TEST(CombinedCalendarSource, IsUnavailableOnlyWhenNoSourceAnswers) {
    EXPECT_EQ(CombinedCalendarSource::combined({snapshot(CalendarAccessStatus::unavailable, ""),
                                                snapshot(CalendarAccessStatus::unavailable, "")})
                  .status,
              CalendarAccessStatus::unavailable);
    EXPECT_EQ(CombinedCalendarSource::combined({snapshot(CalendarAccessStatus::unavailable, ""),
                                                snapshot(CalendarAccessStatus::notDetermined, "")})
                  .status,
              CalendarAccessStatus::notDetermined);
    const auto both =
        CombinedCalendarSource::combined({snapshot(CalendarAccessStatus::fullAccess, "a", "One."),
                                          snapshot(CalendarAccessStatus::fullAccess, "b", "Two.")});
    EXPECT_EQ(both.calendars.size(), 2u);
    EXPECT_EQ(both.errorMessage, "One. Two.");
}

} // namespace
} // namespace daywyn
