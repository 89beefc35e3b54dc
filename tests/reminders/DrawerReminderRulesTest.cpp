#include "reminders/DrawerReminderRules.h"

#include <gtest/gtest.h>

#include "base/DoubleText.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;
using test::TaskBuilder;
using Kind = DrawerReminderDecision::Kind;

const Calendar& ny() {
    static const Calendar calendar = test::newYork();
    return calendar;
}

// Friday 20 November 2026 in New York.
Instant friday(int hour, int minute = 0, int second = 0) {
    return at(ny(), 2026, 11, 20, hour, minute, second);
}

// A state whose last check-in was just now, so only regular reminders come.
DrawerReminderCoordinatorState quietState(Instant now) {
    return DrawerReminderRules::restore("", "", std::nullopt, now);
}

DrawerReminderDecision check(DrawerReminderCoordinatorState& state,
                             const std::vector<TaskItem>& tasks, Instant now,
                             const DrawerReminderSettings& settings = {}) {
    return DrawerReminderRules::check(state, settings, tasks, {}, now, ny());
}

std::string shownTitle(const DrawerReminderDecision& decision) {
    return decision.kind == Kind::present ? decision.reminder->detail : "";
}

TEST(DrawerReminderRules, TwoDueRemindersAreShownThirtySecondsApart) {
    // given two tasks that start 40 seconds apart
    const std::vector<TaskItem> tasks = {TaskBuilder("Second").startingAt(friday(10, 0, 40)),
                                         TaskBuilder("First").startingAt(friday(10))};
    auto state = quietState(friday(9));
    // when / then the oldest first, the next after 30 seconds, then nothing
    EXPECT_EQ(shownTitle(check(state, tasks, friday(10, 1))), "First");
    EXPECT_EQ(check(state, tasks, friday(10, 1, 29)).kind, Kind::nothing);
    EXPECT_EQ(shownTitle(check(state, tasks, friday(10, 1, 30))), "Second");
    EXPECT_EQ(check(state, tasks, friday(10, 2, 30)).kind, Kind::nothing);
    EXPECT_EQ(state.seen.size(), 2u);
    EXPECT_EQ(state.lastPresented, friday(10, 1, 30));
}

TEST(DrawerReminderRules, ADismissedReminderDoesNotReturn) {
    // given a reminder shown and dismissed while its five minutes still run
    const std::vector<TaskItem> tasks = {TaskBuilder("Stretch").startingAt(friday(10))};
    auto state = quietState(friday(9));
    const auto shown = check(state, tasks, friday(10));
    ASSERT_EQ(shown.kind, Kind::present);
    const auto before = state;
    // when
    const bool changed = DrawerReminderRules::respond(state, DrawerReminderAction::dismiss,
                                                      *shown.reminder, friday(10, 0, 5));
    // then
    EXPECT_FALSE(changed);
    EXPECT_EQ(state, before);
    EXPECT_EQ(check(state, tasks, friday(10, 1)).kind, Kind::nothing);
    EXPECT_EQ(check(state, tasks, friday(10, 4, 59)).kind, Kind::nothing);
}

TEST(DrawerReminderRules, SeenEntriesAreForgottenAfterSevenDays) {
    const Instant now = friday(12);
    DrawerReminderCoordinatorState state;
    state.seen = {{"exactly a week", now - 604800.0},
                  {"a week and a second", now - 604801.0},
                  {"yesterday", now - 86400.0}};
    DrawerReminderRules::pruneSeen(state, now);
    EXPECT_EQ(state.seen, (std::map<std::string, Instant>{{"exactly a week", now - 604800.0},
                                                          {"yesterday", now - 86400.0}}));
}

