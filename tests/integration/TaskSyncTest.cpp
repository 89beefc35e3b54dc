// Two machines' task lists syncing through a real Radicale server: the CalDAV client
// and the sync pass together, each machine with its own tasks and sync state.
#include <algorithm>

#include <QProcess>
#include <gtest/gtest.h>

#include "RadicaleServer.h"
#include "support/TaskBuilder.h"
#include "sync/SyncPass.h"
#include "sync/ical/IcalTaskCoding.h"
#include "sync/qt/CalDavClient.h"
#include "sync/qt/CalDavDiscovery.h"

namespace daywyn::sync {
namespace {

using test::TaskBuilder;

const Instant kStart = *parseIsoText("2026-03-04T08:15:00Z");

// One machine: its tasks and what it remembers between passes.
struct Replica {
    QUrl list;
    std::vector<TaskItem> tasks;
    SyncState state;
    Calendar calendar;

    SyncOutcome pass(Instant now) {
        CalDavClient client(list, {"ama", "secret"}, 5000);
        const IcalTaskCoding coding;
        SyncOutcome outcome = runSyncPass(client, coding, tasks, state, now, calendar);
        tasks = outcome.tasks;
        state = outcome.state;
        return outcome;
    }
    // Changes the tasks as the store would, noting the change for the next pass.
    void edit(Instant now, const std::function<void(std::vector<TaskItem>&)>& change) {
        const std::vector<TaskItem> before = tasks;
        change(tasks);
        noteLocalChanges(state, before, tasks, now);
    }
    TaskItem* find(const Uuid& id) {
        auto found =
            std::find_if(tasks.begin(), tasks.end(), [&](const TaskItem& t) { return t.id == id; });
        return found == tasks.end() ? nullptr : &*found;
    }
};

class TaskSync : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(server.start()) << server.problem().toStdString();
        CalDavDiscovery discovery(server.url(), {"ama", "secret"});
        auto account = discovery.discover();
        ASSERT_TRUE(account.ok()) << account.error();
        auto made = discovery.createTaskList(account->homeUrl, "Daywyn");
        ASSERT_TRUE(made.ok()) << made.error();
        laptop.list = desktop.list = QUrl(QString::fromStdString(made->url));
    }

    // Both machines hold `task`: made on the laptop, synced to the desktop.
    void shareTask(const TaskItem& task) {
        laptop.edit(kStart, [&](auto& tasks) { tasks.push_back(task); });
        ASSERT_EQ(laptop.pass(kStart + 10).error, "");
        ASSERT_EQ(desktop.pass(kStart + 20).error, "");
        ASSERT_NE(desktop.find(task.id), nullptr);
    }

    test::RadicaleServer server;
    Replica laptop;
    Replica desktop;
};

TEST_F(TaskSync, EditsOfDifferentFieldsOnBothMachinesAreBothKept) {
    const TaskItem task = TaskBuilder("Call the bank").createdAt(kStart).estimate(20).build();
    shareTask(task);

    laptop.edit(kStart + 100, [&](auto&) { laptop.find(task.id)->title = "Call the bank at 10"; });
    desktop.edit(kStart + 200, [&](auto&) { desktop.find(task.id)->estimatedMinutes = 45; });
    ASSERT_EQ(laptop.pass(kStart + 300).error, "");
    ASSERT_EQ(desktop.pass(kStart + 310).error, "");
    ASSERT_EQ(laptop.pass(kStart + 320).error, "");

    for (Replica* machine : {&laptop, &desktop}) {
        const TaskItem* synced = machine->find(task.id);
        ASSERT_NE(synced, nullptr);
        EXPECT_EQ(synced->title, "Call the bank at 10");
        EXPECT_EQ(synced->estimatedMinutes, 45);
    }
    EXPECT_TRUE(desktop.state.conflicts.empty());
    EXPECT_EQ(laptop.tasks, desktop.tasks);
}

TEST_F(TaskSync, TheSameFieldEditedOnBothKeepsTheLaterEditAndLogsTheOther) {
    const TaskItem task = TaskBuilder("Pay rent").createdAt(kStart).build();
    shareTask(task);

    laptop.edit(kStart + 100, [&](auto&) { laptop.find(task.id)->title = "Pay rent today"; });
    desktop.edit(kStart + 200, [&](auto&) { desktop.find(task.id)->title = "Pay rent by noon"; });
    ASSERT_EQ(laptop.pass(kStart + 300).error, "");
    const SyncOutcome merged = desktop.pass(kStart + 310);
    ASSERT_EQ(merged.error, "");
    EXPECT_EQ(merged.summary.conflicts, 1);
    ASSERT_EQ(laptop.pass(kStart + 320).error, "");

    EXPECT_EQ(laptop.find(task.id)->title, "Pay rent by noon");
    EXPECT_EQ(desktop.find(task.id)->title, "Pay rent by noon");
    ASSERT_EQ(desktop.state.conflicts.size(), 1U);
    const ConflictRecord& logged = desktop.state.conflicts.front();
    EXPECT_EQ(logged.field, "title");
    EXPECT_EQ(logged.keptValue, "Pay rent by noon");
    EXPECT_EQ(logged.setAsideValue, "Pay rent today");
    EXPECT_EQ(logged.lost, ConflictSide::remote);
}

