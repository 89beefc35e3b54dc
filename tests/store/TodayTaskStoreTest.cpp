#include <algorithm>
#include <functional>

#include <gtest/gtest.h>

#include "store/StoreUnderTest.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

const Calendar kNewYork = test::newYork();
const Instant kNow = test::at(kNewYork, 2026, 3, 5, 10, 0);

TaskDraft titled(std::string title) {
    TaskDraft draft;
    draft.title = std::move(title);
    return draft;
}

TEST(TodayTaskStore, FirstRunShowsSampleTasksSavedAtOnce) {
    test::StoreUnderTest s(test::FakeRepository::make(), kNow, kNewYork);

    const auto& tasks = s.store.tasks();
    ASSERT_GE(tasks.size(), 3u);
    ASSERT_LE(tasks.size(), 5u);
    EXPECT_TRUE(std::all_of(tasks.begin(), tasks.end(), [](const TaskItem& t) {
        return t.createdAt == kNow && !t.isComplete;
    }));
    EXPECT_TRUE(std::any_of(tasks.begin(), tasks.end(), [](const TaskItem& t) {
        return t.title.find("Ctrl+Alt+Space") != std::string::npos;
    }));
    EXPECT_TRUE(std::any_of(tasks.begin(), tasks.end(), [](const TaskItem& t) {
        return t.checklist && !t.checklist->empty();
    }));
    EXPECT_EQ(s.repo->saveCount(), 1);
    EXPECT_EQ(s.repo->lastSaved().tasks, tasks);
    EXPECT_EQ(s.store.taskSections(kNow, kNewYork).today.size(), tasks.size());
}

TEST(TodayTaskStore, UnreadableDataRunsEmptyAndIsNotOverwrittenUntilTheFirstChange) {
    const std::string moved = "Daywyn could not read its data. The original was preserved as "
                              "daywyn-corrupt-2026-03-05T15-00-00Z.json.";
    test::StoreUnderTest s(test::FakeRepository::failingLoad(moved), kNow, kNewYork);

    EXPECT_TRUE(s.store.tasks().empty());
    EXPECT_EQ(s.store.persistenceError(), moved);
    EXPECT_EQ(s.repo->saveCount(), 0);

    EXPECT_EQ(s.store.addTaskReliably(titled("Call Ama"), kNow, kNewYork), std::nullopt);
    EXPECT_EQ(s.repo->saveCount(), 1);
    EXPECT_EQ(s.store.persistenceError(), std::nullopt);
}

TEST(TodayTaskStore, StartUpKeepsTheFirstHolderOfEachRankAndOneRunningTimer) {
    const Instant loaded = kNow + 3600.0;
    test::StoreUnderTest s({TaskBuilder("A").pinned(1).running(kNow),
                            TaskBuilder("B").pinned(1).running(kNow + 600.0),
                            TaskBuilder("C").pinned(2).completedAt(kNow).running(kNow),
                            TaskBuilder("D").pinned(5), TaskBuilder("E").pinned(3)},
                           loaded, kNewYork);

    std::vector<std::optional<long long>> ranks;
    for (const auto& task : s.store.tasks()) {
        ranks.push_back(task.priorityRank);
    }
    EXPECT_EQ(ranks, (std::vector<std::optional<long long>>{1, {}, {}, {}, 3}));
    EXPECT_EQ(s.at(0).liveSessionStartedAt, kNow);
    EXPECT_FALSE(s.at(1).isRunning());
    ASSERT_EQ(s.at(1).sessions.size(), 1u);
    EXPECT_EQ(s.at(1).sessions[0].start, kNow + 600.0);
    EXPECT_EQ(s.at(1).sessions[0].end, loaded);
    EXPECT_FALSE(s.at(2).isRunning());
    EXPECT_EQ(s.repo->saveCount(), 1);
    EXPECT_EQ(s.repo->lastSaved().tasks, s.store.tasks());
}

