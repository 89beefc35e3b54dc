#include <algorithm>

#include <gtest/gtest.h>

#include "reminders/DesiredNotifications.h"
#include "reminders/NotificationChanges.h"
#include "reminders/NotificationMessages.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;
using test::TaskBuilder;
using Ids = std::vector<std::string>;

const Calendar kNy = test::newYork();
// Friday 20 November 2026, 14:10 in New York.
const Instant kNow = at(kNy, 2026, 11, 20, 14, 10);

AppPreferences everyTaskAlertOn() {
    AppPreferences p;
    p.taskRemindersEnabled = p.budgetNotificationsEnabled = p.scheduledEndAlertsEnabled = true;
    p.dailyReviewEnabled = false;
    return p;
}

DesiredNotifications desired(const std::vector<TaskItem>& tasks,
                             const AppPreferences& p = everyTaskAlertOn(), Instant now = kNow,
                             const Calendar& calendar = kNy) {
    return desiredNotifications(tasks, p, now, calendar);
}

// A pointer into a temporary plan would dangle.
const NotificationRequest* find(DesiredNotifications&&, const std::string&) = delete;
const NotificationRequest* find(const DesiredNotifications& d, const std::string& id) {
    auto it = std::find_if(d.requests.begin(), d.requests.end(),
                           [&](const NotificationRequest& r) { return r.identifier == id; });
    return it == d.requests.end() ? nullptr : &*it;
}

Ids identifiers(const std::vector<NotificationRequest>& requests) {
    Ids ids;
    for (const auto& r : requests) {
        ids.push_back(r.identifier);
    }
    return ids;
}

// What the store's mark operations do once the controller reports a successful add.
void recordMarks(TaskItem& task, const std::vector<NotificationRequest>& added) {
    for (const auto& r : added) {
        if (r.mark == NotificationMark::taskReminderDate) {
            task.scheduledReminderDate = r.markedDate;
        } else if (r.mark == NotificationMark::budgetAlert) {
            task.scheduledBudgetAlerts.insert(*r.markedBudgetAlert);
        } else if (r.mark == NotificationMark::overdueEnd) {
            task.notifiedOverdueEnd = r.markedDate;
        }
    }
}

TEST(DesiredNotifications, TaskReminderFiresAtTheReminderOrTheStart) {
    const Instant start = kNow + 3600;
    struct Case {
        std::optional<Instant> reminder, start;
        const char* title; // nullptr: nothing scheduled
        Instant fire;
    };
    const Case cases[] = {
        {std::nullopt, start, "Scheduled now", start},
        {start - 600, start, "Task reminder", start - 600},
        {start, start, "Scheduled now", start},
        {std::nullopt, kNow + 0.4, "Scheduled now", kNow + 1.0},
        {std::nullopt, kNow, nullptr, {}},
        {kNow - 60, start, nullptr, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.title ? c.title : "none");
        TaskItem task = TaskBuilder("Call Ama").createdAt(kNow);
        task.reminderDate = c.reminder;
        task.scheduledStart = c.start;
        // The plan must outlive the pointer into it.
        const auto plan = desired({task});
        const auto* request = find(plan, "daywyn.task." + task.id.text());
        ASSERT_EQ(request != nullptr, c.title != nullptr);
        if (request) {
            EXPECT_EQ(*request,
                      (NotificationRequest{request->identifier, c.title, "Call Ama", std::nullopt,
                                           c.fire, task.id, NotificationMark::taskReminderDate,
                                           c.reminder.value_or(*c.start), std::nullopt}));
        }
    }
}

TEST(DesiredNotifications, BudgetAlertsCountRecordedAndRunningTime) {
    // given 10 recorded and 5 running minutes of a 30-minute estimate, and a task 40
    // minutes into its 30
    const TaskItem onTrack = TaskBuilder("Write report")
                                 .estimate(30)
                                 .session(kNow - 3600, kNow - 3000)
                                 .running(kNow - 300);
    const TaskItem over = TaskBuilder("Pay bill").estimate(30).running(kNow - 2400);
    // when
    const auto d = desired({onTrack, over});
    // then
    const auto* approaching = find(d, "daywyn.budget.approaching." + onTrack.id.text());
    const auto* exceeded = find(d, "daywyn.budget.exceeded." + onTrack.id.text());
    ASSERT_TRUE(approaching && exceeded);
    EXPECT_EQ(approaching->title, "Budget nearly reached");
    EXPECT_EQ(approaching->body, "Write report has about 5 min left.");
    EXPECT_EQ(approaching->fireAt, kNow + 600);
    EXPECT_EQ(exceeded->title, "Time to recalibrate");
    EXPECT_EQ(exceeded->body, "Write report reached its 30 min estimate.");
    EXPECT_EQ(exceeded->fireAt, kNow + 900);
    EXPECT_EQ(find(d, "daywyn.budget.exceeded." + over.id.text())->fireAt, kNow + 1.0);
}

