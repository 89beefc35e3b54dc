#pragma once

#include <string>

#include "base/Json.h"
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

// Decoding reads one whole JSON document. It is strict for tasks and reports (a
// missing required key, a wrong type or an unknown enumeration value fails the record)
// and lenient field by field for preferences (a missing or null key takes its default;
// the older "dueNotificationsEnabled" is read when "taskRemindersEnabled" gives no
// value). Null stands for an absent optional value; unknown keys are skipped, and of a
// repeated key the first counts. The error is one sentence naming the first problem.
Result<ChecklistItem> decodeChecklistItem(std::string_view json);
Result<WorkSession> decodeWorkSession(std::string_view json, DateCoding dates);
Result<TaskItem> decodeTaskItem(std::string_view json, DateCoding dates);
Result<AppPreferences> decodePreferences(std::string_view json);
Result<DailyTaskSummary> decodeDailyTaskSummary(std::string_view json);
Result<DailyReport> decodeDailyReport(std::string_view json, DateCoding dates);
// A JSON array of tasks or reports, appended to `out`; the error names the element
// ("Task 3: The task has no "id".").
Status decodeTaskList(std::string_view json, DateCoding dates, std::vector<TaskItem>& out);
Status decodeReportList(std::string_view json, DateCoding dates, std::vector<DailyReport>& out);

// A whole state as the state file writes it: pretty, sorted keys, ISO dates.
std::string encodeStateFile(const PersistedStateView& state);
// The same into `buffer`, for writing it out without another copy of every byte.
void encodeStateFile(const PersistedStateView& state, JsonBuffer& buffer);
// One task as a single line of JSON with ISO dates (the command line's --json).
std::string encodeTaskLine(const TaskItem& task);

} // namespace daywyn
