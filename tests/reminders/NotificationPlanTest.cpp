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

constexpr double kMinute = 60.0;

const Calendar& ny() {
    static const Calendar calendar = test::newYork();
    return calendar;
}

// Friday 20 November 2026, 14:10 in New York.
const Instant kNow = at(ny(), 2026, 11, 20, 14, 10);

AppPreferences everyAlertOn() {
    AppPreferences p;
    p.taskRemindersEnabled = true;
    p.budgetNotificationsEnabled = true;
    p.scheduledEndAlertsEnabled = true;
    p.dailyReviewEnabled = false;
    return p;
}

const NotificationRequest* find(const DesiredNotifications& desired, std::string_view id) {
    auto it = std::find_if(desired.requests.begin(), desired.requests.end(),
                           [&](const NotificationRequest& r) { return r.identifier == id; });
    return it == desired.requests.end() ? nullptr : &*it;
}

bool isKept(const DesiredNotifications& desired, std::string_view id) {
    return std::find(desired.keptIdentifiers.begin(), desired.keptIdentifiers.end(), id) !=
           desired.keptIdentifiers.end();
}

std::vector<std::string> identifiers(const std::vector<NotificationRequest>& requests) {
    std::vector<std::string> ids;
    for (const auto& r : requests) {
        ids.push_back(r.identifier);
    }
    return ids;
}

// What the store's mark operations do once the controller reports a successful add.
void recordMarks(std::vector<TaskItem>& tasks, const std::vector<NotificationRequest>& added) {
    for (const auto& request : added) {
        for (auto& task : tasks) {
            if (request.taskId != task.id) {
                continue;
            }
            switch (request.mark) {
            case NotificationMark::taskReminderDate:
                task.scheduledReminderDate = request.markedDate;
                break;
            case NotificationMark::budgetAlert:
                task.scheduledBudgetAlerts.insert(*request.markedBudgetAlert);
                break;
            case NotificationMark::overdueEnd:
                task.notifiedOverdueEnd = request.markedDate;
                break;
            case NotificationMark::nothing:
                break;
            }
        }
    }
}

