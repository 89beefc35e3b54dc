// The real daywyn program against a temporary data folder, as a user runs it.
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "base/Json.h"
#include "support/Process.h"

namespace daywyn {
namespace {

namespace fs = std::filesystem;

class DaywynCommand : public ::testing::Test {
protected:
    std::string dataHome = test::makeTempFolder();
    std::string folder = dataHome + "/Daywyn";
    std::string stateFile = folder + "/daywyn.json";

    test::ProcessResult daywyn(std::vector<std::string> args) {
        args.insert(args.begin(), DAYWYN_BINARY_PATH);
        return test::runProcess(args, {{"XDG_DATA_HOME", dataHome},
                                       {"DAYWYN_NOW", "2026-03-04T08:15:00Z"},
                                       {"TZ", "Europe/Berlin"}});
    }

    rapidjson::Document state() {
        auto document = parseJson(test::readFile(stateFile));
        EXPECT_TRUE(document.ok());
        return std::move(document).value();
    }

    // The task with that title in the state file, or null.
    const rapidjson::Value* taskTitled(const rapidjson::Document& doc, const char* title) {
        for (const auto& task : doc["tasks"].GetArray()) {
            if (std::string(task["title"].GetString()) == title) {
                return &task;
            }
        }
        return nullptr;
    }
};

TEST_F(DaywynCommand, AddSavesTheTaskAndSaysWhatItRecognised) {
    const auto result = daywyn({"add", "Call Ama tomorrow at 10 for 20 minutes"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "Added Call Ama to Daywyn.\n"
                          "Recognised day tomorrow, start 10:00 and estimate 20 min.\n");
    const auto doc = state();
    const auto* task = taskTitled(doc, "Call Ama");
    ASSERT_NE(task, nullptr);
    EXPECT_STREQ((*task)["scheduledStart"].GetString(), "2026-03-05T09:00:00Z");
    EXPECT_EQ((*task)["estimatedMinutes"].GetInt(), 20);
    EXPECT_EQ(fs::status(stateFile).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(DaywynCommand, RefusedCommandsWriteNothing) {
    const auto result = daywyn({"add", "tomorrow at 9"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Give the task a title.\n");
    EXPECT_TRUE(result.out.empty());
    EXPECT_EQ(daywyn({"done"}).status, 2);
    EXPECT_EQ(daywyn({"delete", "--force", "ab"}).status, 2);
    EXPECT_FALSE(fs::exists(stateFile));

    ASSERT_EQ(daywyn({"add", "First"}).status, 0);
    const std::string before = test::readFile(stateFile);
    EXPECT_EQ(daywyn({"add", "   "}).status, 1);
    EXPECT_EQ(daywyn({"add", "--frobnicate", "x"}).status, 2);
    EXPECT_EQ(test::readFile(stateFile), before);
}

TEST_F(DaywynCommand, AnUnreadableFileIsMovedAsideAndTheNextAddIsKept) {
    fs::create_directories(folder);
    test::writeFile(stateFile, "{\"version\": 2, \"tasks\": [tru");
    const auto result = daywyn({"add", "Buy milk"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "Daywyn could not read its data. The original was preserved as "
                          "daywyn-corrupt-2026-03-04T08-15-00Z.json.\n");
    EXPECT_EQ(test::readFile(folder + "/daywyn-corrupt-2026-03-04T08-15-00Z.json"),
              "{\"version\": 2, \"tasks\": [tru");
    const auto doc = state();
    EXPECT_NE(taskTitled(doc, "Buy milk"), nullptr);
    EXPECT_EQ(doc["tasks"].Size(), 1u);
}

TEST_F(DaywynCommand, WritingVerbsWaitForTheOtherWriterButReadingWorks) {
    ASSERT_EQ(daywyn({"add", "Existing"}).status, 0);
    const std::string before = test::readFile(stateFile);
    const int lock = ::open((folder + "/daywyn.lock").c_str(), O_RDWR | O_CREAT, 0600);
    ASSERT_GE(lock, 0);
    ASSERT_EQ(::flock(lock, LOCK_EX | LOCK_NB), 0);

    const auto refused = daywyn({"add", "Another"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "Daywyn is open in another process; try again when it has closed.\n");
    EXPECT_EQ(test::readFile(stateFile), before);
    const auto today = daywyn({"today"});
    EXPECT_EQ(today.status, 0);
    EXPECT_NE(today.out.find("Existing"), std::string::npos);

    ::close(lock);
    EXPECT_EQ(daywyn({"add", "Another"}).status, 0);
}

TEST_F(DaywynCommand, TaskVerbsTakeAnIdPrefixAndChangeTheFile) {
    ASSERT_EQ(daywyn({"add", "--json", "Write report"}).status, 0);
    const auto added = daywyn({"add", "--json", "Pay rent"});
    const std::string id = parseJson(added.out).value()["id"].GetString();
    const std::string prefix = id.substr(0, 8);

    EXPECT_EQ(daywyn({"start", prefix}).out, "Started Pay rent.\n");
    EXPECT_TRUE(taskTitled(state(), "Pay rent")->HasMember("liveSessionStartedAt"));
    EXPECT_EQ(daywyn({"done", prefix}).out, "Done: Pay rent.\n");
    {
        const auto doc = state();
        const auto* task = taskTitled(doc, "Pay rent");
        EXPECT_TRUE((*task)["isComplete"].GetBool());
        EXPECT_FALSE(task->HasMember("liveSessionStartedAt"));
    }
    EXPECT_EQ(daywyn({"delete", prefix}).out, "Deleted Pay rent.\n");
    EXPECT_EQ(taskTitled(state(), "Pay rent"), nullptr);
    const auto gone = daywyn({"done", prefix});
    EXPECT_EQ(gone.status, 1);
    EXPECT_EQ(gone.err, "No task has an id starting with \"" + prefix + "\".\n");
}

TEST_F(DaywynCommand, ExportsAreWrittenWhereAsked) {
    ASSERT_EQ(daywyn({"add", "=SUM(A1)"}).status, 0);
    const std::string csv = dataHome + "/out/tasks.csv";
    fs::create_directories(dataHome + "/out");
    const auto result = daywyn({"export", "--csv", csv});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "Export saved to tasks.csv.\n");
    const std::string bytes = test::readFile(csv);
    EXPECT_EQ(bytes.find("id,title,completed,created_at,completed_at,scheduled_day,"
                         "scheduled_start,scheduled_end,estimate_minutes,actual_seconds,priority,"
                         "checklist\r\n"),
              0u);
    EXPECT_NE(bytes.find("\"'=SUM(A1)\""), std::string::npos);

    const auto missing = daywyn({"export", "--json", dataHome + "/no/such/folder/x.json"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err.find("Export failed: "), 0u);
}

TEST_F(DaywynCommand, ReadingVerbsNeverCreateTheStateFile) {
    const auto today = daywyn({"today", "--json"});
    EXPECT_EQ(today.status, 0);
    EXPECT_TRUE(parseJson(today.out).ok());
    // No made-up tasks whose ids no later verb would know.
    EXPECT_NE(daywyn({"today"}).out.find("Nothing planned for today."), std::string::npos);
    EXPECT_EQ(daywyn({"split", "water plants; email Sam"}).out, "1. Water plants\n2. Email Sam\n");
    EXPECT_EQ(daywyn({"report", "--list"}).status, 0);
    EXPECT_EQ(daywyn({"add", "--dry-run", "Stretch at 7:30pm"}).out.find("Would add Stretch"), 0u);
    EXPECT_FALSE(fs::exists(stateFile));
    EXPECT_EQ(daywyn({"--version"}).out.find("Daywyn "), 0u);
    EXPECT_EQ(daywyn({"launch-rockets"}).status, 2);
}

} // namespace
} // namespace daywyn