TEST(DrawerReminderRules, ASnoozedReminderReturnsAtItsTimeEvenThoughSeen) {
    // given a reminder shown at 10:00 and snoozed at 10:00:05
    const std::vector<TaskItem> tasks = {TaskBuilder("Stretch").startingAt(friday(10))};
    auto state = quietState(friday(9));
    const auto shown = check(state, tasks, friday(10));
    ASSERT_EQ(shown.kind, Kind::present);
    EXPECT_TRUE(DrawerReminderRules::respond(state, DrawerReminderAction::snooze, *shown.reminder,
                                             friday(10, 0, 5)));
    // when / then it stays away for ten minutes, long past its own five
    EXPECT_EQ(check(state, tasks, friday(10, 4)).kind, Kind::nothing);
    EXPECT_EQ(check(state, tasks, friday(10, 10, 4)).kind, Kind::nothing);
    const auto back = check(state, tasks, friday(10, 10, 5));
    ASSERT_EQ(back.kind, Kind::present);
    EXPECT_EQ(*back.reminder, *shown.reminder);
    EXPECT_TRUE(state.snoozed.empty());
    EXPECT_EQ(state.seen.at(shown.reminder->id), friday(10, 10, 5));
}

TEST(DrawerReminderRules, SnoozesDueTogetherComeInListOrderWithoutLosingAny) {
    // given two snoozes that fell due while the screen was locked
    auto state = quietState(friday(9));
    const DrawerReminder a{"task:a", "Time for your task", "A", friday(9)};
    const DrawerReminder b{"task:b", "Time for your task", "B", friday(9)};
    DrawerReminderRules::respond(state, DrawerReminderAction::snooze, a, friday(9));
    DrawerReminderRules::respond(state, DrawerReminderAction::snooze, b, friday(9, 1));
    // when / then
    EXPECT_EQ(shownTitle(check(state, {}, friday(11))), "A");
    ASSERT_EQ(state.snoozed.size(), 1u);
    EXPECT_EQ(shownTitle(check(state, {}, friday(11, 0, 30))), "B");
    EXPECT_TRUE(state.snoozed.empty());
}

TEST(DrawerReminderRules, ActiveHoursDecideWhenPopOutsMayAppear) {
    struct Case {
        int start;
        int end;
        int hour;
        bool shown;
    };
    const Case cases[] = {
        {9, 21, 8, false}, {9, 21, 9, true},  {9, 21, 20, true},  {9, 21, 21, false},
        {9, 9, 3, true},   {9, 9, 23, true},  {22, 6, 23, true},  {22, 6, 0, true},
        {22, 6, 5, true},  {22, 6, 6, false}, {22, 6, 12, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.start << "-" << c.end << " at " << c.hour);
        const Instant now = friday(c.hour, 30);
        const std::vector<TaskItem> tasks = {TaskBuilder("Stretch").startingAt(now - 10)};
        auto state = quietState(now);
        DrawerReminderSettings settings;
        settings.activeStart = c.start;
        settings.activeEnd = c.end;
        EXPECT_EQ(check(state, tasks, now, settings).kind, c.shown ? Kind::present : Kind::nothing);
    }
}

TEST(DrawerReminderRules, TheCheckInComesOnlyInQuietMomentsAfterItsInterval) {
    // given an open pinned task listed after a plain one, the last check-in 2 h ago
    const Instant now = friday(14);
    const std::vector<TaskItem> open = {TaskBuilder("Reply to Sam").createdAt(friday(8)),
                                        TaskBuilder("Ship it").createdAt(friday(8)).pinned(1)};
    auto state = quietState(now - 7200.0);
    // when
    const auto decision = check(state, open, now);
    // then
    ASSERT_EQ(decision.kind, Kind::present);
    EXPECT_EQ(*decision.reminder,
              (DrawerReminder{"nudge:" + shortestDoubleText(now.seconds), "A gentle check-in",
                              "2 unfinished tasks for today. Next: Ship it", now}));
    EXPECT_EQ(state.lastNudge, now);
}

