#include "persistence/LegacyPersistedState.h"

#include "base/Json.h"
#include "model/RecordJson.h"

namespace daywyn {

namespace {

// Reads the members of one legacy task, remembering the first problem.
class LegacyReader {
public:
    explicit LegacyReader(const rapidjson::Value& object)
        : object_(object)
        , ok_(object.IsObject()) {}

    bool ok() const { return ok_; }

    template <typename Read>
    auto required(std::string_view key, Read read) {
        decltype(read(object_)) value;
        if (ok_) {
            const rapidjson::Value* v = findMember(object_, key);
            value = v ? read(*v) : std::nullopt;
            ok_ = value.has_value();
        }
        return value;
    }

    // Missing or null gives absent; present with another type fails.
    template <typename Read>
    auto optional(std::string_view key, Read read) {
        decltype(read(object_)) value;
        if (ok_) {
            const rapidjson::Value* v = findMember(object_, key);
            if (v && !v->IsNull()) {
                value = read(*v);
                ok_ = value.has_value();
            }
        }
        return value;
    }

private:
    const rapidjson::Value& object_;
    bool ok_;
};

std::optional<Instant> readIsoDate(const rapidjson::Value& v) {
    return readDate(v, DateCoding::iso8601);
}

std::optional<LegacyTaskItem> decodeLegacyTask(const rapidjson::Value& v) {
    LegacyReader r(v);
    auto id = r.required("id", readUuid);
    auto title = r.required("title", readString);
    auto estimate = r.required("estimatedMinutes", readInt64);
    auto dueDate = r.optional("dueDate", readIsoDate);
    auto elapsed = r.required("elapsedBeforeCurrentRun", readDouble);
    auto startedAt = r.optional("startedAt", readIsoDate);
    auto isComplete = r.required("isComplete", readBool);
    auto alerts = r.required("scheduledBudgetAlerts", readBudgetAlertSet);
    auto scheduledDueDate = r.optional("scheduledDueDate", readIsoDate);
    if (!r.ok()) {
        return std::nullopt;
    }
    return LegacyTaskItem{*id,       std::move(*title), *estimate, dueDate,         *elapsed,
                          startedAt, *isComplete,       *alerts,   scheduledDueDate};
}

} // namespace

Result<LegacyPersistedState> LegacyPersistedState::decode(const rapidjson::Value& document) {
    LegacyReader r(document);
    auto version = r.required("version", readInt64);
    if (!r.ok()) {
        return Error{"The old-format state has no version."};
    }
    const rapidjson::Value* tasks = findMember(document, "tasks");
    const rapidjson::Value* preferences = findMember(document, "preferences");
    if (!tasks || !tasks->IsArray() || !preferences) {
        return Error{"The old-format state lacks its tasks or preferences."};
    }
    LegacyPersistedState state;
    state.version = *version;
    state.tasks.reserve(tasks->Size());
    for (const auto& element : tasks->GetArray()) {
        auto task = decodeLegacyTask(element);
        if (!task) {
            return Error{"Old-format task " + std::to_string(state.tasks.size() + 1) +
                         " is not valid."};
        }
        state.tasks.push_back(std::move(*task));
    }
    auto prefs = decodePreferences(*preferences);
    if (!prefs) {
        return Error{prefs.error()};
    }
    state.preferences = std::move(prefs).value();
    return state;
}

PersistedState LegacyPersistedState::migrated(Instant t) const {
    PersistedState state;
    state.version = PersistedState::kCurrentVersion;
    state.preferences = preferences;
    state.tasks.reserve(tasks.size());
    for (const auto& legacy : tasks) {
        TaskItem task;
        task.id = legacy.id;
        task.title = legacy.title;
        task.estimatedMinutes = legacy.estimatedMinutes;
        task.reminderDate = legacy.dueDate;
        task.createdAt = t;
        task.isComplete = legacy.isComplete;
        if (legacy.isComplete) {
            task.completedAt = t;
        }
        // The old format kept one running total; it becomes one session that ends
        // exactly where the live run began, so a running timer survives the upgrade.
        if (legacy.elapsedBeforeCurrentRun > 0) {
            const Instant anchor = legacy.startedAt.value_or(t);
            task.sessions.push_back(
                WorkSession{Uuid::random(), anchor - legacy.elapsedBeforeCurrentRun, anchor});
        }
        task.liveSessionStartedAt = legacy.startedAt;
        task.scheduledBudgetAlerts = legacy.scheduledBudgetAlerts;
        task.scheduledReminderDate = legacy.scheduledDueDate;
        state.tasks.push_back(std::move(task));
    }
    return state;
}

} // namespace daywyn
