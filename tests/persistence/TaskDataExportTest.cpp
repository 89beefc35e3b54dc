#include "persistence/TaskDataExport.h"

#include "RepositoryTestSupport.h"
#include "base/Json.h"
#include "base/JsonRead.h"
#include "model/RecordJson.h"
#include "persistence/AtomicFile.h"
#include "support/FakeFileSystem.h"

namespace daywyn::test {

namespace {

// The export's two lists, read back through the program's own reader.
void readExportLists(const std::string& json, std::vector<TaskItem>& tasks,
                     std::vector<DailyReport>& reports) {
    JsonInput input(json);
    JsonDecoder d;
    simdjson::ondemand::document document;
    JsonValue root;
    ASSERT_TRUE(input.iterate(d, document));
    ASSERT_TRUE(d.check(document.get_value().get(root)));
    ASSERT_TRUE(readJsonObject(d, root, [&](std::string_view key, JsonValue& value) {
        std::string_view text;
        simdjson::ondemand::array list;
        if (key != "tasks" && key != "reports") {
            return skipJson(d, value);
        }
        if (value.get_array().get(list) != simdjson::SUCCESS || list.raw_json().get(text)) {
            return false;
        }
        return (key == "tasks" ? decodeTaskList(text, DateCoding::iso8601, tasks)
                               : decodeReportList(text, DateCoding::iso8601, reports))
            .ok();
    })) << d.error();
    EXPECT_TRUE(jsonAtEnd(document));
}

const char* const kHeader = "id,title,completed,created_at,completed_at,scheduled_day,"
                            "scheduled_start,scheduled_end,estimate_minutes,actual_seconds,"
                            "priority,checklist\r\n";

Instant exportInstant() {
    return at(newYork(), 2026, 11, 1, 1, 30); // the first of the two 01:30s
}

} // namespace

TEST(TaskDataExport, AnEmptyStoreIsJustTheHeader) {
    const TaskDataExport empty{1, exportInstant(), {}, {}};
    EXPECT_EQ(empty.csv(), kHeader);
}

TEST(TaskDataExport, KeepsSpreadsheetsFromRunningCellsAsFormulas) {
    const std::pair<std::string, std::string> cases[] = {
        {"=SUM(A1)", "\"'=SUM(A1)\""},
        {" +1 call", "\"' +1 call\""},
        {"Say \"hi\"", "\"Say \"\"hi\"\"\""},
        {"-5", "\"'-5\""},
        {"@home", "\"'@home\""},
        {"\n=1", "\"'\n=1\""},
        {"\tindented", "\"'\tindented\""},
        {"\rreturn", "\"'\rreturn\""},
        {" \t ", "\" \t \""},
        {"", "\"\""},
        {"a=b", "\"a=b\""},
    };
    for (const auto& [value, cell] : cases) {
        SCOPED_TRACE(value);
        EXPECT_EQ(csvCell(value), cell);
    }
}

TEST(TaskDataExport, WritesOneQuotedRowPerTaskWithTheTimeWorkedSoFar) {
    // given a pinned task with a checklist, 300 s of sessions and a timer running for
    // 10 minutes, and a finished task whose clock went back
    const Calendar ny = newYork();
    const Instant now = exportInstant();
    const TaskItem running = TaskBuilder("Plan, \"Q4\"")
                                 .id(*Uuid::parse("e621e1f8-c36c-495a-93fc-0c247a3e6e5f"))
                                 .createdAt(at(ny, 2026, 10, 31, 20))
                                 .plannedFor(at(ny, 2026, 11, 1))
                                 .estimate(-5)
                                 .session(now - 3600, now - 3300)
                                 .running(now - 600)
                                 .checklistItem("Milk", true)
                                 .checklistItem("Eggs")
                                 .pinned(1);
    const TaskItem done = TaskBuilder("Done")
                              .id(*Uuid::parse("00000000-0000-4000-8000-00000000000a"))
                              .createdAt(at(ny, 2026, 10, 30, 9))
                              .completedAt(at(ny, 2026, 10, 30, 10))
                              .startingAt(at(ny, 2026, 10, 30, 9))
                              .endingAt(at(ny, 2026, 10, 30, 9, 30))
                              .session(now, now - 50)
                              .running(now + 60);
    // when it is exported
    const std::string csv = TaskDataExport{1, now, {running, done}, {}}.csv();
    // then
    EXPECT_EQ(csv, std::string(kHeader) +
                       "\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\",\"Plan, \"\"Q4\"\"\",\"false\","
                       "\"2026-11-01T00:00:00Z\",\"\",\"2026-11-01T04:00:00Z\",\"\",\"\",\"'-5\","
                       "\"900.0\",\"1\",\"[x] Milk\n[ ] Eggs\"\r\n"
                       "\"00000000-0000-4000-8000-00000000000A\",\"Done\",\"true\","
                       "\"2026-10-30T13:00:00Z\",\"2026-10-30T14:00:00Z\",\"\","
                       "\"2026-10-30T13:00:00Z\",\"2026-10-30T13:30:00Z\",\"\",\"0.0\",\"\","
                       "\"\"\r\n");
}

TEST(TaskDataExport, JsonHoldsTasksAndReportsInStoreOrderLikeTheStateFile) {
    // given a store
    PersistedState state = everyFieldState();
    const TaskDataExport data{1, exportInstant() + 0.4, state.tasks, state.reports};
    // when exported as JSON
    const std::string json = data.json();
    // then the keys are sorted, dates whole seconds, and everything reads back in order
    EXPECT_EQ(json.rfind("{\n  \"exportedAt\": \"2026-11-01T05:30:00Z\",\n  \"reports\": [", 0),
              0u);
    EXPECT_LT(json.find("\n  \"schemaVersion\": 1,\n"), json.find("\n  \"tasks\": ["));
    std::vector<TaskItem> tasks;
    std::vector<DailyReport> reports;
    readExportLists(json, tasks, reports);
    EXPECT_EQ(tasks, state.tasks);
    EXPECT_EQ(reports, state.reports);
    const std::string csv = data.csv();
    EXPECT_LT(csv.find(state.tasks[0].id.text()), csv.find(state.tasks[1].id.text()));
}

TEST(TaskDataExport, SavesAtomicallyAndSaysWhereOrWhy) {
    // given an earlier export in a folder
    const auto folder = std::filesystem::path(stateFilePath()).parent_path().parent_path();
    const std::string path = (folder / "Daywyn-export.csv").string();
    PosixFileSystem posix;
    ASSERT_TRUE(writeFileAtomically(posix, path, "old").ok());
    // when the next export cannot be renamed into place
    FakeFileSystem failing;
    failing.failNext(FakeFileSystem::Step::rename, EACCES);
    auto failed = writeFileAtomically(failing, path, "new");
    // then the old export stays, no temporary file is left and the reason is told
    ASSERT_FALSE(failed.ok());
    EXPECT_EQ(exportFailedMessage(failed.error()), "Export failed: Permission denied.");
    EXPECT_EQ(readBytes(path), "old");
    EXPECT_EQ(folderContents(folder), std::vector<std::string>{"Daywyn-export.csv"});
    // and a working disk replaces it
    ASSERT_TRUE(writeFileAtomically(posix, path, "new").ok());
    EXPECT_EQ(readBytes(path), "new");
    EXPECT_EQ(exportSavedMessage(path), "Export saved to Daywyn-export.csv.");
}

} // namespace daywyn::test
