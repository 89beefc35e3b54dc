#pragma once

// The field tables of the task records and the readers the state file's decoder shares
// with the older format. Included only by .cpp files that code records (it brings in
// simdjson): the JSON coding, and whatever else walks a task field by field.

#include <tuple>
#include <vector>

#include "base/JsonFields.h"
#include "base/JsonRead.h"
#include "model/AppPreferences.h"
#include "model/DailyReport.h"
#include "model/TaskItem.h"

namespace daywyn {

// The enumerations by their raw values; a set as a JSON array of them. Reading is false
// when a value is not one of them.
template <typename Writer>
void writeJson(Writer& w, TaskRecurrence recurrence, DateCoding) {
    writeString(w, rawValue(recurrence));
}

template <typename Writer>
void writeJson(Writer& w, const BudgetAlertSet& set, DateCoding) {
    w.StartArray();
    for (auto kind : {BudgetAlertKind::approaching, BudgetAlertKind::exceeded}) {
        if (set.contains(kind)) {
            writeString(w, rawValue(kind));
        }
    }
    w.EndArray();
}

bool readJson(JsonDecoder& d, JsonValue& v, TaskRecurrence& out);
bool readJson(JsonDecoder& d, JsonValue& v, BudgetAlertSet& out);

// ---- the task records' fields, in the order they are written ----------------

template <>
struct JsonRecord<ChecklistItem> {
    static constexpr std::string_view noun = "checklist item";
    static constexpr auto fields =
        std::tuple(jsonField("id", &ChecklistItem::id, FieldRule::required),
                   jsonField("isComplete", &ChecklistItem::isComplete, FieldRule::required),
                   jsonField("title", &ChecklistItem::title, FieldRule::required));
};

template <>
struct JsonRecord<WorkSession> {
    static constexpr std::string_view noun = "work session";
    static constexpr auto fields =
        std::tuple(jsonField("end", &WorkSession::end, FieldRule::required),
                   jsonField("id", &WorkSession::id, FieldRule::required),
                   jsonField("start", &WorkSession::start, FieldRule::required));
};

template <>
struct JsonRecord<TaskItem> {
    using T = TaskItem;
    static constexpr std::string_view noun = "task";
    static constexpr auto fields = std::tuple(
        jsonField("checklist", &T::checklist, FieldRule::optional),
        jsonField("completedAt", &T::completedAt, FieldRule::optional),
        jsonField("createdAt", &T::createdAt, FieldRule::required),
        jsonField("estimatedMinutes", &T::estimatedMinutes, FieldRule::optional),
        jsonField("id", &T::id, FieldRule::required),
        jsonField("isComplete", &T::isComplete, FieldRule::required),
        jsonField("liveSessionStartedAt", &T::liveSessionStartedAt, FieldRule::optional),
        jsonField("nextOccurrenceCreated", &T::nextOccurrenceCreated, FieldRule::optional),
        jsonField("notifiedOverdueEnd", &T::notifiedOverdueEnd, FieldRule::optional),
        jsonField("priorityRank", &T::priorityRank, FieldRule::optional),
        jsonField("recurrence", &T::recurrence, FieldRule::optional),
        jsonField("reminderDate", &T::reminderDate, FieldRule::optional),
        jsonField("scheduledBudgetAlerts", &T::scheduledBudgetAlerts, FieldRule::required),
        jsonField("scheduledDay", &T::scheduledDay, FieldRule::optional),
        jsonField("scheduledEnd", &T::scheduledEnd, FieldRule::optional),
        jsonField("scheduledReminderDate", &T::scheduledReminderDate, FieldRule::optional),
        jsonField("scheduledStart", &T::scheduledStart, FieldRule::optional),
        jsonField("sessions", &T::sessions, FieldRule::required),
        jsonField("title", &T::title, FieldRule::required));
};

// One record at the value.
bool decodeRecordValue(JsonDecoder& d, JsonValue& v, AppPreferences& out);

// A JSON array of records appended to `out`; a failure names the element ("Task 3:
// The task has no "id".").
//
// With `countFirst` the elements are counted before they are read, so that the list is
// allocated once at its size. Counting walks the parser's index of the list once more:
// about a tenth of the time of reading 1,000 or 5,000 tasks, more than growing the list
// costs there. A list of tens of thousands grows through allocations too large to be
// served from memory already in use, and each of their pages is faulted in fresh:
// counted first, 20,000 tasks loaded in about three quarters of the time, both in a
// fresh process and when reloaded.
bool decodeTaskListValue(JsonDecoder& d, JsonValue& v, std::vector<TaskItem>& out,
                         bool countFirst = false);
bool decodeReportListValue(JsonDecoder& d, JsonValue& v, std::vector<DailyReport>& out);

} // namespace daywyn
