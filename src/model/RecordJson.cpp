#include "model/RecordJson.h"

#include <climits>
#include <cstdint>
#include <tuple>
#include <type_traits>

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

} // namespace

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

// One decoding run over a reader: the first problem found, as a sentence. Problems
// found inside a member come first, so they are the ones reported.
class Decoder {
public:
    Decoder(JsonReader& reader, DateCoding dateCoding)
        : r(reader)
        , dates(dateCoding) {}

    JsonReader& r;
    const DateCoding dates;
    std::string error;

    // Lists are read here first and then copied once at their final size, so that a
    // task's few sessions cost one allocation instead of one per doubling.
    template <typename T>
    std::vector<T>& scratch() {
        return std::get<std::vector<T>>(scratch_);
    }

    bool fail(std::string message) {
        if (error.empty()) {
            error = std::move(message);
        }
        return false;
    }

    // One object of a record: member(index) reads that member's value.
    template <std::size_t N, typename Member>
    bool object(const char* record, const JsonKeys<N>& keys, std::uint32_t required,
                Member&& member) {
        const JsonObjectRead read = readJsonObject(r, keys, member);
        switch (read.outcome) {
        case JsonObjectRead::Outcome::read:
            if (const int missing = read.firstMissing(required); missing >= 0) {
                return fail(std::string("The ") + record + " has no \"" +
                            std::string(keys.names[static_cast<std::size_t>(missing)].text) +
                            "\".");
            }
            return true;
        case JsonObjectRead::Outcome::notAnObject:
            return fail(std::string("The ") + record + " is not a JSON object.");
        case JsonObjectRead::Outcome::invalidMember:
            return fail(std::string("The ") + record + "'s \"" +
                        std::string(keys.names[static_cast<std::size_t>(read.invalid)].text) +
                        "\" is not valid.");
        case JsonObjectRead::Outcome::syntaxError:
            break;
        }
        return fail(r.syntaxError());
    }

    template <typename T>
    Result<T> result(bool decoded, T&& value) {
        if (!decoded) {
            return Error{error.empty() ? r.syntaxError() : error};
        }
        return std::forward<T>(value);
    }

private:
    std::tuple<std::vector<WorkSession>, std::vector<ChecklistItem>, std::vector<DailyTaskSummary>,
               std::vector<std::string>>
        scratch_;
};

// Field readers: false when the value has another type or is not valid. An optional
// field reads null as absent; a required one refuses it.
bool read(Decoder& d, std::string& out) {
    const auto text = d.r.readStringView();
    if (!text) {
        return false;
    }
    out.assign(*text);
    return true;
}

bool read(Decoder& d, Uuid& out) {
    const auto id =
        d.r.readStringAs(kUuidTextLength, [](std::string_view text) { return Uuid::parse(text); });
    if (!id) {
        return false;
    }
    out = *id;
    return true;
}

bool read(Decoder& d, Instant& out) {
    std::optional<Instant> at;
    if (d.dates == DateCoding::iso8601) {
        at = d.r.readStringAs(kIsoTextLength,
                              [](std::string_view text) { return parseIsoText(text); });
    } else if (const auto seconds = d.r.readDouble()) {
        at = Instant{*seconds + kReferenceDateOffset};
    }
    if (!at) {
        return false;
    }
    out = *at;
    return true;
}

bool read(Decoder& d, bool& out) {
    const auto value = d.r.readBool();
    out = value.value_or(false);
    return value.has_value();
}

bool read(Decoder& d, long long& out) {
    const auto value = d.r.readInt64();
    out = value.value_or(0);
    return value.has_value();
}

bool read(Decoder& d, double& out) {
    const auto value = d.r.readDouble();
    out = value.value_or(0.0);
    return value.has_value();
}

bool read(Decoder& d, int& out) {
    const auto value = d.r.readInt64();
    if (!value || *value < INT_MIN || *value > INT_MAX) {
        return false;
    }
    out = static_cast<int>(*value);
    return true;
}

bool read(Decoder& d, TaskRecurrence& out) {
    const auto text = d.r.readStringView();
    const auto recurrence = text ? taskRecurrenceFromRaw(*text) : std::nullopt;
    out = recurrence.value_or(TaskRecurrence::none);
    return recurrence.has_value();
}

bool read(Decoder& d, EdgeAnchor& out) {
    const auto text = d.r.readStringView();
    const auto anchor = text ? edgeAnchorFromRaw(*text) : std::nullopt;
    if (anchor) {
        out = *anchor;
    }
    return anchor.has_value();
}

bool read(Decoder& d, UnfinishedReminderCadence& out) {
    const auto minutes = d.r.readInt64();
    const auto cadence = minutes ? cadenceFromRaw(*minutes) : std::nullopt;
    if (cadence) {
        out = *cadence;
    }
    return cadence.has_value();
}

