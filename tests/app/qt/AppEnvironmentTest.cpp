#include "app/qt/AppEnvironment.h"

#include <gtest/gtest.h>

#include "shell/qt/EdgePanelController.h"
#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "ui/qt/SettingsModel.h"
#include "ui/qt/Theme.h"

namespace daywyn {
namespace {

using test::FakeRepository;
using test::TaskBuilder;

struct Launch {
    test::ManualClock clock;
    FakeRepository* repository = nullptr;
    std::unique_ptr<AppEnvironment> environment;
};

// An environment over a stored state, at a wall-clock time in Berlin.
Launch launch(std::vector<TaskItem> tasks, Instant now) {
    PersistedState state;
    state.tasks = std::move(tasks);
    auto repository = FakeRepository::holding(state);
    Launch result{test::ManualClock(now), repository.get(), nullptr};
    result.environment = std::make_unique<AppEnvironment>(std::move(repository), test::berlin(),
                                                          result.clock.function());
    return result;
}

TEST(AppEnvironment, StartRunsOnceWithTheFirstMaintenancePassAtOnce) {
    const Calendar berlin = test::berlin();
    const Instant lateEvening = test::at(berlin, 2026, 11, 21, 21, 30);
    Launch app =
        launch({TaskBuilder("Send invoices").completedAt(lateEvening - 3600)}, lateEvening);
    EXPECT_FALSE(app.environment->drawerController().isPrepared());

    app.environment->start();
    app.environment->start();

    // The evening's report was due at launch: it exists before any timer fired.
    EXPECT_EQ(app.environment->store().reports().size(), 1u);
    EXPECT_EQ(app.environment->maintenancePasses(), 1);
    EXPECT_TRUE(app.environment->drawerController().isPrepared());
    EXPECT_TRUE(app.environment->maintenanceTimer().isActive());
    EXPECT_EQ(app.environment->maintenanceTimer().interval(), 15'000);
}

TEST(AppEnvironment, MaintenanceReadsTheClockAfreshEachPass) {
    const Calendar berlin = test::berlin();
    Launch app = launch({TaskBuilder("Plan").completedAt(test::at(berlin, 2026, 11, 21, 10))},
                        test::at(berlin, 2026, 11, 21, 20, 59));
    app.environment->start();
    EXPECT_TRUE(app.environment->store().reports().empty());

    // The machine slept through the review hour; the next pass catches up.
    app.clock.set(test::at(berlin, 2026, 11, 21, 23, 0));
    app.environment->performMaintenance();
    EXPECT_EQ(app.environment->store().reports().size(), 1u);
}

TEST(AppEnvironment, ChangeListenerMovesTheDrawerToTheChosenAnchor) {
    Launch app = launch({}, test::at(test::berlin(), 2026, 11, 21, 9));
    // Before start the listener is not installed: nothing is placed yet.
    app.environment->store().updatePreferences(
        [](AppPreferences& p) { p.edgeAnchor = EdgeAnchor::rightCenter; });
    EXPECT_EQ(app.environment->drawerController().anchor(), EdgeAnchor::topLeft);

    app.environment->start();
    // Start places the drawer at the saved anchor, and every later change follows.
    EdgePanelController& drawer = app.environment->drawerController();
    EXPECT_EQ(drawer.anchor(), EdgeAnchor::rightCenter);
    app.environment->store().updatePreferences(
        [](AppPreferences& p) { p.edgeAnchor = EdgeAnchor::bottomLeft; });
    EXPECT_EQ(drawer.anchor(), EdgeAnchor::bottomLeft);
}

TEST(AppEnvironment, ChoosingAnAppearanceRepaintsAtOnce) {
    Launch app = launch({}, test::at(test::berlin(), 2026, 11, 21, 9));
    Theme& theme = app.environment->theme();
    int repaints = 0;
    QObject::connect(&theme, &Theme::changed, [&repaints] { ++repaints; });
    app.environment->settingsModel().setAppearance(QStringLiteral("dark"));
    EXPECT_TRUE(theme.isDark());
    app.environment->settingsModel().setAppearance(QStringLiteral("light"));
    EXPECT_FALSE(theme.isDark());
    EXPECT_EQ(repaints, 2);
}

} // namespace
} // namespace daywyn
