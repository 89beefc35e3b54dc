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

// Decoding is strict for tasks and reports (a missing required key, a wrong type
// or an unknown enumeration value fails the record) and lenient field by field for
// preferences (a missing key takes its default; the older "dueNotificationsEnabled"
// is read when "taskRemindersEnabled" is missing).
Result<ChecklistItem> decodeChecklistItem(const rapidjson::Value& v);
Result<WorkSession> decodeWorkSession(const rapidjson::Value& v, DateCoding dates);
Result<TaskItem> decodeTaskItem(const rapidjson::Value& v, DateCoding dates);
Result<AppPreferences> decodePreferences(const rapidjson::Value& v);
Result<DailyTaskSummary> decodeDailyTaskSummary(const rapidjson::Value& v);
Result<DailyReport> decodeDailyReport(const rapidjson::Value& v, DateCoding dates);
// The current format: "version", "tasks", "preferences" and "reports", all required.
Result<PersistedState> decodePersistedState(const rapidjson::Value& v, DateCoding dates);

// A JSON array of BudgetAlertKind raw values as a set; absent when anything in it is
// not one of them.
std::optional<BudgetAlertSet> readBudgetAlertSet(const rapidjson::Value& v);

// A whole state as the state file writes it: pretty, sorted keys, ISO dates.
std::string encodeStateFile(const PersistedStateView& state);
// One task as a single line of JSON with ISO dates (the command line's --json).
std::string encodeTaskLine(const TaskItem& task);

} // namespace daywyn
