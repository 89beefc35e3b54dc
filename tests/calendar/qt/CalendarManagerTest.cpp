#include "calendar/qt/CalendarManager.h"

#include <gtest/gtest.h>

#include "calendar/CalendarReading.h"
#include "store/TodayTaskStore.h"
#include "support/FakeCalendarSource.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

using test::at;

// The manager on a fake source and an in-memory store, on 10 March 2026 in Berlin.
struct ManagerUnderTest {
    Calendar calendar = test::berlin();
    test::ManualClock clock{at(calendar, 2026, 3, 10, 9)};
    TodayTaskStore store{nullptr, clock.now(), calendar};
    test::FakeCalendarSource source;
    CalendarManager manager{source, calendar, clock.function()};

    void enableWith(std::vector<std::string> selected) {
        store.updatePreferences([&](AppPreferences& p) {
            p.calendarIntegrationEnabled = true;
            p.selectedCalendarIdentifiers = std::move(selected);
        });
    }

    CalendarSnapshot answer(const std::string& title = "Standup", int hour = 9) const {
        CalendarSnapshot snapshot;
        snapshot.status = CalendarAccessStatus::fullAccess;
        snapshot.calendars = {{"work", "Work", "Online", "#3465a4"},
                              {"home", "Home", "On This Computer", "#ff0000"}};
        const Instant start = at(calendar, 2026, 3, 10, hour);
        snapshot.events = {
            {"e1", "work", title, start, start + 1800.0, false, "https://meet.example.org/x"},
            {"e2", "home", "Dentist", start, start + 1800.0, false, std::nullopt}};
        return snapshot;
    }
};

TEST(CalendarManager, StaysAwayFromTheCalendarsWhileIntegrationIsOff) {
    ManagerUnderTest t;
    t.manager.configure(&t.store);
    t.manager.refreshIfDayChanged(t.clock.now());
    EXPECT_TRUE(t.source.queries().empty());
    EXPECT_EQ(t.manager.authorizationStatus(), CalendarAccessStatus::notDetermined);
    EXPECT_TRUE(t.manager.explanations().isEmpty());
}

TEST(CalendarManager, PublishesTheSelectedCalendarsEventsForTheDay) {
    ManagerUnderTest t;
    t.manager.configure(&t.store);
    t.manager.setIntegrationEnabled(true);
    ASSERT_EQ(t.source.queries().size(), 1u);
    EXPECT_EQ(t.source.queries().back().day, *calendarDay(t.clock.now(), t.calendar));
    EXPECT_TRUE(t.manager.isLoading());
    // While the first answer is awaited the screens do not claim access is missing.
    EXPECT_TRUE(t.manager.explanations().isEmpty());
    ASSERT_TRUE(t.source.completeOldest(t.answer()));
    EXPECT_FALSE(t.manager.isLoading());
    EXPECT_EQ(t.manager.authorizationStatus(), CalendarAccessStatus::fullAccess);
    // Sorted by source title: "On This Computer" before "Online".
    ASSERT_EQ(t.manager.calendars().size(), 2u);
    EXPECT_EQ(t.manager.calendars()[0].id, "home");
    // Nothing is selected yet, and the page says so.
    EXPECT_TRUE(t.manager.todayEvents().empty());
    EXPECT_EQ(t.manager.explanations(), QStringList{"No calendars are selected in Settings."});

    t.manager.setCalendarSelected("work", true);
    EXPECT_EQ(t.store.preferences().selectedCalendarIdentifiers, std::vector<std::string>{"work"});
    ASSERT_TRUE(t.source.completeNewest(t.answer()));
    ASSERT_EQ(t.manager.todayEvents().size(), 1u);
    EXPECT_EQ(t.manager.todayEvents()[0].title, "Standup");
    const auto rows = t.manager.todayEventRows();
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows[0].toMap().value("link").toString(), "https://meet.example.org/x");
    EXPECT_EQ(rows[0].toMap().value("colorHex").toString(), "#3465A4");
    const auto groups = t.manager.calendarGroups();
    ASSERT_EQ(groups.size(), 2);
    EXPECT_EQ(groups[1].toMap().value("sourceTitle").toString(), "Online");
    EXPECT_TRUE(
        groups[1].toMap().value("calendars").toList()[0].toMap().value("selected").toBool());

    t.manager.setCalendarSelected("work", false);
    EXPECT_TRUE(t.store.preferences().selectedCalendarIdentifiers.empty());
}

