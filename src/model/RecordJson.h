#pragma once

#include <string>

#include "base/Json.h"
#include "base/JsonReader.h"
#include "base/Result.h"
#include "model/AppPreferences.h"
#include "model/DailyReport.h"
#include "model/PersistedState.h"
#include "model/TaskItem.h"

namespace daywyn {

// JSON coding of the records. Keys equal the field names and every object's keys
// are written in sorted order; absent optional values are omitted. Dates use the
// coding chosen by the document's owner. Writer is PrettyJsonWriter or
// CompactJsonWriter.

template <typename Writer>
void encodeRecord(Writer& w, const ChecklistItem& item);
template <typename Writer>
void encodeRecord(Writer& w, const WorkSession& session, DateCoding dates);
template <typename Writer>
void encodeRecord(Writer& w, const TaskItem& task, DateCoding dates);
template <typename Writer>
void encodeRecord(Writer& w, const AppPreferences& preferences);
template <typename Writer>
void encodeRecord(Writer& w, const DailyTaskSummary& summary);
template <typename Writer>
void encodeRecord(Writer& w, const DailyReport& report, DateCoding dates);
template <typename Writer>
void encodeRecord(Writer& w, const PersistedStateView& state, DateCoding dates);

// Decoding reads one value at the reader's position. It is strict for tasks and
// reports (a missing required key, a wrong type or an unknown enumeration value fails
// the record) and lenient field by field for preferences (a missing or null key takes
// its default; the older "dueNotificationsEnabled" is read when "taskRemindersEnabled"
// is missing). Null stands for an absent optional value; unknown keys are skipped, and
// of a repeated key the first counts.
Result<ChecklistItem> decodeChecklistItem(JsonReader& reader);
Result<WorkSession> decodeWorkSession(JsonReader& reader, DateCoding dates);
Result<TaskItem> decodeTaskItem(JsonReader& reader, DateCoding dates);
Result<AppPreferences> decodePreferences(JsonReader& reader);
Result<DailyTaskSummary> decodeDailyTaskSummary(JsonReader& reader);
Result<DailyReport> decodeDailyReport(JsonReader& reader, DateCoding dates);
// A JSON array of tasks or reports, appended to `out`; the error names the element
// ("Task 3: The task has no "id".").
Status decodeTaskList(JsonReader& reader, DateCoding dates, std::vector<TaskItem>& out);
// A run of a list of tasks, for reading one list on several threads: from an element
// starting at the reader's position, every element up to the first one that would
// start at or after the offset stopAt, appended to `out`. `ended` tells whether the
// list's closing bracket was read. Errors count elements from the first of `out`.
Status decodeTaskRun(JsonReader& reader, DateCoding dates, std::vector<TaskItem>& out,
                     std::size_t stopAt, bool& ended);
Status decodeReportList(JsonReader& reader, DateCoding dates, std::vector<DailyReport>& out);

// A JSON array of BudgetAlertKind raw values as a set; absent when anything in it is
// not one of them.
std::optional<BudgetAlertSet> readBudgetAlertSet(JsonReader& reader);

// A whole state as the state file writes it: pretty, sorted keys, ISO dates.
std::string encodeStateFile(const PersistedStateView& state);
// The same into `buffer`, for writing it out without another copy of every byte.
void encodeStateFile(const PersistedStateView& state, JsonBuffer& buffer);
// One task as a single line of JSON with ISO dates (the command line's --json).
std::string encodeTaskLine(const TaskItem& task);

} // namespace daywyn
