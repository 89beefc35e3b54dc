// The real daywyn program against a temporary data folder, as a user runs it.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "base/Instant.h"
#include "support/JsonTree.h"
#include "support/Process.h"

namespace daywyn {
namespace {

namespace fs = std::filesystem;

class DaywynCommand : public ::testing::Test {
protected:
    std::string dataHome = test::makeTempFolder();
    std::string folder = dataHome + "/Daywyn";
    std::string stateFile = folder + "/daywyn.json";

    // The command line at 08:15 UTC on Wednesday 4 March 2026 (daywyn-at: the program
    // with its clock stopped there), in Berlin.
    test::ProcessResult daywyn(std::vector<std::string> args) {
        args.insert(args.begin(), {DAYWYN_AT_PATH, "2026-03-04T08:15:00Z"});
        return test::runProcess(args, {{"XDG_DATA_HOME", dataHome}, {"TZ", "Europe/Berlin"}});
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

// The shipped program reads the machine's clock and nothing else: a variable that once
// fixed the clock for tests no longer moves it.
TEST_F(DaywynCommand, TheShippedProgramStampsTasksWithTheMachinesClock) {
    const auto seconds = [] {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    };
    const double before = seconds();
    auto args = std::vector<std::string>{DAYWYN_BINARY_PATH, "add", "Water plants"};
    const auto result = test::runProcess(
        args, {{"XDG_DATA_HOME", dataHome}, {"DAYWYN_NOW", "2020-01-01T00:00:00Z"}});
    const double after = seconds();
    ASSERT_EQ(result.status, 0) << result.err;
    const auto doc = state();
    const auto* task = taskTitled(doc, "Water plants");
    ASSERT_NE(task, nullptr);
    const auto created = parseIsoText((*task)["createdAt"].GetString());
    ASSERT_TRUE(created.has_value());
    EXPECT_GE(created->seconds, before - 1);
    EXPECT_LE(created->seconds, after + 1);
    // The test build's fixed clock does move it.
    ASSERT_EQ(daywyn({"add", "Call Ama"}).status, 0);
    const auto fixed = state();
    EXPECT_EQ(parseIsoText((*taskTitled(fixed, "Call Ama"))["createdAt"].GetString()),
              parseIsoText("2026-03-04T08:15:00Z"));
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

// The file's bytes and its modification time to the nanosecond.
struct FileState {
    std::string bytes;
    long long modifiedNs = 0;
    bool operator==(const FileState&) const = default;
};

FileState fileState(const std::string& path) {
    struct stat info {};
    EXPECT_EQ(::stat(path.c_str(), &info), 0);
    return FileState{test::readFile(path),
                     info.st_mtim.tv_sec * 1'000'000'000LL + info.st_mtim.tv_nsec};
}

TEST_F(DaywynCommand, ReadingVerbsAndAStartUpWithNothingToChangeLeaveTheFileAlone) {
    ASSERT_EQ(daywyn({"add", "Water plants at 10"}).status, 0);
    const FileState before = fileState(stateFile);
    // Far enough apart that a rewrite would show in the modification time.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));

    EXPECT_EQ(daywyn({"today"}).status, 0);
    EXPECT_EQ(daywyn({"today", "--json"}).status, 0);
    EXPECT_EQ(daywyn({"report", "--list"}).status, 0);
    EXPECT_EQ(fileState(stateFile), before);

    // A writing verb opens the store with the lock held; with nothing to do, the file
    // stays as it was (no start-up save of an unchanged version 2 file).
    const auto stop = daywyn({"stop"});
    EXPECT_EQ(stop.out, "No timer is running.\n");
    EXPECT_EQ(daywyn({"done", "FFFFFFFFFFFF"}).status, 1);
    EXPECT_EQ(fileState(stateFile), before);

    // One change is one write; the next start-up leaves its result alone too.
    ASSERT_EQ(daywyn({"add", "Call Ama"}).status, 0);
    const FileState afterAdd = fileState(stateFile);
    EXPECT_NE(afterAdd, before);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(daywyn({"stop"}).status, 0);
    EXPECT_EQ(fileState(stateFile), afterAdd);
}

TEST_F(DaywynCommand, AnOldFileIsRewrittenByTheFirstWriterButNotByAReader) {
    fs::create_directories(folder);
    const std::string legacy = R"({"version":1,"preferences":{},"tasks":[{"id":)"
                               R"("6B1F1A52-4C1B-4B8E-9A55-0F7A4C1E2D3B","title":"Old",)"
                               R"("estimatedMinutes":25,"elapsedBeforeCurrentRun":0,)"
                               R"("isComplete":false,"scheduledBudgetAlerts":[]}]})";
    test::writeFile(stateFile, legacy);
    const auto today = daywyn({"today"});
    EXPECT_NE(today.out.find("Old"), std::string::npos) << today.out << today.err;
    EXPECT_EQ(test::readFile(stateFile), legacy);

    EXPECT_EQ(daywyn({"stop"}).status, 0);
    EXPECT_EQ(state()["version"].GetInt(), 2);
    EXPECT_NE(taskTitled(state(), "Old"), nullptr);
}

TEST_F(DaywynCommand, BadArgumentsAreRefusedAndOddTextIsKept) {
    const auto unknownOption = daywyn({"today", "--frobnicate"});
    EXPECT_EQ(unknownOption.status, 2);
    EXPECT_EQ(unknownOption.err, "daywyn today: Unknown option --frobnicate. Run 'daywyn today "
                                 "--help' for usage.\n");
    const auto missingTime = daywyn({"add", "Call Ama", "--at"});
    EXPECT_EQ(missingTime.status, 2);
    EXPECT_EQ(missingTime.err.find("daywyn add: Give TIME after --at."), 0u);
    EXPECT_FALSE(fs::exists(stateFile));

    // Bytes that are not UTF-8 become U+FFFD instead of breaking the state file.
    ASSERT_EQ(daywyn({"add", "--json", "Caf\xE9 \xFF order"}).status, 0);
    const auto doc = state();
    EXPECT_NE(taskTitled(doc, "Caf\xEF\xBF\xBD \xEF\xBF\xBD order"), nullptr);

    // A 100 KB title is saved whole and read back.
    const std::string longTitle(100 * 1024, 'x');
    ASSERT_EQ(daywyn({"add", "--literal", longTitle}).status, 0);
    EXPECT_NE(taskTitled(state(), longTitle.c_str()), nullptr);
    EXPECT_NE(daywyn({"today"}).out.find(longTitle), std::string::npos);
}

// The libraries the dynamic loader reports loading for a run of the shipped program,
// as "file=NAME" lines: those the program needs and those loaded with dlopen.
std::vector<std::string> librariesLoadedBy(const test::ProcessResult& traced) {
    std::vector<std::string> names;
    std::size_t at = 0;
    while ((at = traced.err.find("file=", at)) != std::string::npos) {
        at += 5;
        names.push_back(traced.err.substr(at, traced.err.find_first_of(" \t;\n", at) - at));
    }
    return names;
}

bool anyNamed(const std::vector<std::string>& names, const std::string& part) {
    return std::any_of(names.begin(), names.end(), [&part](const std::string& name) {
        return name.find(part) != std::string::npos;
    });
}

TEST_F(DaywynCommand, TheProgramLoadsNeitherQtNorTheSpeechRecogniser) {
    // The program typed by people needs the C library and nothing else (beside a
    // sanitizer's runtime in a sanitized build).
    const auto needs = test::runProcess({"/usr/bin/readelf", "-d", DAYWYN_BINARY_PATH});
    ASSERT_EQ(needs.status, 0) << needs.err;
    std::vector<std::string> needed;
    for (std::size_t at = 0; (at = needs.out.find("Shared library: [", at)) != std::string::npos;) {
        at += 17;
        const std::string name = needs.out.substr(at, needs.out.find(']', at) - at);
        if (name.rfind("libasan", 0) != 0 && name.rfind("libubsan", 0) != 0) {
            needed.push_back(name);
        }
    }
    EXPECT_EQ(needed, std::vector<std::string>{"libc.so.6"}) << needs.out;

    // What a verb run loads: the command-line module and what it needs. ICU is linked in,
    // sd-bus is loaded by the verbs that talk to the app, Evolution's libraries by those
    // that read calendars, and the recogniser runs in a program of its own.
    ASSERT_EQ(daywyn({"add", "Water plants"}).status, 0);
    const std::map<std::string, std::string> traceLoads{{"XDG_DATA_HOME", dataHome},
                                                        {"LD_DEBUG", "files"}};
    for (const std::vector<std::string>& line :
         {std::vector<std::string>{DAYWYN_BINARY_PATH, "today"},
          std::vector<std::string>{DAYWYN_BINARY_PATH, "add", "Call Ama"}}) {
        const std::string& verb = line[1];
        const auto traced = test::runProcess(line, traceLoads);
        ASSERT_EQ(traced.status, 0) << traced.err;
        const auto loaded = librariesLoadedBy(traced);
        EXPECT_TRUE(anyNamed(loaded, "/daywyn-command-line.so")) << verb << ":\n" << traced.err;
        for (const char* heavy :
             {"libQt6", "libGL", "libpocketsphinx", "libsphinxbase", "liblapack", "libblas",
              "libgfortran", "libicu", "libsystemd", "libecal", "libcrypto"}) {
            EXPECT_FALSE(anyNamed(loaded, heavy)) << heavy << " loaded by " << verb << ":\n"
                                                  << traced.err;
        }
    }

    // `transcribe` still reaches the recogniser, through its own program.
    const auto missing = daywyn({"transcribe", dataHome + "/missing.wav"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "Daywyn could not open " + dataHome + "/missing.wav.\n");
    EXPECT_EQ(daywyn({"transcribe", "--loud", "x.wav"}).status, 2);
}

TEST_F(DaywynCommand, TheVersionIsAnsweredWithoutLoadingTheCommandLine) {
    const auto traced =
        test::runProcess({DAYWYN_BINARY_PATH, "--version"}, {{"LD_DEBUG", "files"}});
    ASSERT_EQ(traced.status, 0);
    // The same line as the command line's own.
    EXPECT_EQ(traced.out, daywyn({"--version"}).out);
    const auto loaded = librariesLoadedBy(traced);
    EXPECT_FALSE(anyNamed(loaded, "daywyn-command-line")) << traced.err;
    EXPECT_FALSE(anyNamed(loaded, "libstdc++")) << traced.err;
    for (const char* alias : {"-v", "version"}) {
        EXPECT_EQ(test::runProcess({DAYWYN_BINARY_PATH, alias}).out, traced.out) << alias;
    }
}

// The shipped program finds the day in the user's time zone: ICU, built into its module,
// reads the zone the C library reads. Kiritimati and Pago Pago are 25 hours apart, so
// for most of every day they name different dates.
TEST_F(DaywynCommand, TheShippedProgramsDayIsTheDayInTheUsersTimeZone) {
    const auto dayIn = [](const char* zone) {
        const char* before = std::getenv("TZ");
        const std::string saved = before != nullptr ? before : "";
        ::setenv("TZ", zone, 1);
        ::tzset();
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        ::localtime_r(&now, &local);
        char weekday[32];
        char month[32];
        std::strftime(weekday, sizeof weekday, "%A", &local);
        std::strftime(month, sizeof month, "%B", &local);
        before != nullptr ? ::setenv("TZ", saved.c_str(), 1) : ::unsetenv("TZ");
        ::tzset();
        return std::string(weekday) + " " + std::to_string(local.tm_mday) + " " + month;
    };
    for (const char* zone : {"Pacific/Kiritimati", "Pacific/Pago_Pago"}) {
        const std::string earliest = dayIn(zone);
        const auto result = test::runProcess({DAYWYN_BINARY_PATH, "today"},
                                             {{"XDG_DATA_HOME", dataHome}, {"TZ", zone}});
        const std::string latest = dayIn(zone);
        ASSERT_EQ(result.status, 0) << result.err;
        const std::string heading = result.out.substr(0, result.out.find(" \xC2\xB7"));
        EXPECT_TRUE(heading == earliest || heading == latest)
            << zone << ": " << heading << " is not " << latest;
    }
}

// Installed without its helpers (a half-copied install), the program says what is missing.
TEST_F(DaywynCommand, AProgramWithoutItsModuleOrAppSaysWhatIsMissing) {
    const std::string alone = dataHome + "/bin/daywyn";
    fs::create_directories(dataHome + "/bin");
    fs::copy_file(DAYWYN_BINARY_PATH, alone);
    const auto verb = test::runProcess({alone, "today"}, {{"XDG_DATA_HOME", dataHome}});
    EXPECT_EQ(verb.status, 1);
    EXPECT_EQ(verb.err, "Daywyn could not find daywyn-command-line.so; is it installed?\n");
    const auto app = test::runProcess({alone});
    EXPECT_EQ(app.status, 1);
    EXPECT_EQ(app.err, "Daywyn could not find daywyn-app; is it installed?\n");
    EXPECT_EQ(test::runProcess({alone, "--version"}).status, 0);

    // A module that is there but cannot be loaded is named with the loader's reason.
    test::writeFile(dataHome + "/bin/daywyn-command-line.so", "not a library");
    const auto broken = test::runProcess({alone, "today"}, {{"XDG_DATA_HOME", dataHome}});
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(broken.err.find("Daywyn could not load its command line: "), 0u) << broken.err;
    EXPECT_FALSE(fs::exists(stateFile));
}

// The desktop app maps Evolution's libraries and the speech recogniser only when it
// first reads the desktop's calendars or decodes speech: both come as modules beside it.
TEST_F(DaywynCommand, TheDesktopAppLoadsNeitherEvolutionNorTheRecogniserAtStart) {
    const auto libraries = test::runProcess({"/usr/bin/ldd", DAYWYN_APP_PATH});
    ASSERT_EQ(libraries.status, 0) << libraries.err;
    EXPECT_NE(libraries.out.find("libQt6Quick"), std::string::npos) << libraries.out;
    for (const char* heavy : {"libecal", "libedataserver", "libcamel", "libsoup", "libpocketsphinx",
                              "libsphinxbase", "liblapack", "libblas", "libgfortran"}) {
        EXPECT_EQ(libraries.out.find(heavy), std::string::npos) << heavy << " in\n"
                                                                << libraries.out;
    }
    const std::string folderOfApp = fs::path(DAYWYN_APP_PATH).parent_path().string();
    for (const char* module : {"/daywyn-calendars.so", "/daywyn-speech.so"}) {
        const auto needs = test::runProcess({"/usr/bin/ldd", folderOfApp + module});
        ASSERT_EQ(needs.status, 0) << module << ": " << needs.err;
        EXPECT_EQ(needs.out.find("not found"), std::string::npos) << needs.out;
    }
}

TEST_F(DaywynCommand, CalendarVerbsReadTheFolderOfCalendarFilesThroughTheModule) {
    fs::create_directories(folder + "/calendars");
    fs::copy_file(std::string(DAYWYN_TEST_DATA_DIR) + "/calendar/weekly.ics",
                  folder + "/calendars/team.ics");
    // No session bus here: Evolution is unavailable and the files still answer.
    const auto listed = daywyn({"calendars", "--json"});
    ASSERT_EQ(listed.status, 0) << listed.err;
    EXPECT_EQ(listed.out, "{\"calendars\":[{\"colorHex\":\"#62A0EA\",\"id\":\"ics:team.ics\","
                          "\"selected\":false,\"sourceTitle\":\"Calendar files\",\"title\":"
                          "\"Team\"}],\"integrationEnabled\":false,"
                          "\"selectedCalendarIdentifiers\":[]}\n");
    ASSERT_EQ(daywyn({"calendars", "select", "--all"}).status, 0);
    ASSERT_EQ(daywyn({"calendars", "on"}).status, 0);
    // Wednesday 4 March: the weekly standup is on Mondays, the plants every day.
    const auto today = daywyn({"today"});
    ASSERT_EQ(today.status, 0) << today.err;
    EXPECT_NE(today.out.find(
                  "Events (1)\n  8:00\u202fAM \u2013 8:15\u202fAM  Water the plants  (Team)\n"),
              std::string::npos)
        << today.out;
    const auto mistyped = daywyn({"calendars", "select", "ics:tem.ics"});
    EXPECT_EQ(mistyped.status, 1);
    EXPECT_NE(mistyped.err.find("No calendar has the id"), std::string::npos);
}

// The generated bash completion, loaded into a real bash with this build's daywyn
// first on the PATH; prints COMPREPLY for the words given.
class DaywynCompletion : public DaywynCommand {
protected:
    std::string complete(const std::string& words, int current) {
        const std::string binFolder = fs::path(DAYWYN_BINARY_PATH).parent_path().string();
        const std::string script = "source '" DAYWYN_GENERATED_DIR "/daywyn.bash'\n"
                                   "complete -p daywyn\n"
                                   "COMP_WORDS=(" +
                                   words + ")\nCOMP_CWORD=" + std::to_string(current) +
                                   "\n_daywyn\nprintf '%s\\n' \"${COMPREPLY[@]}\" | sort\n";
        const auto result =
            test::runProcess({"/bin/bash", "--norc", "-c", script},
                             {{"XDG_DATA_HOME", dataHome}, {"PATH", binFolder + ":/usr/bin:/bin"}});
        EXPECT_EQ(result.status, 0) << result.err;
        return result.out;
    }
};

TEST_F(DaywynCompletion, BashCompletesVerbsOptionsAndTaskIds) {
    EXPECT_EQ(complete("daywyn d", 1), "complete -F _daywyn daywyn\ndelete\ndone\n");
    EXPECT_EQ(complete("daywyn add --d", 2), "complete -F _daywyn daywyn\n--dry-run\n");
    EXPECT_EQ(complete("daywyn report --", 2),
              "complete -F _daywyn daywyn\n--help\n--json\n--list\n");

    // The first run's sample tasks include one with a checklist: only the tasks' own
    // ids are offered, not their checklist items' or sessions'.
    ASSERT_EQ(daywyn({"add", "Pay rent"}).status, 0);
    ASSERT_EQ(daywyn({"start", state()["tasks"][0]["id"].GetString()}).status, 0);
    ASSERT_EQ(daywyn({"stop"}).status, 0);
    std::vector<std::string> expected;
    const auto saved = state();
    for (const auto& task : saved["tasks"].GetArray()) {
        expected.push_back(std::string(task["id"].GetString()).substr(0, 8));
    }
    std::sort(expected.begin(), expected.end());
    std::string expectedText = "complete -F _daywyn daywyn\n";
    for (const auto& id : expected) {
        expectedText += id + "\n";
    }
    EXPECT_EQ(complete("daywyn done ''", 2), expectedText);
    // A typed start, in either case, narrows the list.
    const std::string first = expected[0];
    std::string lower = first.substr(0, 3);
    for (auto& c : lower) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    EXPECT_NE(complete("daywyn pin " + lower, 2).find(first), std::string::npos);
}

TEST_F(DaywynCompletion, TheZshCompletionParsesAndOffersTheSameTaskIds) {
    ASSERT_EQ(daywyn({"add", "Pay rent"}).status, 0);
    std::string expected;
    std::vector<std::string> ids;
    const auto saved = state();
    for (const auto& task : saved["tasks"].GetArray()) {
        ids.push_back(std::string(task["id"].GetString()).substr(0, 8));
    }
    std::sort(ids.begin(), ids.end());
    for (const auto& id : ids) {
        expected += id + "\n";
    }
    // The script without its last line (which runs the completion), with compadd
    // standing in for zsh's completion system.
    const std::string binFolder = fs::path(DAYWYN_BINARY_PATH).parent_path().string();
    const std::string script = "source <(sed '$d' '" DAYWYN_GENERATED_DIR "/_daywyn')\n"
                               "compadd() { [[ $1 == -a ]] && print -l ${(P)2} }\n"
                               "_daywyn_task_ids | sort\n";
    const auto zsh =
        test::runProcess({"/usr/bin/zsh", "-f", "-c", script},
                         {{"XDG_DATA_HOME", dataHome}, {"PATH", binFolder + ":/usr/bin:/bin"}});
    EXPECT_EQ(zsh.err, "");
    EXPECT_EQ(zsh.out, expected);
    EXPECT_EQ(test::runProcess({"/usr/bin/zsh", "-n", DAYWYN_GENERATED_DIR "/_daywyn"}).status, 0);
}

TEST_F(DaywynCommand, TheManualPageIsValidRoffListingEveryVerb) {
    const std::string page = test::readFile(DAYWYN_GENERATED_DIR "/daywyn.1");
    // Roff needs the hyphen of "quick-add" escaped.
    for (const char* verb : {"add", "today", "done", "export", "quick\\-add"}) {
        EXPECT_NE(page.find(std::string("\\fB") + verb + "\\fR"), std::string::npos) << verb;
    }
    const auto rendered = test::runProcess(
        {"/usr/bin/groff", "-man", "-Tutf8", "-ww", "-z", DAYWYN_GENERATED_DIR "/daywyn.1"});
    EXPECT_EQ(rendered.status, 0);
    EXPECT_EQ(rendered.err, "");
}

} // namespace
} // namespace daywyn
