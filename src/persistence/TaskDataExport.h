#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Instant.h"
#include "model/DailyReport.h"
#include "model/TaskItem.h"

namespace daywyn {

// Everything the user can take away: all tasks (in the store's order) and all saved
// reports, as of the moment of export.
struct TaskDataExport {
    long long schemaVersion = 1;
    Instant exportedAt;
    std::vector<TaskItem> tasks;
    std::vector<DailyReport> reports;
    bool operator==(const TaskDataExport&) const = default;

    // Pretty JSON with sorted keys and whole-second UTC dates, like the state file.
    std::string json() const;

    // One row per task under a fixed header, every cell quoted, CR LF line ends.
    // A cell a spreadsheet would run as a formula gets a leading apostrophe.
    std::string csv() const;
};

// The CSV cell of one value: a leading apostrophe when the trimmed value starts with
// = + - @ (or the value starts with a tab or CR), quotes doubled, enclosed in quotes.
std::string csvCell(std::string_view value);

// "Export saved to <last path component>."
std::string exportSavedMessage(std::string_view path);
// "Export failed: <reason>."
std::string exportFailedMessage(std::string_view reason);

} // namespace daywyn
