#include "support/TaskBuilder.h"

#include <gtest/gtest.h>

namespace daywyn::test {

Calendar newYork() {
    return Calendar("America/New_York", "en_US");
}
Calendar berlin() {
    return Calendar("Europe/Berlin", "de_DE");
}
Calendar utc() {
    return Calendar("UTC", "en_US");
}

Instant at(const Calendar& calendar, int year, int month, int day, int hour, int minute,
           int second) {
    auto instant = calendar.date(year, month, day, hour, minute, second);
    EXPECT_TRUE(instant.has_value());
    return instant.value_or(Instant{});
}

TaskBuilder::TaskBuilder(std::string title) {
    task_.id = Uuid::random();
    task_.title = std::move(title);
}

TaskBuilder& TaskBuilder::id(Uuid id) {
    task_.id = id;
    return *this;
}
TaskBuilder& TaskBuilder::createdAt(Instant at) {
    task_.createdAt = at;
    return *this;
}
TaskBuilder& TaskBuilder::estimate(long long minutes) {
    task_.estimatedMinutes = minutes;
    return *this;
}
TaskBuilder& TaskBuilder::reminder(Instant at) {
    task_.reminderDate = at;
    return *this;
}
TaskBuilder& TaskBuilder::startingAt(Instant at) {
    task_.scheduledStart = at;
    return *this;
}
TaskBuilder& TaskBuilder::plannedFor(Instant day) {
    task_.scheduledDay = day;
    return *this;
}
TaskBuilder& TaskBuilder::endingAt(Instant at) {
    task_.scheduledEnd = at;
    return *this;
}
TaskBuilder& TaskBuilder::completedAt(Instant at) {
    task_.isComplete = true;
    task_.completedAt = at;
    return *this;
}
TaskBuilder& TaskBuilder::running(Instant since) {
    task_.liveSessionStartedAt = since;
    return *this;
}
TaskBuilder& TaskBuilder::session(Instant start, Instant end) {
    task_.sessions.push_back(WorkSession{Uuid::random(), start, end});
    return *this;
}
TaskBuilder& TaskBuilder::checklistItem(std::string title, bool done) {
    if (!task_.checklist) {
        task_.checklist.emplace();
    }
    task_.checklist->push_back(ChecklistItem{Uuid::random(), std::move(title), done});
    return *this;
}
TaskBuilder& TaskBuilder::emptyChecklist() {
    task_.checklist.emplace();
    return *this;
}
TaskBuilder& TaskBuilder::repeating(TaskRecurrence recurrence) {
    task_.recurrence = recurrence;
    return *this;
}
TaskBuilder& TaskBuilder::pinned(long long rank) {
    task_.priorityRank = rank;
    return *this;
}

} // namespace daywyn::test
