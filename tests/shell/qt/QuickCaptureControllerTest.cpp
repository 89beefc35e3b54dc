#include "shell/qt/QuickCaptureController.h"

#include <QQuickItem>
#include <QQuickView>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "persistence/qt/UserSettings.h"
#include "shell/qt/GlobalShortcut.h"
#include "shell/qt/QuickCaptureFocus.h"
#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

// A shortcut that answers grabs as told and is pressed by the test.
class FakeGlobalShortcut final : public GlobalShortcut {
public:
    ShortcutRegistration answer{ShortcutRegistration::Outcome::registered, 0};
    bool grabbed = false;
    int grabs = 0;
    ShortcutRegistration grab() override {
        ++grabs;
        grabbed = answer.outcome == ShortcutRegistration::Outcome::registered;
        return answer;
    }
    void release() override { grabbed = false; }
    void press() { Q_EMIT pressed(); }
};

// The desktop's window in front, and every window handed the keyboard back.
class FakeFocus final : public QuickCaptureFocus {
public:
    std::uint32_t front = 0;
    std::uint32_t own = 0;
    std::vector<std::uint32_t> activated;
    std::uint32_t activeWindow() override { return front; }
    bool isOwnWindow(std::uint32_t window) override { return window != 0 && window == own; }
    void activate(std::uint32_t window) override { activated.push_back(window); }
};

class QuickCaptureControllerTest : public ::testing::Test {
protected:
    QuickCaptureControllerTest()
        : clock(test::at(test::berlin(), 2026, 11, 21, 9, 0))
        , settings(directory.filePath(QStringLiteral("Daywyn.conf"))) {
        auto made = test::FakeRepository::make();
        repository = made.get();
        environment =
            std::make_unique<AppEnvironment>(std::move(made), test::berlin(), clock.function());
    }

    // The controller under test, over the environment's store and QML engine.
    QuickCaptureController& make(bool registrationAllowed = true) {
        auto fakeShortcut = std::make_unique<FakeGlobalShortcut>();
        auto fakeFocus = std::make_unique<FakeFocus>();
        shortcut = fakeShortcut.get();
        focus = fakeFocus.get();
        capture = std::make_unique<QuickCaptureController>(
            environment->store(), environment->calendar(), clock.function(), settings,
            std::move(fakeShortcut), std::move(fakeFocus), registrationAllowed);
        capture->setPanelEngine(environment->engine());
        return *capture;
    }

    // Presses the shortcut and waits until the panel is in front with its field focused.
    void pressAndWaitForPanel() {
        QSignalSpy ready(capture.get(), &QuickCaptureController::panelReady);
        shortcut->press();
        ASSERT_TRUE(test::waitUntil([&] { return ready.count() == 1; }));
    }

    QString focusedName() const {
        QQuickItem* item = capture->panel()->activeFocusItem();
        return item ? item->objectName() : QString();
    }

    test::ManualClock clock;
    QTemporaryDir directory;
    UserSettings settings;
    test::FakeRepository* repository = nullptr;
    std::unique_ptr<AppEnvironment> environment;
    FakeGlobalShortcut* shortcut = nullptr;
    FakeFocus* focus = nullptr;
    std::unique_ptr<QuickCaptureController> capture;
};

using Kind = QuickCaptureShortcutStatus::Kind;

// Types the text into the window's focused item, one key at a time.
void type(QWindow* window, const QString& text) {
    for (const QChar ch : text) {
        QTest::keyClick(window, ch.toLatin1());
    }
}

TEST_F(QuickCaptureControllerTest, IsOnUnlessTurnedOffAndRegistersOnlyWhileOn) {
    QuickCaptureController& c = make();
    // Absent at creation: written as on.
    EXPECT_TRUE(settings.contains(QStringLiteral("quickCaptureEnabled")));
    EXPECT_TRUE(c.isEnabled());
    EXPECT_EQ(c.shortcutStatus().kind, Kind::inactive);
    EXPECT_EQ(shortcut->grabs, 0);

    c.start();
    c.start();
    EXPECT_EQ(shortcut->grabs, 1);
    EXPECT_TRUE(shortcut->grabbed);
    EXPECT_EQ(c.shortcutStatus().kind, Kind::active);

    c.setEnabled(false);
    EXPECT_FALSE(shortcut->grabbed);
    EXPECT_EQ(c.statusText(), QStringLiteral("Global quick capture is off."));
    EXPECT_FALSE(settings.boolValue(QStringLiteral("quickCaptureEnabled"), true));

    c.setEnabled(true);
    EXPECT_TRUE(shortcut->grabbed);
    EXPECT_EQ(c.shortcutStatus().kind, Kind::active);

    // A stored "off" survives the next launch.
    c.setEnabled(false);
    QuickCaptureController& next = make();
    next.start();
    EXPECT_FALSE(next.isEnabled());
    EXPECT_EQ(shortcut->grabs, 0);
}