TEST(DesiredNotifications, TaskReminderFiresAtTheReminderOrTheStart) {
    struct Case {
        const char* name;
        std::optional<Instant> reminder;
        std::optional<Instant> start;
        const char* title;
        std::optional<Instant> fire;
    };
    const Instant start = kNow + 60 * kMinute;
    const Case cases[] = {
        {"start only", std::nullopt, start, "Scheduled now", start},
        {"separate reminder", start - 10 * kMinute, start, "Task reminder", start - 10 * kMinute},
        {"reminder equal to the start", start, start, "Scheduled now", start},
        {"start already passed", std::nullopt, kNow - 1.0, nullptr, std::nullopt},
        {"start exactly now", std::nullopt, kNow, nullptr, std::nullopt},
        {"start within the second", std::nullopt, kNow + 0.4, "Scheduled now", kNow + 1.0},
        {"neither", std::nullopt, std::nullopt, nullptr, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        TaskItem task = TaskBuilder("Call Ama").createdAt(kNow);
        task.reminderDate = c.reminder;
        task.scheduledStart = c.start;
        // when
        const auto desired = desiredNotifications({task}, everyAlertOn(), kNow, ny());
        // then
        const auto* request = find(desired, "daywyn.task." + task.id.text());
        ASSERT_EQ(request != nullptr, c.fire.has_value());
        if (request) {
            EXPECT_EQ(request->title, c.title);
            EXPECT_EQ(request->body, "Call Ama");
            EXPECT_EQ(request->fireAt, *c.fire);
            EXPECT_EQ(request->taskId, task.id);
            EXPECT_EQ(request->category, std::nullopt);
            EXPECT_EQ(request->mark, NotificationMark::taskReminderDate);
        }
    }
}

TEST(DesiredNotifications, BudgetAlertsCountRecordedAndRunningTime) {
    // given 10 recorded minutes and 5 more running, against a 30-minute estimate
    const TaskItem task = TaskBuilder("Write report")
                              .createdAt(kNow)
                              .estimate(30)
                              .session(kNow - 60 * kMinute, kNow - 50 * kMinute)
                              .running(kNow - 5 * kMinute);
    // when
    const auto desired = desiredNotifications({task}, everyAlertOn(), kNow, ny());
    // then approaching fires at 25 minutes of work, exceeded at 30
    const auto* approaching = find(desired, "daywyn.budget.approaching." + task.id.text());
    const auto* exceeded = find(desired, "daywyn.budget.exceeded." + task.id.text());
    ASSERT_TRUE(approaching && exceeded);
    EXPECT_EQ(approaching->title, "Budget nearly reached");
    EXPECT_EQ(approaching->body, "Write report has about 5 min left.");
    EXPECT_EQ(approaching->fireAt, kNow + 10 * kMinute);
    EXPECT_EQ(approaching->markedBudgetAlert, BudgetAlertKind::approaching);
    EXPECT_EQ(exceeded->title, "Time to recalibrate");
    EXPECT_EQ(exceeded->body, "Write report reached its 30 min estimate.");
    EXPECT_EQ(exceeded->fireAt, kNow + 15 * kMinute);
}

TEST(DesiredNotifications, PassedThresholdsAndEndsFireOneSecondAhead) {
    // given a task 40 minutes into a 30-minute estimate whose end passed an hour ago
    const TaskItem task = TaskBuilder("Pay the bill")
                              .createdAt(kNow)
                              .estimate(30)
                              .running(kNow - 40 * kMinute)
                              .endingAt(kNow - 60 * kMinute);
    // when
    const auto desired = desiredNotifications({task}, everyAlertOn(), kNow, ny());
    // then
    const std::string end = std::to_string(static_cast<long long>((kNow - 3600.0).seconds));
    for (const std::string& id :
         {"daywyn.budget.approaching." + task.id.text(), "daywyn.budget.exceeded." + task.id.text(),
          "daywyn.end.overdue." + task.id.text() + "." + end}) {
        SCOPED_TRACE(id);
        const auto* request = find(desired, id);
        ASSERT_NE(request, nullptr);
        EXPECT_EQ(request->fireAt, kNow + 1.0);
    }
    EXPECT_TRUE(isKept(desired, "daywyn.end.warning." + task.id.text() + "." + end));
}

TEST(DesiredNotifications, EndAlertsWarnBeforeTheEndAndOfferTheEndActions) {
    // given an end at 15:00 and a ten-minute warning lead
    AppPreferences prefs = everyAlertOn();
    prefs.endWarningLeadMinutes = 10;
    const Instant end = at(ny(), 2026, 11, 20, 15);
    const TaskItem task = TaskBuilder("Draft email").createdAt(kNow).endingAt(end);
    // when
    const auto desired = desiredNotifications({task}, prefs, kNow, ny());
    // then
    const std::string suffix = task.id.text() + ".1795204800";
    const auto* warning = find(desired, "daywyn.end.warning." + suffix);
    const auto* overdue = find(desired, "daywyn.end.overdue." + suffix);
    ASSERT_TRUE(warning && overdue);
    EXPECT_EQ(warning->title, "Time is nearly up");
    EXPECT_EQ(warning->body, "Draft email ends in 10 minutes");
    EXPECT_EQ(warning->fireAt, end - 10 * kMinute);
    EXPECT_EQ(warning->mark, NotificationMark::nothing);
    EXPECT_EQ(overdue->title, "Make more room?");
    EXPECT_EQ(overdue->body,
              "Draft email reached its scheduled end. Finish it or extend the time.");
    EXPECT_EQ(overdue->fireAt, end);
    EXPECT_EQ(overdue->markedDate, end);
    for (const auto* request : {warning, overdue}) {
        EXPECT_EQ(request->category, "DAYWYN_END_ACTIONS");
        EXPECT_EQ(request->taskId, task.id);
    }
}

TEST(DesiredNotifications, SwitchedOffRulesAndCompletedTasksWantNothing) {
    // given tasks that would trigger every per-task rule
    const TaskItem open = TaskBuilder("Open")
                              .createdAt(kNow)
                              .startingAt(kNow + 600)
                              .endingAt(kNow + 1200)
                              .estimate(20)
                              .running(kNow - 60);
    const TaskItem done = TaskBuilder(open.title)
                              .createdAt(kNow)
                              .startingAt(kNow + 600)
                              .endingAt(kNow + 1200)
                              .completedAt(kNow - 60);
    AppPreferences off;
    off.dailyReviewEnabled = false;
    // then
    EXPECT_EQ(desiredNotifications({open, done}, off, kNow, ny()), DesiredNotifications{});
    const auto desired = desiredNotifications({done}, everyAlertOn(), kNow, ny());
    EXPECT_EQ(desired, DesiredNotifications{});
}

TEST(DesiredNotifications, ValuesTooLargeToScheduleAreSkipped) {
    // given an estimate whose seconds overflow and an end far beyond 64-bit seconds
    AppPreferences prefs = everyAlertOn();
    prefs.dailyReviewEnabled = true;
    prefs.dailyReviewHour = 25;
    const TaskItem huge = TaskBuilder("Huge")
                              .createdAt(kNow)
                              .estimate(400'000'000'000'000'000LL)
                              .running(kNow - 60)
                              .endingAt(Instant{1e300});
    // when
    const auto desired = desiredNotifications({huge}, prefs, kNow, ny());
    // then nothing is scheduled and nothing traps
    EXPECT_TRUE(desired.requests.empty());
    EXPECT_TRUE(desired.keptIdentifiers.empty());
}

TEST(DesiredNotifications, NudgesStepByTheCadenceInsideTheActiveHours) {
    struct Case {
        const char* name;
        int start;
        int end;
        std::vector<int> hours;
    };
    const Case cases[] = {
        {"9 to 21", 9, 21, {15, 16, 17, 18, 19, 20}},
        {"equal bounds mean all day", 9, 9, {15, 16, 17, 18, 19, 20, 21, 22, 23}},
        {"spanning midnight", 22, 6, {22, 23}},
    };
    const std::vector<TaskItem> tasks = {TaskBuilder("A").createdAt(kNow),
                                         TaskBuilder("B").createdAt(kNow)};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        // given
        AppPreferences prefs;
        prefs.dailyReviewEnabled = false;
        prefs.unfinishedReminderCadence = UnfinishedReminderCadence::hourly;
        prefs.activeHoursStart = c.start;
        prefs.activeHoursEnd = c.end;
        // when
        const auto desired = desiredNotifications(tasks, prefs, kNow, ny());
        // then one nudge each hour at ten past, never past midnight
        ASSERT_EQ(desired.requests.size(), c.hours.size());
        for (std::size_t i = 0; i < c.hours.size(); ++i) {
            const auto& nudge = desired.requests[i];
            const Instant fire = at(ny(), 2026, 11, 20, c.hours[i], 10);
            EXPECT_EQ(nudge.fireAt, fire);
            EXPECT_EQ(nudge.identifier,
                      "daywyn.cadence." + std::to_string(static_cast<long long>(fire.seconds)));
            EXPECT_EQ(nudge.title, "A gentle pace check");
            EXPECT_EQ(nudge.body, "2 tasks remain today.");
        }
    }
}

TEST(DesiredNotifications, NudgeBodyNamesALoneTaskAndCountsSeveral) {
    const Instant tomorrow = at(ny(), 2026, 11, 21, 10);
    const Instant yesterday = at(ny(), 2026, 11, 19, 10);
    struct Case {
        const char* name;
        std::vector<TaskItem> tasks;
        const char* body;
    };
    const Case cases[] = {
        {"one task, upcoming work not counted",
         {TaskBuilder("Call Ama").createdAt(kNow), TaskBuilder("Later").startingAt(tomorrow)},
         "1 task remains: Call Ama"},
        {"carried over and pinned count, completed do not",
         {TaskBuilder("Old").createdAt(yesterday), TaskBuilder("Pinned").createdAt(kNow).pinned(1),
          TaskBuilder("Done").createdAt(kNow).completedAt(kNow - 60)},
         "2 tasks remain today."},
        {"nothing left", {TaskBuilder("Done").createdAt(kNow).completedAt(kNow - 60)}, nullptr},
    };
    AppPreferences prefs;
    prefs.dailyReviewEnabled = false;
    prefs.unfinishedReminderCadence = UnfinishedReminderCadence::every2Hours;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto desired = desiredNotifications(c.tasks, prefs, kNow, ny());
        if (!c.body) {
            EXPECT_TRUE(desired.requests.empty());
            continue;
        }
        ASSERT_EQ(desired.requests.size(), 3u); // 16:10, 18:10, 20:10
        EXPECT_EQ(desired.requests.front().body, c.body);
    }
}