TEST(DesiredNotifications, NudgesStepByTheCadenceInsideTheActiveHours) {
    struct Case {
        int start, end;
        std::vector<int> hours;
    };
    const Case cases[] = {{9, 21, {15, 16, 17, 18, 19, 20}},
                          {9, 9, {15, 16, 17, 18, 19, 20, 21, 22, 23}},
                          {22, 6, {22, 23}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.start << "-" << c.end);
        AppPreferences p;
        p.dailyReviewEnabled = false;
        p.unfinishedReminderCadence = UnfinishedReminderCadence::hourly;
        p.activeHoursStart = c.start;
        p.activeHoursEnd = c.end;
        const auto d =
            desired({TaskBuilder("A").createdAt(kNow), TaskBuilder("B").createdAt(kNow)}, p);
        ASSERT_EQ(d.requests.size(), c.hours.size());
        for (std::size_t i = 0; i < c.hours.size(); ++i) {
            const Instant fire = at(kNy, 2026, 11, 20, c.hours[i], 10);
            EXPECT_EQ(d.requests[i].fireAt, fire);
            EXPECT_EQ(d.requests[i].identifier,
                      "daywyn.cadence." + std::to_string(static_cast<long long>(fire.seconds)));
            EXPECT_EQ(d.requests[i].body, "2 tasks remain today.");
        }
    }
}

TEST(DesiredNotifications, NudgeBodyNamesALoneTaskAndCountsSeveral) {
    struct Case {
        std::vector<TaskItem> tasks;
        const char* body; // nullptr: no nudges
    };
    const Case cases[] = {
        {{TaskBuilder("Call Ama").createdAt(kNow), TaskBuilder("Later").startingAt(kNow + 86400)},
         "1 task remains: Call Ama"},
        {{TaskBuilder("Old").createdAt(kNow - 86400),
          TaskBuilder("Pinned").createdAt(kNow).pinned(1),
          TaskBuilder("Done").createdAt(kNow).completedAt(kNow - 60)},
         "2 tasks remain today."},
        {{TaskBuilder("Done").createdAt(kNow).completedAt(kNow - 60)}, nullptr},
    };
    AppPreferences p;
    p.dailyReviewEnabled = false;
    p.unfinishedReminderCadence = UnfinishedReminderCadence::every2Hours;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.body ? c.body : "none");
        const auto d = desired(c.tasks, p);
        ASSERT_EQ(d.requests.size(), c.body ? 3u : 0u); // 16:10, 18:10, 20:10
        if (c.body) {
            EXPECT_EQ(d.requests[0].title, "A gentle pace check");
            EXPECT_EQ(d.requests[0].body, c.body);
        }
    }
}

TEST(DesiredNotifications, DailyReviewComesTodayOrTomorrowAtItsWallClockTime) {
    const Calendar berlin = test::berlin();
    struct Case {
        const Calendar& calendar;
        Instant now, fire;
        double hoursAhead;
    };
    const Case cases[] = {
        {kNy, at(kNy, 2026, 11, 20, 20), at(kNy, 2026, 11, 20, 21), 1},
        {kNy, at(kNy, 2026, 11, 20, 21), at(kNy, 2026, 11, 21, 21), 24},
        // 8 March 2026 lasts 23 hours in New York, 25 October 26 hours in Berlin.
        {kNy, at(kNy, 2026, 3, 8, 1), at(kNy, 2026, 3, 8, 21), 19},
        {kNy, at(kNy, 2026, 3, 7, 22), at(kNy, 2026, 3, 8, 21), 22},
        {berlin, at(berlin, 2026, 10, 24, 22), at(berlin, 2026, 10, 25, 21), 24},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(isoText(c.now));
        const auto d = desired({}, AppPreferences{}, c.now, c.calendar);
        ASSERT_EQ(d.requests.size(), 1u);
        EXPECT_EQ(d.requests[0].fireAt - c.now, c.hoursAhead * 3600);
        EXPECT_EQ(d.requests[0].identifier,
                  "daywyn.review." + std::to_string(static_cast<long long>(c.fire.seconds)));
        EXPECT_EQ(d.requests[0].title, "Your daily rhythm");
    }
}

