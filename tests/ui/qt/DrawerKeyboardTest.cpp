#include <QQuickView>
#include <QTest>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "shell/qt/EdgePanelController.h"
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

} // namespace
} // namespace daywyn