TEST(DesiredNotifications, DailyReviewComesTodayOrTomorrowAtItsWallClockTime) {
    struct Case {
        const char* name;
        Calendar calendar;
        Instant now;
        Instant fire;
        double hoursAhead;
    };
    const Calendar berlin = test::berlin();
    const Case cases[] = {
        {"later today", ny(), kNow, at(ny(), 2026, 11, 20, 21), 6 + 50.0 / 60},
        {"exactly now moves to tomorrow", ny(), at(ny(), 2026, 11, 20, 21),
         at(ny(), 2026, 11, 21, 21), 24},
        // 8 March 2026 in New York lasts 23 hours.
        {"before the clocks spring forward", ny(), at(ny(), 2026, 3, 8, 1),
         at(ny(), 2026, 3, 8, 21), 19},
        {"tomorrow is the short day", ny(), at(ny(), 2026, 3, 7, 22), at(ny(), 2026, 3, 8, 21), 22},
        // 25 October 2026 in Berlin lasts 25 hours.
        {"tomorrow is the long day", berlin, at(berlin, 2026, 10, 24, 22),
         at(berlin, 2026, 10, 25, 21), 24},
    };
    AppPreferences prefs; // review on at 21:00 by default
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto desired = desiredNotifications({}, prefs, c.now, c.calendar);
        ASSERT_EQ(desired.requests.size(), 1u);
        const auto& review = desired.requests.front();
        EXPECT_EQ(review.fireAt, c.fire);
        EXPECT_DOUBLE_EQ(review.fireAt - c.now, c.hoursAhead * 3600.0);
        EXPECT_EQ(review.identifier,
                  "daywyn.review." + std::to_string(static_cast<long long>(c.fire.seconds)));
        EXPECT_EQ(review.title, "Your daily rhythm");
        EXPECT_EQ(review.body, "Review what moved and what can be replanned.");
    }
}

