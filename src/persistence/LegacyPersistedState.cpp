#include "persistence/LegacyPersistedState.h"

#include <cstdint>

#include "base/JsonReader.h"
#include "model/RecordJson.h"

namespace daywyn {

namespace {

enum LegacyMember {
    kDueDate,
    kElapsedBeforeCurrentRun,
    kEstimatedMinutes,
    kId,
    kIsComplete,
    kScheduledBudgetAlerts,
    kScheduledDueDate,
    kStartedAt,
    kTitle,
};
constexpr JsonKeys<9> kLegacyKeys{{
    "dueDate",
    "elapsedBeforeCurrentRun",
    "estimatedMinutes",
    "id",
    "isComplete",
    "scheduledBudgetAlerts",
    "scheduledDueDate",
    "startedAt",
    "title",
}};
constexpr std::uint32_t kLegacyRequired =
    (1u << kElapsedBeforeCurrentRun) | (1u << kEstimatedMinutes) | (1u << kId) |
    (1u << kIsComplete) | (1u << kScheduledBudgetAlerts) | (1u << kTitle);

// Missing or null gives absent; any other value must be an ISO date.
bool readOptionalDate(JsonReader& r, std::optional<Instant>& out) {
    if (r.readNull()) {
        return true;
    }
    out = r.readStringAs(kIsoTextLength, parseIsoText);
    return out.has_value();
}

bool decodeLegacyTask(JsonReader& r, LegacyTaskItem& task) {
    const JsonObjectRead read = readJsonObject(r, kLegacyKeys, [&](int member) {
        switch (static_cast<LegacyMember>(member)) {
        case kElapsedBeforeCurrentRun: {
            const auto elapsed = r.readDouble();
            task.elapsedBeforeCurrentRun = elapsed.value_or(0.0);
            return elapsed.has_value();
        }
        case kDueDate:
            return readOptionalDate(r, task.dueDate);
        case kEstimatedMinutes: {
            const auto minutes = r.readInt64();
            task.estimatedMinutes = minutes.value_or(0);
            return minutes.has_value();
        }
        case kId: {
            const auto id = r.readStringAs(kUuidTextLength, Uuid::parse);
            task.id = id.value_or(Uuid{});
            return id.has_value();
        }
        case kIsComplete: {
            const auto complete = r.readBool();
            task.isComplete = complete.value_or(false);
            return complete.has_value();
        }
        case kScheduledBudgetAlerts: {
            const auto alerts = readBudgetAlertSet(r);
            task.scheduledBudgetAlerts = alerts.value_or(BudgetAlertSet{});
            return alerts.has_value();
        }
        case kScheduledDueDate:
            return readOptionalDate(r, task.scheduledDueDate);
        case kStartedAt:
            return readOptionalDate(r, task.startedAt);
        case kTitle: {
            const auto title = r.readStringView();
            task.title.assign(title.value_or(std::string_view{}));
            return title.has_value();
        }
        }
        return false;
    });
    return read.ok() && read.firstMissing(kLegacyRequired) < 0;
}

} // namespace

Status LegacyPersistedState::decodeTasks(JsonReader& reader, std::vector<LegacyTaskItem>& out) {
    if (!reader.beginArray()) {
        return Error{"The old-format state has no list of tasks."};
    }
    while (reader.nextElement()) {
        if (!decodeLegacyTask(reader, out.emplace_back())) {
            return Error{reader.hasSyntaxError()
                             ? reader.syntaxError()
                             : "Old-format task " + std::to_string(out.size()) + " is not valid."};
        }
    }
    if (reader.hasSyntaxError()) {
        return Error{reader.syntaxError()};
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
