// The reminder pop-out as a user meets it: a due task shows it beside the edge
// without taking the keyboard, its buttons act, and it goes away by itself. Run
// under Xvfb (DAYWYN_TEST_QPA=xcb) for a real window system; it also runs offscreen.
#include <QAccessible>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QQuickView>
#include <QRasterWindow>
#include <QScreen>
#include <QSignalSpy>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "reminders/qt/DrawerReminderCoordinator.h"
#include "reminders/qt/ReminderChime.h"
#include "shell/qt/EdgePanelController.h"
#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

class CountingChime : public ReminderChime {
public:
    explicit CountingChime(int& plays)
        : plays_(plays) {}
    void play() override { ++plays_; }
    void stop() override {}

private:
    int& plays_;
};

// The window the user is typing in when the reminder arrives.
class WorkWindow : public QRasterWindow {
    void paintEvent(QPaintEvent*) override {}
};

// Where the pop-out belongs on the screen it is on, for the given anchor.
QRect expectedFrame(QWindow& popout, EdgeAnchor anchor) {
    const QRect v = popout.screen()->availableGeometry();
    const ScreenRect r = DrawerGeometry::reminderFrame(
        {double(v.x()), double(v.y()), double(v.width()), double(v.height())}, anchor);
    return QRect(static_cast<int>(r.x), static_cast<int>(r.y), static_cast<int>(r.width),
                 static_cast<int>(r.height));
}

// Output of a helper program (xprop, xdotool), for the X11 checks.
QString run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(5000);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

// The X server's own answer to who has the keyboard.
QString xFocus() {
    return run(QStringLiteral("xdotool"), {QStringLiteral("getwindowfocus")});
}

QString accessibleName(QQuickItem* item) {
    QAccessibleInterface* a = QAccessible::queryAccessibleInterface(item);
    return a ? a->text(QAccessible::Name) : QString();
}

TEST(DrawerReminderPopout, ADueTaskShowsItBesideTheEdgeWithoutTakingTheKeyboard) {
    const Calendar berlin = test::berlin();
    test::ManualClock clock(test::at(berlin, 2026, 11, 21, 10, 0));
    PersistedState state;
    state.tasks = {TaskBuilder("Call the dentist about Friday").startingAt(clock.now())};
    AppEnvironment app(test::FakeRepository::holding(state), berlin, clock.function());
    EdgePanelController& drawer = app.drawerController();
    int chimes = 0;
    drawer.setReminderChime(std::make_unique<CountingChime>(chimes));

    WorkWindow work;
    work.setGeometry(500, 300, 400, 300);
    work.show();
    work.requestActivate();
    ASSERT_TRUE(test::waitUntil([&] { return QGuiApplication::focusWindow() == &work; }));
    const QString focusBefore =
        QGuiApplication::platformName() == QStringLiteral("xcb") ? xFocus() : QString();

    // Starting runs the first maintenance pass, which finds the task due now.
    QSignalSpy shown(&drawer, &EdgePanelController::reminderShown);
    app.start();
    ASSERT_EQ(shown.count(), 1);
    QQuickView* popout = drawer.reminderWindow();
    ASSERT_TRUE(popout);
    ASSERT_TRUE(test::waitUntil([&] { return popout->isExposed(); }));

    EXPECT_TRUE(popout->flags().testFlag(Qt::WindowDoesNotAcceptFocus));
    EXPECT_TRUE(popout->flags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(popout->flags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(popout->geometry(), expectedFrame(*popout, EdgeAnchor::topLeft));
    EXPECT_EQ(test::findItem(*popout, "reminderTitle")->property("text").toString(),
              QStringLiteral("Time for your task"));
    EXPECT_EQ(test::findItem(*popout, "reminderDetail")->property("text").toString(),
              QStringLiteral("Call the dentist about Friday"));
    EXPECT_EQ(accessibleName(test::findItem(*popout, "reminderDismiss")),
              QStringLiteral("Dismiss reminder"));
    EXPECT_EQ(chimes, 1);
    // The keyboard stays where the user was typing, and the window manager is told
    // never to give the pop-out input. Only a real window system can say: the
    // offscreen platform activates every window it shows, whatever its flags.
    if (QGuiApplication::platformName() == QStringLiteral("xcb")) {
        EXPECT_EQ(QGuiApplication::focusWindow(), &work);
        EXPECT_EQ(xFocus(), focusBefore);
        EXPECT_TRUE(run("xprop", {"-id", QString::number(popout->winId()), "WM_HINTS"})
                        .contains("accepts input or input focus: False"));
    }

    // A picture for the record, once the fade has finished.
    QQuickItem* card = test::findItem(*popout, "reminderCard");
    ASSERT_TRUE(test::waitUntil([&] { return card->opacity() == 1.0; }));
    const QString folder = QFileInfo(QStringLiteral(DAYWYN_BINARY_PATH)).absolutePath() +
                           QStringLiteral("/screenshots");
    QDir().mkpath(folder);
    EXPECT_TRUE(popout->grabWindow().save(folder + QStringLiteral("/reminder-popout.png")));

    // Snooze: closed, and remembered for ten minutes from now.
    test::click(*popout, *test::findItem(*popout, "reminderSnooze"));
    EXPECT_FALSE(drawer.isShowingReminder());
    ASSERT_EQ(app.drawerReminders().state().snoozed.size(), 1u);
    EXPECT_EQ(app.drawerReminders().state().snoozed[0].until, clock.now() + 600);
}

TEST(DrawerReminderPopout, ClosesByItselfAndWhenTheAnchorMoves) {
    test::ManualClock clock(test::at(test::berlin(), 2026, 11, 21, 10, 0));
    AppEnvironment app(nullptr, test::berlin(), clock.function());
    EdgePanelController& drawer = app.drawerController();
    app.start();
    EXPECT_EQ(drawer.reminderAutoCloseMilliseconds(), 20'000);
    EXPECT_EQ(drawer.property("reminderAutoCloseMilliseconds").toInt(), 20'000);

    // Nobody touches it: it closes after the (here shortened) wait.
    drawer.setReminderAutoCloseMilliseconds(150);
    QSignalSpy closed(&drawer, &EdgePanelController::reminderClosed);
    app.drawerReminders().preview(clock.now());
    ASSERT_TRUE(drawer.isShowingReminder());
    EXPECT_EQ(test::findItem(*drawer.reminderWindow(), "reminderTitle")->property("text"),
              QStringLiteral("A gentle reminder"));
    ASSERT_TRUE(test::waitUntil([&] { return closed.count() == 1; }));
    EXPECT_FALSE(drawer.isShowingReminder());

    // Moving the drawer to another edge takes the pop-out away first.
    drawer.setReminderAutoCloseMilliseconds(20'000);
    app.drawerReminders().preview(clock.now());
    ASSERT_TRUE(drawer.isShowingReminder());
    drawer.setAnchor(EdgeAnchor::bottomRight);
    EXPECT_FALSE(drawer.isShowingReminder());
    app.drawerReminders().preview(clock.now());
    EXPECT_EQ(drawer.reminderWindow()->geometry(),
              expectedFrame(*drawer.reminderWindow(), EdgeAnchor::bottomRight));
}

} // namespace
} // namespace daywyn