bool read(Decoder& d, BudgetAlertSet& out) {
    auto set = readBudgetAlertSet(d.r);
    out = set.value_or(BudgetAlertSet{});
    return set.has_value();
}

bool decode(Decoder& d, ChecklistItem& item);
bool decode(Decoder& d, WorkSession& session);
bool decode(Decoder& d, DailyTaskSummary& summary);

// Arrays of records or strings.
template <typename T>
bool read(Decoder& d, std::vector<T>& out) {
    if (!d.r.beginArray()) {
        return false;
    }
    std::vector<T>& elements = d.scratch<T>();
    elements.clear();
    while (d.r.nextElement()) {
        T& element = elements.emplace_back();
        if constexpr (std::is_same_v<T, std::string>) {
            if (!read(d, element)) {
                return false;
            }
        } else if (!decode(d, element)) {
            return false;
        }
    }
    if (d.r.hasSyntaxError()) {
        return false;
    }
    out.assign(std::make_move_iterator(elements.begin()), std::make_move_iterator(elements.end()));
    return true;
}

template <typename T>
bool read(Decoder& d, std::optional<T>& out) {
    if (d.r.readNull()) {
        out.reset();
        return true;
    }
    return read(d, out.emplace());
}

// A preference keeps its default when its member is missing or null.
template <typename T>
bool readPreference(Decoder& d, T& field) {
    return d.r.readNull() || read(d, field);
}

constexpr std::uint32_t bits(std::initializer_list<int> members) {
    std::uint32_t mask = 0;
    for (const int m : members) {
        mask |= 1u << m;
    }
    return mask;
}

// Member names in sorted order, the order they are written in.
enum ChecklistMember { kChecklistId, kChecklistIsComplete, kChecklistTitle };
constexpr JsonKeys<3> kChecklistKeys{{"id", "isComplete", "title"}};

bool decode(Decoder& d, ChecklistItem& item) {
    return d.object("checklist item", kChecklistKeys,
                    bits({kChecklistId, kChecklistIsComplete, kChecklistTitle}), [&](int member) {
                        switch (member) {
                        case kChecklistId:
                            return read(d, item.id);
                        case kChecklistIsComplete:
                            return read(d, item.isComplete);
                        default:
                            return read(d, item.title);
                        }
                    });
}

enum SessionMember { kSessionEnd, kSessionId, kSessionStart };
constexpr JsonKeys<3> kSessionKeys{{"end", "id", "start"}};

bool decode(Decoder& d, WorkSession& session) {
    return d.object("work session", kSessionKeys, bits({kSessionEnd, kSessionId, kSessionStart}),
                    [&](int member) {
                        switch (member) {
                        case kSessionEnd:
                            return read(d, session.end);
                        case kSessionId:
                            return read(d, session.id);
                        default:
                            return read(d, session.start);
                        }
                    });
}

enum TaskMember {
    kTaskChecklist,
    kTaskCompletedAt,
    kTaskCreatedAt,
    kTaskEstimatedMinutes,
    kTaskId,
    kTaskIsComplete,
    kTaskLiveSessionStartedAt,
    kTaskNextOccurrenceCreated,
    kTaskNotifiedOverdueEnd,
    kTaskPriorityRank,
    kTaskRecurrence,
    kTaskReminderDate,
    kTaskScheduledBudgetAlerts,
    kTaskScheduledDay,
    kTaskScheduledEnd,
    kTaskScheduledReminderDate,
    kTaskScheduledStart,
    kTaskSessions,
    kTaskTitle,
};
constexpr JsonKeys<19> kTaskKeys{{
    "checklist",
    "completedAt",
    "createdAt",
    "estimatedMinutes",
    "id",
    "isComplete",
    "liveSessionStartedAt",
    "nextOccurrenceCreated",
    "notifiedOverdueEnd",
    "priorityRank",
    "recurrence",
    "reminderDate",
    "scheduledBudgetAlerts",
    "scheduledDay",
    "scheduledEnd",
    "scheduledReminderDate",
    "scheduledStart",
    "sessions",
    "title",
}};
constexpr std::uint32_t kTaskRequired =
    bits({kTaskCreatedAt, kTaskId, kTaskIsComplete, kTaskScheduledBudgetAlerts, kTaskSessions,
          kTaskTitle});

