#include "persistence/JSONTaskRepository.h"

#include <sys/stat.h>

#include "RepositoryTestSupport.h"

namespace daywyn::test {

PersistedState everyFieldState() {
    const Calendar ny = newYork();
    const Instant monday = at(ny, 2026, 3, 9);
    PersistedState state;
    state.tasks.push_back(TaskBuilder("Write the \"Q1\" summary — ünïcode")
                              .createdAt(at(ny, 2026, 3, 7, 22, 5, 9))
                              .estimate(45)
                              .reminder(at(ny, 2026, 3, 9, 8, 50))
                              .startingAt(at(ny, 2026, 3, 9, 9))
                              .plannedFor(monday)
                              .endingAt(at(ny, 2026, 3, 9, 9, 45))
                              .session(at(ny, 2026, 3, 8, 1, 30), at(ny, 2026, 3, 8, 3, 10))
                              .running(at(ny, 2026, 3, 9, 9, 1))
                              .checklistItem("Outline", true)
                              .checklistItem("Numbers")
                              .repeating(TaskRecurrence::weekly)
                              .pinned(2));
    state.tasks[0].scheduledBudgetAlerts = {BudgetAlertKind::approaching,
                                            BudgetAlertKind::exceeded};
    state.tasks[0].scheduledReminderDate = at(ny, 2026, 3, 9, 8, 50);
    state.tasks[0].notifiedOverdueEnd = at(ny, 2026, 3, 9, 9, 45);
    state.tasks[0].nextOccurrenceCreated = false;
    state.tasks.push_back(TaskBuilder("Done, empty checklist")
                              .createdAt(at(ny, 2026, 1, 1))
                              .completedAt(at(ny, 2026, 1, 2, 12))
                              .emptyChecklist());
    state.preferences.edgeAnchor = EdgeAnchor::leftCenter;
    state.preferences.unfinishedReminderCadence = UnfinishedReminderCadence::hourly;
    state.preferences.selectedCalendarIdentifiers = {"work", "home"};
    state.preferences.taskRemindersEnabled = true;
    state.reports.push_back(DailyReport{Uuid::random(),
                                        monday,
                                        at(ny, 2026, 3, 9, 21),
                                        {{Uuid::random(), "Write", true, 45, 1234.5},
                                         {Uuid::random(), "Call", false, std::nullopt, 0.0}}});
    return state;
}

TEST(JSONTaskRepository, LivesInTheUsersDataFolder) {
    struct Case {
        const char* xdg;
        const char* home;
        const char* expected;
    };
    const Case cases[] = {
        {"/data/me", "/home/me", "/data/me/Daywyn/daywyn.json"},
        {"/data/me/", "/home/me", "/data/me/Daywyn/daywyn.json"},
        {"", "/home/me", "/home/me/.local/share/Daywyn/daywyn.json"},
        {nullptr, "/home/me", "/home/me/.local/share/Daywyn/daywyn.json"},
        {"relative/data", "/home/me", "/home/me/.local/share/Daywyn/daywyn.json"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.xdg ? c.xdg : "(unset)");
        auto path = JSONTaskRepository::defaultFilePath([&c](const char* name) -> const char* {
            return std::string_view(name) == "XDG_DATA_HOME" ? c.xdg : c.home;
        });
        ASSERT_TRUE(path.ok());
        EXPECT_EQ(path.value(), c.expected);
    }
}

TEST(JSONTaskRepository, FirstRunFindsNothingAndCreatesNothing) {
    auto repository = makeRepository();
    auto loaded = repository->load();
    ASSERT_TRUE(loaded.ok());
    EXPECT_FALSE(loaded.value().has_value());
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(stateFilePath()).parent_path()));
}

