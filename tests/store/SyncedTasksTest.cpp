// The store taking in what a sync pass brought back, merged with what the user did
// while it ran.
#include <gtest/gtest.h>

#include "store/StoreUnderTest.h"
#include "sync/SyncPass.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

const Calendar kBerlin = test::berlin();
const Instant kNow = test::at(kBerlin, 2026, 3, 4, 9, 0);

TaskDraft draftTitled(std::string title) {
    TaskDraft draft;
    draft.title = std::move(title);
    return draft;
}

TEST(StoreSyncedTasks, ThePassesChangesArriveAndEditsMadeMeanwhileStay) {
    const TaskItem rent = TaskBuilder("Pay rent").createdAt(kNow).build();
    const TaskItem bank = TaskBuilder("Call the bank").createdAt(kNow).build();
    const TaskItem gone = TaskBuilder("Old idea").createdAt(kNow).build();
    test::StoreUnderTest s({rent, bank, gone}, kNow, kBerlin);
    const std::vector<TaskItem> snapshot = s.store.tasks();

    // The pass: rent renamed and bank re-estimated on the server, the old idea deleted
    // there, a task from the phone added.
    std::vector<TaskItem> synced = snapshot;
    synced[0].title = "Pay rent by noon";
    synced[1].estimatedMinutes = 30;
    synced.erase(synced.begin() + 2);
    const TaskItem phone = TaskBuilder("From the phone").createdAt(kNow).build();
    synced.push_back(phone);

    // Meanwhile, here: bank renamed, and a task added.
    TaskDraft draft = TaskDraft::from(*s.store.task(bank.id));
    draft.title = "Call the bank at 10";
    s.store.updateTask(bank.id, draft, kBerlin);
    ASSERT_FALSE(s.store.addTaskReliably(draftTitled("Typed meanwhile"), kNow, kBerlin));
    const int changesBefore = s.changes;

    ASSERT_EQ(
        s.store.replaceWithSyncedTasks(sync::applySyncResult(s.store.tasks(), snapshot, synced)),
        std::nullopt);
    EXPECT_EQ(s.store.task(rent.id)->title, "Pay rent by noon");
    // Edited here meanwhile: as the user left it (the next pass merges the estimate).
    EXPECT_EQ(s.store.task(bank.id)->title, "Call the bank at 10");
    EXPECT_EQ(s.store.task(gone.id), nullptr);
    ASSERT_NE(s.store.task(phone.id), nullptr);
    EXPECT_EQ(s.store.tasks().size(), 4U);
    // Saved, and everyone told, once.
    EXPECT_EQ(s.repo->lastSaved().tasks, s.store.tasks());
    EXPECT_EQ(s.changes, changesBefore + 1);

    // A result that changes nothing writes nothing.
    const int saves = s.repo->saveCount();
    EXPECT_EQ(s.store.replaceWithSyncedTasks(s.store.tasks()), std::nullopt);
    EXPECT_EQ(s.repo->saveCount(), saves);
}

TEST(StoreSyncedTasks, PinsThatCollideAcrossMachinesKeepOneHolderPerRank) {
    const TaskItem here = TaskBuilder("Pinned here").createdAt(kNow).pinned(1).build();
    const TaskItem there = TaskBuilder("Pinned there").createdAt(kNow).build();
    test::StoreUnderTest s({here, there}, kNow, kBerlin);
    std::vector<TaskItem> synced = s.store.tasks();
    synced[1].priorityRank = 1;

    ASSERT_EQ(s.store.replaceWithSyncedTasks(synced), std::nullopt);
    const int holders = static_cast<int>(s.store.task(here.id)->priorityRank == 1) +
                        static_cast<int>(s.store.task(there.id)->priorityRank == 1);
    EXPECT_EQ(holders, 1);
}

TEST(StoreSyncedTasks, AFailedSaveLeavesTheListAsItWasAndSaysWhy) {
    const TaskItem task = TaskBuilder("Pay rent").createdAt(kNow).build();
    test::StoreUnderTest s({task}, kNow, kBerlin);
    s.store.setFocusedTaskID(task.id);
    const std::vector<TaskItem> before = s.store.tasks();
    // The server deleted the focused task.
    s.repo->failNextSaves(1);
    const auto failed = s.store.replaceWithSyncedTasks({});
    ASSERT_TRUE(failed);
    EXPECT_NE(failed->find("No space left on device"), std::string::npos);
    EXPECT_EQ(s.store.tasks(), before);
    EXPECT_EQ(s.store.focusedTaskID(), task.id);

    ASSERT_EQ(s.store.replaceWithSyncedTasks({}), std::nullopt);
    EXPECT_TRUE(s.store.tasks().empty());
    EXPECT_EQ(s.store.focusedTaskID(), std::nullopt);
}

} // namespace
} // namespace daywyn