bool decode(Decoder& d, TaskItem& t) {
    return d.object("task", kTaskKeys, kTaskRequired, [&](int member) {
        switch (static_cast<TaskMember>(member)) {
        case kTaskChecklist:
            return read(d, t.checklist);
        case kTaskCompletedAt:
            return read(d, t.completedAt);
        case kTaskCreatedAt:
            return read(d, t.createdAt);
        case kTaskEstimatedMinutes:
            return read(d, t.estimatedMinutes);
        case kTaskId:
            return read(d, t.id);
        case kTaskIsComplete:
            return read(d, t.isComplete);
        case kTaskLiveSessionStartedAt:
            return read(d, t.liveSessionStartedAt);
        case kTaskNextOccurrenceCreated:
            return read(d, t.nextOccurrenceCreated);
        case kTaskNotifiedOverdueEnd:
            return read(d, t.notifiedOverdueEnd);
        case kTaskPriorityRank:
            return read(d, t.priorityRank);
        case kTaskRecurrence:
            return read(d, t.recurrence);
        case kTaskReminderDate:
            return read(d, t.reminderDate);
        case kTaskScheduledBudgetAlerts:
            return read(d, t.scheduledBudgetAlerts);
        case kTaskScheduledDay:
            return read(d, t.scheduledDay);
        case kTaskScheduledEnd:
            return read(d, t.scheduledEnd);
        case kTaskScheduledReminderDate:
            return read(d, t.scheduledReminderDate);
        case kTaskScheduledStart:
            return read(d, t.scheduledStart);
        case kTaskSessions:
            return read(d, t.sessions);
        case kTaskTitle:
            return read(d, t.title);
        }
        return false;
    });
}

enum PreferenceMember {
    kActiveHoursEnd,
    kActiveHoursStart,
    kBudgetNotificationsEnabled,
    kBudgetWarningLeadMinutes,
    kCalendarIntegrationEnabled,
    kDailyReviewEnabled,
    kDailyReviewHour,
    kDailyReviewMinute,
    kDefaultTaskMinutes,
    kDueNotificationsEnabled,
    kEdgeAnchor,
    kEndWarningLeadMinutes,
    kScheduledEndAlertsEnabled,
    kSelectedCalendarIdentifiers,
    kTaskRemindersEnabled,
    kUnfinishedReminderCadence,
};
constexpr JsonKeys<16> kPreferenceKeys{{
    "activeHoursEnd",
    "activeHoursStart",
    "budgetNotificationsEnabled",
    "budgetWarningLeadMinutes",
    "calendarIntegrationEnabled",
    "dailyReviewEnabled",
    "dailyReviewHour",
    "dailyReviewMinute",
    "defaultTaskMinutes",
    "dueNotificationsEnabled",
    "edgeAnchor",
    "endWarningLeadMinutes",
    "scheduledEndAlertsEnabled",
    "selectedCalendarIdentifiers",
    "taskRemindersEnabled",
    "unfinishedReminderCadence",
}};

bool decode(Decoder& d, AppPreferences& p) {
    // The older key is only read, never written; the newer one wins when both exist.
    std::optional<bool> older;
    std::optional<bool> newer;
    const bool decoded = d.object("preferences", kPreferenceKeys, 0, [&](int member) {
        switch (static_cast<PreferenceMember>(member)) {
        case kActiveHoursEnd:
            return readPreference(d, p.activeHoursEnd);
        case kActiveHoursStart:
            return readPreference(d, p.activeHoursStart);
        case kBudgetNotificationsEnabled:
            return readPreference(d, p.budgetNotificationsEnabled);
        case kBudgetWarningLeadMinutes:
            return readPreference(d, p.budgetWarningLeadMinutes);
        case kCalendarIntegrationEnabled:
            return readPreference(d, p.calendarIntegrationEnabled);
        case kDailyReviewEnabled:
            return readPreference(d, p.dailyReviewEnabled);
        case kDailyReviewHour:
            return readPreference(d, p.dailyReviewHour);
        case kDailyReviewMinute:
            return readPreference(d, p.dailyReviewMinute);
        case kDefaultTaskMinutes:
            return readPreference(d, p.defaultTaskMinutes);
        case kDueNotificationsEnabled:
            return read(d, older);
        case kEdgeAnchor:
            return readPreference(d, p.edgeAnchor);
        case kEndWarningLeadMinutes:
            return readPreference(d, p.endWarningLeadMinutes);
        case kScheduledEndAlertsEnabled:
            return readPreference(d, p.scheduledEndAlertsEnabled);
        case kSelectedCalendarIdentifiers:
            return readPreference(d, p.selectedCalendarIdentifiers);
        case kTaskRemindersEnabled:
            return read(d, newer);
        case kUnfinishedReminderCadence:
            return readPreference(d, p.unfinishedReminderCadence);
        }
        return false;
    });
    if (const auto enabled = newer ? newer : older) {
        p.taskRemindersEnabled = *enabled;
    }
    return decoded;
}

enum SummaryMember { kActualSeconds, kSummaryEstimate, kSummaryId, kSummaryTitle, kWasComplete };
constexpr JsonKeys<5> kSummaryKeys{
    {"actualSeconds", "estimatedMinutes", "id", "title", "wasComplete"}};