TEST(JSONTaskRepository, KeepsEveryFieldAcrossARestartExceptFractionsOfSeconds) {
    // given a state whose dates carry fractions of a second
    PersistedState expected = everyFieldState();
    PersistedState saved = expected;
    saved.tasks[0].createdAt += 0.75;
    saved.tasks[0].sessions[0].end += 0.999;
    saved.reports[0].generatedAt += 0.5;
    // when it is saved and loaded by a new repository
    ASSERT_TRUE(makeRepository()->save(saved).ok());
    auto loaded = makeRepository()->load();
    // then everything comes back, the dates cut to whole seconds
    ASSERT_TRUE(loaded.ok()) << loaded.error();
    EXPECT_EQ(loaded.value(), expected);
    struct stat info {};
    ASSERT_EQ(::stat(stateFilePath().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u) << "the user's data is theirs alone";
}

TEST(JSONTaskRepository, UpgradesTheOldFormatWithItsTimersAndWorkedTime) {
    // given an old-format file
    writeBytes(stateFilePath(), fixture("legacy.json"));
    int clockReads = 0;
    JSONTaskRepository repository(
        stateFilePath(), std::make_shared<PosixFileSystem>(),
        [&clockReads] {
            ++clockReads;
            return migrationInstant();
        },
        failureInstant);
    // when it is loaded
    auto loaded = repository.load();
    // then each task is created at the one migration instant
    ASSERT_TRUE(loaded.ok()) << loaded.error();
    const PersistedState& state = *loaded.value();
    const Instant t = migrationInstant();
    const Instant s = parseIsoText("2026-03-08T06:00:00Z").value();
    EXPECT_EQ(clockReads, 1);
    EXPECT_EQ(state.version, 2);
    EXPECT_TRUE(state.reports.empty());
    EXPECT_TRUE(state.preferences.taskRemindersEnabled);
    EXPECT_EQ(state.preferences.dailyReviewHour, 20);
    ASSERT_EQ(state.tasks.size(), 4u);
    const TaskItem& idle = state.tasks[0];
    ASSERT_EQ(idle.sessions.size(), 1u);
    EXPECT_EQ(idle.sessions[0].start, t - 1500);
    EXPECT_EQ(idle.sessions[0].end, t);
    EXPECT_FALSE(idle.isRunning());
    EXPECT_EQ(idle.reminderDate, parseIsoText("2026-03-08T14:00:00Z"));
    EXPECT_EQ(idle.scheduledReminderDate, idle.reminderDate);
    EXPECT_EQ(idle.scheduledBudgetAlerts, BudgetAlertSet{BudgetAlertKind::approaching});
    EXPECT_EQ(idle.estimatedMinutes, 30);
    const TaskItem& running = state.tasks[1];
    ASSERT_EQ(running.sessions.size(), 1u);
    EXPECT_EQ(running.sessions[0].start, s - 1500);
    EXPECT_EQ(running.sessions[0].end, s);
    EXPECT_EQ(running.liveSessionStartedAt, s);
    EXPECT_TRUE(state.tasks[2].sessions.empty());
    const TaskItem& done = state.tasks[3];
    EXPECT_TRUE(done.sessions.empty());
    EXPECT_TRUE(done.isComplete);
    EXPECT_EQ(done.completedAt, t);
    EXPECT_EQ(done.createdAt, t);
    EXPECT_FALSE(state.tasks[0].completedAt.has_value());
}

TEST(JSONTaskRepository, LoadsAnEmptyOldFileAndANewerVersionAsTheyAre) {
    writeBytes(stateFilePath(), R"({"version":1,"tasks":[],"preferences":{}})");
    auto old = makeRepository()->load();
    ASSERT_TRUE(old.ok());
    EXPECT_EQ(*old.value(), PersistedState{});

    writeBytes(stateFilePath(), fixture("future-version.json"));
    auto newer = makeRepository()->load();
    ASSERT_TRUE(newer.ok()) << newer.error();
    EXPECT_EQ(newer.value()->version, 7);
    EXPECT_EQ(newer.value()->tasks.at(0).title, "From a newer Daywyn");
    EXPECT_EQ(newer.value()->preferences.edgeAnchor, EdgeAnchor::bottomRight);
}

TEST(JSONTaskRepository, SaysWhetherTheFileWasInTheCurrentFormat) {
    // Only a version 2 file may be left as it is at start-up; an old one must be
    // migrated on disk and a newer one rewritten as version 2.
    const std::pair<std::string, bool> files[] = {
        {R"({"version":1,"tasks":[],"preferences":{}})", false},
        {R"({"version":2,"tasks":[],"preferences":{},"reports":[]})", true},
        {fixture("future-version.json"), false},
        {"not json", false}};
    for (const auto& [bytes, current] : files) {
        SCOPED_TRACE(bytes.substr(0, 40));
        writeBytes(stateFilePath(), bytes);
        auto repository = makeRepository();
        EXPECT_FALSE(repository->loadedCurrentFormat());
        (void)repository->load();
        EXPECT_EQ(repository->loadedCurrentFormat(), current);
    }
}

TEST(JSONTaskRepository, MovesAnUnreadableFileAsideAndSaysWhere) {
    const std::pair<const char*, std::string> cases[] = {
        {"not JSON", "{\"version\": 2, \"tasks\": ["},
        {"empty file", ""},
        {"no version", R"({"tasks":[],"preferences":{},"reports":[]})"},
        {"version as text", R"({"version":"2","tasks":[],"preferences":{},"reports":[]})"},
        {"fractional version", R"({"version":2.5,"tasks":[],"preferences":{},"reports":[]})"},
        {"a list, not an object", "[2]"},
        {"no reports", fixture("missing-reports.json")},
        {"encoded surrogate in a title",
         "{\"version\":1,\"preferences\":{},\"tasks\":[],\"x\":\"\xED\xA0\x80\"}"},
        {"bytes after a NUL",
         std::string("{\"version\":1,\"preferences\":{},\"tasks\":[]}\0]", 43)},
        {"date with a fraction", fixture("fractional-date.json")},
        {"unknown cadence",
         R"({"version":2,"tasks":[],"preferences":{"unfinishedReminderCadence":45},"reports":[]})"},
        {"old task without worked time",
         R"({"version":1,"preferences":{},"tasks":[{"id":"0B5E3C1A-6F2D-4C8E-9A77-1D2E3F405162","title":"x","estimatedMinutes":5,"isComplete":false,"scheduledBudgetAlerts":[]}]})"},
    };
    const std::filesystem::path file = stateFilePath();
    const auto moved = file.parent_path() / "daywyn-corrupt-2026-03-29T01-15-00Z.json";
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        writeBytes(file, bytes);
        auto loaded = makeRepository()->load();
        ASSERT_FALSE(loaded.ok());
        EXPECT_EQ(loaded.error(), "Daywyn could not read its data. The original was preserved as "
                                  "daywyn-corrupt-2026-03-29T01-15-00Z.json.");
        EXPECT_FALSE(std::filesystem::exists(file));
        EXPECT_EQ(readBytes(moved), bytes);
        std::filesystem::remove(moved);
    }
}

TEST(JSONTaskRepository, ASecondFailureInTheSameSecondLeavesTheFileInPlace) {
    // given a bad file already moved aside this second, and another bad file
    const std::filesystem::path file = stateFilePath();
    writeBytes(file, "first bad");
    ASSERT_FALSE(makeRepository()->load().ok());
    writeBytes(file, "second bad");
    // when it is loaded
    auto loaded = makeRepository()->load();
    // then the same name is reported, the first copy is kept and the file stays
    ASSERT_FALSE(loaded.ok());
    EXPECT_EQ(loaded.error(),
              JSONTaskRepository::corruptFileMessage("daywyn-corrupt-2026-03-29T01-15-00Z.json"));
    EXPECT_EQ(readBytes(file.parent_path() / "daywyn-corrupt-2026-03-29T01-15-00Z.json"),
              "first bad");
    EXPECT_EQ(readBytes(file), "second bad");
}

} // namespace daywyn::test
