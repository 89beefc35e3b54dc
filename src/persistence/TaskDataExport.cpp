#include "persistence/TaskDataExport.h"

#include <algorithm>

#include "base/DoubleText.h"
#include "base/Json.h"
#include "base/Text.h"
#include "model/RecordJson.h"
#include "persistence/AtomicFile.h"

namespace daywyn {

namespace {

constexpr std::string_view kCsvHeader =
    "id,title,completed,created_at,completed_at,scheduled_day,scheduled_start,scheduled_end,"
    "estimate_minutes,actual_seconds,priority,checklist";
constexpr std::string_view kLineEnd = "\r\n";

std::string dateCell(const std::optional<Instant>& at) {
    return at ? isoText(*at) : std::string();
}

std::string integerCell(const std::optional<long long>& value) {
    return value ? std::to_string(*value) : std::string();
}

std::string checklistCell(const std::optional<std::vector<ChecklistItem>>& checklist) {
    std::string text;
    if (!checklist) {
        return text;
    }
    for (const auto& item : *checklist) {
        if (&item != &checklist->front()) {
            text += '\n';
        }
        text += item.isComplete ? "[x] " : "[ ] ";
        text += item.title;
    }
    return text;
}

// Recorded time plus the running stretch up to the export; a clock that went back
// does not subtract.
double actualSeconds(const TaskItem& task, Instant exportedAt) {
    double seconds = task.recordedDuration();
    if (task.liveSessionStartedAt) {
        seconds += std::max(0.0, exportedAt - *task.liveSessionStartedAt);
    }
    return seconds;
}

} // namespace

std::string csvCell(std::string_view value) {
    const std::string trimmed = trimWhitespace(value);
    bool apostrophe = false;
    if (!trimmed.empty()) {
        const char first = trimmed.front();
        apostrophe = first == '=' || first == '+' || first == '-' || first == '@';
    }
    if (!apostrophe && !value.empty()) {
        apostrophe = value.front() == '\t' || value.front() == '\r';
    }
    std::string cell;
    cell.reserve(value.size() + 4);
    cell += '"';
    if (apostrophe) {
        cell += '\'';
    }
    for (const char c : value) {
        if (c == '"') {
            cell += '"';
        }
        cell += c;
    }
    cell += '"';
    return cell;
}

std::string TaskDataExport::json() const {
    JsonBuffer buffer;
    PrettyJsonWriter w(buffer);
    useTwoSpaceIndent(w);
    w.StartObject();
    writeKey(w, "exportedAt");
    writeDate(w, exportedAt, DateCoding::iso8601);
    writeKey(w, "reports");
    w.StartArray();
    for (const auto& report : reports) {
        encodeRecord(w, report, DateCoding::iso8601);
    }
    w.EndArray();
    writeKey(w, "schemaVersion");
    w.Int64(schemaVersion);
    writeKey(w, "tasks");
    w.StartArray();
    for (const auto& task : tasks) {
        encodeRecord(w, task, DateCoding::iso8601);
    }
    w.EndArray();
    w.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize());
}

std::string TaskDataExport::csv() const {
    std::string out(kCsvHeader);
    out += kLineEnd;
    for (const auto& task : tasks) {
        const std::string cells[] = {
            task.id.text(),
            task.title,
            task.isComplete ? "true" : "false",
            isoText(task.createdAt),
            dateCell(task.completedAt),
            dateCell(task.scheduledDay),
            dateCell(task.scheduledStart),
            dateCell(task.scheduledEnd),
            integerCell(task.estimatedMinutes),
            shortestDoubleText(actualSeconds(task, exportedAt)),
            integerCell(task.priorityRank),
            checklistCell(task.checklist),
        };
        bool firstCell = true;
        for (const auto& value : cells) {
            if (!firstCell) {
                out += ',';
            }
            firstCell = false;
            out += csvCell(value);
        }
        out += kLineEnd;
    }
    return out;
}

std::string exportSavedMessage(std::string_view path) {
    return "Export saved to " + lastPathComponent(path) + ".";
}

std::string exportFailedMessage(std::string_view reason) {
    std::string message = "Export failed: " + std::string(reason);
    if (message.back() != '.') {
        message += '.';
    }
    return message;
}

} // namespace daywyn
