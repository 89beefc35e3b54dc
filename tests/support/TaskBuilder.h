#pragma once

#include <string>

#include "base/Calendar.h"
#include "model/TaskItem.h"

namespace daywyn::test {

// Fixed calendars for tests: two zones with daylight saving, plus UTC.
Calendar newYork();
Calendar berlin();
Calendar utc();

// The instant of a wall-clock time in a calendar; fails the test if it cannot exist.
Instant at(const Calendar& calendar, int year, int month, int day, int hour = 0, int minute = 0,
           int second = 0);

// Builds tasks for tests without twenty-line setups:
//   TaskBuilder("Write report").createdAt(t).estimate(30).startingAt(s).build()
class TaskBuilder {
public:
    explicit TaskBuilder(std::string title = "Task");

    TaskBuilder& id(Uuid id);
    TaskBuilder& createdAt(Instant at);
    TaskBuilder& estimate(long long minutes);
    TaskBuilder& reminder(Instant at);
    TaskBuilder& startingAt(Instant at);
    TaskBuilder& plannedFor(Instant day);
    TaskBuilder& endingAt(Instant at);
    TaskBuilder& completedAt(Instant at);
    TaskBuilder& running(Instant since);
    TaskBuilder& session(Instant start, Instant end);
    TaskBuilder& checklistItem(std::string title, bool done = false);
    TaskBuilder& emptyChecklist();
    TaskBuilder& repeating(TaskRecurrence recurrence);
    TaskBuilder& pinned(long long rank);

    TaskItem build() const { return task_; }
    operator TaskItem() const { return task_; }

private:
    TaskItem task_;
};

} // namespace daywyn::test
