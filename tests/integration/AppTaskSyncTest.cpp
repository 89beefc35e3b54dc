// The app's task sync against a real Radicale server: two machines, each a store over
// its own data file and a sync controller over its own sync state, editing through the
// store as the screens do and syncing on their own.
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include "RadicaleServer.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "store/TodayTaskStore.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "sync/ical/IcalTaskCoding.h"
#include "sync/qt/CalDavClient.h"
#include "sync/qt/CalDavDiscovery.h"
#include "sync/qt/SyncController.h"

namespace daywyn::sync {
namespace {

const Instant kStart = *parseIsoText("2026-03-04T08:15:00Z");

TaskDraft draftTitled(std::string title) {
    TaskDraft draft;
    draft.title = std::move(title);
    return draft;
}

// One machine: its data folder, its store and its sync, as the app wires them.
class Machine {
public:
    Machine(const QUrl& list, const test::ManualClock& clock)
        : clock_(clock) {
        SyncState state;
        state.account =
            SyncAccount{"http://127.0.0.1/", "ama", list.toString().toStdString(), "Daywyn"};
        EXPECT_TRUE(stateFile().save(state));
        openStore();
        controller = std::make_unique<SyncController>(
            SyncController::TaskList{
                [this]() -> const std::vector<TaskItem>& { return store->tasks(); },
                [this](std::vector<TaskItem> merged) {
                    return store->replaceWithSyncedTasks(std::move(merged));
                }},
            stateFile(), std::make_shared<IcalTaskCoding>(),
            [](const SyncAccount& account,
               const StopFlag& stop) -> Result<std::unique_ptr<CalDavCollection>> {
                auto client = std::make_unique<CalDavClient>(
                    QUrl(QString::fromStdString(account.collectionUrl)),
                    DavCredentials{QStringLiteral("ama"), QStringLiteral("secret")}, 5000);
                client->stopWhen(stop);
                return std::unique_ptr<CalDavCollection>(std::move(client));
            },
            test::berlin(), clock_.function(), SyncController::Timing{50, 3'600'000, 60'000});
        store->setOnMeaningfulChange(
            [this](const std::vector<TaskItem>& tasks, const AppPreferences&) {
                controller->noteStoreChange(tasks);
            });
        controller->start(nullptr);
        settle();
    }

    // Waits until every change made here is on the server and no pass runs.
    void settle() {
        EXPECT_TRUE(test::waitUntil([this] {
            return controller->state().localChanges.empty() && !controller->isSyncing();
        }));
    }

    // One pass now, and its report.
    PassReport sync() {
        std::optional<PassReport> report;
        controller->runPass([&](const PassReport& ended) { report = ended; });
        EXPECT_TRUE(test::waitUntil([&] { return report.has_value(); }));
        return report.value_or(PassReport{});
    }

    const TaskItem* find(const std::string& title) const {
        for (const auto& task : store->tasks()) {
            if (task.title == title) {
                return &task;
            }
        }
        return nullptr;
    }

    // The tasks in the data file, as the next start of the app would read them.
    std::vector<TaskItem> saved() const {
        JSONTaskRepository file(dataPath(), std::make_shared<PosixFileSystem>(), clock_.function(),
                                clock_.function());
        auto loaded = file.load();
        EXPECT_TRUE(loaded.ok() && loaded.value());
        return loaded.ok() && loaded.value() ? loaded.value()->tasks : std::vector<TaskItem>{};
    }

    std::unique_ptr<TodayTaskStore> store;
    std::unique_ptr<SyncController> controller;

private:
    std::string dataPath() const { return folder_.filePath("daywyn.json").toStdString(); }
    SyncStateFile stateFile() const {
        return SyncStateFile(folder_.filePath("state.json").toStdString(),
                             std::make_shared<PosixFileSystem>());
    }
    void openStore() {
        auto repository = std::make_unique<JSONTaskRepository>(
            dataPath(), std::make_shared<PosixFileSystem>(), clock_.function(), clock_.function());
        store =
            std::make_unique<TodayTaskStore>(std::move(repository), clock_.now(), test::berlin());
    }

    QTemporaryDir folder_;
    test::ManualClock clock_;
};

class AppTaskSync : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(server.start()) << server.problem().toStdString();
        CalDavDiscovery discovery(server.url(), {"ama", "secret"});
        auto account = discovery.discover();
        ASSERT_TRUE(account.ok()) << account.error();
        auto made = discovery.createTaskList(account->homeUrl, "Daywyn");
        ASSERT_TRUE(made.ok()) << made.error();
        list = QUrl(QString::fromStdString(made->url));
    }