TEST(NotificationChanges, AddsWhatIsMissingAndRemovesOnlyOurStrays) {
    // given one wanted request already pending, one missing, and assorted pending strays
    const TaskItem a = TaskBuilder("A").createdAt(kNow).startingAt(kNow + 600);
    const TaskItem b = TaskBuilder("B").createdAt(kNow).startingAt(kNow + 900);
    auto desired = desiredNotifications({a, b}, everyAlertOn(), kNow, ny());
    const std::vector<std::string> pending = {"daywyn.task." + a.id.text(), "daywyn.task.gone",
                                              "org.example.calendar.42", "daywyn.manual-test"};
    // when
    const auto changes = reconcileNotifications(desired, pending);
    // then
    EXPECT_EQ(identifiers(changes.toAdd), std::vector<std::string>{"daywyn.task." + b.id.text()});
    EXPECT_EQ(changes.toRemove, std::vector<std::string>{"daywyn.task.gone"});
}

TEST(NotificationChanges, PendingRequestsSurviveTheirOwnBookkeeping) {
    // given every alert scheduled once and recorded by the store
    AppPreferences prefs = everyAlertOn();
    prefs.unfinishedReminderCadence = UnfinishedReminderCadence::hourly;
    prefs.dailyReviewEnabled = true;
    std::vector<TaskItem> tasks = {TaskBuilder("Write report")
                                       .createdAt(kNow)
                                       .reminder(kNow + 300)
                                       .startingAt(kNow + 600)
                                       .endingAt(kNow + 3600)
                                       .estimate(30)
                                       .running(kNow - 60)};
    const auto first = reconcileNotifications(desiredNotifications(tasks, prefs, kNow, ny()), {});
    recordMarks(tasks, first.toAdd);
    ASSERT_EQ(tasks[0].scheduledBudgetAlerts,
              (BudgetAlertSet{BudgetAlertKind::approaching, BudgetAlertKind::exceeded}));
    // when the store's change runs the next reconciliation at the same moment
    const auto second = reconcileNotifications(desiredNotifications(tasks, prefs, kNow, ny()),
                                               identifiers(first.toAdd));
    // then every pending request stays and none is added twice
    EXPECT_EQ(second, NotificationChanges{});
    // and once delivered, recorded alerts are not scheduled again
    const auto afterDelivery =
        reconcileNotifications(desiredNotifications(tasks, prefs, kNow, ny()), {});
    for (const auto& id : identifiers(afterDelivery.toAdd)) {
        EXPECT_EQ(id.find("daywyn.budget."), std::string::npos) << id;
        EXPECT_EQ(id.find("daywyn.end.overdue."), std::string::npos) << id;
    }
}

