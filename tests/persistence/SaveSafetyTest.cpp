#include <cerrno>
#include <chrono>
#include <csignal>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "RepositoryTestSupport.h"
#include "support/FakeFileSystem.h"

namespace daywyn::test {

namespace {

using Step = FakeFileSystem::Step;

PersistedState stateWithTasks(int count, const std::string& label) {
    const Calendar berlinCalendar = berlin();
    PersistedState state;
    for (int i = 0; i < count; ++i) {
        state.tasks.push_back(
            TaskBuilder(label + " task " + std::to_string(i))
                .createdAt(at(berlinCalendar, 2026, 10, 25, 2, 30) + i)
                .session(at(berlinCalendar, 2026, 10, 25, 1), at(berlinCalendar, 2026, 10, 25, 3)));
    }
    return state;
}

} // namespace

TEST(JSONTaskRepository, AFailedSaveLeavesThePreviousFileByteForByte) {
    struct Case {
        const char* name;
        std::function<void(FakeFileSystem&)> fault;
        std::string reason;
    };
    const Case cases[] = {
        {"write fails part-way",
         [](FakeFileSystem& fs) {
             fs.chunkWrites(4096, false);
             fs.failNext(Step::write, EIO, 2);
         },
         "Input/output error"},
        {"disk fills up", [](FakeFileSystem& fs) { fs.limitSpace(10'000); },
         "No space left on device"},
        {"flush fails", [](FakeFileSystem& fs) { fs.failNext(Step::sync, EIO); },
         "Input/output error"},
        {"rename fails", [](FakeFileSystem& fs) { fs.failNext(Step::rename, EACCES); },
         "Permission denied"},
        {"temporary file refused", [](FakeFileSystem& fs) { fs.failNext(Step::open, EROFS); },
         "Read-only file system"},
        {"folder cannot be made",
         [](FakeFileSystem& fs) { fs.failNext(Step::createDirectories, EACCES); },
         "Permission denied"},
    };
    const std::filesystem::path file = stateFilePath();
    ASSERT_TRUE(makeRepository()->save(stateWithTasks(50, "before")).ok());
    const std::string before = readBytes(file);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        // given a disk that fails one step of the next save
        auto fs = std::make_shared<FakeFileSystem>();
        c.fault(*fs);
        // when a bigger state is saved
        auto saved = makeRepository(fs)->save(stateWithTasks(200, "after"));
        // then the reason is told, the old file is untouched and nothing is left over
        ASSERT_FALSE(saved.ok());
        EXPECT_EQ(saved.error(), c.reason);
        EXPECT_EQ(readBytes(file), before);
        EXPECT_EQ(folderContents(file.parent_path()),
                  (std::vector<std::string>{"daywyn.json", "daywyn.lock"}));
    }
}

TEST(JSONTaskRepository, SavesCompletelyThroughShortAndInterruptedWrites) {
    auto fs = std::make_shared<FakeFileSystem>();
    fs->chunkWrites(4093, true);
    const PersistedState state = stateWithTasks(100, "chunked");
    ASSERT_TRUE(makeRepository(fs)->save(state).ok());
    EXPECT_EQ(makeRepository()->load().value(), state);
}

TEST(JSONTaskRepository, FlushesTheNewFileBeforeItTakesTheOldOnesPlace) {
    // given a saved file
    ASSERT_TRUE(makeRepository()->save(stateWithTasks(1, "old")).ok());
    auto fs = std::make_shared<FakeFileSystem>();
    // when the next save runs
    ASSERT_TRUE(makeRepository(fs)->save(stateWithTasks(1, "new")).ok());
    // then the data reaches the disk before the rename, and the folder after it
    std::vector<std::string> steps;
    for (const auto& call : fs->calls()) {
        const std::string step = call.substr(0, call.find(' '));
        if (step == "sync" || step == "rename" || step == "syncDirectory") {
            steps.push_back(step);
        }
    }
    EXPECT_EQ(steps, (std::vector<std::string>{"sync", "rename", "syncDirectory"}));
}

TEST(JSONTaskRepository, AKilledSaverAlwaysLeavesALoadableSavedState) {
    // given states of different sizes that a child process saves in a loop
    std::vector<PersistedState> states;
    for (int i = 0; i < 6; ++i) {
        states.push_back(stateWithTasks(150 + 90 * i, "generation " + std::to_string(i)));
    }
    ASSERT_TRUE(makeRepository()->save(states[0]).ok());
    std::mt19937 random(20260329);
    std::uniform_int_distribution<int> delayMicros(200, 6000);
    for (int kill = 0; kill < 220; ++kill) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            auto repository = makeRepository();
            // Bounded, so a parent that died early leaves no process behind.
            for (int i = kill; i < kill + 5000; ++i) {
                if (!repository->save(states[static_cast<std::size_t>(i) % states.size()])) {
                    ::_exit(3);
                }
            }
            ::_exit(0);
        }
        // when it is killed at a random moment
        std::this_thread::sleep_for(std::chrono::microseconds(delayMicros(random)));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the saver stopped by itself: " << status;
        // then the file loads as one of the saved states
        auto loaded = makeRepository()->load();
        ASSERT_TRUE(loaded.ok()) << "after kill " << kill << ": " << loaded.error();
        ASSERT_TRUE(loaded.value().has_value()) << "after kill " << kill << ": no file";
        ASSERT_NE(std::find(states.begin(), states.end(), *loaded.value()), states.end())
            << "after kill " << kill;
    }
    // and the next save clears whatever the killed ones left behind
    ASSERT_TRUE(makeRepository()->save(states[1]).ok());
    EXPECT_EQ(folderContents(std::filesystem::path(stateFilePath()).parent_path()),
              (std::vector<std::string>{"daywyn.json", "daywyn.lock"}));
}

TEST(JSONTaskRepository, OnlyOneProcessWritesAtATime) {
    int ready[2];
    int release[2];
    ASSERT_EQ(::pipe(ready), 0);
    ASSERT_EQ(::pipe(release), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        auto holder = makeRepository();
        const char result = holder->acquireWriterLock().ok() ? 'y' : 'n';
        [[maybe_unused]] auto sent = ::write(ready[1], &result, 1);
        char ignored;
        [[maybe_unused]] auto got = ::read(release[0], &ignored, 1);
        ::_exit(0);
    }
    // given another process holding the writer lock
    char result = 0;
    ASSERT_EQ(::read(ready[0], &result, 1), 1);
    ASSERT_EQ(result, 'y');
    // when this one tries to write, it is refused and nothing is written
    auto second = makeRepository();
    auto locked = second->acquireWriterLock();
    ASSERT_FALSE(locked.ok());
    EXPECT_EQ(locked.error(), "Daywyn is open in another process; try again when it has closed.");
    auto saved = second->save(stateWithTasks(1, "refused"));
    ASSERT_FALSE(saved.ok());
    EXPECT_EQ(saved.error(), JSONTaskRepository::kOtherWriterMessage);
    EXPECT_FALSE(std::filesystem::exists(stateFilePath()));
    EXPECT_TRUE(second->load().ok()) << "reading never needs the lock";
    // then once the other process has exited, it may write
    ASSERT_EQ(::write(release[1], "x", 1), 1);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(second->acquireWriterLock().ok());
    EXPECT_TRUE(second->save(stateWithTasks(1, "accepted")).ok());
}

} // namespace daywyn::test
