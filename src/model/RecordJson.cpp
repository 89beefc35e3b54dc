#include "model/RecordJson.h"

#include <climits>

namespace daywyn {

namespace {

// ---- encoding helpers -------------------------------------------------------

template <typename Writer>
void writeOptionalDate(Writer& w, std::string_view key, const std::optional<Instant>& value,
                       DateCoding dates) {
    if (value) {
        writeKey(w, key);
        writeDate(w, *value, dates);
    }
}

template <typename Writer>
void writeOptionalInt(Writer& w, std::string_view key, const std::optional<long long>& value) {
    if (value) {
        writeKey(w, key);
        w.Int64(*value);
    }
}

// ---- decoding helpers -------------------------------------------------------

// Reads the members of one JSON object, remembering the first problem.
class ObjectReader {
public:
    ObjectReader(const rapidjson::Value& object, const char* record)
        : object_(object)
        , record_(record) {
        if (!object.IsObject()) {
            fail(std::string("The ") + record + " is not a JSON object.");
        }
    }

    bool ok() const { return !error_; }
    Error error() const { return Error{*error_}; }

    // A required member read with `read`; a missing or mistyped one fails.
    template <typename Read>
    auto required(std::string_view key, Read read)
        -> decltype(read(std::declval<const rapidjson::Value&>())) {
        if (error_) {
            return std::nullopt;
        }
        const rapidjson::Value* v = findMember(object_, key);
        if (!v) {
            fail(std::string("The ") + record_ + " has no \"" + std::string(key) + "\".");
            return std::nullopt;
        }
        auto value = read(*v);
        if (!value) {
            fail(std::string("The ") + record_ + "'s \"" + std::string(key) + "\" is not valid.");
        }
        return value;
    }

    // An optional member: missing (or null) gives absent; present but mistyped fails.
    template <typename Read>
    auto optional(std::string_view key, Read read)
        -> decltype(read(std::declval<const rapidjson::Value&>())) {
        if (error_) {
            return std::nullopt;
        }
        const rapidjson::Value* v = findMember(object_, key);
        if (!v || v->IsNull()) {
            return std::nullopt;
        }
        auto value = read(*v);
        if (!value) {
            fail(std::string("The ") + record_ + "'s \"" + std::string(key) + "\" is not valid.");
        }
        return value;
    }

