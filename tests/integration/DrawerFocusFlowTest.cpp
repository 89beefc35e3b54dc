// The drawer, its sheets, Quick Add and Settings as a new user meets them: keys typed
// into the real screens over the real state file. Each case checks what the file holds
// and which item has the keyboard, because a key that lands in the wrong place changes
// the user's tasks without their asking.
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQuickView>
#include <QTest>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "app/qt/ScreenEngine.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "shell/qt/EdgePanelController.h"
#include "shell/qt/QuickCaptureController.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "ui/qt/OnboardingWindow.h"
#include "ui/qt/SessionHistoryModel.h"
#include "ui/qt/SettingsWindow.h"
#include "ui/qt/TaskEditor.h"
#include "ui/qt/TodayModel.h"

namespace daywyn {
namespace {

class DrawerFocusFlowTest : public ::testing::Test {
protected:
    DrawerFocusFlowTest()
        : clock(test::at(test::berlin(), 2026, 11, 21, 9))
        , path(JSONTaskRepository::defaultFilePath().value()) {}

    // Saves `tasks` as the state file and starts the app over it with the drawer open,
    // as a click on the handle opens it.
    void startWith(const std::vector<TaskItem>& tasks) {
        const AppPreferences defaults;
        const std::vector<DailyReport> noReports;
        ASSERT_TRUE(repository()->save(PersistedStateView(tasks, defaults, noReports)));
        app = std::make_unique<AppEnvironment>(repository(), test::berlin(), clock.function());
        app->start();
        app->drawerController().setReducedMotion(true);
        app->drawerController().show();
        ASSERT_TRUE(test::waitUntil([&] { return window().isVisible(); }));
    }
    std::unique_ptr<JSONTaskRepository> repository() const {
        return std::make_unique<JSONTaskRepository>(path, std::make_shared<PosixFileSystem>(),
                                                    clock.function(), clock.function());
    }
    QQuickView& window() { return *app->drawerController().drawerWindow(); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&window(), key, modifiers);
    }
    void type(QQuickWindow& target, const std::string& text) {
        for (const char c : text) {
            QTest::keyClick(&target, c);
        }
    }
    // The named item that holds the keyboard (or holds the unnamed item that does).
    QString focused(QQuickWindow& target) {
        for (QQuickItem* item = target.activeFocusItem(); item; item = item->parentItem()) {
            if (!item->objectName().isEmpty()) {
                return item->objectName();
            }
        }
        return QStringLiteral("(none)");
    }
    QString focused() { return focused(window()); }
    QJsonArray savedTasks() const {
        QFile file(QString::fromStdString(path));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QJsonDocument::fromJson(file.readAll())["tasks"].toArray();
    }
    QJsonObject savedTask(const QString& title) const {
        for (const auto& task : savedTasks()) {
            if (task.toObject()["title"].toString() == title) {
                return task.toObject();
            }
        }
        ADD_FAILURE() << "no saved task " << title.toStdString();
        return {};
    }
    QQuickItem* list() { return test::findItem(window(), QStringLiteral("taskList")); }
    // The task under the list's keyboard cursor.
    QString currentTitle() {
        const int row = list()->property("currentIndex").toInt();
        const QString id = app->today().taskIdAt(row);
        for (const TaskItem& task : app->store().tasks()) {
            if (QString::fromStdString(task.id.text()) == id) {
                return QString::fromStdString(task.title);
            }
        }
        return {};
    }
    // Whether the current row lies wholly inside the list's visible part.
    bool currentRowIsVisible() {
        QQuickItem* view = list();
        auto* row = qvariant_cast<QQuickItem*>(view->property("currentItem"));
        if (!row) {
            return false;
        }
        const double top = row->y() - view->property("contentY").toDouble();
        return top >= -0.5 && top + row->height() <= view->height() + 0.5;
    }

