#include <gtest/gtest.h>

#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "ui/qt/CompletedHistoryModel.h"
#include "ui/qt/SessionHistoryModel.h"
#include "ui/qt/TaskEditor.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

class SheetsTest : public ::testing::Test {
protected:
    SheetsTest()
        : berlin(test::berlin())
        , clock(test::at(berlin, 2026, 11, 21, 9, 30)) {}

    void storeWith(std::vector<TaskItem> tasks, int defaultMinutes = 25) {
        PersistedState state;
        state.tasks = std::move(tasks);
        state.preferences.defaultTaskMinutes = defaultMinutes;
        store = std::make_unique<TodayTaskStore>(test::FakeRepository::holding(state), clock.now(),
                                                 berlin);
    }
    QString firstId() const { return QString::fromStdString(store->tasks().front().id.text()); }

    Calendar berlin;
    test::ManualClock clock;
    std::unique_ptr<TodayTaskStore> store;
};

TEST_F(SheetsTest, EditorRefusesToSaveWhileItsSentenceStands) {
    storeWith({TaskBuilder("Plan").createdAt(clock.now())}, 40);
    TaskEditor editor(*store, berlin, clock.function());
    ASSERT_TRUE(editor.openTask(firstId()));

    // Switching the estimate on offers the default length from the preferences.
    editor.setHasEstimate(true);
    EXPECT_EQ(editor.estimatedMinutes(), 40);

    editor.setHasStart(true);
    editor.setStartText(QStringLiteral("2026-11-21 14:00"));
    editor.setHasEnd(true);
    editor.setEndText(QStringLiteral("2026-11-21 14:00"));
    EXPECT_EQ(editor.validationMessage(), QStringLiteral("Scheduled end must follow the start."));
    EXPECT_FALSE(editor.save());
    EXPECT_TRUE(editor.isOpen());

    editor.setEndText(QStringLiteral("2026-11-31 15:00"));
    EXPECT_EQ(editor.validationMessage(),
              QStringLiteral("Enter the end as a date and time like 2026-11-21 14:30."));
    editor.setEndText(QStringLiteral("2026-11-21 15:00"));
    editor.setTitle(QStringLiteral("  "));
    EXPECT_EQ(editor.validationMessage(), QStringLiteral("Give the task a title."));
    editor.setTitle(QStringLiteral("Plan the week"));
    editor.setRecurrence(2);
    editor.addChecklistItem(QStringLiteral("Calendar"));
    editor.addChecklistItem(QStringLiteral("  "));
    EXPECT_TRUE(editor.save());
    EXPECT_FALSE(editor.isOpen());

    const TaskItem& saved = store->tasks().front();
    EXPECT_EQ(saved.title, "Plan the week");
    EXPECT_EQ(saved.estimatedMinutes, 40);
    EXPECT_EQ(saved.scheduledStart, test::at(berlin, 2026, 11, 21, 14));
    EXPECT_EQ(saved.scheduledEnd, test::at(berlin, 2026, 11, 21, 15));
    EXPECT_EQ(saved.recurrence, TaskRecurrence::weekdays);
    ASSERT_TRUE(saved.checklist.has_value());
    EXPECT_EQ(saved.checklist->size(), 1u);
}

