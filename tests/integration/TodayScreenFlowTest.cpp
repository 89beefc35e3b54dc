// The Today screen driven with keys and clicks like a user, over the real state file:
// every step is checked in the file, not in memory.
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQuickView>
#include <QTest>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "shell/qt/EdgePanelController.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "ui/qt/SettingsWindow.h"

namespace daywyn {
namespace {

std::unique_ptr<JSONTaskRepository> repositoryAt(const std::string& path,
                                                 const test::ManualClock& clock) {
    return std::make_unique<JSONTaskRepository>(path, std::make_shared<PosixFileSystem>(),
                                                clock.function(), clock.function());
}

QJsonArray savedTasks(const std::string& path) {
    QFile file(QString::fromStdString(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QJsonDocument::fromJson(file.readAll())["tasks"].toArray();
}

TEST(TodayScreen, AddTimeCompleteDeleteAndUndoAreSavedAtEachStep) {
    const Calendar berlin = test::berlin();
    test::ManualClock clock(test::at(berlin, 2026, 11, 21, 9));
    const std::string path = JSONTaskRepository::defaultFilePath().value();
    {
        // An empty saved state rather than the first-run samples.
        const std::vector<TaskItem> none;
        const AppPreferences defaults;
        const std::vector<DailyReport> noReports;
        ASSERT_TRUE(repositoryAt(path, clock)->save(PersistedStateView(none, defaults, noReports)));
    }
    AppEnvironment app(repositoryAt(path, clock), berlin, clock.function());
    app.start();
    EdgePanelController& drawer = app.drawerController();
    drawer.setReducedMotion(true);
    drawer.showForQuickAdd();
    QQuickView& window = *drawer.drawerWindow();

    for (const char c : std::string("Water plants for 15 minutes")) {
        QTest::keyClick(&window, c);
    }
    QTest::keyClick(&window, Qt::Key_Return);
    QJsonArray tasks = savedTasks(path);
    ASSERT_EQ(tasks.size(), 1);
    EXPECT_EQ(tasks[0].toObject()["title"].toString(), QStringLiteral("Water plants"));
    EXPECT_EQ(tasks[0].toObject()["estimatedMinutes"].toInt(), 15);

    QQuickItem* timer = nullptr;
    ASSERT_TRUE(test::waitUntil([&] {
        timer = test::findItem(window, QStringLiteral("timerButton"));
        return timer && timer->isVisible() && timer->width() > 0;
    }));
    test::click(window, *timer);
    EXPECT_EQ(savedTasks(path)[0].toObject()["liveSessionStartedAt"].toString(),
              QStringLiteral("2026-11-21T08:00:00Z"));
    clock.advance(300);
    timer = test::findItem(window, QStringLiteral("timerButton"));
    ASSERT_NE(timer, nullptr);
    test::click(window, *timer);
    tasks = savedTasks(path);
    EXPECT_FALSE(tasks[0].toObject().contains(QStringLiteral("liveSessionStartedAt")));
    ASSERT_EQ(tasks[0].toObject()["sessions"].toArray().size(), 1);
    EXPECT_EQ(tasks[0].toObject()["sessions"].toArray()[0].toObject()["end"].toString(),
              QStringLiteral("2026-11-21T08:05:00Z"));

    // From the add field, Down moves into the list onto the task.
    QQuickItem* field = test::findItem(window, QStringLiteral("addField"));
    ASSERT_NE(field, nullptr);
    field->forceActiveFocus();
    QTest::keyClick(&window, Qt::Key_Down);
    QTest::keyClick(&window, Qt::Key_Space);
    EXPECT_TRUE(savedTasks(path)[0].toObject()["isComplete"].toBool());

    QTest::keyClick(&window, Qt::Key_Delete);
    EXPECT_EQ(savedTasks(path).size(), 0);
    EXPECT_EQ(app.store().undoDescription(), "Delete Water plants");

    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    tasks = savedTasks(path);
    ASSERT_EQ(tasks.size(), 1);
    EXPECT_EQ(tasks[0].toObject()["title"].toString(), QStringLiteral("Water plants"));
    EXPECT_TRUE(tasks[0].toObject()["isComplete"].toBool());

    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(drawer.isVisible());
}

TEST(TodayScreen, TheSettingsButtonOpensTheSettingsWindow) {
    const Calendar berlin = test::berlin();
    test::ManualClock clock(test::at(berlin, 2026, 11, 21, 9));
    AppEnvironment app(nullptr, berlin, clock.function());
    app.start();
    EdgePanelController& drawer = app.drawerController();
    drawer.setReducedMotion(true);
    drawer.show();
    QQuickView& window = *drawer.drawerWindow();
    QQuickItem* button = nullptr;
    ASSERT_TRUE(test::waitUntil([&] {
        button = test::findItem(window, QStringLiteral("settingsButton"));
        return button && button->isVisible() && button->width() > 0;
    }));
    test::click(window, *button);
    ASSERT_NE(app.settingsWindow().window(), nullptr);
    EXPECT_TRUE(test::waitUntil([&] { return app.settingsWindow().window()->isVisible(); }));
}

} // namespace
} // namespace daywyn
