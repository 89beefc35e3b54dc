#include <QDir>
#include <QFile>
#include <QQuickView>
#include <QTest>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "calendar/qt/CalendarManager.h"
#include "calendar/qt/IcsFolderCalendarSource.h"
#include "shell/qt/EdgePanelController.h"
#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "ui/qt/TaskEditor.h"

namespace daywyn {
namespace {

// The drawer's keys over an in-memory store with two tasks, "First" and "Second".
class DrawerKeyboardTest : public ::testing::Test {
protected:
    DrawerKeyboardTest()
        : clock(test::at(test::berlin(), 2026, 11, 21, 9))
        , app(nullptr, test::berlin(), clock.function()) {
        for (const char* title : {"First", "Second"}) {
            TaskDraft draft;
            draft.title = title;
            EXPECT_EQ(app.store().addTaskReliably(draft, clock.now(), app.calendar()),
                      std::nullopt);
        }
        app.start();
        app.drawerController().setReducedMotion(true);
        app.drawerController().show();
        // The drawer opens in its add field; Down moves onto the first task.
        press(Qt::Key_Down);
    }
    QQuickView& window() { return *app.drawerController().drawerWindow(); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&window(), key, modifiers);
    }
    bool isComplete(std::size_t index) { return app.store().tasks()[index].isComplete; }

    test::ManualClock clock;
    AppEnvironment app;
};

TEST_F(DrawerKeyboardTest, ArrowsMoveBetweenTasksAndSpaceCompletesTheFocusedOne) {
    press(Qt::Key_Down);
    press(Qt::Key_Space);
    EXPECT_FALSE(isComplete(0));
    EXPECT_TRUE(isComplete(1));
    // "Second" moved to Completed today; Up lands on "First" past the section header.
    press(Qt::Key_Up);
    press(Qt::Key_Space);
    EXPECT_TRUE(isComplete(0));
}

TEST_F(DrawerKeyboardTest, TStartsAndStopsTheTimerAndPPins) {
    press(Qt::Key_T);
    EXPECT_TRUE(app.store().tasks()[0].isRunning());
    clock.advance(60);
    press(Qt::Key_T);
    EXPECT_FALSE(app.store().tasks()[0].isRunning());
    EXPECT_EQ(app.store().tasks()[0].sessions.size(), 1u);
    press(Qt::Key_P);
    EXPECT_EQ(app.store().tasks()[0].priorityRank, 1);
}

TEST_F(DrawerKeyboardTest, EnterEditsAndEscapeClosesTheSheetBeforeTheDrawer) {
    press(Qt::Key_Return);
    ASSERT_TRUE(app.editor().isOpen());
    EXPECT_EQ(app.editor().title(), QStringLiteral("First"));
    press(Qt::Key_Escape);
    EXPECT_FALSE(app.editor().isOpen());
    EXPECT_TRUE(app.drawerController().isVisible());
    press(Qt::Key_Escape);
    EXPECT_FALSE(app.drawerController().isVisible());
}

TEST_F(DrawerKeyboardTest, EscapeInTheAddFieldClearsTheTextFirst) {
    app.drawerController().showForQuickAdd();
    QTest::keyClick(&window(), 'x');
    QQuickItem* field = test::findItem(window(), QStringLiteral("addField"));
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->property("text").toString(), QStringLiteral("x"));
    press(Qt::Key_Escape);
    EXPECT_EQ(field->property("text").toString(), QString());
    EXPECT_TRUE(app.drawerController().isVisible());
    press(Qt::Key_Escape);
    EXPECT_FALSE(app.drawerController().isVisible());
}

TEST(DrawerEventKeyboard, ArrowsWalkFromTheAddFieldThroughTheEventsToTheTasksAndBack) {
    QDir().mkpath(IcsFolderCalendarSource::defaultFolder());
    QFile file(IcsFolderCalendarSource::defaultFolder() + QStringLiteral("/team.ics"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nX-WR-CALNAME:Team\r\n"
               "BEGIN:VEVENT\r\nUID:a@example.org\r\nSUMMARY:Standup\r\n"
               "DTSTART:20261121T100000Z\r\nDTEND:20261121T101500Z\r\nEND:VEVENT\r\n"
               "BEGIN:VEVENT\r\nUID:b@example.org\r\nSUMMARY:Review\r\n"
               "DTSTART:20261121T140000Z\r\nDTEND:20261121T150000Z\r\nEND:VEVENT\r\n"
               "END:VCALENDAR\r\n");
    file.close();
    PersistedState state;
    state.preferences.calendarIntegrationEnabled = true;
    state.preferences.selectedCalendarIdentifiers = {"ics:team.ics"};
    test::ManualClock clock(test::at(test::berlin(), 2026, 11, 21, 9));
    AppEnvironment app(test::FakeRepository::holding(state), test::berlin(), clock.function());
    TaskDraft draft;
    draft.title = "First";
    ASSERT_EQ(app.store().addTaskReliably(draft, clock.now(), app.calendar()), std::nullopt);
    app.start();
    ASSERT_TRUE(test::waitUntil([&] { return app.calendarManager().todayEvents().size() == 2; }));
    app.drawerController().setReducedMotion(true);
    app.drawerController().show();
    QQuickView& window = *app.drawerController().drawerWindow();
    const auto focused = [&window] {
        QQuickItem* item = window.activeFocusItem();
        return item == nullptr ? QString() : item->objectName();
    };
    const auto press = [&window](Qt::Key key) {
        QTest::keyClick(&window, key);
    };
    ASSERT_TRUE(test::waitUntil([&] { return focused() == QStringLiteral("addField"); }))
        << focused().toStdString();
    for (int row = 0; row < 2; ++row) {
        press(Qt::Key_Down);
        EXPECT_EQ(focused(), QStringLiteral("eventRow"));
    }
    // Past the last event: the task list, where T starts the first task's timer.
    press(Qt::Key_Down);
    press(Qt::Key_T);
    EXPECT_TRUE(app.store().tasks()[0].isRunning());
    press(Qt::Key_T);
    // Back up: the last event, the first, then the field.
    press(Qt::Key_Up);
    EXPECT_EQ(focused(), QStringLiteral("eventRow"));
    EXPECT_TRUE(window.activeFocusItem()->property("title").toString() == "Review");
    press(Qt::Key_Up);
    EXPECT_TRUE(window.activeFocusItem()->property("title").toString() == "Standup");
    press(Qt::Key_Up);
    EXPECT_EQ(focused(), QStringLiteral("addField"));
}

} // namespace
} // namespace daywyn
