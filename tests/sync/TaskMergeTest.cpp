#include "sync/TaskMerge.h"

#include <functional>

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn::test {

using sync::ConflictSide;
using sync::mergeTask;

namespace {

const Calendar ny = newYork();
const Instant earlier = at(ny, 2026, 3, 9, 9);
const Instant later = at(ny, 2026, 3, 9, 10);

TaskItem baseTask() {
    return TaskBuilder("Call the bank")
        .createdAt(at(ny, 2026, 3, 1))
        .estimate(20)
        .startingAt(at(ny, 2026, 3, 9, 14))
        .checklistItem("Find the card");
}

using Edit = std::function<void(TaskItem&)>;

struct Case {
    const char* name;
    Edit local;
    Edit remote;
    // Which side edited later.
    bool localLater;
    Edit expected;
    // Fields that conflict, with the side that lost.
    std::vector<std::pair<std::string, ConflictSide>> conflicts;
};

} // namespace

TEST(TaskMerge, SettlesEachFieldAgainstTheLastSyncedCopy) {
    const auto none = [](TaskItem&) {
    };
    const auto title = [](std::string text) {
        return [=](TaskItem& t) {
            t.title = text;
        };
    };
    const auto estimate = [](long long minutes) {
        return [=](TaskItem& t) {
            t.estimatedMinutes = minutes;
        };
    };
    const auto complete = [](TaskItem& t) {
        t.isComplete = true;
        t.completedAt = at(ny, 2026, 3, 9, 11);
    };
    // What each machine scheduled itself: never merged, always this machine's.
    const auto bookkeeping = [](int hour) {
        return [=](TaskItem& t) {
            t.scheduledReminderDate = at(ny, 2026, 3, 9, hour);
            t.scheduledBudgetAlerts = {BudgetAlertKind::approaching};
            t.notifiedOverdueEnd = at(ny, 2026, 3, 9, hour + 1);
        };
    };
    const Case cases[] = {
        {"untouched", none, none, false, none, {}},
        {"bookkeeping there only", none, bookkeeping(13), true, none, {}},
        {"bookkeeping on both", bookkeeping(12), bookkeeping(13), false, bookkeeping(12), {}},
        {"bookkeeping here, renamed there",
         bookkeeping(12),
         title("Bank"),
         false,
         [&](TaskItem& t) {
             bookkeeping(12)(t);
             t.title = "Bank";
         },
         {}},
        {"here only", title("Call the bank today"), none, false, title("Call the bank today"), {}},
        {"there only", none, title("Call the bank now"), true, title("Call the bank now"), {}},
        {"different fields",
         title("Call the bank today"),
         estimate(30),
         false,
         [&](TaskItem& t) {
             t.title = "Call the bank today";
             t.estimatedMinutes = 30;
         },
         {}},
        {"same field alike", estimate(30), estimate(30), false, estimate(30), {}},
        {"same field, here later",
         estimate(30),
         estimate(45),
         true,
         estimate(30),
         {{"estimatedMinutes", ConflictSide::remote}}},
        {"same field, there later",
         estimate(30),
         estimate(45),
         false,
         estimate(45),
         {{"estimatedMinutes", ConflictSide::local}}},
        {"cleared there, edited here later",
         estimate(30),
         [](TaskItem& t) { t.estimatedMinutes.reset(); },
         true,
         estimate(30),
         {{"estimatedMinutes", ConflictSide::remote}}},
        {"completed here, renamed there",
         complete,
         title("Bank"),
         false,
         [&](TaskItem& t) {
             complete(t);
             t.title = "Bank";
         },
         {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const TaskItem base = baseTask();
        TaskItem local = base;
        TaskItem remote = base;
        TaskItem expected = base;
        c.local(local);
        c.remote(remote);
        c.expected(expected);
        const auto merged = mergeTask(&base, local, c.localLater ? later : earlier, remote,
                                      c.localLater ? earlier : later);
        EXPECT_EQ(merged.task, expected);
        std::vector<std::pair<std::string, ConflictSide>> conflicts;
        for (const auto& conflict : merged.conflicts) {
            conflicts.emplace_back(conflict.field, conflict.lost);
        }
        EXPECT_EQ(conflicts, c.conflicts);
        for (const auto field : sync::kMachineLocalFields) {
            EXPECT_FALSE(merged.fieldTimes.contains(field)) << field;
        }
    }
}

// Each side's fields edited at times of their own: the same field edited on both keeps
// the later edit of that field, whichever side edited the task last.
TEST(TaskMerge, DecidesEachConflictByTheTimesOfThatField) {
    const auto hour = [](int h) {
        return at(ny, 2026, 3, 9, h);
    };
    struct FieldCase {
        const char* name;
        sync::EditTimes localEdits;
        sync::EditTimes remoteEdits;
        std::string title;
        long long estimate;
        std::vector<std::pair<std::string, ConflictSide>> conflicts;
    };
    // Here: the title at `title`, the estimate at `estimate`; there the same two fields.
    const FieldCase cases[] = {
        {"title 10:00 and estimate 12:00 here, both 11:00 there (another program)",
         {hour(12), {{"title", hour(10)}, {"estimatedMinutes", hour(12)}}},
         {hour(11)},
         "Visit the bank",
         30,
         {{"estimatedMinutes", ConflictSide::remote}, {"title", ConflictSide::local}}},
        {"title 10:00 here; there title 9:00 and estimate 13:00 (Daywyn's times)",
         {hour(10), {{"title", hour(10)}, {"estimatedMinutes", hour(8)}}},
         {hour(13), {{"title", hour(9)}, {"estimatedMinutes", hour(13)}}},
         "Call the bank at noon",
         45,
         {{"estimatedMinutes", ConflictSide::local}, {"title", ConflictSide::remote}}},
        {"fields without their own time fall back to the task's",
         {hour(10), {{"title", hour(14)}}},
         {hour(11), {{"title", hour(13)}}},
         "Call the bank at noon",
         45,
         {{"estimatedMinutes", ConflictSide::local}, {"title", ConflictSide::remote}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const TaskItem base = baseTask();
        TaskItem local = base;
        local.title = "Call the bank at noon";
        local.estimatedMinutes = 30;
        TaskItem remote = base;
        remote.title = "Visit the bank";
        remote.estimatedMinutes = 45;
        const auto merged = mergeTask(&base, local, c.localEdits, remote, c.remoteEdits);
        EXPECT_EQ(merged.task.title, c.title);
        EXPECT_EQ(merged.task.estimatedMinutes, c.estimate);
        std::vector<std::pair<std::string, ConflictSide>> conflicts;
        for (const auto& conflict : merged.conflicts) {
            conflicts.emplace_back(conflict.field, conflict.lost);
        }
        EXPECT_EQ(conflicts, c.conflicts);
        // The merged fields carry the time of the edit they were taken from.
        const bool localTitle = c.title == local.title;
        EXPECT_EQ(merged.fieldTimes.at("title"),
                  localTitle ? c.localEdits.of("title") : c.remoteEdits.of("title"));
        const bool localEstimate = c.estimate == 30;
        EXPECT_EQ(merged.fieldTimes.at("estimatedMinutes"),
                  localEstimate ? c.localEdits.of("estimatedMinutes")
                                : c.remoteEdits.of("estimatedMinutes"));
        EXPECT_EQ(merged.fieldTimes.size(), 2u) << "fields left as the base carry no time";
    }
}

TEST(TaskMerge, GivesEachFieldTheTimeOfTheSideItCameFrom) {
    const TaskItem base = baseTask();
    TaskItem local = base;
    TaskItem remote = base;
    local.title = "Call the bank today";
    remote.estimatedMinutes = 5;
    local.sessions.push_back({Uuid::random(), at(ny, 2026, 3, 9, 8), at(ny, 2026, 3, 9, 9)});
    remote.sessions.push_back({Uuid::random(), at(ny, 2026, 3, 9, 12), at(ny, 2026, 3, 9, 13)});
    const auto merged =
        mergeTask(&base, local, {earlier, {{"sessions", later + 3600}}}, remote, later);
    EXPECT_EQ(merged.fieldTimes,
              (sync::FieldTimes{
                  {"estimatedMinutes", later}, {"sessions", later + 3600}, {"title", earlier}}));
    EXPECT_EQ(merged.task.sessions.size(), 2u);
}

TEST(TaskMerge, LogsBothValuesOfAConflictAsText) {
    const TaskItem base = baseTask();
    TaskItem local = base;
    TaskItem remote = base;
    local.title = "Call the bank at noon";
    remote.title = "Visit the bank";
    remote.scheduledStart = at(ny, 2026, 3, 9, 16);
    local.scheduledStart.reset();
    const auto merged = mergeTask(&base, local, earlier, remote, later);
    ASSERT_EQ(merged.conflicts.size(), 2u);
    EXPECT_EQ(merged.conflicts[0].field, "scheduledStart");
    EXPECT_EQ(merged.conflicts[0].keptValue, "2026-03-09T20:00:00Z");
    EXPECT_EQ(merged.conflicts[0].setAsideValue, "none");
    EXPECT_EQ(merged.conflicts[1].field, "title");
    EXPECT_EQ(merged.conflicts[1].keptValue, "Visit the bank");
    EXPECT_EQ(merged.conflicts[1].setAsideValue, "Call the bank at noon");
}

TEST(TaskMerge, KeepsWorkAndChecklistItemsAddedOnBothSides) {
    const TaskItem base = baseTask();
    TaskItem local = base;
    TaskItem remote = base;
    local.sessions.push_back({Uuid::random(), at(ny, 2026, 3, 9, 8), at(ny, 2026, 3, 9, 9)});
    remote.sessions.push_back({Uuid::random(), at(ny, 2026, 3, 9, 12), at(ny, 2026, 3, 9, 13)});
    local.checklist->push_back({Uuid::random(), "Write down the number", false});
    (*remote.checklist)[0].isComplete = true;
    remote.checklist->push_back({Uuid::random(), "Ask about fees", false});

    const auto merged = mergeTask(&base, local, earlier, remote, later);
    EXPECT_TRUE(merged.conflicts.empty());
    ASSERT_EQ(merged.task.sessions.size(), 2u);
    EXPECT_EQ(merged.task.sessions[0], local.sessions[0]);
    EXPECT_EQ(merged.task.sessions[1], remote.sessions[0]);
    ASSERT_EQ(merged.task.checklist->size(), 3u);
    EXPECT_TRUE((*merged.task.checklist)[0].isComplete);
    EXPECT_EQ((*merged.task.checklist)[1].title, "Write down the number");
    EXPECT_EQ((*merged.task.checklist)[2].title, "Ask about fees");
}

TEST(TaskMerge, DropsAnItemRemovedOnOneSideUnlessTheOtherEditedIt) {
    TaskItem base = baseTask();
    base.checklist->push_back({Uuid::random(), "Second", false});
    TaskItem local = base;
    TaskItem remote = base;
    local.checklist->erase(local.checklist->begin());      // removed here
    (*remote.checklist)[1].title = "Second, edited there"; // edited there
    local.checklist->erase(local.checklist->begin());      // removed here as well
    const auto merged = mergeTask(&base, local, later, remote, earlier);
    ASSERT_EQ(merged.task.checklist->size(), 1u);
    EXPECT_EQ((*merged.task.checklist)[0].title, "Second, edited there");
}

TEST(TaskMerge, TreatsATaskCreatedOnBothSidesAsAConflictOnEachDifference) {
    const TaskItem local = TaskBuilder("Plan trip").createdAt(earlier).estimate(60);
    TaskItem remote = local;
    remote.title = "Plan the trip";
    remote.createdAt = later;
    const auto merged = mergeTask(nullptr, local, earlier, remote, later);
    EXPECT_EQ(merged.task.title, "Plan the trip");
    EXPECT_EQ(merged.task.estimatedMinutes, 60);
    EXPECT_EQ(merged.conflicts.size(), 2u);
}

TEST(TaskMerge, IgnoresFractionsOfSecondsTheStateFileDoesNotKeep) {
    const TaskItem base = baseTask();
    TaskItem local = base;
    local.createdAt += 0.75;
    TaskItem remote = base;
    remote.title = "Renamed";
    const auto merged = mergeTask(&base, local, later, remote, earlier);
    EXPECT_TRUE(merged.conflicts.empty());
    EXPECT_EQ(merged.task.title, "Renamed");
    EXPECT_TRUE(sync::sameAtWholeSeconds(local, base));
    EXPECT_EQ(sync::atWholeSeconds(local), base);
}

} // namespace daywyn::test
