#pragma once

// The field tables of the records and the readers the state file's decoder shares
// with the older format. Included only by .cpp files that decode (it brings in
// simdjson).

#include <vector>

#include "base/JsonRead.h"
#include "model/AppPreferences.h"
#include "model/DailyReport.h"
#include "model/TaskItem.h"

namespace daywyn {

// A JSON array of BudgetAlertKind raw values as a set; false when anything in it is
// not one of them.
bool readJson(JsonDecoder& d, JsonValue& v, BudgetAlertSet& out);

// One record at the value.
bool decodeRecordValue(JsonDecoder& d, JsonValue& v, AppPreferences& out);

// A JSON array of records appended to `out`; a failure names the element ("Task 3:
// The task has no "id".").
bool decodeTaskListValue(JsonDecoder& d, JsonValue& v, std::vector<TaskItem>& out);
bool decodeReportListValue(JsonDecoder& d, JsonValue& v, std::vector<DailyReport>& out);

} // namespace daywyn
