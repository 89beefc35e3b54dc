#include "sync/SyncState.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "support/FakeFileSystem.h"
#include "support/TaskBuilder.h"
#include "sync/SyncStateFile.h"

namespace daywyn::test {

using namespace sync;

namespace {

const Calendar ny = newYork();

SyncState everyFieldState() {
    SyncState state;
    state.account =
        SyncAccount{"https://dav.example.com/", "ana", "https://dav.example.com/ana/t/", "Tasks"};
    state.syncToken = "http://radicale.org/ns/sync/abc";
    const TaskItem task = TaskBuilder("Synced").createdAt(at(ny, 2026, 3, 1)).estimate(10);
    state.synced[task.id] = {task, "/ana/t/1.ics", "\"e1\"",
                             "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n"};
    state.localChanges[task.id] = {task.id, at(ny, 2026, 3, 2), {{"title", at(ny, 2026, 3, 2, 9)}}};
    state.conflicts.push_back(
        {at(ny, 2026, 3, 3), task.id, "Synced", "title", "A", "B", ConflictSide::remote});
    state.lastPassAt = at(ny, 2026, 3, 4);
    state.lastError = "The sync server did not answer.";
    state.lastSummary = "Sent 1 change.";
    return state;
}

// A fresh folder inside the run's own state folder.
std::string scratch(const std::string& name) {
    const std::string folder = std::string(std::getenv("XDG_STATE_HOME")) + "/" + name;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

std::string readText(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace

TEST(SyncState, NotesEveryAddedChangedAndRemovedTask) {
    const TaskItem kept = TaskBuilder("Kept").createdAt(at(ny, 2026, 3, 1));
    const TaskItem edited = TaskBuilder("Edited").createdAt(at(ny, 2026, 3, 1));
    const TaskItem removed = TaskBuilder("Removed").createdAt(at(ny, 2026, 3, 1));
    const TaskItem added = TaskBuilder("Added").createdAt(at(ny, 2026, 3, 2));
    TaskItem editedAfter = edited;
    editedAfter.title = "Edited again";
    SyncState state;
    const Instant now = at(ny, 2026, 3, 2, 10);
    noteLocalChanges(state, {kept, edited, removed}, {kept, editedAfter, added}, now);
    EXPECT_EQ(state.localChanges.size(), 3u);
    EXPECT_FALSE(state.localChanges.contains(kept.id));
    for (const auto* task : {&edited, &removed, &added}) {
        ASSERT_TRUE(state.localChanges.contains(task->id)) << task->title;
        EXPECT_EQ(state.localChanges[task->id].changedAt, now);
    }
}

TEST(SyncState, KeepsEachFieldsLatestEditAndWhenTheTaskWasFirstNoted) {
    const TaskItem task = TaskBuilder("Call the bank").createdAt(at(ny, 2026, 3, 1)).estimate(20);
    SyncState state;
    TaskItem renamed = task;
    renamed.title = "Call the bank at noon";
    noteLocalChanges(state, {task}, {renamed}, at(ny, 2026, 3, 9, 10));
    TaskItem estimated = renamed;
    estimated.estimatedMinutes = 30;
    noteLocalChanges(state, {renamed}, {estimated}, at(ny, 2026, 3, 9, 12));
    TaskItem renamedAgain = estimated;
    renamedAgain.title = "Call the bank at one";
    noteLocalChanges(state, {estimated}, {renamedAgain}, at(ny, 2026, 3, 9, 13));

    const LocalChange& change = state.localChanges.at(task.id);
    EXPECT_EQ(change.changedAt, at(ny, 2026, 3, 9, 10));
    EXPECT_EQ(change.fields, (FieldTimes{{"estimatedMinutes", at(ny, 2026, 3, 9, 12)},
                                         {"title", at(ny, 2026, 3, 9, 13)}}));
    EXPECT_EQ(change.latest(), at(ny, 2026, 3, 9, 13));
    EXPECT_EQ(change.fieldChangedAt("estimatedMinutes"), at(ny, 2026, 3, 9, 12));
    EXPECT_EQ(change.fieldChangedAt("scheduledStart"), at(ny, 2026, 3, 9, 10));

    // A deletion is the task's latest change.
    noteLocalChanges(state, {renamedAgain}, {}, at(ny, 2026, 3, 9, 14));
    EXPECT_EQ(state.localChanges.at(task.id).changedAt, at(ny, 2026, 3, 9, 14));
}

TEST(SyncStateFile, ReadsAStateWrittenBeforeFieldsHadTimesOfTheirOwn) {
    const std::string id = "8E4C5A4E-3B1F-4C1E-9F3A-2C7D6B5A4F3E";
    const std::string older = R"({
  "conflicts": [],
  "localChanges": [{"changedAt": "2026-03-09T15:00:00Z", "taskId": ")" +
                              id + R"("}],
  "syncToken": "t1",
  "synced": []
})";
    const auto decoded = decodeSyncState(older);
    ASSERT_TRUE(decoded.ok()) << decoded.error();
    const auto uuid = Uuid::parse(id);
    ASSERT_TRUE(uuid.has_value());
    const LocalChange& change = decoded->localChanges.at(*uuid);
    EXPECT_TRUE(change.fields.empty());
    EXPECT_EQ(isoText(change.fieldChangedAt("title")), "2026-03-09T15:00:00Z");
    EXPECT_EQ(decoded->syncToken, "t1");
    // Written again, it reads back the same, now with its (empty) field times.
    const auto again = decodeSyncState(encodeSyncState(decoded.value()));
    ASSERT_TRUE(again.ok()) << again.error();
    EXPECT_EQ(again.value(), decoded.value());

    const auto wrongTime =
        decodeSyncState(R"({"localChanges": [{"changedAt": "2026-03-09T15:00:00Z", "taskId": ")" +
                        id + R"(", "fields": {"title": "yesterday"}}]})");
    EXPECT_FALSE(wrongTime.ok());
}