    test::ManualClock clock;
    std::string path;
    std::unique_ptr<AppEnvironment> app;
};

TEST_F(DrawerFocusFlowTest, TypingIntoAFreshDrawerAddsATaskAndNeverActsOnARow) {
    startWith({test::TaskBuilder("Water plants").createdAt(clock.now()),
               test::TaskBuilder("Call Ama").createdAt(clock.now()).running(clock.now() - 600)});
    EXPECT_EQ(focused(), QStringLiteral("addField"));

    // Space and T inside the text are letters, not "complete" and "stop the timer".
    type(window(), "Pay rent at noon");
    press(Qt::Key_Return);
    ASSERT_EQ(savedTasks().size(), 3);
    EXPECT_FALSE(savedTask(QStringLiteral("Water plants"))["isComplete"].toBool());
    EXPECT_TRUE(
        savedTask(QStringLiteral("Call Ama")).contains(QStringLiteral("liveSessionStartedAt")));
    EXPECT_EQ(focused(), QStringLiteral("addField"));

    // Hidden and shown again (as the handle does), the field has the keys once more.
    press(Qt::Key_Escape);
    ASSERT_FALSE(app->drawerController().isVisible());
    app->drawerController().show();
    EXPECT_EQ(focused(), QStringLiteral("addField"));

    // Down moves into the list; only there do the row keys act.
    press(Qt::Key_Down);
    EXPECT_EQ(focused(), QStringLiteral("taskList"));
    const QString first = currentTitle();
    ASSERT_FALSE(first.isEmpty());
    press(Qt::Key_Space);
    EXPECT_TRUE(savedTask(first)["isComplete"].toBool());
    // The completed task stays under the cursor and in view.
    EXPECT_EQ(focused(), QStringLiteral("taskList"));
    EXPECT_TRUE(currentRowIsVisible());
}

TEST_F(DrawerFocusFlowTest, TheEditorKeepsThePlannedDayAndGivesTheKeyboardBackToTheRow) {
    const Instant today = test::berlin().startOfDay(clock.now());
    startWith({test::TaskBuilder("Pay rent")
                   .createdAt(clock.now())
                   .plannedFor(today)
                   .estimate(20)
                   .checklistItem("Find the bank details")});
    const QJsonObject before = savedTask(QStringLiteral("Pay rent"));
    ASSERT_TRUE(before.contains(QStringLiteral("scheduledDay")));

    press(Qt::Key_Down);
    press(Qt::Key_Return);
    ASSERT_TRUE(app->editor().isOpen());
    QQuickItem* plannedDay = test::findItem(window(), QStringLiteral("plannedDayRow"));
    ASSERT_NE(plannedDay, nullptr);
    EXPECT_TRUE(plannedDay->property("on").toBool());
    EXPECT_EQ(focused(), QStringLiteral("editorTitle"));

    // Enter in the title saves: nothing the user did not touch changes.
    press(Qt::Key_Return);
    EXPECT_FALSE(app->editor().isOpen());
    const QJsonObject after = savedTask(QStringLiteral("Pay rent"));
    EXPECT_EQ(after["scheduledDay"], before["scheduledDay"]);
    EXPECT_EQ(after["estimatedMinutes"].toInt(), 20);
    EXPECT_EQ(focused(), QStringLiteral("taskList"));
    EXPECT_EQ(currentTitle(), QStringLiteral("Pay rent"));

    // A second edit of the same task: the switch follows the task again even after the
    // user flipped it last time and cancelled.
    press(Qt::Key_Return);
    plannedDay = test::findItem(window(), QStringLiteral("plannedDayRow"));
    ASSERT_NE(plannedDay, nullptr);
    QMetaObject::invokeMethod(plannedDay, "flip");
    EXPECT_FALSE(app->editor().hasDay());
    press(Qt::Key_Escape);
    EXPECT_FALSE(app->editor().isOpen());
    EXPECT_EQ(focused(), QStringLiteral("taskList"));
    press(Qt::Key_Return);
    EXPECT_TRUE(test::findItem(window(), QStringLiteral("plannedDayRow"))->property("on").toBool());
    press(Qt::Key_Escape);
    EXPECT_EQ(savedTask(QStringLiteral("Pay rent"))["scheduledDay"], before["scheduledDay"]);
}

TEST_F(DrawerFocusFlowTest, HomeEndAndPageKeysMoveThroughALongListAndKeepTheRowInView) {
    std::vector<TaskItem> tasks;
    for (int i = 1; i <= 30; ++i) {
        tasks.push_back(test::TaskBuilder("Task " + std::to_string(i)).createdAt(clock.now() + i));
    }
    startWith(tasks);
    press(Qt::Key_Down);
    const QString first = currentTitle();
    press(Qt::Key_End);
    const QString last = currentTitle();
    EXPECT_NE(last, first);
    EXPECT_TRUE(currentRowIsVisible());
    press(Qt::Key_Space);
    EXPECT_TRUE(savedTask(last)["isComplete"].toBool());

    press(Qt::Key_Home);
    EXPECT_EQ(currentTitle(), first);
    EXPECT_TRUE(currentRowIsVisible());
    press(Qt::Key_PageDown);
    const QString paged = currentTitle();
    EXPECT_NE(paged, first);
    EXPECT_TRUE(currentRowIsVisible());
    press(Qt::Key_PageUp);
    EXPECT_EQ(currentTitle(), first);
    EXPECT_EQ(focused(), QStringLiteral("taskList"));
}

TEST_F(DrawerFocusFlowTest, EscapeClosesHistoryAndTheMenuHoweverTheyWereOpened) {
    startWith({test::TaskBuilder("Water plants").createdAt(clock.now())});
    // History opened with the mouse: Escape still closes it, and the drawer stays.
    QQuickItem* historyButton = test::findItem(window(), QStringLiteral("historyButton"));
    ASSERT_NE(historyButton, nullptr);
    test::click(window(), *historyButton);
    QQuickItem* history = test::findItem(window(), QStringLiteral("historySheet"));
    ASSERT_NE(history, nullptr);
    ASSERT_TRUE(history->isVisible());
    press(Qt::Key_Escape);
    EXPECT_FALSE(history->isVisible());
    EXPECT_TRUE(app->drawerController().isVisible());
    EXPECT_EQ(focused(), QStringLiteral("addField"));

    // The task's menu from the keyboard: Escape gives the keyboard back to the row.
    press(Qt::Key_Down);
    press(Qt::Key_Menu);
    EXPECT_NE(focused(), QStringLiteral("taskList"));
    press(Qt::Key_Escape);
    EXPECT_TRUE(app->drawerController().isVisible());
    EXPECT_EQ(focused(), QStringLiteral("taskList"));
    press(Qt::Key_Space);
    EXPECT_TRUE(savedTask(QStringLiteral("Water plants"))["isComplete"].toBool());
}

TEST_F(DrawerFocusFlowTest, QuickAddReopenedAfterEscapeReplacesItsOldDraft) {
    startWith({});
    QuickCaptureController& capture = app->quickCapture();
    capture.show();
    QQuickView& panel = *capture.panel();
    ASSERT_TRUE(test::waitUntil([&] { return focused(panel) == QStringLiteral("quickAddField"); }));
    type(panel, "Call Ama for 20 minutes");
    QTest::keyClick(&panel, Qt::Key_Escape);
    EXPECT_FALSE(capture.isPanelVisible());

    capture.show();
    ASSERT_TRUE(test::waitUntil([&] { return focused(panel) == QStringLiteral("quickAddField"); }));
    type(panel, "Email Kofi");
    QTest::keyClick(&panel, Qt::Key_Return);
    ASSERT_EQ(savedTasks().size(), 1);
    EXPECT_EQ(savedTasks()[0].toObject()["title"].toString(), QStringLiteral("Email Kofi"));
    EXPECT_FALSE(savedTasks()[0].toObject().contains(QStringLiteral("estimatedMinutes")));
}

// The first visible item under `root`, depth first, whose `name` property is `value`.
QQuickItem* findByProperty(QQuickItem* root, const char* name, const QString& value) {
    for (QQuickItem* child : root->childItems()) {
        if (child->isVisible() && child->property(name).toString() == value) {
            return child;
        }
        if (QQuickItem* found = findByProperty(child, name, value)) {
            return found;
        }
    }
    return nullptr;
}

TEST_F(DrawerFocusFlowTest, AMenuChoiceThatOpensTheEditorLeavesItTheKeyboard) {
    startWith({test::TaskBuilder("Water plants").createdAt(clock.now())});
    press(Qt::Key_Down);
    press(Qt::Key_Menu);
    // Down onto the menu's first item, Edit.
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    ASSERT_TRUE(app->editor().isOpen());
    // The menu closes after its choice: the row must not take the keyboard back then.
    QTest::qWait(300);
    EXPECT_EQ(focused(), QStringLiteral("editorTitle"));
    press(Qt::Key_Escape);
    EXPECT_FALSE(app->editor().isOpen());
    EXPECT_TRUE(app->drawerController().isVisible());
}

TEST_F(DrawerFocusFlowTest, EditingASessionChangesThatSessionAndDeletingItEndsTheEdit) {
    const Instant seven = clock.now() - 2 * 3600;
    startWith({test::TaskBuilder("Pay rent")
                   .createdAt(clock.now() - 3 * 3600)
                   .session(seven, seven + 30 * 60)
                   .session(seven + 3600, seven + 3600 + 20 * 60)});
    const TaskItem task = app->store().tasks().front();
    ASSERT_TRUE(app->screenServices().sessions->openTask(QString::fromStdString(task.id.text())));
    QQuickItem* sheet = test::findItem(window(), QStringLiteral("sessionSheet"));
    ASSERT_NE(sheet, nullptr);
    ASSERT_TRUE(test::waitUntil([&] { return sheet->isVisible(); }));
    QQuickItem* sessions = test::findItem(window(), QStringLiteral("sessionList"));
    QQuickItem* start = test::findItem(window(), QStringLiteral("sessionStart"));
    QQuickItem* end = test::findItem(window(), QStringLiteral("sessionEnd"));
    ASSERT_TRUE(sessions && start && end);
    const auto row = [&](const WorkSession& session) {
        return findByProperty(sessions, "sessionId", QString::fromStdString(session.id.text()));
    };
    const auto button = [&](QQuickItem* under, const char* text) {
        QQuickItem* found = findByProperty(under, "text", QString::fromUtf8(text));
        EXPECT_NE(found, nullptr) << text;
        return found;
    };

    // Edit puts the earlier session's times in the fields; Save changes that one only.
    QQuickItem* earlier = nullptr;
    ASSERT_TRUE(test::waitUntil([&] { return (earlier = row(task.sessions[0])) != nullptr; }));
    test::click(window(), *button(earlier, "Edit"));
    EXPECT_EQ(start->property("text").toString(), QStringLiteral("2026-11-21 07:00"));
    EXPECT_EQ(end->property("text").toString(), QStringLiteral("2026-11-21 07:30"));
    end->setProperty("text", QStringLiteral("2026-11-21 07:45"));
    test::click(window(), *button(sheet, "Save session"));
    const std::vector<WorkSession>& saved = app->store().tasks().front().sessions;
    ASSERT_EQ(saved.size(), 2U);
    for (const WorkSession& session : saved) {
        const bool edited = session.id == task.sessions[0].id;
        EXPECT_EQ(session.start, edited ? seven : task.sessions[1].start);
        EXPECT_EQ(session.end, edited ? seven + 45 * 60 : task.sessions[1].end);
    }
    EXPECT_NE(button(sheet, "Add session"), nullptr);

    // Deleting the session being edited leaves nothing to save it over.
    QQuickItem* later = row(task.sessions[1]);
    ASSERT_NE(later, nullptr);
    test::click(window(), *button(later, "Edit"));
    ASSERT_NE(button(sheet, "Save session"), nullptr);
    test::click(window(), *button(row(task.sessions[1]), "Delete"));
    EXPECT_EQ(app->store().tasks().front().sessions.size(), 1U);
    EXPECT_NE(button(sheet, "Add session"), nullptr);
    EXPECT_EQ(findByProperty(sheet, "text", QStringLiteral("Cancel edit")), nullptr);
}

TEST_F(DrawerFocusFlowTest, EscapeAndCtrlWCloseSettings) {
    startWith({});
    for (const auto& close : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)}) {
        app->settingsWindow().show(QStringLiteral("general"));
        QQuickView& settings = *app->settingsWindow().window();
        ASSERT_TRUE(test::waitUntil([&] { return settings.isVisible(); }));
        ASSERT_TRUE(test::waitUntil([&] { return settings.activeFocusItem() != nullptr; }));
        QTest::keySequence(&settings, close);
        EXPECT_TRUE(test::waitUntil([&] { return !settings.isVisible(); }))
            << close.toString().toStdString();
    }
}

} // namespace
} // namespace daywyn

namespace daywyn {
namespace {

TEST_F(DrawerFocusFlowTest, TheHandleMarksARunningTimerAndTheWelcomeEndsWithTheDrawerOpen) {
    startWith({test::TaskBuilder("Call Ama").createdAt(clock.now()).running(clock.now() - 600)});
    press(Qt::Key_Escape);
    ASSERT_FALSE(app->drawerController().isVisible());
    QQuickView& handle = *app->drawerController().handleWindow();
    QQuickItem* mark = test::findItem(handle, QStringLiteral("timerMark"));
    ASSERT_NE(mark, nullptr);
    EXPECT_TRUE(mark->isVisible());
    app->store().toggleTimer(app->store().tasks().front().id, clock.now());
    EXPECT_TRUE(test::waitUntil([&] { return !mark->isVisible(); }));

    // Finishing the welcome's last step shows the drawer once.
    app->onboardingWindow().complete();
    EXPECT_TRUE(app->drawerController().isVisible());
    EXPECT_EQ(focused(), QStringLiteral("addField"));
}

} // namespace
} // namespace daywyn