bool decode(Decoder& d, DailyTaskSummary& s) {
    return d.object("report line", kSummaryKeys,
                    bits({kActualSeconds, kSummaryId, kSummaryTitle, kWasComplete}),
                    [&](int member) {
                        switch (static_cast<SummaryMember>(member)) {
                        case kActualSeconds:
                            return read(d, s.actualSeconds);
                        case kSummaryEstimate:
                            return read(d, s.estimatedMinutes);
                        case kSummaryId:
                            return read(d, s.id);
                        case kSummaryTitle:
                            return read(d, s.title);
                        case kWasComplete:
                            return read(d, s.wasComplete);
                        }
                        return false;
                    });
}

enum ReportMember { kReportDay, kReportGeneratedAt, kReportId, kReportTasks };
constexpr JsonKeys<4> kReportKeys{{"day", "generatedAt", "id", "tasks"}};

bool decode(Decoder& d, DailyReport& report) {
    return d.object("daily report", kReportKeys,
                    bits({kReportDay, kReportGeneratedAt, kReportId, kReportTasks}),
                    [&](int member) {
                        switch (static_cast<ReportMember>(member)) {
                        case kReportDay:
                            return read(d, report.day);
                        case kReportGeneratedAt:
                            return read(d, report.generatedAt);
                        case kReportId:
                            return read(d, report.id);
                        case kReportTasks:
                            return read(d, report.tasks);
                        }
                        return false;
                    });
}

template <typename T>
Result<T> decodeOne(JsonReader& reader, DateCoding dates) {
    Decoder d(reader, dates);
    T value;
    const bool decoded = decode(d, value);
    return d.result(decoded, std::move(value));
}

// An array of records; the error names the element ("Task 3: ...").
template <typename T>
Status decodeList(JsonReader& reader, DateCoding dates, const char* noun, const char* what,
                  std::vector<T>& out) {
    Decoder d(reader, dates);
    if (!reader.beginArray()) {
        return Error{reader.hasSyntaxError() ? reader.syntaxError()
                                             : std::string("The ") + what + " is not a list."};
    }
    while (reader.nextElement()) {
        if (!decode(d, out.emplace_back())) {
            return Error{std::string(noun) + " " + std::to_string(out.size()) + ": " + d.error};
        }
    }
    if (reader.hasSyntaxError()) {
        return Error{reader.syntaxError()};
    }
    return {};
}

} // namespace

std::optional<BudgetAlertSet> readBudgetAlertSet(JsonReader& reader) {
    if (!reader.beginArray()) {
        return std::nullopt;
    }
    BudgetAlertSet set;
    while (reader.nextElement()) {
        const auto text = reader.readStringView();
        const auto kind = text ? budgetAlertKindFromRaw(*text) : std::nullopt;
        if (!kind) {
            return std::nullopt;
        }
        set.insert(*kind);
    }
    if (reader.hasSyntaxError()) {
        return std::nullopt;
    }
    return set;
}

Result<ChecklistItem> decodeChecklistItem(JsonReader& reader) {
    return decodeOne<ChecklistItem>(reader, DateCoding::iso8601);
}

Result<WorkSession> decodeWorkSession(JsonReader& reader, DateCoding dates) {
    return decodeOne<WorkSession>(reader, dates);
}

Result<TaskItem> decodeTaskItem(JsonReader& reader, DateCoding dates) {
    return decodeOne<TaskItem>(reader, dates);
}

Result<AppPreferences> decodePreferences(JsonReader& reader) {
    return decodeOne<AppPreferences>(reader, DateCoding::iso8601);
}

Result<DailyTaskSummary> decodeDailyTaskSummary(JsonReader& reader) {
    return decodeOne<DailyTaskSummary>(reader, DateCoding::iso8601);
}

Result<DailyReport> decodeDailyReport(JsonReader& reader, DateCoding dates) {
    return decodeOne<DailyReport>(reader, dates);
}

Status decodeTaskList(JsonReader& reader, DateCoding dates, std::vector<TaskItem>& out) {
    return decodeList(reader, dates, "Task", "list of tasks", out);
}

Status decodeTaskRun(JsonReader& reader, DateCoding dates, std::vector<TaskItem>& out,
                     std::size_t stopAt, bool& ended) {
    Decoder d(reader, dates);
    ended = false;
    do {
        if (!decode(d, out.emplace_back())) {
            return Error{"Task " + std::to_string(out.size()) + ": " + d.error};
        }
        if (!reader.nextElement()) {
            if (reader.hasSyntaxError()) {
                return Error{reader.syntaxError()};
            }
            ended = true;
            return {};
        }
    } while (reader.nextValueOffset() < stopAt);
    return {};
}

Status decodeReportList(JsonReader& reader, DateCoding dates, std::vector<DailyReport>& out) {
    return decodeList(reader, dates, "Report", "list of reports", out);
}

} // namespace daywyn
