#include "sync/SyncPass.h"

#include <gtest/gtest.h>

#include "SyncTestSupport.h"

namespace daywyn::test {

using namespace sync;
using Call = FakeCalDavCollection::Call;

namespace {

const Calendar ny = newYork();
Instant t(int minute) {
    return at(ny, 2026, 3, 9, 9) + 60.0 * minute;
}

TaskItem task(std::string title) {
    return TaskBuilder(std::move(title)).createdAt(t(0));
}

// Two machines that have synced three tasks through one server.
struct TwoMachines {
    FakeCalDavCollection server;
    Replica laptop;
    Replica desktop;
    std::vector<Uuid> ids;

    TwoMachines() {
        laptop.edit(t(1), [&](auto& tasks) {
            for (const char* title : {"Call the bank", "Write report", "Water plants"}) {
                tasks.push_back(task(title));
                ids.push_back(tasks.back().id);
            }
        });
        laptop.sync(server, t(2));
        desktop.sync(server, t(3));
    }
};

} // namespace

TEST(SyncPass, SendsNewTasksAndReceivesThemOnTheOtherMachine) {
    TwoMachines m;
    EXPECT_EQ(m.server.resources().size(), 3u);
    EXPECT_EQ(byId(m.desktop.tasks), byId(m.laptop.tasks));
    EXPECT_EQ(m.laptop.state.lastSummary, "Sent 3 changes.");
    EXPECT_EQ(m.desktop.state.lastSummary, "Received 3 changes.");
    EXPECT_TRUE(m.laptop.state.localChanges.empty());
}

TEST(SyncPass, CostsOneRequestWhenNothingChanged) {
    for (const bool tokens : {true, false}) {
        SCOPED_TRACE(tokens ? "sync tokens" : "etags only");
        TwoMachines m;
        m.server.keepsSyncTokens = tokens;
        m.laptop.sync(m.server, t(4));
        m.server.resetCounts();
        const auto outcome = m.laptop.sync(m.server, t(5));
        EXPECT_EQ(m.server.requests(), 1);
        EXPECT_FALSE(outcome.tasksChanged);
        EXPECT_EQ(outcome.summary.sentence(), "Everything is up to date.");
    }
}

// What a machine scheduled or delivered (a reminder's notification, budget alerts, the
// overdue alert) is its own: no write when only that changes, and never taken from the
// other machine; the reminder itself still syncs.
TEST(SyncPass, KeepsEachMachinesReminderBookkeepingToItself) {
    TwoMachines m;
    const Uuid id = m.ids[0];
    m.laptop.edit(t(10), [&](auto&) {
        m.laptop.find(id)->scheduledReminderDate = t(30);
        m.laptop.find(id)->scheduledBudgetAlerts = {BudgetAlertKind::exceeded};
        m.laptop.find(id)->notifiedOverdueEnd = t(40);
    });
    EXPECT_TRUE(m.laptop.state.localChanges.empty());
    m.server.resetCounts();
    auto outcome = m.laptop.sync(m.server, t(11));
    EXPECT_EQ(m.server.requests(), 1);
    EXPECT_EQ(outcome.summary.pushed, 0);
    EXPECT_EQ(m.laptop.find(id)->scheduledReminderDate, t(30));

    // The desktop moves the reminder and schedules it there; the laptop takes the new
    // reminder and keeps its own bookkeeping.
    m.desktop.edit(t(12), [&](auto&) {
        m.desktop.find(id)->reminderDate = t(50);
        m.desktop.find(id)->scheduledReminderDate = t(50);
    });
    m.desktop.sync(m.server, t(13));
    outcome = m.laptop.sync(m.server, t(14));
    EXPECT_EQ(outcome.summary.pulled, 1);
    const TaskItem& laptops = *m.laptop.find(id);
    EXPECT_EQ(laptops.reminderDate, t(50));
    EXPECT_EQ(laptops.scheduledReminderDate, t(30));
    EXPECT_EQ(laptops.scheduledBudgetAlerts, BudgetAlertSet{BudgetAlertKind::exceeded});
    EXPECT_EQ(laptops.notifiedOverdueEnd, t(40));

    // Edited on both: the merge keeps each machine's own values too.
    m.laptop.edit(t(15), [&](auto&) { m.laptop.find(id)->title = "Call the bank at noon"; });
    m.desktop.edit(t(16), [&](auto&) { m.desktop.find(id)->estimatedMinutes = 10; });
    m.desktop.sync(m.server, t(17));
    m.laptop.sync(m.server, t(18));
    m.desktop.sync(m.server, t(19));
    EXPECT_EQ(m.laptop.find(id)->scheduledReminderDate, t(30));
    EXPECT_EQ(m.desktop.find(id)->scheduledReminderDate, t(50));
    EXPECT_TRUE(m.desktop.find(id)->scheduledBudgetAlerts.empty());
    EXPECT_EQ(m.desktop.find(id)->title, "Call the bank at noon");
    EXPECT_EQ(m.laptop.find(id)->estimatedMinutes, 10);
}

TEST(SyncPass, KeepsEditsOfDifferentFieldsFromBothMachines) {
    TwoMachines m;
    const Uuid id = m.ids[0];
    m.laptop.edit(t(10), [&](auto&) { m.laptop.find(id)->title = "Call the bank at noon"; });
    m.desktop.edit(t(11), [&](auto&) { m.desktop.find(id)->estimatedMinutes = 15; });
    m.laptop.sync(m.server, t(12));
    const auto outcome = m.desktop.sync(m.server, t(13));
    m.laptop.sync(m.server, t(14));
    EXPECT_EQ(outcome.summary.conflicts, 0);
    EXPECT_EQ(m.laptop.find(id)->title, "Call the bank at noon");
    EXPECT_EQ(m.laptop.find(id)->estimatedMinutes, 15);
    EXPECT_EQ(byId(m.laptop.tasks), byId(m.desktop.tasks));
}

TEST(SyncPass, KeepsTheLaterEditOfOneFieldAndLogsTheOther) {
    TwoMachines m;
    const Uuid id = m.ids[1];
    m.desktop.edit(t(10), [&](auto&) { m.desktop.find(id)->title = "Write the report"; });
    m.laptop.edit(t(20), [&](auto&) { m.laptop.find(id)->title = "Write the annual report"; });
    m.desktop.sync(m.server, t(21));
    const auto outcome = m.laptop.sync(m.server, t(22));
    m.desktop.sync(m.server, t(23));
    EXPECT_EQ(m.desktop.find(id)->title, "Write the annual report");
    EXPECT_EQ(byId(m.laptop.tasks), byId(m.desktop.tasks));
    ASSERT_EQ(m.laptop.state.conflicts.size(), 1u);
    const ConflictRecord& conflict = m.laptop.state.conflicts[0];
    EXPECT_EQ(conflict.field, "title");
    EXPECT_EQ(conflict.keptValue, "Write the annual report");
    EXPECT_EQ(conflict.setAsideValue, "Write the report");
    EXPECT_EQ(conflict.lost, ConflictSide::remote);
    EXPECT_EQ(conflict.at, t(22));
    EXPECT_EQ(outcome.summary.sentence(),
              "Sent 1 change. One field was edited on both sides; the later edit was kept and "
              "the other is in the conflict log.");
}

TEST(SyncPass, KeepsATaskDeletedOnOneMachineAndEditedOnTheOther) {
    for (const bool deleteFirst : {true, false}) {
        SCOPED_TRACE(deleteFirst ? "deletion sent first" : "edit sent first");
        TwoMachines m;
        const Uuid id = m.ids[2];
        m.laptop.edit(
            t(10), [&](auto& tasks) { std::erase_if(tasks, [&](auto& x) { return x.id == id; }); });
        m.desktop.edit(t(11), [&](auto&) { m.desktop.find(id)->isComplete = true; });
        Replica& first = deleteFirst ? m.laptop : m.desktop;
        Replica& second = deleteFirst ? m.desktop : m.laptop;
        first.sync(m.server, t(12));
        second.sync(m.server, t(13));
        first.sync(m.server, t(14));
        ASSERT_NE(m.laptop.find(id), nullptr);
        EXPECT_TRUE(m.laptop.find(id)->isComplete);
        EXPECT_EQ(m.laptop.tasks.size(), 3u);
        EXPECT_EQ(m.server.resources().size(), 3u);
    }
}

TEST(SyncPass, DeletesOnBothSidesWhatOneMachineDeleted) {
    TwoMachines m;
    const Uuid id = m.ids[0];
    m.laptop.edit(t(10), [&](auto& tasks) { tasks.erase(tasks.begin()); });
    const auto sent = m.laptop.sync(m.server, t(11));
    const auto received = m.desktop.sync(m.server, t(12));
    EXPECT_EQ(sent.summary.deletedThere, 1);
    EXPECT_EQ(received.summary.deletedHere, 1);
    EXPECT_EQ(m.desktop.find(id), nullptr);
    EXPECT_EQ(m.server.resources().size(), 2u);
    EXPECT_FALSE(m.desktop.state.synced.contains(id));
}

TEST(SyncPass, LosesNothingWhileTheServerFailsAndSendsEverythingWhenItIsBack) {
    TwoMachines m;
    for (const Call failing : {Call::changesSince, Call::fetch, Call::put, Call::remove}) {
        m.server.fault = [&](Call call) -> std::optional<std::string> {
            if (call == failing) {
                return "The sync server did not answer.";
            }
            return std::nullopt;
        };
        m.laptop.edit(t(10), [&](auto& tasks) {
            tasks.push_back(task("New while offline"));
            tasks[0].title += "!";
        });
        for (int pass = 0; pass < 100; ++pass) {
            const auto outcome = m.laptop.sync(m.server, t(11 + pass));
            if (failing == Call::changesSince || failing == Call::put) {
                ASSERT_EQ(outcome.error, "The sync server did not answer.");
            }
        }
        m.server.fault = nullptr;
        m.laptop.sync(m.server, t(200));
        m.desktop.sync(m.server, t(201));
        EXPECT_EQ(byId(m.desktop.tasks), byId(m.laptop.tasks));
        EXPECT_EQ(m.server.resources().size(), m.laptop.tasks.size());
        EXPECT_TRUE(m.laptop.state.lastError.empty());
    }
    EXPECT_EQ(m.laptop.tasks.size(), 7u);
}

TEST(SyncPass, KeepsTasksAndSendsThemAgainWhenTheServerComesBackEmpty) {
    TwoMachines m;
    m.server.wipe();
    const auto outcome = m.laptop.sync(m.server, t(10));
    EXPECT_EQ(m.laptop.tasks.size(), 3u);
    EXPECT_EQ(m.server.resources().size(), 3u);
    EXPECT_TRUE(outcome.summary.emptyServerRefilled);
    EXPECT_EQ(outcome.summary.sentence(),
              "Sent 3 changes. The server's task list came back empty, so the tasks here were "
              "kept and sent again.");
    m.desktop.sync(m.server, t(11));
    EXPECT_EQ(byId(m.desktop.tasks), byId(m.laptop.tasks));
}

TEST(SyncPass, MergesAgainWhenTheServerRefusesAWriteBecauseTheTaskChangedThere) {
    TwoMachines m;
    const Uuid id = m.ids[0];
    m.laptop.edit(t(10), [&](auto&) { m.laptop.find(id)->estimatedMinutes = 5; });
    // The desktop's change lands between the laptop's listing and its write.
    m.desktop.edit(t(9), [&](auto&) { m.desktop.find(id)->title = "Call the bank back"; });
    bool desktopSynced = false;
    m.server.fault = [&](Call call) -> std::optional<std::string> {
        if (call == Call::put && !desktopSynced) {
            desktopSynced = true;
            m.desktop.sync(m.server, t(11));
        }
        return std::nullopt;
    };
    m.laptop.sync(m.server, t(12));
    m.desktop.sync(m.server, t(13));
    EXPECT_EQ(m.laptop.find(id)->title, "Call the bank back");
    EXPECT_EQ(m.laptop.find(id)->estimatedMinutes, 5);
    EXPECT_EQ(byId(m.desktop.tasks), byId(m.laptop.tasks));
}

TEST(SyncPass, SaysSoWhenTheServerRefusesEveryWriteAndKeepsTheChange) {
    TwoMachines m;
    const Uuid id = m.ids[0];
    m.laptop.edit(t(10), [&](auto&) { m.laptop.find(id)->title = "Refused"; });
    m.server.refuseWrites(1000, true);
    const auto outcome = m.laptop.sync(m.server, t(11));
    EXPECT_EQ(outcome.error, "The sync server kept refusing changes to 1 task; they are kept "
                             "here and will be sent again.");
    EXPECT_EQ(m.laptop.find(id)->title, "Refused");
    EXPECT_TRUE(m.laptop.state.localChanges.contains(id));
    m.server.refuseWrites(0);
    m.laptop.sync(m.server, t(12));
    m.desktop.sync(m.server, t(13));
    EXPECT_EQ(m.desktop.find(id)->title, "Refused");
}

TEST(SyncPass, LearnsEtagsTheServerDidNotSendWithoutMovingAnything) {
    TwoMachines m;
    m.server.sendsEtags = false;
    m.laptop.edit(t(10), [&](auto& tasks) { tasks[0].title = "No etag"; });
    m.laptop.sync(m.server, t(11));
    const auto outcome = m.laptop.sync(m.server, t(12));
    EXPECT_FALSE(outcome.tasksChanged);
    EXPECT_EQ(outcome.summary.sentence(), "Everything is up to date.");
    m.server.resetCounts();
    m.laptop.sync(m.server, t(13));
    EXPECT_EQ(m.server.requests(), 1);
}

TEST(SyncPass, LeavesEntriesItCannotReadAndSaysSo) {
    TwoMachines m;
    m.server.store("/calendars/user/tasks/event.ics",
                   "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:e\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n");
    m.server.store("/calendars/user/tasks/junk.ics", "\x01\x02 not iCalendar");
    const auto outcome = m.laptop.sync(m.server, t(10));
    EXPECT_EQ(outcome.summary.unreadable, 2);
    EXPECT_EQ(m.laptop.tasks.size(), 3u);
    EXPECT_EQ(m.server.resources().size(), 5u);
    EXPECT_NE(outcome.summary.sentence().find("2 entries on the server are not tasks Daywyn can "
                                              "read; they were left as they are."),
              std::string::npos);
    // They are not read again until they change, even from a server without sync tokens.
    m.server.keepsSyncTokens = false;
    m.server.resetCounts();
    const auto next = m.laptop.sync(m.server, t(11));
    EXPECT_EQ(m.server.requests(), 1);
    EXPECT_EQ(next.summary.unreadable, 0);
    m.server.store("/calendars/user/tasks/junk.ics", "still not iCalendar");
    EXPECT_EQ(m.laptop.sync(m.server, t(12)).summary.unreadable, 1);
}

TEST(SyncPass, ReceivesATaskAnotherClientCreatedAndKeepsItsPropertiesWhenSendingChanges) {
    TwoMachines m;
    const std::string href = "/calendars/user/tasks/phone.ics";
    m.server.store(href, "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Phone//EN\r\n"
                         "BEGIN:VTODO\r\nUID:phone-1\r\nSUMMARY:From the phone\r\n"
                         "DESCRIPTION:Kept as written\r\nCATEGORIES:Errands\r\n"
                         "LAST-MODIFIED:20260309T140000Z\r\nEND:VTODO\r\nEND:VCALENDAR\r\n");
    m.laptop.sync(m.server, t(10));
    TaskItem* phone = m.laptop.find(taskIdForUid("phone-1"));
    ASSERT_NE(phone, nullptr);
    EXPECT_EQ(phone->title, "From the phone");
    m.laptop.edit(t(11), [&](auto&) { m.laptop.find(taskIdForUid("phone-1"))->isComplete = true; });
    m.laptop.sync(m.server, t(12));
    const std::string& text = m.server.resources().at(href).ics;
    EXPECT_NE(text.find("DESCRIPTION:Kept as written"), std::string::npos) << text;
    EXPECT_NE(text.find("UID:phone-1"), std::string::npos) << text;
    EXPECT_NE(text.find("STATUS:COMPLETED"), std::string::npos) << text;
}

// The same field edited on both machines keeps that field's later edit, however late
// the other machine edited some other field of the task.
TEST(SyncPass, KeepsTheLaterEditOfAFieldWhicheverMachineEditedTheTaskLast) {
    TwoMachines m;
    const Uuid id = m.ids[0];
    // The laptop renames at :10 and estimates at :30; the desktop renames at :20.
    m.laptop.edit(t(10), [&](auto&) { m.laptop.find(id)->title = "Call the bank at noon"; });
    m.laptop.edit(t(30), [&](auto&) { m.laptop.find(id)->estimatedMinutes = 15; });
    m.desktop.edit(t(20), [&](auto&) { m.desktop.find(id)->title = "Visit the bank"; });
    m.desktop.sync(m.server, t(21));
    const auto laptopPass = m.laptop.sync(m.server, t(31));
    m.desktop.sync(m.server, t(32));
    for (Replica* machine : {&m.laptop, &m.desktop}) {
        EXPECT_EQ(machine->find(id)->title, "Visit the bank");
        EXPECT_EQ(machine->find(id)->estimatedMinutes, 15);
    }
    ASSERT_EQ(laptopPass.summary.conflicts, 1);
    const ConflictRecord& logged = m.laptop.state.conflicts.back();
    EXPECT_EQ(logged.field, "title");
    EXPECT_EQ(logged.setAsideValue, "Call the bank at noon");
    EXPECT_EQ(logged.lost, ConflictSide::local);

    // The other way round: the server's copy was last modified at :60, but its title at
    // :40; the desktop's rename at :50 is the later edit of the title.
    m.laptop.edit(t(40), [&](auto&) { m.laptop.find(id)->title = "Bank, before lunch"; });
    m.laptop.edit(t(60), [&](auto&) { m.laptop.find(id)->estimatedMinutes = 25; });
    m.desktop.edit(t(50), [&](auto&) { m.desktop.find(id)->title = "Bank, after lunch"; });
    m.laptop.sync(m.server, t(61));
    const auto desktopPass = m.desktop.sync(m.server, t(62));
    m.laptop.sync(m.server, t(63));
    for (Replica* machine : {&m.laptop, &m.desktop}) {
        EXPECT_EQ(machine->find(id)->title, "Bank, after lunch");
        EXPECT_EQ(machine->find(id)->estimatedMinutes, 25);
    }
    ASSERT_EQ(desktopPass.summary.conflicts, 1);
    EXPECT_EQ(m.desktop.state.conflicts.back().setAsideValue, "Bank, before lunch");
    EXPECT_EQ(m.desktop.state.conflicts.back().lost, ConflictSide::remote);
}

// A value taken from the server in a pass that could not send its merge is still the
// server's edit, at the server's time, in the next pass.
TEST(SyncPass, WeighsAServerValueMergedInAFailedPassByTheServersTime) {
    TwoMachines m;
    const Uuid id = m.ids[2];
    m.laptop.edit(t(10), [&](auto&) { m.laptop.find(id)->title = "Water the ferns"; });
    m.laptop.sync(m.server, t(11));
    m.desktop.edit(t(20), [&](auto&) { m.desktop.find(id)->estimatedMinutes = 5; });
    m.server.fault = [](FakeCalDavCollection::Call call) -> std::optional<std::string> {
        if (call == Call::put) {
            return "The sync server had a problem (HTTP 503); Daywyn will try again later.";
        }
        return std::nullopt;
    };
    EXPECT_FALSE(m.desktop.sync(m.server, t(21)).error.empty());
    EXPECT_EQ(m.desktop.find(id)->title, "Water the ferns");
    m.server.fault = nullptr;
    // The laptop renames it again at :15, before the desktop's estimate at :20.
    m.laptop.edit(t(15), [&](auto&) { m.laptop.find(id)->title = "Water the ferns and palms"; });
    m.laptop.sync(m.server, t(16));
    const auto outcome = m.desktop.sync(m.server, t(30));
    EXPECT_TRUE(outcome.error.empty()) << outcome.error;
    m.laptop.sync(m.server, t(31));
    for (Replica* machine : {&m.laptop, &m.desktop}) {
        EXPECT_EQ(machine->find(id)->title, "Water the ferns and palms");
        EXPECT_EQ(machine->find(id)->estimatedMinutes, 5);
    }
}

// A pass that removes a task deleted on the server and then fails keeps the pending
// edits of the tasks after it in the list (their places moved with the removal).
TEST(SyncPass, KeepsPendingEditsWhenAPassThatRemovedATaskFails) {
    TwoMachines m;
    m.server.erase(m.laptop.state.synced.at(m.ids[0]).href);
    m.laptop.edit(t(10), [&](auto&) { m.laptop.find(m.ids[2])->title = "Water the plants"; });
    m.server.fault = [](FakeCalDavCollection::Call call) -> std::optional<std::string> {
        return call == Call::put ? std::optional<std::string>("The sync server did not answer.")
                                 : std::nullopt;
    };
    EXPECT_FALSE(m.laptop.sync(m.server, t(11)).error.empty());
    EXPECT_EQ(m.laptop.find(m.ids[0]), nullptr);
    EXPECT_TRUE(m.laptop.state.localChanges.contains(m.ids[2]));
    m.server.fault = nullptr;
    EXPECT_TRUE(m.laptop.sync(m.server, t(12)).error.empty());
    m.desktop.sync(m.server, t(13));
    ASSERT_NE(m.desktop.find(m.ids[2]), nullptr);
    EXPECT_EQ(m.desktop.find(m.ids[2])->title, "Water the plants");
    EXPECT_EQ(byId(m.desktop.tasks), byId(m.laptop.tasks));
}

// Another program's edit carries no field times: its LAST-MODIFIED is the time of each
// field it changed, while the fields it left keep the times Daywyn wrote.
TEST(SyncPass, TakesAnotherProgramsEditsAtItsLastModifiedTime) {
    TwoMachines m;
    const Uuid id = m.ids[1];
    m.laptop.edit(t(10), [&](auto&) { m.laptop.find(id)->estimatedMinutes = 40; });
    m.laptop.sync(m.server, t(11));
    const std::string href = m.laptop.state.synced.at(id).href;
    // The phone renames the task at :30 (its LAST-MODIFIED) and leaves the rest.
    std::string text = m.server.resources().at(href).ics;
    const auto replaceLine = [&](std::string_view prefix, std::string_view line) {
        const auto start = text.find("\r\n" + std::string(prefix));
        ASSERT_NE(start, std::string::npos) << text;
        text.replace(start + 2, text.find("\r\n", start + 2) - start - 2, line);
    };
    replaceLine("SUMMARY:", "SUMMARY:Write the report (phone)");
    std::string phoneTime = isoText(t(30)); // "2026-03-09T13:30:00Z" -> "20260309T133000Z"
    std::erase(phoneTime, '-');
    std::erase(phoneTime, ':');
    replaceLine("LAST-MODIFIED:", "LAST-MODIFIED:" + phoneTime);
    m.server.store(href, text);
    // The desktop renamed it at :20 (before the phone did) and estimated it at :25 (after
    // the laptop did, though before the phone's LAST-MODIFIED).
    m.desktop.edit(t(20), [&](auto&) { m.desktop.find(id)->title = "Write the report (desk)"; });
    m.desktop.edit(t(25), [&](auto&) { m.desktop.find(id)->estimatedMinutes = 90; });
    const auto outcome = m.desktop.sync(m.server, t(41));
    EXPECT_EQ(outcome.summary.conflicts, 2);
    EXPECT_EQ(m.desktop.find(id)->title, "Write the report (phone)");
    EXPECT_EQ(m.desktop.find(id)->estimatedMinutes, 90);
}

TEST(SyncPass, MergesATaskCreatedOnBothMachinesWithOneId) {
    FakeCalDavCollection server;
    Replica laptop;
    Replica desktop;
    const TaskItem shared = task("Shared");
    laptop.edit(t(1), [&](auto& tasks) {
        tasks.push_back(shared);
        tasks.back().estimatedMinutes = 10;
    });
    desktop.edit(t(2), [&](auto& tasks) {
        tasks.push_back(shared);
        tasks.back().estimatedMinutes = 20;
    });
    laptop.sync(server, t(3));
    const auto outcome = desktop.sync(server, t(4));
    laptop.sync(server, t(5));
    EXPECT_EQ(outcome.summary.conflicts, 1);
    EXPECT_EQ(byId(laptop.tasks), byId(desktop.tasks));
    EXPECT_EQ(laptop.tasks.at(0).estimatedMinutes, 20);
}

TEST(ApplySyncResult, KeepsWhatTheUserChangedWhileThePassRan) {
    const TaskItem untouched = task("Untouched");
    const TaskItem editedByUser = task("Edited by the user");
    const TaskItem deletedByUser = task("Deleted by the user");
    const TaskItem removedByPass = task("Removed by the pass");
    const std::vector<TaskItem> snapshot = {untouched, editedByUser, deletedByUser, removedByPass};

    TaskItem untouchedSynced = untouched;
    untouchedSynced.title = "Renamed on the server";
    TaskItem editedSynced = editedByUser;
    editedSynced.title = "Renamed on the server too";
    TaskItem deletedSynced = deletedByUser;
    deletedSynced.estimatedMinutes = 5;
    const TaskItem arrived = task("Arrived from the server");
    const std::vector<TaskItem> synced = {untouchedSynced, editedSynced, deletedSynced, arrived};

    TaskItem userEdit = editedByUser;
    userEdit.isComplete = true;
    const TaskItem addedByUser = task("Added meanwhile");
    const std::vector<TaskItem> current = {untouched, userEdit, removedByPass, addedByUser};

    EXPECT_EQ(applySyncResult(current, snapshot, synced),
              (std::vector<TaskItem>{untouchedSynced, userEdit, addedByUser, arrived}));

    // A reminder scheduled here while the pass ran is no edit: the server's change is
    // taken and the bookkeeping stays.
    TaskItem scheduled = untouched;
    scheduled.scheduledReminderDate = t(45);
    TaskItem expected = untouchedSynced;
    expected.scheduledReminderDate = t(45);
    EXPECT_EQ(applySyncResult({scheduled}, {untouched}, {untouchedSynced}),
              std::vector<TaskItem>{expected});
}

TEST(ApplySyncResult, LetsTheNextPassSendTheEditsMadeMeanwhile) {
    TwoMachines m;
    const std::vector<TaskItem> snapshot = m.laptop.tasks;
    m.desktop.edit(t(10), [&](auto&) { m.desktop.find(m.ids[0])->title = "From the desktop"; });
    m.desktop.sync(m.server, t(11));
    static const IcalTaskCoding coding;
    auto outcome = runSyncPass(m.server, coding, snapshot, m.laptop.state, t(12), ny);
    // Meanwhile the user edits another task on the laptop.
    m.laptop.edit(t(12), [&](auto&) { m.laptop.find(m.ids[1])->title = "Edited while syncing"; });
    const auto stored = applySyncResult(m.laptop.tasks, snapshot, outcome.tasks);
    noteLocalChanges(outcome.state, outcome.tasks, stored, t(13));
    m.laptop.tasks = stored;
    m.laptop.state = outcome.state;
    m.laptop.sync(m.server, t(14));
    m.desktop.sync(m.server, t(15));
    EXPECT_EQ(m.desktop.find(m.ids[1])->title, "Edited while syncing");
    EXPECT_EQ(m.laptop.find(m.ids[0])->title, "From the desktop");
    EXPECT_EQ(byId(m.desktop.tasks), byId(m.laptop.tasks));
}

} // namespace daywyn::test