TEST(NotificationChanges, AMovedEndReplacesBothEndRequests) {
    // given the end alerts of a 15:00 end pending and recorded
    std::vector<TaskItem> tasks = {
        TaskBuilder("Draft email").createdAt(kNow).endingAt(at(ny(), 2026, 11, 20, 15))};
    const auto first =
        reconcileNotifications(desiredNotifications(tasks, everyAlertOn(), kNow, ny()), {});
    recordMarks(tasks, first.toAdd);
    // when "Add 10 min" moves the end to 15:10 and clears the overdue bookkeeping
    tasks[0].scheduledEnd = at(ny(), 2026, 11, 20, 15, 10);
    tasks[0].notifiedOverdueEnd.reset();
    const auto changes = reconcileNotifications(
        desiredNotifications(tasks, everyAlertOn(), kNow, ny()), identifiers(first.toAdd));
    // then
    const std::string id = tasks[0].id.text();
    EXPECT_EQ(identifiers(changes.toAdd),
              (std::vector<std::string>{"daywyn.end.warning." + id + ".1795205400",
                                        "daywyn.end.overdue." + id + ".1795205400"}));
    EXPECT_EQ(changes.toRemove,
              (std::vector<std::string>{"daywyn.end.warning." + id + ".1795204800",
                                        "daywyn.end.overdue." + id + ".1795204800"}));
}

TEST(NotificationResponse, ActionsNeedAValidTaskExceptTheDefaultTap) {
    using Kind = NotificationResponse::Kind;
    const Uuid id = *Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
    const std::string text = id.text();
    EXPECT_EQ(notificationResponse("DAYWYN_FINISH", text),
              (NotificationResponse{Kind::finishTask, id, 0}));
    EXPECT_EQ(notificationResponse("DAYWYN_EXTEND_10", text),
              (NotificationResponse{Kind::extendEnd, id, 10}));
    EXPECT_EQ(notificationResponse("DAYWYN_EXTEND_25", text),
              (NotificationResponse{Kind::extendEnd, id, 25}));
    EXPECT_EQ(notificationResponse("default", "").kind, Kind::showDrawer);
    EXPECT_EQ(notificationResponse("DAYWYN_FINISH", "not-a-uuid").kind, Kind::ignore);
    EXPECT_EQ(notificationResponse("OTHER_APP_ACTION", text).kind, Kind::ignore);
}

} // namespace
} // namespace daywyn
