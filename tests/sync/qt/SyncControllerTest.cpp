// The app's task sync on a fake server: when passes run (after a change, on the
// period, after a wake), that they never overlap, and that what the user does while a
// pass runs, or a pass that fails, loses nothing.
#include "sync/qt/SyncController.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include "FakeDavServer.h"
#include "persistence/PosixFileSystem.h"
#include "store/TodayTaskStore.h"
#include "support/FakeCalDavCollection.h"
#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "sync/ical/IcalTaskCoding.h"
#include "sync/qt/SyncAccountAccess.h"

namespace daywyn::sync {
namespace {

using Call = test::FakeCalDavCollection::Call;

const Instant kStart = *parseIsoText("2026-03-04T08:15:00Z");

TaskDraft draftTitled(std::string title) {
    TaskDraft draft;
    draft.title = std::move(title);
    return draft;
}

// The test's server, lent to each pass.
class LentCollection : public CalDavCollection {
public:
    explicit LentCollection(CalDavCollection& server)
        : server_(server) {}
    Result<ChangeListing> changesSince(const std::string& token) override {
        return server_.changesSince(token);
    }
    Result<std::vector<RemoteResource>> fetch(const std::vector<std::string>& hrefs) override {
        return server_.fetch(hrefs);
    }
    Result<WriteReply> put(const std::string& href, const std::string& ics,
                           const std::optional<std::string>& ifMatch) override {
        return server_.put(href, ics, ifMatch);
    }
    Result<WriteOutcome> remove(const std::string& href, const std::string& etag) override {
        return server_.remove(href, etag);
    }
    std::string hrefFor(const std::string& uid) const override { return server_.hrefFor(uid); }

private:
    CalDavCollection& server_;
};

SyncAccount testAccount() {
    return SyncAccount{"https://dav.example.org/", "ama", "https://dav.example.org/ama/daywyn/",
                       "Daywyn"};
}

class SyncControllerTest : public ::testing::Test {
protected:
    SyncControllerTest()
        : clock(kStart) {
        server.fault = [this](Call) -> std::optional<std::string> {
            const int inside = ++callsInside;
            maxCallsInside = std::max(maxCallsInside.load(), inside);
            // A held call ends early when the pass is told to stop, as a real
            // collection's request does.
            const auto heldSince = std::chrono::steady_clock::now();
            while (holdPasses) {
                if (passStop && passStop->load()) {
                    stopSeen = true;
                    break;
                }
                if (std::chrono::steady_clock::now() - heldSince > std::chrono::seconds(20)) {
                    break;
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            --callsInside;
            if (failWith) {
                return std::string("The sync server did not answer.");
            }
            return std::nullopt;
        };
    }

    std::string statePath() const { return folder.filePath("state.json").toStdString(); }

    // Writes a state with the account, as `daywyn sync setup` leaves it.
    void setUpAccount() {
        SyncState state;
        state.account = testAccount();
        ASSERT_TRUE(SyncStateFile(statePath(), std::make_shared<PosixFileSystem>()).save(state));
    }

    SyncState savedState() const {
        auto loaded = SyncStateFile(statePath(), std::make_shared<PosixFileSystem>()).load(kStart);
        EXPECT_TRUE(loaded.ok());
        return loaded.ok() ? loaded.value().state : SyncState{};
    }

    void makeController(SyncController::Timing timing = {50, 3'600'000, 60'000}) {
        controller = std::make_unique<SyncController>(
            SyncController::TaskList{
                [this]() -> const std::vector<TaskItem>& { return store.tasks(); },
                [this](std::vector<TaskItem> merged) {
                    return store.replaceWithSyncedTasks(std::move(merged));
                }},
            SyncStateFile(statePath(), std::make_shared<PosixFileSystem>()),
            std::make_shared<IcalTaskCoding>(),
            [this](const SyncAccount&,
                   const StopFlag& stop) -> Result<std::unique_ptr<CalDavCollection>> {
                ++opened;
                passStop = stop;
                if (keyringLocked) {
                    return Error{"The keyring is locked; unlock it and sync again."};
                }
                return std::unique_ptr<CalDavCollection>(std::make_unique<LentCollection>(server));
            },
            calendar, clock.function(), timing);
        store.setOnMeaningfulChange(
            [this](const std::vector<TaskItem>& tasks, const AppPreferences&) {
                controller->noteStoreChange(tasks);
            });
    }

    // Starts the controller and waits for the first pass a set-up account runs.
    void startAndSettle() {
        controller->start(&resume);
        ASSERT_TRUE(test::waitUntil([this] { return !controller->isSyncing(); }));
    }

    Uuid add(const std::string& title) {
        EXPECT_FALSE(store.addTaskReliably(draftTitled(title), clock.now(), calendar));
        return store.tasks().back().id;
    }

    const TaskItem* onServer(const Uuid& id) {
        for (const auto& [href, stored] : server.resources()) {
            auto decoded = IcalTaskCoding().decode(stored.ics, calendar);
            if (decoded.ok() && decoded.value().task.id == id) {
                serverCopy = decoded.value().task;
                return &serverCopy;
            }
        }
        return nullptr;
    }

    QTemporaryDir folder;
    Calendar calendar = test::berlin();
    test::ManualClock clock;
    TodayTaskStore store{nullptr, kStart, test::berlin()};
    test::FakeCalDavCollection server;
    ResumeSignal resume;
    std::unique_ptr<SyncController> controller;
    std::atomic<bool> holdPasses{false};
    // The stop flag the last pass opened its collection with, and whether a held call
    // ended because of it.
    StopFlag passStop;
    std::atomic<bool> stopSeen{false};
    std::atomic<bool> failWith{false};
    std::atomic<int> callsInside{0};
    std::atomic<int> maxCallsInside{0};
    bool keyringLocked = false;
    // Passes started: each opens the task list once, on its worker thread.
    std::atomic<int> opened{0};
    TaskItem serverCopy;
};

TEST_F(SyncControllerTest, WithoutAnAccountNothingRunsAndTheDrawerSaysNothing) {
    makeController();
    controller->start(&resume);
    add("Buy milk");
    Q_EMIT resume.resumed();
    controller->syncNow();
    std::optional<PassReport> report;
    controller->runPass([&](const PassReport& ended) { report = ended; });

    QTest::qWait(150);
    EXPECT_EQ(opened.load(), 0);
    EXPECT_EQ(controller->statusLine(), QString());
    ASSERT_TRUE(report);
    EXPECT_EQ(report->error, SyncController::notSetUpSentence());
}

TEST_F(SyncControllerTest, ChangesAreNotedWithTheirTimeAndABurstIsSentByOnePass) {
    setUpAccount();
    const Uuid before = add("Made before the app started");
    makeController();
    startAndSettle();
    EXPECT_EQ(opened.load(), 1);
    ASSERT_NE(onServer(before), nullptr);
    EXPECT_EQ(controller->statusLine(), QStringLiteral("Synced just now"));

    clock.advance(120);
    const Uuid first = add("Call the bank");
    clock.advance(1);
    const Uuid second = add("Water plants");
    // Noted at the time of the edit, before any pass ran.
    ASSERT_EQ(controller->state().localChanges.size(), 2U);
    EXPECT_EQ(controller->state().localChanges.at(first).changedAt.seconds, (kStart + 120).seconds);
    EXPECT_EQ(controller->state().localChanges.at(second).changedAt.seconds,
              (kStart + 121).seconds);
    EXPECT_EQ(controller->statusLine(), QStringLiteral("Synced 2 min ago"));

    ASSERT_TRUE(test::waitUntil([&] { return opened.load() == 2; }));
    ASSERT_TRUE(test::waitUntil([&] { return !controller->isSyncing(); }));
    QTest::qWait(120);
    EXPECT_EQ(opened.load(), 2) << "two quick edits, one pass";

    // The reminder scheduler's own bookkeeping is this machine's: no pass for it.
    store.markTaskReminderScheduled(first, kStart + 3600);
    store.markOverdueEndScheduled(second, kStart + 7200);
    QTest::qWait(200);
    EXPECT_EQ(opened.load(), 2);
    EXPECT_TRUE(controller->state().localChanges.empty());
    ASSERT_NE(onServer(first), nullptr);
    EXPECT_EQ(onServer(first)->title, "Call the bank");
    ASSERT_NE(onServer(second), nullptr);
    EXPECT_TRUE(controller->state().localChanges.empty());
    // The state on disk is the controller's, for `daywyn sync status`.
    EXPECT_EQ(savedState(), controller->state());
}

TEST_F(SyncControllerTest, PassesRunOnThePeriodAndAfterAWakeEachCostingOneRequest) {
    setUpAccount();
    add("Read");
    makeController({50, 100, 60'000});
    // Counted as each pass ends, when no other runs: the next starts only after.
    int finished = 0;
    int requestsAfterFirst = 0;
    int requestsAfterFourth = 0;
    int listingsAfterFirst = 0;
    int listingsAfterFourth = 0;
    QObject::connect(controller.get(), &SyncController::passFinished, [&] {
        ++finished;
        if (finished == 1) {
            requestsAfterFirst = server.requests();
            listingsAfterFirst = server.requests(Call::changesSince);
        } else if (finished == 4) {
            requestsAfterFourth = server.requests();
            listingsAfterFourth = server.requests(Call::changesSince);
        }
    });
    controller->start(&resume);
    ASSERT_TRUE(test::waitUntil([&] { return finished >= 4; }));
    // Nothing changed on either side after the first: one listing per pass.
    EXPECT_EQ(requestsAfterFourth - requestsAfterFirst, 3);
    EXPECT_EQ(listingsAfterFourth - listingsAfterFirst, 3);
    // The period never piles passes up behind a slow one.
    EXPECT_LE(opened.load(), finished + 1);

    // The period alone does not explain a pass right after a wake.
    controller.reset();
    makeController({50, 3'600'000, 60'000});
    startAndSettle();
    const int started = opened.load();
    Q_EMIT resume.resumed();
    ASSERT_TRUE(test::waitUntil([&] { return opened.load() == started + 1; }));
}

TEST_F(SyncControllerTest, PassesNeverOverlapAndARequestDuringOneRunsOneMore) {
    setUpAccount();
    makeController();
    holdPasses = true;
    controller->start(&resume);
    ASSERT_TRUE(test::waitUntil([&] { return callsInside.load() == 1; }));
    // The main thread is free while the server is slow: edits and requests go on.
    const Uuid during = add("Added while the pass ran");
    controller->syncNow();
    Q_EMIT resume.resumed();
    int answered = 0;
    controller->runPass([&](const PassReport&) { ++answered; });
    QTest::qWait(150);
    EXPECT_EQ(opened.load(), 1);
    EXPECT_TRUE(controller->isSyncing());

    holdPasses = false;
    ASSERT_TRUE(test::waitUntil([&] { return answered == 1; }));
    ASSERT_TRUE(test::waitUntil([&] { return !controller->isSyncing(); }));
    QTest::qWait(120);
    EXPECT_EQ(maxCallsInside.load(), 1);
    EXPECT_EQ(opened.load(), 2);
    // The answer came from the pass that started after the request: it sent the task.
    ASSERT_NE(onServer(during), nullptr);
}

TEST_F(SyncControllerTest, EditsMadeWhileAPassRunsAreKeptAndSentNext) {
    setUpAccount();
    const Uuid shared = add("Pay rent");
    const Uuid mine = add("Renew passport");
    makeController();
    startAndSettle();
    ASSERT_NE(onServer(shared), nullptr);

    // Another client renames one task on the server.
    TaskItem renamed = *onServer(shared);
    renamed.title = "Pay rent by noon";
    const std::string href = server.hrefFor(shared.text());
    server.store(href, IcalTaskCoding().encode(renamed, {}, server.resources().at(href).ics,
                                               kStart + 50, calendar));

    // What the pass that ran during the edit left behind, seen as it ends (the edit
    // asks for one more pass, which starts at once).
    std::string sharedTitle;
    std::string mineTitle;
    std::optional<Instant> mineNotedAt;
    QObject::connect(controller.get(), &SyncController::passFinished, [&] {
        if (opened.load() != 2) {
            return;
        }
        sharedTitle = store.task(shared)->title;
        mineTitle = store.task(mine)->title;
        if (const auto noted = controller->state().localChanges.find(mine);
            noted != controller->state().localChanges.end()) {
            mineNotedAt = noted->second.changedAt;
        }
    });
    holdPasses = true;
    controller->syncNow();
    ASSERT_TRUE(test::waitUntil([&] { return callsInside.load() == 1; }));
    clock.advance(300);
    const TaskItem* own = store.task(mine);
    ASSERT_NE(own, nullptr);
    TaskDraft draft = TaskDraft::from(*own);
    draft.title = "Renew passport this week";
    store.updateTask(mine, draft, calendar);
    clock.advance(20);
    holdPasses = false;
    ASSERT_TRUE(test::waitUntil([&] { return !sharedTitle.empty(); }));

    EXPECT_EQ(sharedTitle, "Pay rent by noon");
    EXPECT_EQ(mineTitle, "Renew passport this week");
    // Noted at the time it was made, not when the pass ended.
    ASSERT_TRUE(mineNotedAt);
    EXPECT_EQ(mineNotedAt->seconds, (kStart + 300).seconds);

    ASSERT_TRUE(test::waitUntil([&] { return opened.load() == 3 && !controller->isSyncing(); }));
    EXPECT_EQ(store.task(shared)->title, "Pay rent by noon");
    EXPECT_EQ(onServer(mine)->title, "Renew passport this week");
    EXPECT_TRUE(controller->state().localChanges.empty());
}

TEST_F(SyncControllerTest, AFailedPassKeepsEveryTaskAndItsChangesAndSaysWhy) {
    setUpAccount();
    add("Call Ama");
    makeController();
    startAndSettle();
    failWith = true;
    clock.advance(60);
    const Uuid waiting = add("Water plants");
    const std::vector<TaskItem> tasks = store.tasks();
    ASSERT_TRUE(test::waitUntil([&] { return opened.load() == 2 && !controller->isSyncing(); }));

    EXPECT_EQ(store.tasks(), tasks);
    EXPECT_TRUE(controller->hasFailed());
    EXPECT_EQ(controller->statusLine(), QStringLiteral("The sync server did not answer."));
    EXPECT_TRUE(controller->state().localChanges.contains(waiting));
    EXPECT_EQ(savedState().lastError, "The sync server did not answer.");

    // The keyring failing is a failure like any other.
    failWith = false;
    keyringLocked = true;
    controller->syncNow();
    ASSERT_TRUE(test::waitUntil([&] { return opened.load() == 3 && !controller->isSyncing(); }));
    EXPECT_EQ(controller->statusLine(),
              QStringLiteral("The keyring is locked; unlock it and sync again."));
    EXPECT_EQ(store.tasks(), tasks);

    keyringLocked = false;
    std::optional<PassReport> report;
    controller->runPass([&](const PassReport& ended) { report = ended; });
    ASSERT_TRUE(test::waitUntil([&] { return report.has_value(); }));
    EXPECT_EQ(report->error, "");
    EXPECT_EQ(report->summary.pushed, 1);
    EXPECT_FALSE(controller->hasFailed());
    EXPECT_EQ(controller->statusLine(), QStringLiteral("Synced just now"));
    ASSERT_NE(onServer(waiting), nullptr);
}

TEST_F(SyncControllerTest, ATaskListThatCannotBeSavedLeavesTheStateAsItWas) {
    setUpAccount();
    // A store over a repository whose saves fail from now on.
    auto repository = test::FakeRepository::make();
    test::FakeRepository* disk = repository.get();
    TodayTaskStore failing(std::move(repository), kStart, calendar);
    const std::size_t firstRun = failing.tasks().size();
    controller = std::make_unique<SyncController>(
        SyncController::TaskList{[&]() -> const std::vector<TaskItem>& { return failing.tasks(); },
                                 [&](std::vector<TaskItem> merged) {
                                     return failing.replaceWithSyncedTasks(std::move(merged));
                                 }},
        SyncStateFile(statePath(), std::make_shared<PosixFileSystem>()),
        std::make_shared<IcalTaskCoding>(),
        [this](const SyncAccount&, const StopFlag&) -> Result<std::unique_ptr<CalDavCollection>> {
            return std::unique_ptr<CalDavCollection>(std::make_unique<LentCollection>(server));
        },
        calendar, clock.function(), SyncController::Timing{50, 3'600'000, 60'000});
    const TaskItem remote = test::TaskBuilder("From the phone").createdAt(kStart).build();
    server.store(server.hrefFor(remote.id.text()),
                 IcalTaskCoding().encode(remote, {}, {}, kStart, calendar));
    disk->failNextSaves(5);
    startAndSettle();

    EXPECT_EQ(failing.tasks().size(), firstRun);
    EXPECT_TRUE(controller->hasFailed());
    EXPECT_NE(controller->statusLine().indexOf(QStringLiteral("No space left on device")), -1);
    // Nothing was recorded as synced, so the next pass fetches the task again.
    EXPECT_TRUE(savedState().synced.empty());
    controller.reset();
}

// Setting an account up from the settings page and forgetting it: discovery against a
// loopback server, the password in a private keyring, passes on the fake task list.
class SyncSetupTest : public SyncControllerTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(test::startUnlockedKeyring(keyring));
        ASSERT_TRUE(dav.start());
    }
    void TearDown() override { test::stopProcess(&keyring); }

    SyncAccount accountAt(const std::string& list, const std::string& name) const {
        return SyncAccount{dav.url().toString().toStdString(), "ama",
                           dav.url(QString::fromStdString(list)).toString().toStdString(), name};
    }

    // Runs the find step and waits for its answer.
    void find(const QString& password) {
        controller->findTaskLists(dav.url().toString(), QStringLiteral("ama"), password);
        ASSERT_TRUE(test::waitUntil([&] { return controller->setupStep() != "finding"; }));
    }

    QProcess keyring;
    test::FakeDavServer dav;
};

TEST_F(SyncSetupTest, AWrongPasswordOrAddressIsASentenceAndNothingIsStored) {
    dav.addList(QStringLiteral("/ama/tasks/"), QStringLiteral("Tasks"));
    makeController();
    controller->start(&resume);

    // Refused before asking anyone.
    controller->findTaskLists(QStringLiteral("http://dav.example.org/"), QStringLiteral("ama"),
                              QStringLiteral("secret"));
    EXPECT_EQ(controller->setupStep(), QStringLiteral("form"));
    EXPECT_EQ(controller->setupError(),
              QStringLiteral("Daywyn sends your password only over https; dav.example.org is not "
                             "this computer, so use an https address."));
    controller->findTaskLists(dav.url().toString(), QStringLiteral(" "), QStringLiteral("secret"));
    EXPECT_EQ(controller->setupError(), QStringLiteral("Give your user name on the server."));
    EXPECT_TRUE(dav.requests().isEmpty());

    // The server is asked on the worker: the call returns at once.
    controller->findTaskLists(dav.url().toString(), QStringLiteral("ama"),
                              QStringLiteral("not-the-password"));
    EXPECT_EQ(controller->setupStep(), QStringLiteral("finding"));
    EXPECT_EQ(controller->setupError(), QString());
    ASSERT_TRUE(test::waitUntil([&] { return controller->setupStep() != "finding"; }));
    EXPECT_EQ(controller->setupStep(), QStringLiteral("form"));
    EXPECT_EQ(controller->setupError(),
              QStringLiteral("The sync server refused the user name or password."));
    EXPECT_TRUE(controller->foundLists().isEmpty());

    EXPECT_FALSE(controller->isSetUp());
    EXPECT_FALSE(savedState().account.has_value());
    EXPECT_EQ(syncPasswordStore(accountAt("/ama/tasks/", "Tasks")).read().outcome,
              SecretRead::Outcome::missing);
    QTest::qWait(100);
    EXPECT_EQ(opened.load(), 0);
}

TEST_F(SyncSetupTest, ACancelledFindIsDroppedAndAFailedStartLeavesTheChoice) {
    dav.addList(QStringLiteral("/ama/tasks/"), QStringLiteral("Tasks"));
    makeController();
    controller->start(&resume);
    controller->findTaskLists(dav.url().toString(), QStringLiteral("ama"),
                              QStringLiteral("secret"));
    controller->cancelSetup();
    // Whatever the find had found by then never reaches the form.
    QTest::qWait(300);
    EXPECT_EQ(controller->setupStep(), QStringLiteral("form"));
    EXPECT_TRUE(controller->foundLists().isEmpty());

    find(QStringLiteral("secret"));
    ASSERT_EQ(controller->setupStep(), QStringLiteral("choosing"));
    // The password changed on the server between the two steps: making the list fails.
    controller->startSyncing(QStringLiteral("changed"), QString());
    ASSERT_TRUE(test::waitUntil([&] { return controller->setupStep() != "starting"; }));
    EXPECT_EQ(controller->setupStep(), QStringLiteral("choosing"));
    EXPECT_NE(controller->setupError().indexOf(QStringLiteral("did not create the task list")), -1)
        << controller->setupError().toStdString();
    EXPECT_EQ(controller->foundLists().size(), 1);
    EXPECT_FALSE(controller->isSetUp());
    EXPECT_FALSE(savedState().account.has_value());
}

// A server that takes a request and never answers holds neither the next find nor
// quitting for its 30 s limit.
TEST_F(SyncSetupTest, ACancelledOrAbandonedFindGivesUpItsRequest) {
    dav.addList(QStringLiteral("/ama/tasks/"), QStringLiteral("Tasks"));
    makeController();
    controller->start(&resume);
    dav.setSilent(true);
    controller->findTaskLists(dav.url().toString(), QStringLiteral("ama"),
                              QStringLiteral("secret"));
    ASSERT_TRUE(test::waitUntil([&] { return dav.requests().size() == 1; }));
    controller->cancelSetup();
    EXPECT_EQ(controller->setupStep(), QStringLiteral("form"));

    dav.setSilent(false);
    find(QStringLiteral("secret"));
    EXPECT_EQ(controller->setupStep(), QStringLiteral("choosing"));
    EXPECT_EQ(controller->setupError(), QString());
    ASSERT_EQ(controller->foundLists().size(), 1);

    controller->cancelSetup();
    dav.setSilent(true);
    const qsizetype asked = dav.requests().size();
    controller->findTaskLists(dav.url().toString(), QStringLiteral("ama"),
                              QStringLiteral("secret"));
    ASSERT_TRUE(test::waitUntil([&] { return dav.requests().size() == asked + 1; }));
    QElapsedTimer quitting;
    quitting.start();
    controller.reset();
    EXPECT_LT(quitting.elapsed(), 15'000) << "quitting waited for the server's time limit";
}

TEST_F(SyncControllerTest, QuittingEndsThePassUnderWay) {
    setUpAccount();
    makeController();
    startAndSettle();
    holdPasses = true;
    controller->syncNow();
    ASSERT_TRUE(test::waitUntil([&] { return callsInside.load() == 1; }));
    controller.reset();
    EXPECT_TRUE(stopSeen.load());
}

TEST_F(SyncSetupTest, AGoodAccountIsKeptLikeTheCommandLineKeepsItAndTheFirstPassRuns) {
    dav.addList(QStringLiteral("/ama/tasks/"), QStringLiteral("Tasks"));
    const Uuid local = add("Made before sync was set up");
    makeController();
    controller->start(&resume);

    find(QStringLiteral("secret"));
    ASSERT_EQ(controller->setupStep(), QStringLiteral("choosing"));
    ASSERT_EQ(controller->foundLists().size(), 1);
    const QVariantMap found = controller->foundLists().front().toMap();
    EXPECT_EQ(found.value(QStringLiteral("name")).toString(), QStringLiteral("Tasks"));
    EXPECT_EQ(found.value(QStringLiteral("url")).toString(),
              dav.url(QStringLiteral("/ama/tasks/")));
    // No list is named "Daywyn": making one is offered.
    EXPECT_EQ(controller->newListName(), QStringLiteral("Daywyn"));

    controller->startSyncing(QStringLiteral("secret"), QString());
    ASSERT_TRUE(test::waitUntil([&] { return controller->isSetUp() && opened.load() == 1; }));
    ASSERT_TRUE(test::waitUntil([&] { return !controller->isSyncing(); }));
    ASSERT_EQ(dav.lists().size(), 2U);
    const QString made = dav.lists().back().path;
    EXPECT_TRUE(dav.requests().contains(QStringLiteral("MKCALENDAR ") + made));

    const SyncAccount account = accountAt(made.toStdString(), "Daywyn");
    EXPECT_EQ(controller->state().account, account);
    EXPECT_EQ(savedState().account, account);
    const SecretRead password = syncPasswordStore(account).read();
    EXPECT_EQ(password.outcome, SecretRead::Outcome::found);
    EXPECT_EQ(password.secret, "secret");
    EXPECT_EQ(controller->setupStep(), QStringLiteral("form"));
    // The first pass sent the task made before.
    EXPECT_NE(onServer(local), nullptr);
    EXPECT_FALSE(controller->hasFailed());
}

TEST_F(SyncSetupTest, StoppingForgetsTheAccountAndPasswordKeepsEveryTaskAndDropsAPassUnderWay) {
    dav.addList(QStringLiteral("/ama/tasks/"), QStringLiteral("Tasks"));
    const SyncAccount account = accountAt("/ama/tasks/", "Tasks");
    SyncState stored;
    ASSERT_TRUE(storeSyncAccount(stored, account, "secret"));
    ASSERT_TRUE(SyncStateFile(statePath(), std::make_shared<PosixFileSystem>()).save(stored));
    add("Call Ama");
    makeController();
    startAndSettle();
    const TaskItem remote = test::TaskBuilder("From the phone").createdAt(kStart).build();
    server.store(server.hrefFor(remote.id.text()),
                 IcalTaskCoding().encode(remote, {}, {}, kStart, calendar));

    // A pass that would fetch the server's new task is under way when sync stops.
    holdPasses = true;
    controller->syncNow();
    ASSERT_TRUE(test::waitUntil([&] { return callsInside.load() == 1; }));
    const std::vector<TaskItem> tasks = store.tasks();
    controller->stopSyncing();
    EXPECT_FALSE(controller->isSetUp());
    // The pass gives up its request instead of running on before the password goes.
    ASSERT_TRUE(test::waitUntil(
        [&] { return syncPasswordStore(account).read().outcome == SecretRead::Outcome::missing; }));
    ASSERT_TRUE(test::waitUntil([&] { return !controller->isSyncing(); }));
    EXPECT_TRUE(stopSeen.load());
    holdPasses = false;

    EXPECT_EQ(store.tasks(), tasks);
    EXPECT_EQ(controller->state(), SyncState{});
    EXPECT_EQ(savedState(), SyncState{});
    EXPECT_EQ(controller->setupError(), QString());
    // Nothing more is noted or sent.
    const int passes = opened.load();
    add("Water plants");
    controller->syncNow();
    QTest::qWait(150);
    EXPECT_EQ(opened.load(), passes);
    EXPECT_TRUE(controller->state().localChanges.empty());
}

} // namespace
} // namespace daywyn::sync