TEST(TodayTaskStore, AStateReadInTheCurrentFormatIsSavedAtStartUpOnlyWhenRepaired) {
    const auto loadedCurrent = [](std::vector<TaskItem> tasks) {
        auto repository = test::FakeRepository::holding(
            PersistedState{PersistedState::kCurrentVersion, std::move(tasks), {}, {}});
        repository->setLoadsCurrentFormat(true);
        return repository;
    };
    // Nothing to repair: the file already holds what a save would write.
    test::StoreUnderTest clean(
        loadedCurrent({TaskBuilder("A").pinned(1).running(kNow), TaskBuilder("B").pinned(2)}),
        kNow + 60.0, kNewYork);
    EXPECT_EQ(clean.repo->saveCount(), 0);
    EXPECT_EQ(clean.store.persistenceError(), std::nullopt);
    EXPECT_EQ(clean.store.addTaskReliably(titled("C"), kNow, kNewYork), std::nullopt);
    EXPECT_EQ(clean.repo->saveCount(), 1);

    // A repaired rank or a second running timer is written back at once.
    test::StoreUnderTest ranks(
        loadedCurrent({TaskBuilder("A").pinned(1), TaskBuilder("B").pinned(1)}), kNow, kNewYork);
    EXPECT_EQ(ranks.repo->saveCount(), 1);
    test::StoreUnderTest timers(
        loadedCurrent({TaskBuilder("A").running(kNow), TaskBuilder("B").running(kNow)}), kNow,
        kNewYork);
    EXPECT_EQ(timers.repo->saveCount(), 1);
    EXPECT_FALSE(timers.repo->lastSaved().tasks[1].isRunning());

    // A migrated (or otherwise not current) file is rewritten in the current format.
    test::StoreUnderTest migrated({TaskBuilder("A")}, kNow, kNewYork);
    EXPECT_EQ(migrated.repo->saveCount(), 1);
}

TEST(TodayTaskStore, PinsAtMostThreePrioritiesAndReusesTheFreedRank) {
    test::StoreUnderTest s({TaskBuilder("A"), TaskBuilder("B"), TaskBuilder("C"), TaskBuilder("D")},
                           kNow, kNewYork);
    const auto id = [&](std::size_t i) {
        return s.at(i).id;
    };
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(s.store.togglePriority(id(i)), std::nullopt);
    }
    const int saves = s.repo->saveCount();

    EXPECT_EQ(s.store.togglePriority(id(3)),
              "You can pin up to three priorities. Unpin one first.");
    EXPECT_EQ(s.repo->saveCount(), saves);

    s.store.togglePriority(id(1));
    EXPECT_EQ(s.at(0).priorityRank, 1);
    EXPECT_EQ(s.at(2).priorityRank, 3);
    s.store.togglePriority(id(3));
    EXPECT_EQ(s.at(3).priorityRank, 2);

    s.store.toggleComplete(id(0), kNow, kNewYork);
    EXPECT_EQ(s.at(0).priorityRank, std::nullopt);
    EXPECT_EQ(s.store.togglePriority(id(0)), "Task is no longer available.");
    s.store.toggleComplete(id(0), kNow, kNewYork);
    EXPECT_EQ(s.at(0).priorityRank, std::nullopt);
    EXPECT_EQ(s.store.togglePriority(Uuid::random()), "Task is no longer available.");
}

TEST(TodayTaskStore, AFailedSaveLeavesTheTaskListExactlyAsItWas) {
    struct Case {
        const char* name;
        std::function<std::optional<std::string>(TodayTaskStore&)> operation;
        std::string expected;
    };
    const std::string reason = "No space left on device";
    const TaskItem running =
        TaskBuilder("Running").running(kNow - 600.0).session(kNow - 7200.0, kNow - 3600.0);
    const std::vector<Case> cases = {
        {"add",
         [](TodayTaskStore& st) { return st.addTaskReliably(titled("New"), kNow, kNewYork); },
         "Daywyn could not save changes: " + reason},
        {"delete", [&](TodayTaskStore& st) { return st.deleteTask(running.id, kNow); },
         "Daywyn could not save changes: " + reason},
        {"pin", [&](TodayTaskStore& st) { return st.togglePriority(running.id); },
         "Daywyn could not save changes: " + reason},
        {"delete session",
         [&](TodayTaskStore& st) { return st.deleteSession(running.sessions[0].id, running.id); },
         "Daywyn could not save changes: " + reason},
        {"voice",
         [](TodayTaskStore& st) {
             return st.addVoiceTasks({{Uuid::random(), "Buy milk", {}, {}}}, kNow, kNewYork);
         },
         "Daywyn could not save your voice tasks. Please try again: " + reason},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        test::StoreUnderTest s({TaskBuilder("Other"), running}, kNow, kNewYork);
        const auto before = s.store.tasks();
        s.repo->failNextSaves(1, reason);

        EXPECT_EQ(c.operation(s.store), c.expected);

        EXPECT_EQ(s.store.tasks(), before);
        EXPECT_EQ(s.store.undoDescription(), std::nullopt);
        EXPECT_EQ(s.changes, 0);
    }
}

