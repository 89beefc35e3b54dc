#include "store/AddFromLine.h"

#include <gtest/gtest.h>

#include "store/StoreUnderTest.h"

namespace daywyn {
namespace {

const Calendar kBerlin = test::berlin();
const Instant kNow = test::at(kBerlin, 2026, 3, 4, 8, 15);

TEST(AddFromLine, ReadsTheLineOnceAndReturnsTheSavedTask) {
    test::StoreUnderTest s(std::vector<TaskItem>{}, kNow, kBerlin);
    auto added = addFromLine(s.store, "Call Ama tomorrow at 10 for 20 minutes", kNow, kBerlin);
    ASSERT_TRUE(added.ok()) << added.error();
    EXPECT_EQ(added.value().task, s.store.tasks().back());
    EXPECT_EQ(added.value().task.title, "Call Ama");
    EXPECT_EQ(added.value().task.scheduledStart, test::at(kBerlin, 2026, 3, 5, 10));
    EXPECT_TRUE(added.value().draft.hasEstimate);
    EXPECT_EQ(s.repo->lastSaved().tasks.back(), added.value().task);
}

TEST(AddFromLine, RefusesALineWithoutATitleAndKeepsNothingWhenTheSaveFails) {
    test::StoreUnderTest s(std::vector<TaskItem>{}, kNow, kBerlin);
    const int saves = s.repo->saveCount();
    auto empty = addFromLine(s.store, "tomorrow at 9", kNow, kBerlin);
    ASSERT_FALSE(empty.ok());
    EXPECT_EQ(empty.error(), "Give the task a title.");
    EXPECT_EQ(s.repo->saveCount(), saves);

    s.repo->failNextSaves(1);
    auto failed = addFromLine(s.store, "Pay rent", kNow, kBerlin);
    ASSERT_FALSE(failed.ok());
    EXPECT_EQ(failed.error(), "Daywyn could not save changes: No space left on device");
    EXPECT_TRUE(s.store.tasks().empty());
}

} // namespace
} // namespace daywyn
