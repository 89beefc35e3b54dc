#include "model/RecordJson.h"

#include "base/JsonFields.h"
#include "model/RecordFields.h"

namespace daywyn {

// ---- the enumerations, by their raw values ----------------------------------

template <typename Writer>
void writeJson(Writer& w, EdgeAnchor anchor, DateCoding) {
    writeString(w, rawValue(anchor));
}

template <typename Writer>
void writeJson(Writer& w, UnfinishedReminderCadence cadence, DateCoding) {
    w.Int(rawValue(cadence));
}

namespace {

// Reads a text through a parser of raw values.
template <typename T, typename Parse>
bool readRaw(JsonDecoder& d, JsonValue& v, T& out, Parse parse) {
    std::string_view text;
    if (!readJsonText(d, v, text)) {
        return false;
    }
    const auto value = parse(text);
    if (value) {
        out = *value;
    }
    return value.has_value();
}

} // namespace

bool readJson(JsonDecoder& d, JsonValue& v, TaskRecurrence& out) {
    return readRaw(d, v, out, taskRecurrenceFromRaw);
}

bool readJson(JsonDecoder& d, JsonValue& v, EdgeAnchor& out) {
    return readRaw(d, v, out, edgeAnchorFromRaw);
}

bool readJson(JsonDecoder& d, JsonValue& v, UnfinishedReminderCadence& out) {
    long long minutes = 0;
    if (!readJson(d, v, minutes)) {
        return false;
    }
    const auto cadence = cadenceFromRaw(minutes);
    if (cadence) {
        out = *cadence;
    }
    return cadence.has_value();
}

bool readJson(JsonDecoder& d, JsonValue& v, BudgetAlertSet& out) {
    BudgetAlertSet set;
    const bool read = readJsonArray(d, v, [&](JsonValue& element) {
        BudgetAlertKind kind{};
        if (!readRaw(d, element, kind, budgetAlertKindFromRaw)) {
            return false;
        }
        set.insert(kind);
        return true;
    });
    if (read) {
        out = set;
    }
    return read;
}

// ---- the records' fields, in the order they are written ---------------------

template <>
struct JsonRecord<AppPreferences> {
    using P = AppPreferences;
    static constexpr std::string_view noun = "preferences";
    static constexpr FieldRule lenient = FieldRule::lenient;
    static constexpr auto fields = std::tuple(
        jsonField("activeHoursEnd", &P::activeHoursEnd, lenient),
        jsonField("activeHoursStart", &P::activeHoursStart, lenient),
        jsonField("budgetNotificationsEnabled", &P::budgetNotificationsEnabled, lenient),
        jsonField("budgetWarningLeadMinutes", &P::budgetWarningLeadMinutes, lenient),
        jsonField("calendarIntegrationEnabled", &P::calendarIntegrationEnabled, lenient),
        jsonField("dailyReviewEnabled", &P::dailyReviewEnabled, lenient),
        jsonField("dailyReviewHour", &P::dailyReviewHour, lenient),
        jsonField("dailyReviewMinute", &P::dailyReviewMinute, lenient),
        jsonField("defaultTaskMinutes", &P::defaultTaskMinutes, lenient),
        jsonField("dueNotificationsEnabled", &P::taskRemindersEnabled, FieldRule::older),
        jsonField("edgeAnchor", &P::edgeAnchor, lenient),
        jsonField("endWarningLeadMinutes", &P::endWarningLeadMinutes, lenient),
        jsonField("scheduledEndAlertsEnabled", &P::scheduledEndAlertsEnabled, lenient),
        jsonField("selectedCalendarIdentifiers", &P::selectedCalendarIdentifiers, lenient),
        jsonField("taskRemindersEnabled", &P::taskRemindersEnabled, lenient),
        jsonField("unfinishedReminderCadence", &P::unfinishedReminderCadence, lenient));
};

template <>
struct JsonRecord<DailyTaskSummary> {
    using S = DailyTaskSummary;
    static constexpr std::string_view noun = "report line";
    static constexpr auto fields =
        std::tuple(jsonField("actualSeconds", &S::actualSeconds, FieldRule::required),
                   jsonField("estimatedMinutes", &S::estimatedMinutes, FieldRule::optional),
                   jsonField("id", &S::id, FieldRule::required),
                   jsonField("title", &S::title, FieldRule::required),
                   jsonField("wasComplete", &S::wasComplete, FieldRule::required));
};

template <>
struct JsonRecord<DailyReport> {
    static constexpr std::string_view noun = "daily report";
    static constexpr auto fields =
        std::tuple(jsonField("day", &DailyReport::day, FieldRule::required),
                   jsonField("generatedAt", &DailyReport::generatedAt, FieldRule::required),
                   jsonField("id", &DailyReport::id, FieldRule::required),
                   jsonField("tasks", &DailyReport::tasks, FieldRule::required));
};

// ---- encoding ---------------------------------------------------------------

template <typename Writer>
void encodeRecord(Writer& w, const ChecklistItem& item) {
    encodeFields(w, item, DateCoding::iso8601);
}

template <typename Writer>
void encodeRecord(Writer& w, const WorkSession& session, DateCoding dates) {
    encodeFields(w, session, dates);
}

template <typename Writer>
void encodeRecord(Writer& w, const TaskItem& task, DateCoding dates) {
    encodeFields(w, task, dates);
}

template <typename Writer>
void encodeRecord(Writer& w, const AppPreferences& preferences) {
    encodeFields(w, preferences, DateCoding::iso8601);
}

template <typename Writer>
void encodeRecord(Writer& w, const DailyTaskSummary& summary) {
    encodeFields(w, summary, DateCoding::iso8601);
}

template <typename Writer>
void encodeRecord(Writer& w, const DailyReport& report, DateCoding dates) {
    encodeFields(w, report, dates);
}

// The state's members are borrowed lists, so they are named here rather than in a table.
template <typename Writer>
void encodeRecord(Writer& w, const PersistedStateView& state, DateCoding dates) {
    w.StartObject();
    writeKey(w, "preferences");
    encodeFields(w, state.preferences, dates);
    writeKey(w, "reports");
    writeJson(w, state.reports, dates);
    writeKey(w, "tasks");
    writeJson(w, state.tasks, dates);
    writeKey(w, "version");
    w.Int64(state.version);
    w.EndObject();
}

#define DAYWYN_INSTANTIATE(Writer)                                                                 \
    template void encodeRecord(Writer&, const ChecklistItem&);                                     \
    template void encodeRecord(Writer&, const WorkSession&, DateCoding);                           \
    template void encodeRecord(Writer&, const TaskItem&, DateCoding);                              \
    template void encodeRecord(Writer&, const AppPreferences&);                                    \
    template void encodeRecord(Writer&, const DailyTaskSummary&);                                  \
    template void encodeRecord(Writer&, const DailyReport&, DateCoding);                           \
    template void encodeRecord(Writer&, const PersistedStateView&, DateCoding);
DAYWYN_INSTANTIATE(PrettyJsonWriter)
DAYWYN_INSTANTIATE(CompactJsonWriter)
#undef DAYWYN_INSTANTIATE

std::string encodeStateFile(const PersistedStateView& state) {
    JsonBuffer buffer;
    encodeStateFile(state, buffer);
    return std::string(buffer.GetString(), buffer.GetSize());
}

void encodeStateFile(const PersistedStateView& state, JsonBuffer& buffer) {
    PrettyJsonWriter writer(buffer);
    useTwoSpaceIndent(writer);
    encodeRecord(writer, state, DateCoding::iso8601);
}

std::string encodeTaskLine(const TaskItem& task) {
    JsonBuffer buffer;
    CompactJsonWriter writer(buffer);
    encodeRecord(writer, task, DateCoding::iso8601);
    return std::string(buffer.GetString(), buffer.GetSize());
}

// ---- decoding ---------------------------------------------------------------

namespace {

// An array of records appended to `out`; the error names the element ("Task 3: ...").
template <typename T>
bool decodeList(JsonDecoder& d, JsonValue& v, std::string_view noun, std::string_view what,
                std::vector<T>& out, bool countFirst) {
    std::size_t count = 0;
    bool inElement = false;
    simdjson::ondemand::array array;
    bool read = d.check(v.get_array().get(array));
    if (read && countFirst) {
        std::size_t elements = 0;
        read = d.check(array.count_elements().get(elements));
        if (read) {
            out.reserve(out.size() + elements);
        }
    }
    read = read && readJsonElements(d, array, [&](JsonValue& element) {
               ++count;
               inElement = true;
               if (!decodeFields(d, element, out.emplace_back())) {
                   return false;
               }
               inElement = false;
               return true;
           });
    if (read) {
        return true;
    }
    if (inElement) {
        d.prefixError(std::string(noun) + " " + std::to_string(count) + ": ");
    } else if (!d.hasSyntaxError()) {
        d.fail("The " + std::string(what) + " is not a list.");
    }
    return false;
}

template <typename Decode>
Status decodeDocument(std::string_view json, DateCoding dates, Decode decode) {
    JsonInput input(json);
    JsonDecoder d(dates);
    simdjson::ondemand::document document;
    JsonValue value;
    if (!input.iterate(d, document) || !d.checkSyntax(document.get_value().get(value)) ||
        !decode(d, value)) {
        return Error{d.error()};
    }
    if (!jsonAtEnd(document)) {
        return Error{jsonSyntaxError(simdjson::TRAILING_CONTENT)};
    }
    return {};
}

} // namespace

bool decodeRecordValue(JsonDecoder& d, JsonValue& v, AppPreferences& out) {
    return decodeFields(d, v, out);
}

bool decodeTaskListValue(JsonDecoder& d, JsonValue& v, std::vector<TaskItem>& out,
                         bool countFirst) {
    return decodeList(d, v, "Task", "list of tasks", out, countFirst);
}

bool decodeReportListValue(JsonDecoder& d, JsonValue& v, std::vector<DailyReport>& out) {
    return decodeList(d, v, "Report", "list of reports", out, false);
}

Result<ChecklistItem> decodeChecklistItem(std::string_view json) {
    return decodeJsonRecord<ChecklistItem>(json, DateCoding::iso8601);
}

Result<WorkSession> decodeWorkSession(std::string_view json, DateCoding dates) {
    return decodeJsonRecord<WorkSession>(json, dates);
}

Result<TaskItem> decodeTaskItem(std::string_view json, DateCoding dates) {
    return decodeJsonRecord<TaskItem>(json, dates);
}

Result<AppPreferences> decodePreferences(std::string_view json) {
    return decodeJsonRecord<AppPreferences>(json, DateCoding::iso8601);
}

Result<DailyTaskSummary> decodeDailyTaskSummary(std::string_view json) {
    return decodeJsonRecord<DailyTaskSummary>(json, DateCoding::iso8601);
}

Result<DailyReport> decodeDailyReport(std::string_view json, DateCoding dates) {
    return decodeJsonRecord<DailyReport>(json, dates);
}

Status decodeTaskList(std::string_view json, DateCoding dates, std::vector<TaskItem>& out) {
    return decodeDocument(
        json, dates, [&](JsonDecoder& d, JsonValue& v) { return decodeTaskListValue(d, v, out); });
}

Status decodeReportList(std::string_view json, DateCoding dates, std::vector<DailyReport>& out) {
    return decodeDocument(json, dates, [&](JsonDecoder& d, JsonValue& v) {
        return decodeReportListValue(d, v, out);
    });
}

} // namespace daywyn
