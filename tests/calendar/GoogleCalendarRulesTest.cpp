#include "calendar/GoogleCalendarRules.h"

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

const Calendar& kathmandu() {
    static const Calendar calendar("Asia/Kathmandu");
    return calendar;
}

CalendarEventItem event(std::string id, Instant start) {
    CalendarEventItem e;
    e.id = std::move(id);
    e.start = start;
    e.end = start + 1800.0;
    return e;
}

GoogleAccountOutcome success(std::string id, std::vector<CalendarEventItem> events) {
    return {id, id + "@example.com", std::move(events), {}};
}

GoogleAccountOutcome failure(std::string id, std::string_view error) {
    return {id, id + "@example.com", std::nullopt, std::string(error)};
}

TEST(GoogleCalendarRules, AccessTokenNeedsAtLeastSixtySecondsLeft) {
    const Instant now = at(kathmandu(), 2026, 3, 5, 9);
    GoogleAccount account;
    account.expiresAt = now + 60.0;
    EXPECT_TRUE(googleTokenIsUsable(account, now));
    account.expiresAt = now + 59.0;
    EXPECT_FALSE(googleTokenIsUsable(account, now));
}

TEST(GoogleCalendarRules, StatusTextsFollowTheKindOfFailure) {
    EXPECT_FALSE(googleStatusError(200).has_value());
    EXPECT_FALSE(googleStatusError(204).has_value());
    EXPECT_EQ(googleStatusError(400), kGoogleAccessExpired);
    EXPECT_EQ(googleStatusError(401), kGoogleAccessExpired);
    for (int status : {0, 302, 403, 404, 429, 500, 503}) {
        SCOPED_TRACE(status);
        EXPECT_EQ(googleStatusError(status), kGoogleCouldNotLoad);
    }
}

TEST(GoogleCalendarRules, FirstLoadSelectsEverythingLaterLoadsKeepTheUsersChoice) {
    const std::vector<GoogleCalendarChoice> list = {{"a", {}, {}}, {"b", {}, {}}};
    EXPECT_EQ(selectionAfterLoad(true, {}, list), (std::set<std::string>{"a", "b"}));
    EXPECT_EQ(selectionAfterLoad(true, {"b"}, list), (std::set<std::string>{"b"}));
    EXPECT_EQ(selectionAfterLoad(false, {}, list), std::set<std::string>{});
    EXPECT_EQ(selectionAfterLoad(false, {"gone"}, list), (std::set<std::string>{"gone"}));
}

TEST(GoogleCalendarRules, ListQueriesAddThePageSizeAndToken) {
    const auto day = calendarDay(at(kathmandu(), 2026, 3, 5, 9), kathmandu());
    ASSERT_TRUE(day.has_value());
    EXPECT_EQ(googleListQuery(googleDayQuery(*day), std::nullopt),
              "timeMin=2026-03-04T18%3A15%3A00Z&timeMax=2026-03-05T18%3A15%3A00Z&"
              "singleEvents=true&orderBy=startTime&maxResults=250");
    EXPECT_EQ(googleListQuery({}, "a/b"), "maxResults=250&pageToken=a%2Fb");
    EXPECT_EQ(googleEventsPath("team#x@group.calendar.google.com"),
              "calendars/team%23x%40group.calendar.google.com/events");
}

TEST(GooglePaging, FollowsTokensUntilTheLastPageAndStopsOnARepeat) {
    GooglePaging paging;
    EXPECT_FALSE(paging.pageToken().has_value());
    EXPECT_EQ(paging.accept("p2"), GooglePaging::Step::nextPage);
    EXPECT_EQ(paging.pageToken(), "p2");
    EXPECT_EQ(paging.accept("p3"), GooglePaging::Step::nextPage);
    EXPECT_EQ(paging.accept(std::nullopt), GooglePaging::Step::done);

    GooglePaging looping;
    EXPECT_EQ(looping.accept("p2"), GooglePaging::Step::nextPage);
    EXPECT_EQ(looping.accept("p3"), GooglePaging::Step::nextPage);
    EXPECT_EQ(looping.accept("p2"), GooglePaging::Step::repeatedToken);
}

