#include "persistence/LegacyPersistedState.h"

#include "base/JsonFields.h"
#include "model/RecordFields.h"

namespace daywyn {

template <>
struct JsonRecord<LegacyTaskItem> {
    using T = LegacyTaskItem;
    static constexpr std::string_view noun = "old-format task";
    static constexpr auto fields = std::tuple(
        jsonField("dueDate", &T::dueDate, FieldRule::optional),
        jsonField("elapsedBeforeCurrentRun", &T::elapsedBeforeCurrentRun, FieldRule::required),
        jsonField("estimatedMinutes", &T::estimatedMinutes, FieldRule::required),
        jsonField("id", &T::id, FieldRule::required),
        jsonField("isComplete", &T::isComplete, FieldRule::required),
        jsonField("scheduledBudgetAlerts", &T::scheduledBudgetAlerts, FieldRule::required),
        jsonField("scheduledDueDate", &T::scheduledDueDate, FieldRule::optional),
        jsonField("startedAt", &T::startedAt, FieldRule::optional),
        jsonField("title", &T::title, FieldRule::required));
};

namespace {

bool decodeLegacyTaskList(JsonDecoder& d, JsonValue& v, std::vector<LegacyTaskItem>& out) {
    std::size_t count = 0;
    bool inElement = false;
    const bool read = readJsonArray(d, v, [&](JsonValue& element) {
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
        d.prefixError("Old-format task " + std::to_string(count) + ": ");
    } else if (!d.hasSyntaxError()) {
        d.fail("The old-format state has no list of tasks.");
    }
    return false;
}

} // namespace

Status LegacyPersistedState::decodeTasks(std::string_view json, std::vector<LegacyTaskItem>& out) {
    JsonInput input(json);
    JsonDecoder d;
    simdjson::ondemand::document document;
    JsonValue value;
    if (!input.iterate(d, document) || !d.checkSyntax(document.get_value().get(value)) ||
        !decodeLegacyTaskList(d, value, out)) {
        return Error{d.error()};
    }
    if (!jsonAtEnd(document)) {
        return Error{jsonSyntaxError(simdjson::TRAILING_CONTENT)};
    }
    return {};
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