TEST(TodayTaskStore, AFailedCommitKeepsTheChangeAndShowsWhyUntilASaveSucceeds) {
    test::StoreUnderTest s({TaskBuilder("Plan").checklistItem("Step")}, kNow, kNewYork);
    int observed = 0;
    s.store.addObserver([&] { ++observed; });
    s.repo->failNextSaves(1, "Permission denied");

    s.store.toggleChecklistItem(s.at(0).id, s.at(0).checklist->at(0).id);

    EXPECT_TRUE(s.at(0).checklist->at(0).isComplete);
    EXPECT_EQ(s.store.persistenceError(), "Daywyn could not save changes: Permission denied");
    EXPECT_EQ(s.changes, 1);
    EXPECT_EQ(observed, 1);
    s.store.toggleTimer(s.at(0).id, kNow);
    EXPECT_EQ(s.store.persistenceError(), std::nullopt);
    EXPECT_TRUE(s.repo->lastSaved().tasks[0].checklist->at(0).isComplete);
}

TEST(TodayTaskStore, HeldNotificationsComeOnceAfterTheChangesAreSaved) {
    test::StoreUnderTest s({TaskBuilder("Plan")}, kNow, kNewYork);
    int observed = 0;
    std::size_t tasksWhenObserved = 0;
    s.store.addObserver([&] {
        ++observed;
        tasksWhenObserved = s.store.tasks().size();
    });
    const int savesBefore = s.repo->saveCount();
    {
        auto hold = s.store.holdNotifications();
        {
            // Holds nest: only the outermost one's end tells.
            auto inner = s.store.holdNotifications();
            EXPECT_EQ(s.store.addTaskReliably(titled("Call Ama"), kNow, kNewYork), std::nullopt);
        }
        EXPECT_EQ(s.store.addTaskReliably(titled("Pay rent"), kNow, kNewYork), std::nullopt);
        s.store.setFocusedTaskID(s.at(2).id);
        // Saved at once, each change on its own, though nobody has been told yet.
        EXPECT_EQ(s.repo->saveCount(), savesBefore + 2);
        EXPECT_EQ(s.repo->lastSaved().tasks.size(), 3u);
        EXPECT_EQ(s.changes, 0);
        EXPECT_EQ(observed, 0);
        auto moved = std::move(hold); // the moved-from hold ends nothing
    }
    EXPECT_EQ(s.changes, 1);
    EXPECT_EQ(observed, 1);
    EXPECT_EQ(tasksWhenObserved, 3u);

    // A hold with only a focus change tells the observers, not the change listener;
    // one with nothing to tell calls nobody.
    {
        auto hold = s.store.holdNotifications();
        s.store.setFocusedTaskID(s.at(0).id);
    }
    EXPECT_EQ(s.changes, 1);
    EXPECT_EQ(observed, 2);
    { auto hold = s.store.holdNotifications(); }
    EXPECT_EQ(s.changes, 1);
    EXPECT_EQ(observed, 2);

    // A failed save under a hold is still reported, and told after.
    s.repo->failNextSaves(1, "Disk full");
    {
        auto hold = s.store.holdNotifications();
        EXPECT_EQ(s.store.addTaskReliably(titled("Lost"), kNow, kNewYork),
                  "Daywyn could not save changes: Disk full");
        EXPECT_EQ(s.store.tasks().size(), 3u);
    }
    EXPECT_EQ(observed, 2);
}