TEST(GoogleRefreshThrottle, WaitsLongerAfterASuccessOnTheSameDay) {
    const Instant nine = at(kathmandu(), 2026, 3, 5, 9);
    GoogleRefreshThrottle throttle;
    EXPECT_TRUE(throttle.isDue(nine, kathmandu()));

    throttle.recordAttempt(nine, false);
    EXPECT_FALSE(throttle.isDue(nine + 60.0, kathmandu()));
    EXPECT_TRUE(throttle.isDue(nine + 61.0, kathmandu()));

    throttle.recordAttempt(nine, true);
    EXPECT_FALSE(throttle.isDue(nine + 61.0, kathmandu()));
    EXPECT_FALSE(throttle.isDue(nine + 300.0, kathmandu()));
    EXPECT_TRUE(throttle.isDue(nine + 301.0, kathmandu()));

    // A good refresh late yesterday is stale at once after midnight.
    const Instant lateEvening = at(kathmandu(), 2026, 3, 5, 23, 59);
    throttle.recordAttempt(lateEvening, true);
    EXPECT_FALSE(throttle.isDue(lateEvening + 60.0, kathmandu()));
    EXPECT_TRUE(throttle.isDue(lateEvening + 61.0, kathmandu()));
}

TEST(GoogleRefreshCycle, AFailingAccountKeepsTodaysEventsWhileOthersRefresh) {
    GoogleRefreshCycle cycle;
    const Instant nine = at(kathmandu(), 2026, 3, 5, 9);
    ASSERT_TRUE(cycle.request());
    ASSERT_TRUE(cycle.beginPass(nine, kathmandu()));
    EXPECT_FALSE(
        cycle.endPass({success("a", {event("a1", nine + 3600)}), success("b", {event("b1", nine)})},
                      nine, kathmandu()));
    EXPECT_EQ(cycle.events().size(), 2U);
    EXPECT_EQ(cycle.events().front().id, "b1");
    EXPECT_FALSE(cycle.errorMessage().has_value());

    ASSERT_TRUE(cycle.beginPass(nine + 400, kathmandu()));
    cycle.endPass(
        {failure("a", kGoogleCouldNotLoad), failure("c", kGoogleAccessExpired), success("b", {})},
        nine + 400, kathmandu());
    ASSERT_EQ(cycle.events().size(), 1U);
    EXPECT_EQ(cycle.events().front().id, "a1");
    EXPECT_EQ(cycle.errorMessage(), "a@example.com is showing its last available events. " +
                                        std::string(kGoogleCouldNotLoad) +
                                        "\nc@example.com could not be refreshed. " +
                                        std::string(kGoogleAccessExpired));
    EXPECT_EQ(cycle.accountMessage("a"),
              std::string(kGoogleShowingLastEvents) + std::string(kGoogleCouldNotLoad));
    EXPECT_FALSE(cycle.accountMessage("b").has_value());
    EXPECT_FALSE(cycle.throttle().isDue(nine + 460, kathmandu()));
    EXPECT_TRUE(cycle.throttle().isDue(nine + 461, kathmandu()));

    cycle.forget("a");
    EXPECT_TRUE(cycle.events().empty());
}

TEST(GoogleRefreshCycle, AFailureAfterMidnightDropsYesterdaysEvents) {
    GoogleRefreshCycle cycle;
    const Instant evening = at(kathmandu(), 2026, 3, 5, 23, 50);
    ASSERT_TRUE(cycle.beginPass(evening, kathmandu()));
    cycle.endPass({success("a", {event("a1", evening)})}, evening, kathmandu());
    const Instant afterMidnight = at(kathmandu(), 2026, 3, 6, 0, 5);
    ASSERT_TRUE(cycle.beginPass(afterMidnight, kathmandu()));
    cycle.endPass({failure("a", kGoogleCouldNotLoad)}, afterMidnight, kathmandu());
    EXPECT_TRUE(cycle.events().empty());
    EXPECT_EQ(cycle.accountMessage("a"), std::string(kGoogleCouldNotLoad));
}

TEST(GoogleRefreshCycle, RequestsDuringAPassAndDayChangesGiveOneMorePass) {
    GoogleRefreshCycle cycle;
    const Instant nine = at(kathmandu(), 2026, 3, 5, 9);
    ASSERT_TRUE(cycle.beginPass(nine, kathmandu()));
    EXPECT_FALSE(cycle.request());
    EXPECT_FALSE(cycle.request());
    EXPECT_TRUE(cycle.endPass({}, nine, kathmandu()));
    ASSERT_TRUE(cycle.beginPass(nine, kathmandu()));
    EXPECT_FALSE(cycle.endPass({}, nine, kathmandu()));

    // A pass begun before midnight whose answers arrive after it.
    const Instant beforeMidnight = at(kathmandu(), 2026, 3, 5, 23, 59, 59);
    ASSERT_TRUE(cycle.beginPass(beforeMidnight, kathmandu()));
    EXPECT_TRUE(cycle.endPass({success("a", {event("a1", beforeMidnight - 600)})},
                              beforeMidnight + 2, kathmandu()));
    EXPECT_TRUE(cycle.events().empty());
    EXPECT_EQ(cycle.errorMessage(), std::string(kGoogleDayChanged));
}

} // namespace
} // namespace daywyn