    void fail(std::string message) {
        if (!error_) {
            error_ = std::move(message);
        }
    }

private:
    const rapidjson::Value& object_;
    const char* record_;
    std::optional<std::string> error_;
};

auto dateReader(DateCoding dates) {
    return [dates](const rapidjson::Value& v) {
        return readDate(v, dates);
    };
}

std::optional<int> readInt(const rapidjson::Value& v) {
    auto value = readInt64(v);
    if (!value || *value < INT_MIN || *value > INT_MAX) {
        return std::nullopt;
    }
    return static_cast<int>(*value);
}

template <typename T, typename Decode>
std::optional<std::vector<T>> readArray(const rapidjson::Value& v, Decode decode) {
    if (!v.IsArray()) {
        return std::nullopt;
    }
    std::vector<T> out;
    out.reserve(v.Size());
    for (const auto& element : v.GetArray()) {
        auto item = decode(element);
        if (!item) {
            return std::nullopt;
        }
        out.push_back(std::move(item).value());
    }
    return out;
}

std::optional<TaskRecurrence> readRecurrence(const rapidjson::Value& v) {
    if (!v.IsString()) {
        return std::nullopt;
    }
    return taskRecurrenceFromRaw({v.GetString(), v.GetStringLength()});
}

std::optional<EdgeAnchor> readAnchor(const rapidjson::Value& v) {
    if (!v.IsString()) {
        return std::nullopt;
    }
    return edgeAnchorFromRaw({v.GetString(), v.GetStringLength()});
}

std::optional<UnfinishedReminderCadence> readCadence(const rapidjson::Value& v) {
    auto minutes = readInt64(v);
    if (!minutes) {
        return std::nullopt;
    }
    return cadenceFromRaw(*minutes);
}

std::optional<std::vector<std::string>> readStringArray(const rapidjson::Value& v) {
    return readArray<std::string>(v, [](const rapidjson::Value& e) { return readString(e); });
}

} // namespace

std::optional<BudgetAlertSet> readBudgetAlertSet(const rapidjson::Value& v) {
    if (!v.IsArray()) {
        return std::nullopt;
    }
    BudgetAlertSet set;
    for (const auto& element : v.GetArray()) {
        if (!element.IsString()) {
            return std::nullopt;
        }
        auto kind = budgetAlertKindFromRaw({element.GetString(), element.GetStringLength()});
        if (!kind) {
            return std::nullopt;
        }
        set.insert(*kind);
    }
    return set;
}

// ---- encoding ---------------------------------------------------------------

template <typename Writer>
void encodeRecord(Writer& w, const ChecklistItem& item) {
    w.StartObject();
    writeKey(w, "id");
    writeUuid(w, item.id);
    writeKey(w, "isComplete");
    w.Bool(item.isComplete);
    writeKey(w, "title");
    writeString(w, item.title);
    w.EndObject();
}

template <typename Writer>
void encodeRecord(Writer& w, const WorkSession& session, DateCoding dates) {
    w.StartObject();
    writeKey(w, "end");
    writeDate(w, session.end, dates);
    writeKey(w, "id");
    writeUuid(w, session.id);
    writeKey(w, "start");
    writeDate(w, session.start, dates);
    w.EndObject();
}

template <typename Writer>
void encodeRecord(Writer& w, const TaskItem& task, DateCoding dates) {
    // Keys in sorted order.
    w.StartObject();
    if (task.checklist) {
        writeKey(w, "checklist");
        w.StartArray();
        for (const auto& item : *task.checklist) {
            encodeRecord(w, item);
        }
        w.EndArray();
    }
    writeOptionalDate(w, "completedAt", task.completedAt, dates);
    writeKey(w, "createdAt");
    writeDate(w, task.createdAt, dates);
    writeOptionalInt(w, "estimatedMinutes", task.estimatedMinutes);
    writeKey(w, "id");
    writeUuid(w, task.id);
    writeKey(w, "isComplete");
    w.Bool(task.isComplete);
    writeOptionalDate(w, "liveSessionStartedAt", task.liveSessionStartedAt, dates);
    if (task.nextOccurrenceCreated) {
        writeKey(w, "nextOccurrenceCreated");
        w.Bool(*task.nextOccurrenceCreated);
    }
    writeOptionalDate(w, "notifiedOverdueEnd", task.notifiedOverdueEnd, dates);
    writeOptionalInt(w, "priorityRank", task.priorityRank);
    if (task.recurrence) {
        writeKey(w, "recurrence");
        writeString(w, rawValue(*task.recurrence));
    }
    writeOptionalDate(w, "reminderDate", task.reminderDate, dates);
    writeKey(w, "scheduledBudgetAlerts");
    w.StartArray();
    for (auto kind : {BudgetAlertKind::approaching, BudgetAlertKind::exceeded}) {
        if (task.scheduledBudgetAlerts.contains(kind)) {
            writeString(w, rawValue(kind));
        }
    }
    w.EndArray();
    writeOptionalDate(w, "scheduledDay", task.scheduledDay, dates);
    writeOptionalDate(w, "scheduledEnd", task.scheduledEnd, dates);
    writeOptionalDate(w, "scheduledReminderDate", task.scheduledReminderDate, dates);
    writeOptionalDate(w, "scheduledStart", task.scheduledStart, dates);
    writeKey(w, "sessions");
    w.StartArray();
    for (const auto& session : task.sessions) {
        encodeRecord(w, session, dates);
    }
    w.EndArray();
    writeKey(w, "title");
    writeString(w, task.title);
    w.EndObject();
}

template <typename Writer>
void encodeRecord(Writer& w, const AppPreferences& p) {
    w.StartObject();
    writeKey(w, "activeHoursEnd");
    w.Int(p.activeHoursEnd);
    writeKey(w, "activeHoursStart");
    w.Int(p.activeHoursStart);
    writeKey(w, "budgetNotificationsEnabled");
    w.Bool(p.budgetNotificationsEnabled);
    writeKey(w, "budgetWarningLeadMinutes");
    w.Int(p.budgetWarningLeadMinutes);
    writeKey(w, "calendarIntegrationEnabled");
    w.Bool(p.calendarIntegrationEnabled);
    writeKey(w, "dailyReviewEnabled");
    w.Bool(p.dailyReviewEnabled);
    writeKey(w, "dailyReviewHour");
    w.Int(p.dailyReviewHour);
    writeKey(w, "dailyReviewMinute");
    w.Int(p.dailyReviewMinute);
    writeKey(w, "defaultTaskMinutes");
    w.Int(p.defaultTaskMinutes);
    writeKey(w, "edgeAnchor");
    writeString(w, rawValue(p.edgeAnchor));
    writeKey(w, "endWarningLeadMinutes");
    w.Int(p.endWarningLeadMinutes);
    writeKey(w, "scheduledEndAlertsEnabled");
    w.Bool(p.scheduledEndAlertsEnabled);
    writeKey(w, "selectedCalendarIdentifiers");
    w.StartArray();
    for (const auto& id : p.selectedCalendarIdentifiers) {
        writeString(w, id);
    }
    w.EndArray();
    writeKey(w, "taskRemindersEnabled");
    w.Bool(p.taskRemindersEnabled);
    writeKey(w, "unfinishedReminderCadence");
    w.Int(rawValue(p.unfinishedReminderCadence));
    w.EndObject();
}

template <typename Writer>
void encodeRecord(Writer& w, const DailyTaskSummary& s) {
    w.StartObject();
    writeKey(w, "actualSeconds");
    w.Double(s.actualSeconds);
    writeOptionalInt(w, "estimatedMinutes", s.estimatedMinutes);
    writeKey(w, "id");
    writeUuid(w, s.id);
    writeKey(w, "title");
    writeString(w, s.title);
    writeKey(w, "wasComplete");
    w.Bool(s.wasComplete);
    w.EndObject();
}

template <typename Writer>
void encodeRecord(Writer& w, const DailyReport& r, DateCoding dates) {
    w.StartObject();
    writeKey(w, "day");
    writeDate(w, r.day, dates);
    writeKey(w, "generatedAt");
    writeDate(w, r.generatedAt, dates);
    writeKey(w, "id");
    writeUuid(w, r.id);
    writeKey(w, "tasks");
    w.StartArray();
    for (const auto& s : r.tasks) {
        encodeRecord(w, s);
    }
    w.EndArray();
    w.EndObject();
}

template <typename Writer>
void encodeRecord(Writer& w, const PersistedStateView& state, DateCoding dates) {
    w.StartObject();
    writeKey(w, "preferences");
    encodeRecord(w, state.preferences);
    writeKey(w, "reports");
    w.StartArray();
    for (const auto& r : state.reports) {
        encodeRecord(w, r, dates);
    }
    w.EndArray();
    writeKey(w, "tasks");
    w.StartArray();
    for (const auto& t : state.tasks) {
        encodeRecord(w, t, dates);
    }
    w.EndArray();
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
    PrettyJsonWriter writer(buffer);
    useTwoSpaceIndent(writer);
    encodeRecord(writer, state, DateCoding::iso8601);
    return std::string(buffer.GetString(), buffer.GetSize());
}

std::string encodeTaskLine(const TaskItem& task) {
    JsonBuffer buffer;
    CompactJsonWriter writer(buffer);
    encodeRecord(writer, task, DateCoding::iso8601);
    return std::string(buffer.GetString(), buffer.GetSize());
}

// ---- decoding ---------------------------------------------------------------

Result<ChecklistItem> decodeChecklistItem(const rapidjson::Value& v) {
    ObjectReader r(v, "checklist item");
    auto id = r.required("id", readUuid);
    auto title = r.required("title", readString);
    auto isComplete = r.required("isComplete", readBool);
    if (!r.ok()) {
        return r.error();
    }
    return ChecklistItem{*id, std::move(*title), *isComplete};
}

Result<WorkSession> decodeWorkSession(const rapidjson::Value& v, DateCoding dates) {
    ObjectReader r(v, "work session");
    auto id = r.required("id", readUuid);
    auto start = r.required("start", dateReader(dates));
    auto end = r.required("end", dateReader(dates));
    if (!r.ok()) {
        return r.error();
    }
    return WorkSession{*id, *start, *end};
}

Result<TaskItem> decodeTaskItem(const rapidjson::Value& v, DateCoding dates) {
    ObjectReader r(v, "task");
    TaskItem t;
    const auto date = dateReader(dates);
    auto id = r.required("id", readUuid);
    auto title = r.required("title", readString);
    auto createdAt = r.required("createdAt", date);
    auto isComplete = r.required("isComplete", readBool);
    auto sessions = r.required("sessions", [dates](const rapidjson::Value& e) {
        return readArray<WorkSession>(
            e, [dates](const rapidjson::Value& s) { return decodeWorkSession(s, dates); });
    });
    auto alerts = r.required("scheduledBudgetAlerts", readBudgetAlertSet);
    t.estimatedMinutes = r.optional("estimatedMinutes", readInt64);
    t.reminderDate = r.optional("reminderDate", date);
    t.scheduledStart = r.optional("scheduledStart", date);
    t.scheduledDay = r.optional("scheduledDay", date);
    t.scheduledEnd = r.optional("scheduledEnd", date);
    t.completedAt = r.optional("completedAt", date);
    t.liveSessionStartedAt = r.optional("liveSessionStartedAt", date);
    t.scheduledReminderDate = r.optional("scheduledReminderDate", date);
    t.notifiedOverdueEnd = r.optional("notifiedOverdueEnd", date);
    t.recurrence = r.optional("recurrence", readRecurrence);
    t.nextOccurrenceCreated = r.optional("nextOccurrenceCreated", readBool);
    t.checklist = r.optional("checklist", [](const rapidjson::Value& e) {
        return readArray<ChecklistItem>(e, decodeChecklistItem);
    });
    t.priorityRank = r.optional("priorityRank", readInt64);
    if (!r.ok()) {
        return r.error();
    }
    t.id = *id;
    t.title = std::move(*title);
    t.createdAt = *createdAt;
    t.isComplete = *isComplete;
    t.sessions = std::move(*sessions);
    t.scheduledBudgetAlerts = *alerts;
    return t;
}

Result<AppPreferences> decodePreferences(const rapidjson::Value& v) {
    ObjectReader r(v, "preferences");
    AppPreferences p;
    auto setBool = [&r](std::string_view key, bool& field) {
        if (auto value = r.optional(key, readBool)) {
            field = *value;
        }
    };
    auto setInt = [&r](std::string_view key, int& field) {
        if (auto value = r.optional(key, readInt)) {
            field = *value;
        }
    };
    // The older key is only read, never written; the newer one wins when both exist.
    setBool("dueNotificationsEnabled", p.taskRemindersEnabled);
    setBool("taskRemindersEnabled", p.taskRemindersEnabled);
    setBool("budgetNotificationsEnabled", p.budgetNotificationsEnabled);
    setBool("scheduledEndAlertsEnabled", p.scheduledEndAlertsEnabled);
    setInt("budgetWarningLeadMinutes", p.budgetWarningLeadMinutes);
    setInt("endWarningLeadMinutes", p.endWarningLeadMinutes);
    setInt("defaultTaskMinutes", p.defaultTaskMinutes);
    if (auto cadence = r.optional("unfinishedReminderCadence", readCadence)) {
        p.unfinishedReminderCadence = *cadence;
    }
    setInt("activeHoursStart", p.activeHoursStart);
    setInt("activeHoursEnd", p.activeHoursEnd);
    setBool("dailyReviewEnabled", p.dailyReviewEnabled);
    setInt("dailyReviewHour", p.dailyReviewHour);
    setInt("dailyReviewMinute", p.dailyReviewMinute);
    setBool("calendarIntegrationEnabled", p.calendarIntegrationEnabled);
    if (auto ids = r.optional("selectedCalendarIdentifiers", readStringArray)) {
        p.selectedCalendarIdentifiers = std::move(*ids);
    }
    if (auto anchor = r.optional("edgeAnchor", readAnchor)) {
        p.edgeAnchor = *anchor;
    }
    if (!r.ok()) {
        return r.error();
    }
    return p;
}

Result<DailyTaskSummary> decodeDailyTaskSummary(const rapidjson::Value& v) {
    ObjectReader r(v, "report line");
    auto id = r.required("id", readUuid);
    auto title = r.required("title", readString);
    auto wasComplete = r.required("wasComplete", readBool);
    auto estimate = r.optional("estimatedMinutes", readInt64);
    auto actual = r.required("actualSeconds", readDouble);
    if (!r.ok()) {
        return r.error();
    }
    return DailyTaskSummary{*id, std::move(*title), *wasComplete, estimate, *actual};
}

Result<DailyReport> decodeDailyReport(const rapidjson::Value& v, DateCoding dates) {
    ObjectReader r(v, "daily report");
    auto id = r.required("id", readUuid);
    auto day = r.required("day", dateReader(dates));
    auto generatedAt = r.required("generatedAt", dateReader(dates));
    auto tasks = r.required("tasks", [](const rapidjson::Value& e) {
        return readArray<DailyTaskSummary>(e, decodeDailyTaskSummary);
    });
    if (!r.ok()) {
        return r.error();
    }
    return DailyReport{*id, *day, *generatedAt, std::move(*tasks)};
}

Result<PersistedState> decodePersistedState(const rapidjson::Value& v, DateCoding dates) {
    ObjectReader r(v, "state");
    PersistedState state;
    auto version = r.required("version", readInt64);
    const rapidjson::Value* tasks = r.ok() ? findMember(v, "tasks") : nullptr;
    const rapidjson::Value* preferences = r.ok() ? findMember(v, "preferences") : nullptr;
    const rapidjson::Value* reports = r.ok() ? findMember(v, "reports") : nullptr;
    if (!r.ok()) {
        return r.error();
    }
    if (!tasks || !tasks->IsArray()) {
        return Error{"The state has no list of tasks."};
    }
    if (!preferences) {
        return Error{"The state has no preferences."};
    }
    if (!reports || !reports->IsArray()) {
        return Error{"The state has no list of reports."};
    }
    state.version = *version;
    state.tasks.reserve(tasks->Size());
    for (const auto& element : tasks->GetArray()) {
        auto task = decodeTaskItem(element, dates);
        if (!task) {
            return Error{"Task " + std::to_string(state.tasks.size() + 1) + ": " + task.error()};
        }
        state.tasks.push_back(std::move(task).value());
    }
    auto prefs = decodePreferences(*preferences);
    if (!prefs) {
        return Error{prefs.error()};
    }
    state.preferences = std::move(prefs).value();
    state.reports.reserve(reports->Size());
    for (const auto& element : reports->GetArray()) {
        auto report = decodeDailyReport(element, dates);
        if (!report) {
            return Error{"Report " + std::to_string(state.reports.size() + 1) + ": " +
                         report.error()};
        }
        state.reports.push_back(std::move(report).value());
    }
    return state;
}

} // namespace daywyn