TEST(DrawerReminderRules, NoCheckInBesideARegularReminderOrWithoutAnInterval) {
    const Instant now = friday(14);
    struct Case {
        const char* name;
        std::vector<TaskItem> tasks;
        int nudgeHours;
        double sinceLastNudge;
        std::string shown;
    };
    const Case cases[] = {
        {"a regular reminder wins",
         {TaskBuilder("Stretch").createdAt(friday(8)).startingAt(now - 60)},
         2,
         7200.0,
         "Stretch"},
        {"interval 0", {TaskBuilder("Open").createdAt(friday(8))}, 0, 86400.0, ""},
        {"interval not yet over", {TaskBuilder("Open").createdAt(friday(8))}, 2, 7199.0, ""},
        {"nothing unfinished",
         {TaskBuilder("Done").createdAt(friday(8)).completedAt(friday(9)),
          TaskBuilder("Tomorrow").startingAt(at(ny(), 2026, 11, 21, 9))},
         2,
         86400.0,
         ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto state = quietState(now - c.sinceLastNudge);
        DrawerReminderSettings settings;
        settings.nudgeHours = c.nudgeHours;
        EXPECT_EQ(shownTitle(check(state, c.tasks, now, settings)), c.shown);
        EXPECT_EQ(state.lastNudge, now - c.sinceLastNudge);
    }
}

TEST(DrawerReminderRules, PausingOrLockingClosesTheVisiblePopOut) {
    struct Case {
        const char* name;
        bool enabled;
        bool paused;
        bool locked;
        Kind kind;
    };
    const Case cases[] = {
        {"locked", true, false, true, Kind::closeVisible},
        {"paused", true, true, false, Kind::closeVisible},
        {"switched off wins over locked", false, false, true, Kind::nothing},
    };
    const Instant now = friday(10);
    const std::vector<TaskItem> tasks = {TaskBuilder("Stretch").startingAt(now)};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto state = quietState(now);
        state.isLocked = c.locked;
        state.snoozed.push_back({DrawerReminder{"task:x", "t", "d", now - 900}, now - 60});
        const auto before = state;
        DrawerReminderSettings settings;
        settings.enabled = c.enabled;
        settings.paused = c.paused;
        EXPECT_EQ(check(state, tasks, now, settings), (DrawerReminderDecision{c.kind, {}}));
        EXPECT_EQ(state, before);
    }
}

TEST(DrawerReminderRules, MemoryRoundTripsThroughTheSettingsFile) {
    // given a seen map and a snoozed list with fractional dates
    const Instant now = friday(10, 0, 0) + 0.125;
    const std::map<std::string, Instant> seen = {{"task:a:1.5", now - 60}, {"event:é", now}};
    const std::vector<SnoozedReminder> snoozed = {
        {DrawerReminder{"reminder:b", "A task to remember", "Pay \"the\" bill", now - 30},
         now + 600}};
    // when
    const auto state =
        DrawerReminderRules::restore(DrawerReminderRules::encodeSeen(seen),
                                     DrawerReminderRules::encodeSnoozed(snoozed), now - 3600, now);
    // then
    EXPECT_EQ(state.seen, seen);
    EXPECT_EQ(state.snoozed, snoozed);
    EXPECT_EQ(state.lastNudge, now - 3600);
    EXPECT_EQ(DrawerReminderRules::restore("", "", std::nullopt, now).lastNudge, now);
}

TEST(DrawerReminderRules, UndecodableMemoryIsForgottenNotFatal) {
    for (const char* text : {"", "not json", "{}", "[{\"until\": 3}]",
                             "[{\"reminder\": {\"id\": \"a\", \"title\": \"t\", \"detail\": "
                             "\"d\", \"due\": \"soon\"}, \"until\": 3}]"}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(DrawerReminderRules::decodeSnoozed(text).empty());
    }
    EXPECT_TRUE(DrawerReminderRules::decodeSeen("[1, 2]").empty());
    EXPECT_EQ(DrawerReminderRules::decodeSeen("{\"a\": 10, \"b\": \"x\"}"),
              (std::map<std::string, Instant>{{"a", Instant{978307210.0}}}));
}

} // namespace
} // namespace daywyn