TEST(TodayTaskStore, DeletingARunningTaskAndUndoingRestoresItStoppedWithItsTimeKept) {
    const TaskItem running = TaskBuilder("Write draft").running(kNow - 1200.0);
    test::StoreUnderTest s({TaskBuilder("A"), running, TaskBuilder("C")}, kNow, kNewYork);
    s.store.setFocusedTaskID(running.id);

    EXPECT_EQ(s.store.deleteTask(running.id, kNow), std::nullopt);
    EXPECT_EQ(s.store.tasks().size(), 2u);
    EXPECT_EQ(s.store.undoDescription(), "Delete Write draft");
    EXPECT_EQ(s.store.focusedTaskID(), std::nullopt);

    EXPECT_EQ(s.store.undoLastDeletion(), std::nullopt);
    const TaskItem& restored = s.at(1);
    EXPECT_EQ(restored.id, running.id);
    EXPECT_FALSE(restored.isRunning());
    ASSERT_EQ(restored.sessions.size(), 1u);
    EXPECT_EQ(restored.sessions[0].start, kNow - 1200.0);
    EXPECT_EQ(restored.sessions[0].end, kNow);
    EXPECT_EQ(s.store.undoDescription(), std::nullopt);
    EXPECT_EQ(s.repo->lastSaved().tasks, s.store.tasks());
    EXPECT_EQ(s.store.undoLastDeletion(), "There is nothing to undo.");
}

TEST(TodayTaskStore, OnlyTheLatestDeletionCanBeUndone) {
    const TaskItem task = TaskBuilder("Review").session(kNow - 900.0, kNow - 600.0);
    test::StoreUnderTest s({task}, kNow, kNewYork);
    s.store.deleteSession(task.sessions[0].id, task.id);
    s.repo->failNextSaves(1);
    EXPECT_NE(s.store.undoLastDeletion(), std::nullopt);
    EXPECT_EQ(s.store.undoDescription(), "Delete work session");

    s.store.deleteTask(task.id, kNow);
    EXPECT_EQ(s.store.undoLastDeletion(), std::nullopt);

    EXPECT_TRUE(s.at(0).sessions.empty());
    EXPECT_EQ(s.store.undoLastDeletion(), "There is nothing to undo.");
}

TEST(TodayTaskStore, VoiceImportAddsOnlyCandidatesWithATitle) {
    test::StoreUnderTest s(std::vector<TaskItem>{}, kNow, kNewYork);
    const Instant tomorrow5pm = test::at(kNewYork, 2026, 3, 6, 17, 0);

    EXPECT_EQ(s.store.addVoiceTasks({{Uuid::random(), " \n", {}, {}}}, kNow, kNewYork),
              "Add at least one task title before saving.");
    EXPECT_EQ(s.repo->saveCount(), 1);

    EXPECT_EQ(s.store.addVoiceTasks(
                  {{Uuid::random(), " Buy milk ", {}, {}},
                   {Uuid::random(), "", {}, {}},
                   {Uuid::random(), "Call mom", tomorrow5pm, test::at(kNewYork, 2026, 3, 6)}},
                  kNow, kNewYork),
              std::nullopt);
    ASSERT_EQ(s.store.tasks().size(), 2u);
    EXPECT_EQ(s.at(0).title, "Buy milk");
    EXPECT_EQ(s.at(1).scheduledStart, tomorrow5pm);
    EXPECT_EQ(s.at(1).scheduledDay, std::nullopt);
    EXPECT_EQ(s.repo->saveCount(), 2);
}

TEST(TodayTaskStore, EditingADateOrEstimateLetsItsNotificationBeScheduledAgain) {
    TaskItem task = TaskBuilder("Call").estimate(30).reminder(kNow).endingAt(kNow + 3600.0);
    task.scheduledReminderDate = kNow;
    task.notifiedOverdueEnd = kNow + 3600.0;
    task.scheduledBudgetAlerts = {BudgetAlertKind::approaching};
    test::StoreUnderTest s({task}, kNow, kNewYork);

    TaskDraft draft = TaskDraft::from(task);
    draft.reminderDate = kNow + 60.0;
    s.store.updateTask(task.id, draft, kNewYork);
    EXPECT_EQ(s.at(0).scheduledReminderDate, std::nullopt);
    EXPECT_EQ(s.at(0).notifiedOverdueEnd, kNow + 3600.0);
    EXPECT_FALSE(s.at(0).scheduledBudgetAlerts.empty());

    draft.estimatedMinutes = 45;
    draft.scheduledEnd = kNow + 7200.0;
    s.store.updateTask(task.id, draft, kNewYork);
    EXPECT_EQ(s.at(0).notifiedOverdueEnd, std::nullopt);
    EXPECT_TRUE(s.at(0).scheduledBudgetAlerts.empty());

    const int saves = s.repo->saveCount();
    draft.title = "  ";
    s.store.updateTask(task.id, draft, kNewYork);
    EXPECT_EQ(s.at(0).title, "Call");
    EXPECT_EQ(s.repo->saveCount(), saves);
}

