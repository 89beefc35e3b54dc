#include "shell/qt/EdgePanelController.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickView>
#include <QSignalSpy>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

QRect rectOf(const ScreenRect& r) {
    return QRect(static_cast<int>(r.x), static_cast<int>(r.y), static_cast<int>(r.width),
                 static_cast<int>(r.height));
}

class EdgePanelControllerTest : public ::testing::Test {
protected:
    EdgePanelControllerTest()
        : clock(Instant{1779440400.0})
        , environment(nullptr, test::berlin(), clock.function()) {
        environment.start();
    }
    EdgePanelController& drawer() { return environment.drawerController(); }

    test::ManualClock clock;
    AppEnvironment environment;
};

TEST_F(EdgePanelControllerTest, PanelsStayOffTheTaskbarAndTheHandleNeverTakesFocus) {
    for (QQuickView* panel : {drawer().handleWindow(), drawer().drawerWindow()}) {
        const Qt::WindowFlags flags = panel->flags();
        EXPECT_TRUE(flags.testFlag(Qt::Tool));
        EXPECT_TRUE(flags.testFlag(Qt::FramelessWindowHint));
        EXPECT_TRUE(flags.testFlag(Qt::WindowStaysOnTopHint));
    }
    EXPECT_TRUE(drawer().handleWindow()->flags().testFlag(Qt::WindowDoesNotAcceptFocus));
    EXPECT_FALSE(drawer().drawerWindow()->flags().testFlag(Qt::WindowDoesNotAcceptFocus));
    EXPECT_TRUE(drawer().handleWindow()->isVisible());
    EXPECT_FALSE(drawer().drawerWindow()->isVisible());
}

TEST_F(EdgePanelControllerTest, SlidesInToTheVisibleFrameAndOutBeyondTheEdge) {
    drawer().setAnchor(EdgeAnchor::bottomRight);
    QSignalSpy shown(&drawer(), &EdgePanelController::drawerShown);
    drawer().toggle();
    EXPECT_TRUE(drawer().isVisible());
    ASSERT_TRUE(test::waitUntil([&] { return shown.count() == 1; }));
    EXPECT_EQ(drawer().drawerWindow()->geometry(), rectOf(drawer().frames().drawerVisible));

    drawer().toggle();
    EXPECT_FALSE(drawer().isVisible());
    ASSERT_TRUE(test::waitUntil([&] { return !drawer().drawerWindow()->isVisible(); }));
    EXPECT_EQ(drawer().drawerWindow()->geometry(), rectOf(drawer().frames().drawerHidden));
}

TEST_F(EdgePanelControllerTest, ReducedMotionShowsAndHidesAtOnce) {
    drawer().setReducedMotion(true);
    drawer().show();
    EXPECT_TRUE(drawer().drawerWindow()->isVisible());
    EXPECT_EQ(drawer().drawerWindow()->geometry(), rectOf(drawer().frames().drawerVisible));
    drawer().hide();
    EXPECT_FALSE(drawer().drawerWindow()->isVisible());
}

TEST_F(EdgePanelControllerTest, ChangingTheAnchorWhileShownMovesTheDrawerAtOnce) {
    drawer().setReducedMotion(true);
    drawer().show();
    QSignalSpy anchorChanged(&drawer(), &EdgePanelController::anchorChanged);
    drawer().setAnchor(EdgeAnchor::leftCenter);
    drawer().setAnchor(EdgeAnchor::leftCenter);
    EXPECT_EQ(anchorChanged.count(), 1);
    EXPECT_EQ(drawer().anchorName(), QStringLiteral("leftCenter"));
    EXPECT_EQ(drawer().drawerWindow()->geometry(), rectOf(drawer().frames().drawerVisible));
    EXPECT_EQ(drawer().handleWindow()->geometry(), rectOf(drawer().frames().handle));
}

} // namespace
} // namespace daywyn