TEST_F(SheetsTest, EditorSavesOnlyWhatTheUserChanged) {
    const Instant today = berlin.startOfDay(clock.now());
    storeWith({TaskBuilder("Pay rent")
                   .createdAt(clock.now())
                   .plannedFor(today)
                   .estimate(20)
                   .checklistItem("Find the bank details")});
    const TaskItem before = store->tasks().front();
    TaskEditor editor(*store, berlin, clock.function());

    // Opened and saved untouched: the task is exactly as it was, planned day included.
    ASSERT_TRUE(editor.openTask(firstId()));
    EXPECT_TRUE(editor.hasDay());
    EXPECT_TRUE(editor.save());
    EXPECT_EQ(store->tasks().front(), before);

    // While the sheet is open the task moves to tomorrow elsewhere; the user renames it.
    ASSERT_TRUE(editor.openTask(firstId()));
    const Instant tomorrow = berlin.startOfDay(today + 36 * 3600);
    store->doToday(store->tasks().front().id, tomorrow, berlin);
    ASSERT_EQ(store->tasks().front().scheduledDay, tomorrow);
    editor.setTitle(QStringLiteral("Pay the rent"));
    EXPECT_TRUE(editor.save());
    const TaskItem& saved = store->tasks().front();
    EXPECT_EQ(saved.title, "Pay the rent");
    EXPECT_EQ(saved.scheduledDay, tomorrow);
    EXPECT_EQ(saved.estimatedMinutes, 20);
    EXPECT_EQ(saved.checklist, before.checklist);

    // Switching the day off is a change of its own and is saved.
    ASSERT_TRUE(editor.openTask(firstId()));
    editor.setHasDay(false);
    EXPECT_TRUE(editor.save());
    EXPECT_FALSE(store->tasks().front().scheduledDay.has_value());
}

TEST_F(SheetsTest, SessionHistoryListsNewestFirstAndChecksTheEditorsRules) {
    const Instant now = clock.now();
    storeWith({TaskBuilder("Write")
                   .createdAt(now - 86400)
                   .session(now - 7200, now - 6600)
                   .session(now - 3600, now - 3000)});
    SessionHistoryModel sessions(*store, berlin, clock.function());
    ASSERT_TRUE(sessions.openTask(firstId()));
    ASSERT_EQ(sessions.rowCount(), 2);
    EXPECT_EQ(sessions.index(0).data(SessionHistoryModel::StartRole).toString(),
              QStringLiteral("2026-11-21 08:30"));

    EXPECT_FALSE(sessions.addSession(QStringLiteral("2026-11-21 09:00"),
                                     QStringLiteral("2026-11-21 08:59")));
    EXPECT_EQ(sessions.errorMessage(), QStringLiteral("Session end must follow its start."));
    EXPECT_FALSE(sessions.addSession(QStringLiteral("2026-11-21 09:00"),
                                     QStringLiteral("2026-11-21 09:31")));
    EXPECT_EQ(sessions.errorMessage(), QStringLiteral("A past session cannot end in the future."));
    EXPECT_TRUE(sessions.addSession(QStringLiteral("2026-11-21 09:00"),
                                    QStringLiteral("2026-11-21 09:20")));
    EXPECT_EQ(sessions.errorMessage(), QString());
    ASSERT_EQ(sessions.rowCount(), 3);

    const QString newest = sessions.index(0).data(SessionHistoryModel::SessionIdRole).toString();
    sessions.deleteSession(newest);
    EXPECT_EQ(sessions.rowCount(), 2);
    EXPECT_EQ(sessions.undoDescription(), QStringLiteral("Delete work session"));
    sessions.undo();
    EXPECT_EQ(sessions.rowCount(), 3);
}

TEST_F(SheetsTest, CompletedHistoryIsNewestFirstAndReopens) {
    const Instant now = clock.now();
    storeWith({TaskBuilder("Older").createdAt(now - 9 * 86400).completedAt(now - 8 * 86400),
               TaskBuilder("Open").createdAt(now),
               TaskBuilder("Newer").createdAt(now - 86400).completedAt(now - 3600)});
    CompletedHistoryModel history(*store, berlin, clock.function());
    EXPECT_EQ(history.rowCount(), 0); // built only when opened
    history.open();
    ASSERT_EQ(history.rowCount(), 2);
    EXPECT_EQ(history.index(0).data(CompletedHistoryModel::TitleRole).toString(),
              QStringLiteral("Newer"));
    history.reopen(history.index(0).data(CompletedHistoryModel::TaskIdRole).toString());
    EXPECT_EQ(history.rowCount(), 1);
}

} // namespace
} // namespace daywyn