TEST_F(TaskSync, ATaskDeletedOnOneMachineAndEditedOnTheOtherSurvives) {
    const TaskItem task = TaskBuilder("Renew passport").createdAt(kStart).build();
    shareTask(task);

    laptop.edit(kStart + 100, [&](auto& tasks) { std::erase(tasks, *laptop.find(task.id)); });
    desktop.edit(kStart + 200, [&](auto&) { desktop.find(task.id)->estimatedMinutes = 30; });
    ASSERT_EQ(laptop.pass(kStart + 300).error, "");
    ASSERT_EQ(desktop.pass(kStart + 310).error, "");
    ASSERT_EQ(laptop.pass(kStart + 320).error, "");

    for (Replica* machine : {&laptop, &desktop}) {
        const TaskItem* kept = machine->find(task.id);
        ASSERT_NE(kept, nullptr);
        EXPECT_EQ(kept->estimatedMinutes, 30);
    }
}

TEST_F(TaskSync, AServerDownForAHundredPassesLosesNothingAndGetsEveryChangeAfter) {
    std::vector<TaskItem> first;
    for (int i = 0; i < 10; ++i) {
        first.push_back(TaskBuilder("Task " + std::to_string(i)).createdAt(kStart).build());
    }
    laptop.edit(kStart, [&](auto& tasks) { tasks = first; });
    ASSERT_EQ(laptop.pass(kStart + 10).error, "");
    ASSERT_EQ(desktop.pass(kStart + 20).error, "");
    ASSERT_EQ(desktop.tasks.size(), 10U);

    server.stop();
    std::string lastError;
    for (int n = 0; n < 100; ++n) {
        const Instant at = kStart + 100 + 60.0 * n;
        laptop.edit(at, [&](auto& tasks) {
            if (n < 5) {
                std::erase(tasks, *laptop.find(first[static_cast<std::size_t>(n)].id));
            } else if (n < 10) {
                laptop.find(first[static_cast<std::size_t>(n)].id)->title += " edited";
            } else {
                tasks.push_back(TaskBuilder("Offline " + std::to_string(n)).createdAt(at).build());
            }
        });
        const SyncOutcome failed = laptop.pass(at + 1);
        lastError = failed.error;
        ASSERT_FALSE(failed.error.empty());
    }
    EXPECT_EQ(lastError.rfind("The sync server could not be reached", 0), 0U) << lastError;
    // 10 made, 5 deleted, 90 added: nothing else went missing meanwhile.
    EXPECT_EQ(laptop.tasks.size(), 95U);

    ASSERT_TRUE(server.start()) << server.problem().toStdString();
    const SyncOutcome back = laptop.pass(kStart + 7000);
    ASSERT_EQ(back.error, "");
    EXPECT_TRUE(laptop.state.localChanges.empty());
    ASSERT_EQ(desktop.pass(kStart + 7010).error, "");

    EXPECT_EQ(desktop.tasks.size(), 95U);
    EXPECT_EQ(back.summary.pushed, 95);
    auto byId = [](std::vector<TaskItem> tasks) {
        std::sort(tasks.begin(), tasks.end(),
                  [](const TaskItem& a, const TaskItem& b) { return a.id < b.id; });
        return tasks;
    };
    EXPECT_EQ(byId(desktop.tasks), byId(laptop.tasks));
}

TEST_F(TaskSync, ATaskWrittenByAnotherProgramArrivesWithItsFields) {
    const std::string ics = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Phone//EN\r\n"
                            "BEGIN:VTODO\r\nUID:phone-42@example.com\r\n"
                            "DTSTAMP:20260304T070000Z\r\nCREATED:20260304T070000Z\r\n"
                            "LAST-MODIFIED:20260304T070000Z\r\nSUMMARY:Buy stamps\r\n"
                            "DTSTART:20260305T090000Z\r\nDUE:20260305T093000Z\r\n"
                            "X-PHONE-COLOR:teal\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
    QProcess curl;
    curl.start(QStringLiteral("curl"),
               {QStringLiteral("-sf"), QStringLiteral("-u"), QStringLiteral("ama:secret"),
                QStringLiteral("-X"), QStringLiteral("PUT"), QStringLiteral("-H"),
                QStringLiteral("Content-Type: text/calendar; charset=utf-8"),
                QStringLiteral("--data-binary"), QString::fromStdString(ics),
                laptop.list.toString() + QStringLiteral("phone-42.ics")});
    ASSERT_TRUE(curl.waitForFinished(10000));
    ASSERT_EQ(curl.exitCode(), 0);

    ASSERT_EQ(laptop.pass(kStart).error, "");
    ASSERT_EQ(laptop.tasks.size(), 1U);
    TaskItem& arrived = laptop.tasks.front();
    EXPECT_EQ(arrived.title, "Buy stamps");
    EXPECT_EQ(arrived.scheduledStart, parseIsoText("2026-03-05T09:00:00Z"));
    EXPECT_EQ(arrived.scheduledEnd, parseIsoText("2026-03-05T09:30:00Z"));
    EXPECT_EQ(arrived.id, taskIdForUid("phone-42@example.com"));

    // Edited here and sent back, the phone's own property is still there.
    laptop.edit(kStart + 60, [&](auto& tasks) { tasks.front().title = "Buy stamps and tape"; });
    ASSERT_EQ(laptop.pass(kStart + 120).error, "");
    CalDavClient client(laptop.list, {"ama", "secret"});
    auto stored = client.fetch({client.hrefFor("phone-42")});
    ASSERT_TRUE(stored.ok()) << stored.error();
    ASSERT_EQ(stored->size(), 1U);
    EXPECT_NE(stored->at(0).ics.find("SUMMARY:Buy stamps and tape"), std::string::npos);
    EXPECT_NE(stored->at(0).ics.find("X-PHONE-COLOR:teal"), std::string::npos);
    EXPECT_NE(stored->at(0).ics.find("UID:phone-42@example.com"), std::string::npos);
}

} // namespace
} // namespace daywyn::sync