    test::RadicaleServer server;
    QUrl list;
    test::ManualClock clock{kStart};
    Calendar calendar = test::berlin();
};

TEST_F(AppTaskSync, EditsInOneAppReachTheOtherAndBothFieldsOfConcurrentEditsSurvive) {
    Machine laptop(list, clock);
    Machine desktop(list, clock);
    // Each started with its first-run tasks; both now hold both sets.
    ASSERT_EQ(laptop.sync().error, "");
    EXPECT_EQ(laptop.store->tasks().size(), desktop.store->tasks().size());

    clock.advance(60);
    ASSERT_FALSE(
        laptop.store->addTaskReliably(draftTitled("Call the bank"), clock.now(), calendar));
    // The change alone starts the laptop's pass.
    laptop.settle();
    EXPECT_EQ(laptop.controller->state().localChanges.size(), 0U);
    const PassReport received = desktop.sync();
    ASSERT_EQ(received.error, "");
    EXPECT_EQ(received.summary.pulled, 1);
    const TaskItem* there = desktop.find("Call the bank");
    ASSERT_NE(there, nullptr);
    const Uuid id = there->id;
    EXPECT_EQ(desktop.saved(), desktop.store->tasks());

    // Different fields edited on both machines before either syncs.
    clock.advance(60);
    TaskDraft renamed = TaskDraft::from(*laptop.store->task(id));
    renamed.title = "Call the bank at 10";
    laptop.store->updateTask(id, renamed, calendar);
    clock.advance(10);
    TaskDraft estimated = TaskDraft::from(*desktop.store->task(id));
    estimated.hasEstimate = true;
    estimated.estimatedMinutes = 25;
    desktop.store->updateTask(id, estimated, calendar);
    // Both passes may run at once; one more round lets each see the other's.
    laptop.settle();
    desktop.settle();
    ASSERT_EQ(laptop.sync().error, "");
    ASSERT_EQ(desktop.sync().error, "");

    for (Machine* machine : {&laptop, &desktop}) {
        const TaskItem* task = machine->store->task(id);
        ASSERT_NE(task, nullptr);
        EXPECT_EQ(task->title, "Call the bank at 10");
        EXPECT_EQ(task->estimatedMinutes, 25);
        EXPECT_TRUE(machine->controller->state().conflicts.empty());
        EXPECT_EQ(machine->saved(), machine->store->tasks());
    }
    EXPECT_EQ(laptop.controller->statusLine(), QStringLiteral("Synced just now"));

    // The same field on both: the later edit wins and the other is in the log.
    clock.advance(60);
    TaskDraft mine = TaskDraft::from(*laptop.store->task(id));
    mine.title = "Call the bank today";
    laptop.store->updateTask(id, mine, calendar);
    laptop.settle();
    clock.advance(30);
    TaskDraft theirs = TaskDraft::from(*desktop.store->task(id));
    theirs.title = "Call the bank tomorrow";
    desktop.store->updateTask(id, theirs, calendar);
    desktop.settle();
    ASSERT_EQ(laptop.sync().error, "");
    EXPECT_EQ(laptop.store->task(id)->title, "Call the bank tomorrow");
    EXPECT_EQ(desktop.store->task(id)->title, "Call the bank tomorrow");
    ASSERT_EQ(desktop.controller->conflicts().size(), 1);
    EXPECT_NE(desktop.controller->conflicts()
                  .front()
                  .toMap()
                  .value(QStringLiteral("text"))
                  .toString()
                  .indexOf(QStringLiteral("\"Call the bank today\" from the server replaced")),
              -1);
}

TEST_F(AppTaskSync, WhileTheServerIsDownEveryTaskStaysAndTheLineSaysSo) {
    Machine laptop(list, clock);
    const std::vector<TaskItem> before = laptop.store->tasks();
    server.stop();
    clock.advance(60);
    ASSERT_FALSE(laptop.store->addTaskReliably(draftTitled("Offline idea"), clock.now(), calendar));
    ASSERT_TRUE(test::waitUntil(
        [&] { return laptop.controller->hasFailed() && !laptop.controller->isSyncing(); }));
    EXPECT_TRUE(laptop.controller->statusLine().startsWith(
        QStringLiteral("The sync server could not be reached")))
        << laptop.controller->statusLine().toStdString();
    EXPECT_EQ(laptop.store->tasks().size(), before.size() + 1);
    EXPECT_EQ(laptop.saved(), laptop.store->tasks());

    ASSERT_TRUE(server.start()) << server.problem().toStdString();
    const PassReport back = laptop.sync();
    ASSERT_EQ(back.error, "");
    EXPECT_EQ(back.summary.pushed, 1);
    EXPECT_FALSE(laptop.controller->hasFailed());

    Machine desktop(list, clock);
    EXPECT_NE(desktop.find("Offline idea"), nullptr);
}

} // namespace
} // namespace daywyn::sync
