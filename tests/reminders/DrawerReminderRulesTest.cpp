#include "reminders/DrawerReminderRules.h"

#include <gtest/gtest.h>

#include "base/DoubleText.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::TaskBuilder;
using Kind = DrawerReminderDecision::Kind;
using Rules = DrawerReminderRules;

const Calendar kNy = test::newYork();

// Friday 20 November 2026 in New York.
Instant friday(int hour, int minute = 0, int second = 0) {
    return test::at(kNy, 2026, 11, 20, hour, minute, second);
}

// A fresh state whose last check-in was at `lastNudge`.
DrawerReminderCoordinatorState stateNudgedAt(Instant lastNudge) {
    return Rules::restore("", "", std::nullopt, lastNudge);
}

// The detail of the presented reminder, or "" when nothing is presented.
std::string shown(DrawerReminderCoordinatorState& state, const std::vector<TaskItem>& tasks,
                  Instant now, const DrawerReminderSettings& settings = {}) {
    const auto decision = Rules::check(state, settings, tasks, {}, now, kNy);
    return decision.kind == Kind::present ? decision.reminder->detail : "";
}

TEST(DrawerReminderRules, DueRemindersAreShownOnceAndThirtySecondsApart) {
    // given two tasks that start 40 seconds apart
    const std::vector<TaskItem> tasks = {TaskBuilder("Second").startingAt(friday(10, 0, 40)),
                                         TaskBuilder("First").startingAt(friday(10))};
    auto state = stateNudgedAt(friday(9));
    // when / then the oldest first, the next after 30 seconds, then neither again
    EXPECT_EQ(shown(state, tasks, friday(10, 1)), "First");
    EXPECT_EQ(shown(state, tasks, friday(10, 1, 29)), "");
    EXPECT_EQ(shown(state, tasks, friday(10, 1, 30)), "Second");
    // a dismissal changes nothing: both stay seen
    EXPECT_FALSE(Rules::respond(state, DrawerReminderAction::dismiss,
                                DrawerReminder{"task:x", "", "Second", friday(10)}, friday(10, 2)));
    EXPECT_EQ(shown(state, tasks, friday(10, 4, 59)), "");
}

TEST(DrawerReminderRules, SeenEntriesAreForgottenAfterSevenDays) {
    const Instant now = friday(12);
    auto state = stateNudgedAt(now);
    state.seen = {{"a week", now - 604800.0}, {"a week and a second", now - 604801.0}};
    Rules::pruneSeen(state, now);
    EXPECT_EQ(state.seen, (std::map<std::string, Instant>{{"a week", now - 604800.0}}));
}

TEST(DrawerReminderRules, ASnoozedReminderReturnsAtItsTimeEvenThoughSeen) {
    // given a reminder shown at 10:00 and snoozed at 10:00:05, and a second snooze
    const std::vector<TaskItem> tasks = {TaskBuilder("Stretch").startingAt(friday(10))};
    auto state = stateNudgedAt(friday(9));
    const auto first = Rules::check(state, {}, tasks, {}, friday(10), kNy);
    ASSERT_EQ(first.kind, Kind::present);
    EXPECT_TRUE(
        Rules::respond(state, DrawerReminderAction::snooze, *first.reminder, friday(10, 0, 5)));
    Rules::respond(state, DrawerReminderAction::snooze, {"b", "", "Other", friday(9)},
                   friday(10, 0, 6));
    // when / then it stays away for ten minutes, long past its own five
    EXPECT_EQ(shown(state, tasks, friday(10, 4)), "");
    EXPECT_EQ(shown(state, tasks, friday(10, 10, 4)), "");
    EXPECT_EQ(shown(state, tasks, friday(10, 10, 5)), "Stretch");
    EXPECT_EQ(state.seen.at(first.reminder->id), friday(10, 10, 5));
    // and a snooze due meanwhile waits for the next check rather than being lost
    EXPECT_EQ(shown(state, tasks, friday(10, 11)), "Other");
    EXPECT_TRUE(state.snoozed.empty());
}