TEST(DesiredNotifications, ValuesTooLargeToScheduleAreSkipped) {
    AppPreferences p = everyTaskAlertOn();
    p.dailyReviewEnabled = true;
    p.dailyReviewHour = 25;
    const TaskItem huge = TaskBuilder("Huge")
                              .estimate(400'000'000'000'000'000LL)
                              .running(kNow)
                              .endingAt(Instant{1e300});
    EXPECT_EQ(desired({huge}, p), DesiredNotifications{});
}

TEST(NotificationChanges, AddsWhatIsMissingAndRemovesOnlyOurStrays) {
    const TaskItem a = TaskBuilder("A").startingAt(kNow + 600);
    const TaskItem b = TaskBuilder("B").startingAt(kNow + 900);
    const Ids pending = {"daywyn.task." + a.id.text(), "daywyn.task.gone",
                         "org.example.calendar.42", "daywyn.manual-test"};
    const auto changes = reconcileNotifications(desired({a, b}), pending);
    EXPECT_EQ(identifiers(changes.toAdd), Ids{"daywyn.task." + b.id.text()});
    EXPECT_EQ(changes.toRemove, Ids{"daywyn.task.gone"});
}

TEST(NotificationChanges, PendingRequestsSurviveTheirOwnBookkeeping) {
    // given every alert scheduled once and recorded by the store
    AppPreferences p = everyTaskAlertOn();
    p.unfinishedReminderCadence = UnfinishedReminderCadence::hourly;
    p.dailyReviewEnabled = true;
    TaskItem task = TaskBuilder("Write report")
                        .createdAt(kNow)
                        .reminder(kNow + 300)
                        .endingAt(kNow + 3600)
                        .estimate(30)
                        .running(kNow - 60);
    const auto first = reconcileNotifications(desired({task}, p), {});
    ASSERT_EQ(first.toAdd.size(), 12u); // reminder, 2 budget, 2 end, 6 nudges, review
    recordMarks(task, first.toAdd);
    // when the store's change runs the next reconciliation
    const auto second = reconcileNotifications(desired({task}, p), identifiers(first.toAdd));
    // then every pending request stays and none is added twice
    EXPECT_EQ(second, NotificationChanges{});
    // and recorded budget and overdue alerts, once delivered, are not scheduled again
    const auto delivered = identifiers(reconcileNotifications(desired({task}, p), {}).toAdd);
    EXPECT_EQ(delivered.size(), 9u);
    for (const auto& id : delivered) {
        EXPECT_FALSE(id.starts_with("daywyn.budget.") || id.starts_with("daywyn.end.overdue."))
            << id;
    }
}

TEST(NotificationChanges, AMovedEndReplacesBothEndRequests) {
    // given the end alerts of a 15:00 end pending and recorded
    AppPreferences p = everyTaskAlertOn();
    p.endWarningLeadMinutes = 10;
    TaskItem task = TaskBuilder("Draft").createdAt(kNow).endingAt(at(kNy, 2026, 11, 20, 15));
    const auto first = reconcileNotifications(desired({task}, p), {});
    ASSERT_EQ(first.toAdd.size(), 2u);
    EXPECT_EQ(first.toAdd[0].body, "Draft ends in 10 minutes");
    EXPECT_EQ(first.toAdd[0].fireAt, at(kNy, 2026, 11, 20, 14, 50));
    EXPECT_EQ(first.toAdd[1].body,
              "Draft reached its scheduled end. Finish it or extend the time.");
    EXPECT_EQ(first.toAdd[1].category, "DAYWYN_END_ACTIONS");
    recordMarks(task, first.toAdd);
    // when "Add 10 min" moves the end to 15:10 and clears the overdue bookkeeping
    task.scheduledEnd = *task.scheduledEnd + 600;
    task.notifiedOverdueEnd.reset();
    const auto changes = reconcileNotifications(desired({task}, p), identifiers(first.toAdd));
    // then (15:00 and 15:10 EST are 1795204800 and 1795205400 seconds since 1970)
    const std::string id = task.id.text();
    EXPECT_EQ(identifiers(changes.toAdd), (Ids{"daywyn.end.warning." + id + ".1795205400",
                                               "daywyn.end.overdue." + id + ".1795205400"}));
    EXPECT_EQ(changes.toRemove, (Ids{"daywyn.end.warning." + id + ".1795204800",
                                     "daywyn.end.overdue." + id + ".1795204800"}));
}

TEST(NotificationResponse, TaskActionsNeedAValidTaskId) {
    using Kind = NotificationResponse::Kind;
    const Uuid id = Uuid::random();
    EXPECT_EQ(notificationResponse("DAYWYN_FINISH", id.text()),
              (NotificationResponse{Kind::finishTask, id, 0}));
    EXPECT_EQ(notificationResponse("DAYWYN_EXTEND_25", id.text()),
              (NotificationResponse{Kind::extendEnd, id, 25}));
    EXPECT_EQ(notificationResponse("default", "").kind, Kind::showDrawer);
    EXPECT_EQ(notificationResponse("DAYWYN_EXTEND_10", "not-a-uuid").kind, Kind::ignore);
}

} // namespace
} // namespace daywyn