TEST(CalendarManager, ALateAnswerToAnOlderReadIsIgnored) {
    ManagerUnderTest t;
    t.enableWith({"work"});
    t.manager.configure(&t.store);
    t.manager.refresh();
    ASSERT_EQ(t.source.pending().size(), 2u);
    ASSERT_TRUE(t.source.completeNewest(t.answer("New title")));
    // The first read, slower, answers last with what was true before.
    ASSERT_TRUE(t.source.completeOldest(t.answer("Old title")));
    ASSERT_EQ(t.manager.todayEvents().size(), 1u);
    EXPECT_EQ(t.manager.todayEvents()[0].title, "New title");

    // Turning the integration off empties the lists, and a read still under way does
    // not bring them back.
    t.manager.refresh();
    t.manager.setIntegrationEnabled(false);
    EXPECT_TRUE(t.manager.todayEvents().empty());
    EXPECT_TRUE(t.manager.calendars().empty());
    while (t.source.completeOldest(t.answer())) {
    }
    EXPECT_TRUE(t.manager.todayEvents().empty());
}

TEST(CalendarManager, ReloadsOnceWhenTheDayChanges) {
    ManagerUnderTest t;
    t.enableWith({"work"});
    t.source.answerAtOnce(t.answer());
    t.manager.configure(&t.store);
    const auto readsAfterStart = t.manager.readsStarted();
    t.manager.refreshIfDayChanged(at(t.calendar, 2026, 3, 10, 23, 59, 59));
    EXPECT_EQ(t.manager.readsStarted(), readsAfterStart);
    t.manager.refreshIfDayChanged(at(t.calendar, 2026, 3, 11, 0, 0, 0));
    EXPECT_EQ(t.manager.readsStarted(), readsAfterStart + 1);
    EXPECT_EQ(t.manager.displayedDay(), at(t.calendar, 2026, 3, 11));
    EXPECT_EQ(t.source.queries().back().day.start, at(t.calendar, 2026, 3, 11));
    t.manager.refreshIfDayChanged(at(t.calendar, 2026, 3, 11, 0, 0, 15));
    EXPECT_EQ(t.manager.readsStarted(), readsAfterStart + 1);
}

TEST(CalendarManager, ASlowReadDoesNotStartAnotherEveryMaintenancePass) {
    ManagerUnderTest t;
    t.enableWith({"work"});
    t.manager.configure(&t.store);
    for (int pass = 0; pass < 4; ++pass) {
        t.manager.refreshIfDayChanged(t.clock.now() + pass * 15.0);
    }
    EXPECT_EQ(t.manager.readsStarted(), 1);
}

TEST(CalendarManager, NoCalendarServiceEmptiesTheListsAndExplains) {
    ManagerUnderTest t;
    t.enableWith({"work"});
    t.source.answerAtOnce(t.answer());
    t.manager.configure(&t.store);
    ASSERT_EQ(t.manager.todayEvents().size(), 1u);
    CalendarSnapshot gone;
    gone.status = CalendarAccessStatus::unavailable;
    gone.errorMessage = "Daywyn could not open the calendar \xE2\x80\x9CWork\xE2\x80\x9D: gone.";
    t.source.answerAtOnce(gone);
    t.manager.refresh();
    EXPECT_TRUE(t.manager.todayEvents().empty());
    EXPECT_TRUE(t.manager.calendars().empty());
    EXPECT_EQ(t.manager.authorizationStatusText(), "unavailable");
    EXPECT_EQ(t.manager.errorMessageText().toStdString(), *gone.errorMessage);
    EXPECT_EQ(t.manager.explanations().size(), 2);
}

TEST(CalendarManager, AChangeAtTheSourceReadsAgainOnceForABurst) {
    ManagerUnderTest t;
    t.enableWith({"work"});
    t.source.answerAtOnce(t.answer());
    t.manager.configure(&t.store);
    const auto before = t.manager.readsStarted();
    t.source.answerAtOnce(t.answer("Renamed"));
    for (int i = 0; i < 5; ++i) {
        t.source.announceChange();
    }
    ASSERT_TRUE(test::waitUntil([&] { return t.manager.readsStarted() > before; }));
    EXPECT_EQ(t.manager.readsStarted(), before + 1);
    EXPECT_EQ(t.manager.todayEvents()[0].title, "Renamed");
}

TEST(CalendarManager, OpensOnlyHttpsMeetingLinks) {
    ManagerUnderTest t;
    EXPECT_FALSE(t.manager.openLink("file:///etc/passwd"));
    EXPECT_FALSE(t.manager.openLink("http://example.org"));
}

} // namespace
} // namespace daywyn