TEST_F(QuickCaptureControllerTest, ARefusedGrabOrAForbiddenOneSaysSoAndNothingIsHeld) {
    QuickCaptureController& c = make();
    shortcut->answer = {ShortcutRegistration::Outcome::refused, 10};
    c.start();
    EXPECT_FALSE(shortcut->grabbed);
    EXPECT_EQ(c.statusText(), QStringLiteral("Ctrl+Alt+Space is unavailable (error 10). Another "
                                             "app may already use it."));

    QuickCaptureController& harnessed = make(false);
    harnessed.start();
    EXPECT_EQ(shortcut->grabs, 0);
    EXPECT_EQ(harnessed.statusText(), QStringLiteral("Global quick capture is not running."));
    // The panel still opens from the settings.
    harnessed.show();
    EXPECT_TRUE(harnessed.isPanelVisible());
}

TEST_F(QuickCaptureControllerTest, APressOpensTheFocusedPanelAndASecondOneLeavesItInPlace) {
    QuickCaptureController& c = make();
    c.start();
    pressAndWaitForPanel();
    QQuickView* panel = c.panel();
    ASSERT_TRUE(panel);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(panel->title(), QStringLiteral("Quick Add"));
    EXPECT_TRUE(panel->flags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_EQ(focusedName(), QStringLiteral("quickAddField"));
    // Centred on the screen, in its upper part.
    const QRect screen = panel->screen()->availableGeometry();
    EXPECT_EQ(panel->geometry().center().x(), screen.center().x());
    EXPECT_LT(panel->geometry().center().y(), screen.center().y());

    // The user dragged it aside and clicked elsewhere in it; the next press only
    // focuses the field again.
    panel->setPosition(40, 50);
    panel->contentItem()->forceActiveFocus();
    shortcut->press();
    EXPECT_TRUE(test::waitUntil([&] { return focusedName() == "quickAddField"; }));
    EXPECT_EQ(panel->position(), QPoint(40, 50));
}

TEST_F(QuickCaptureControllerTest, EnterAddsTheParsedTaskClosesAndHandsTheKeyboardBack) {
    QuickCaptureController& c = make();
    c.start();
    focus->front = 4242;
    pressAndWaitForPanel();
    type(c.panel(), QStringLiteral("Call Ama tomorrow at 10 for 20 minutes"));
    EXPECT_EQ(c.draftText(), QStringLiteral("Call Ama tomorrow at 10 for 20 minutes"));
    QTest::keyClick(c.panel(), Qt::Key_Return);

    const TaskItem& added = environment->store().tasks().back();
    EXPECT_EQ(added.title, "Call Ama");
    EXPECT_EQ(added.estimatedMinutes, std::optional<int>(20));
    EXPECT_TRUE(added.scheduledStart.has_value());
    EXPECT_TRUE(c.draftText().isEmpty());
    EXPECT_FALSE(c.isPanelVisible());
    EXPECT_FALSE(c.panel()->isVisible());
    EXPECT_EQ(focus->activated, std::vector<std::uint32_t>{4242});
}

TEST_F(QuickCaptureControllerTest, AnInvalidLineOrAFailedSaveKeepsThePanelAndTheText) {
    QuickCaptureController& c = make();
    c.show();
    const std::size_t before = environment->store().tasks().size();
    c.setDraftText(QStringLiteral("  for 20 minutes "));
    EXPECT_FALSE(c.submit());
    EXPECT_EQ(c.captureError(), QStringLiteral("Give the task a title."));
    EXPECT_TRUE(c.isPanelVisible());

    repository->failNextSaves(1, "No space left on device");
    c.setDraftText(QStringLiteral("Send invoices"));
    EXPECT_FALSE(c.submit());
    EXPECT_TRUE(c.captureError().contains(QStringLiteral("No space left on device")))
        << c.captureError().toStdString();
    EXPECT_EQ(c.draftText(), QStringLiteral("Send invoices"));
    EXPECT_TRUE(c.isPanelVisible());
    QQuickItem* errorLine = test::findItem(*c.panel(), QStringLiteral("quickAddError"));
    ASSERT_TRUE(errorLine);
    EXPECT_EQ(errorLine->property("text").toString(), c.captureError());
    EXPECT_TRUE(errorLine->isVisible());
    EXPECT_EQ(environment->store().tasks().size(), before);

    // Trying again once the disk has room adds it and clears the error.
    EXPECT_TRUE(c.submit());
    EXPECT_TRUE(c.captureError().isEmpty());
    EXPECT_EQ(environment->store().tasks().back().title, "Send invoices");
}

TEST_F(QuickCaptureControllerTest, EscapeClosesAndFocusGoesBackOnlyToAnotherApplication) {
    QuickCaptureController& c = make();
    c.start();
    focus->front = 77;
    pressAndWaitForPanel();
    type(c.panel(), QStringLiteral("Half a thought"));
    QTest::keyClick(c.panel(), Qt::Key_Escape);
    EXPECT_FALSE(c.panel()->isVisible());
    EXPECT_EQ(focus->activated, std::vector<std::uint32_t>{77});
    EXPECT_EQ(c.draftText(), QStringLiteral("Half a thought"));

    // Opened while Daywyn's own drawer was in front: nothing to hand back.
    focus->own = 78;
    focus->front = 78;
    c.show();
    c.dismiss(true);
    EXPECT_EQ(focus->activated, std::vector<std::uint32_t>{77});
}

} // namespace
} // namespace daywyn