TEST(DrawerReminderRules, ActiveHoursDecideWhenPopOutsMayAppear) {
    struct Case {
        int start, end, hour;
        bool shown;
    };
    const Case cases[] = {{9, 21, 8, false},  {9, 21, 9, true},  {9, 21, 20, true},
                          {9, 21, 21, false}, {9, 9, 3, true},   {22, 6, 23, true},
                          {22, 6, 5, true},   {22, 6, 6, false}, {22, 6, 12, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.start << "-" << c.end << " at " << c.hour);
        const Instant now = friday(c.hour, 30);
        auto state = stateNudgedAt(now);
        const DrawerReminderSettings settings{true, false, c.start, c.end, 2};
        EXPECT_EQ(shown(state, {TaskBuilder("Stretch").startingAt(now)}, now, settings) != "",
                  c.shown);
    }
}

TEST(DrawerReminderRules, TheCheckInComesOnlyInQuietMomentsAfterItsInterval) {
    const Instant now = friday(14);
    const TaskItem plain = TaskBuilder("Reply to Sam").createdAt(friday(8));
    const TaskItem pinned = TaskBuilder("Ship it").createdAt(friday(8)).pinned(1);
    const TaskItem due = TaskBuilder("Stretch").createdAt(friday(8)).startingAt(now);
    struct Case {
        const char* name;
        std::vector<TaskItem> tasks;
        int nudgeHours;
        double sinceLastNudge;
        std::string shown;
    };
    const Case cases[] = {
        {"interval over", {plain, pinned}, 2, 7200, "2 unfinished tasks for today. Next: Ship it"},
        {"a regular reminder wins", {plain, due}, 2, 7200, "Stretch"},
        {"interval 0", {plain}, 0, 86400, ""},
        {"interval not yet over", {plain}, 2, 7199, ""},
        {"nothing unfinished", {TaskBuilder().createdAt(now).completedAt(now)}, 2, 86400, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto state = stateNudgedAt(now - c.sinceLastNudge);
        const DrawerReminderSettings settings{true, false, 9, 21, c.nudgeHours};
        EXPECT_EQ(shown(state, c.tasks, now, settings), c.shown);
        const bool checkedIn = c.shown.starts_with("2 unfinished");
        EXPECT_EQ(state.lastNudge, checkedIn ? now : now - c.sinceLastNudge);
        EXPECT_EQ(state.seen.contains("nudge:" + shortestDoubleText(now.seconds)), checkedIn);
    }
}

TEST(DrawerReminderRules, PausingOrLockingClosesTheVisiblePopOut) {
    struct Case {
        bool enabled, paused, locked;
        Kind kind;
    };
    const Case cases[] = {{true, false, true, Kind::closeVisible},
                          {true, true, false, Kind::closeVisible},
                          {false, false, true, Kind::nothing}};
    const Instant now = friday(10);
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.enabled << c.paused << c.locked);
        auto state = stateNudgedAt(now - 86400);
        state.isLocked = c.locked;
        state.snoozed.push_back({DrawerReminder{"x", "t", "d", now - 900}, now - 60});
        const auto before = state;
        const DrawerReminderSettings settings{c.enabled, c.paused, 9, 21, 2};
        const auto decision =
            Rules::check(state, settings, {TaskBuilder().startingAt(now)}, {}, now, kNy);
        EXPECT_EQ(decision, (DrawerReminderDecision{c.kind, std::nullopt}));
        EXPECT_EQ(state, before);
    }
}

TEST(DrawerReminderRules, MemoryRoundTripsThroughTheSettingsFileAndSurvivesGarbage) {
    // given a seen map and a snoozed list with fractional dates and awkward texts
    const Instant now = friday(10) + 0.125;
    const std::map<std::string, Instant> seen = {{"task:a:1.5", now - 60}, {"event:é", now}};
    const std::vector<SnoozedReminder> snoozed = {
        {DrawerReminder{"reminder:b", "A task to remember", "Pay \"the\" bill", now}, now + 600}};
    // when
    const auto state =
        Rules::restore(Rules::encodeSeen(seen), Rules::encodeSnoozed(snoozed), now - 3600, now);
    // then
    EXPECT_EQ(state.seen, seen);
    EXPECT_EQ(state.snoozed, snoozed);
    EXPECT_EQ(state.lastNudge, now - 3600);
    for (const char* text : {"", "not json", "{}", "[{\"until\": 3}]",
                             R"([{"reminder": {"id": "a", "title": "t", "detail": "d",
                                 "due": "soon"}, "until": 3}])"}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(Rules::decodeSnoozed(text).empty());
    }
    EXPECT_EQ(Rules::decodeSeen(R"({"a": 10, "b": "x"})"),
              (std::map<std::string, Instant>{{"a", Instant{978307210.0}}}));
}

} // namespace
} // namespace daywyn