TEST(SyncStateFile, KeepsEveryFieldInItsOwnFileUnderTheStateFolder) {
    const auto path = SyncStateFile::defaultPath();
    ASSERT_TRUE(path.ok());
    const char* stateHome = std::getenv("XDG_STATE_HOME");
    ASSERT_NE(stateHome, nullptr);
    EXPECT_EQ(path.value(), std::string(stateHome) + "/Daywyn/sync/state.json");
    EXPECT_EQ(SyncStateFile::defaultPath([](const char* name) -> const char* {
                  return std::string_view(name) == "HOME" ? "/home/ana" : "relative";
              }).value(),
              "/home/ana/.local/state/Daywyn/sync/state.json");

    SyncStateFile file(path.value(), std::make_shared<FakeFileSystem>());
    const SyncState state = everyFieldState();
    ASSERT_TRUE(file.save(state).ok());
    EXPECT_EQ(std::filesystem::status(path.value()).permissions() & std::filesystem::perms::all,
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    const auto loaded = file.load(at(ny, 2026, 3, 5));
    ASSERT_TRUE(loaded.ok()) << loaded.error();
    EXPECT_EQ(loaded->state, state);
    EXPECT_TRUE(loaded->notice.empty());
}

TEST(SyncStateFile, StartsAfreshWithoutAFile) {
    SyncStateFile file(scratch("none") + "/state.json", std::make_shared<FakeFileSystem>());
    const auto loaded = file.load(at(ny, 2026, 3, 5));
    ASSERT_TRUE(loaded.ok());
    EXPECT_EQ(loaded->state, SyncState{});
}

TEST(SyncStateFile, MovesAnUnreadableFileAsideAndSaysSo) {
    const std::string folder = scratch("corrupt-sync");
    const std::string path = folder + "/state.json";
    std::ofstream(path) << R"({"synced": [{"href": 3}]})";
    SyncStateFile file(path, std::make_shared<FakeFileSystem>());
    const auto loaded = file.load(at(utc(), 2026, 3, 5, 8, 15));
    ASSERT_TRUE(loaded.ok()) << loaded.error();
    EXPECT_EQ(loaded->state, SyncState{});
    EXPECT_EQ(loaded->notice, "Daywyn could not read its sync state and starts afresh; the old "
                              "one was kept as state-corrupt-2026-03-05T08-15-00Z.json.");
    EXPECT_EQ(readText(folder + "/state-corrupt-2026-03-05T08-15-00Z.json"),
              R"({"synced": [{"href": 3}]})");
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(SyncStateFile, LeavesAnUnreadableFileInPlaceWhenItCannotBeMoved) {
    const std::string folder = scratch("stuck-sync");
    const std::string path = folder + "/state.json";
    std::ofstream(path) << "not json";
    auto fs = std::make_shared<FakeFileSystem>();
    fs->failNext(FakeFileSystem::Step::move, EACCES);
    SyncStateFile file(path, fs);
    const auto loaded = file.load(at(utc(), 2026, 3, 5, 8, 15));
    ASSERT_FALSE(loaded.ok());
    EXPECT_NE(loaded.error().find("could not move it aside: Permission denied"), std::string::npos)
        << loaded.error();
    EXPECT_EQ(readText(path), "not json");
}

TEST(SyncStateFile, SaysWhySavingFailedAndKeepsTheOldFile) {
    const std::string path = scratch("full-sync") + "/state.json";
    auto fs = std::make_shared<FakeFileSystem>();
    SyncStateFile file(path, fs);
    ASSERT_TRUE(file.save(SyncState{}).ok());
    fs->limitSpace(10);
    const auto saved = file.save(everyFieldState());
    ASSERT_FALSE(saved.ok());
    EXPECT_EQ(saved.error().rfind("Daywyn could not save its sync state: ", 0), 0u);
    EXPECT_EQ(file.load(Instant{})->state, SyncState{});
}

} // namespace daywyn::test