TEST(TodayTaskStore, CarryForwardKeepsTheWallClockTimeAcrossTheSpringForward) {
    // Saturday 7 March 2026; New York moves its clocks forward that night.
    const Instant saturday = test::at(kNewYork, 2026, 3, 7, 20, 0);
    TaskItem block = TaskBuilder("Gym")
                         .startingAt(test::at(kNewYork, 2026, 3, 7, 9, 0, 45))
                         .endingAt(test::at(kNewYork, 2026, 3, 7, 10, 0, 45))
                         .reminder(test::at(kNewYork, 2026, 3, 7, 8, 50, 45));
    block.scheduledReminderDate = block.reminderDate;
    const TaskItem planned = TaskBuilder("Taxes")
                                 .plannedFor(test::at(kNewYork, 2026, 3, 4))
                                 .reminder(test::at(kNewYork, 2026, 3, 4, 16, 0));
    test::StoreUnderTest s({block, planned}, saturday, kNewYork);

    s.store.carryForward(block.id, saturday, kNewYork);
    s.store.carryForward(planned.id, saturday, kNewYork);

    EXPECT_EQ(s.at(0).scheduledStart, test::at(kNewYork, 2026, 3, 8, 9, 0));
    EXPECT_EQ(s.at(0).scheduledEnd, test::at(kNewYork, 2026, 3, 8, 10, 0));
    EXPECT_EQ(s.at(0).reminderDate, test::at(kNewYork, 2026, 3, 8, 8, 50));
    EXPECT_EQ(s.at(0).scheduledReminderDate, std::nullopt);
    EXPECT_EQ(s.at(1).scheduledDay, test::at(kNewYork, 2026, 3, 8));
    EXPECT_EQ(s.at(1).reminderDate, test::at(kNewYork, 2026, 3, 8, 16, 0));
}

TEST(TodayTaskStore, DoTodayPlansTheTaskForTheDisplayedDay) {
    const TaskItem block =
        TaskBuilder("Standup").startingAt(test::at(kNewYork, 2026, 2, 24, 8, 15, 30));
    const TaskItem later = TaskBuilder("Read").plannedFor(test::at(kNewYork, 2026, 3, 12));
    test::StoreUnderTest s({block, later}, kNow, kNewYork);

    s.store.doToday(block.id, kNow, kNewYork);
    s.store.doToday(later.id, kNow, kNewYork);

    EXPECT_EQ(s.at(0).scheduledStart, test::at(kNewYork, 2026, 3, 5, 8, 15, 30));
    EXPECT_EQ(s.at(1).scheduledDay, test::at(kNewYork, 2026, 3, 5));
    EXPECT_EQ(s.store.taskSections(kNow, kNewYork).today.size(), 2u);
}

TEST(TodayTaskStore, CompletingADailyTaskLateAddsOneCopyForTomorrow) {
    const TaskItem daily = TaskBuilder("Stretch")
                               .repeating(TaskRecurrence::daily)
                               .startingAt(test::at(kNewYork, 2026, 3, 4, 9, 0))
                               .endingAt(test::at(kNewYork, 2026, 3, 4, 9, 20))
                               .pinned(1);
    test::StoreUnderTest s({daily}, kNow, kNewYork);

    s.store.completeTask(daily.id, kNow, kNewYork);
    s.store.toggleComplete(daily.id, kNow + 60.0, kNewYork);
    s.store.toggleComplete(daily.id, kNow + 120.0, kNewYork);

    ASSERT_EQ(s.store.tasks().size(), 2u);
    EXPECT_EQ(s.at(1).scheduledStart, test::at(kNewYork, 2026, 3, 6, 9, 0));
    EXPECT_EQ(s.at(1).scheduledEnd, test::at(kNewYork, 2026, 3, 6, 9, 20));
    EXPECT_EQ(s.at(1).createdAt, kNow);
    EXPECT_EQ(s.at(1).priorityRank, std::nullopt);
    EXPECT_EQ(s.at(0).completedAt, kNow + 120.0);
    EXPECT_EQ(s.store.unfinishedTaskCount(), 1u);
    EXPECT_EQ(s.repo->lastSaved().tasks, s.store.tasks());
}

} // namespace
} // namespace daywyn
