#include "reminders/DrawerReminderRules.h"

#include <algorithm>

#include "base/DoubleText.h"
#include "base/JsonFields.h"
#include "reminders/DrawerReminderPlanner.h"
#include "reminders/ReminderRules.h"

namespace daywyn {

namespace {

using Kind = DrawerReminderDecision::Kind;

std::optional<DrawerReminder> checkIn(DrawerReminderCoordinatorState& state,
                                      const DrawerReminderSettings& settings,
                                      const std::vector<TaskItem>& tasks, Instant now,
                                      const Calendar& calendar) {
    if (settings.nudgeHours <= 0 || now - state.lastNudge < settings.nudgeHours * 3600.0) {
        return std::nullopt;
    }
    const auto open = unfinishedTasksOfDay(tasks, now, calendar);
    if (open.empty()) {
        return std::nullopt;
    }
    state.lastNudge = now;
    return DrawerReminder{"nudge:" + shortestDoubleText(now.seconds), "A gentle check-in",
                          std::to_string(open.size()) +
                              " unfinished tasks for today. Next: " + open.front()->title,
                          now};
}

} // namespace

DrawerReminderDecision DrawerReminderRules::check(DrawerReminderCoordinatorState& state,
                                                  const DrawerReminderSettings& settings,
                                                  const std::vector<TaskItem>& tasks,
                                                  const std::vector<CalendarEventItem>& events,
                                                  Instant now, const Calendar& calendar) {
    if (!settings.enabled) {
        return {};
    }
    if (settings.paused || state.isLocked) {
        return {Kind::closeVisible, std::nullopt};
    }
    if (!isWithinActiveHours(calendar.hour(now), settings.activeStart, settings.activeEnd) ||
        now - state.lastPresented < kSpacingSeconds) {
        return {};
    }

    std::optional<DrawerReminder> chosen;
    // Only the snooze that is shown leaves the list: others due at the same time
    // wait for the next check instead of being lost.
    const auto dueSnooze = std::find_if(state.snoozed.begin(), state.snoozed.end(),
                                        [&](const SnoozedReminder& s) { return s.until <= now; });
    if (dueSnooze != state.snoozed.end()) {
        chosen = dueSnooze->reminder;
        state.snoozed.erase(dueSnooze);
    } else {
        for (auto& candidate : DrawerReminderPlanner::candidates(tasks, events, now, calendar)) {
            if (!state.seen.contains(candidate.id)) {
                chosen = std::move(candidate);
                break;
            }
        }
    }
    if (!chosen) {
        chosen = checkIn(state, settings, tasks, now, calendar);
    }
    if (!chosen) {
        return {};
    }
    state.seen[chosen->id] = now;
    state.lastPresented = now;
    pruneSeen(state, now);
    return {Kind::present, std::move(chosen)};
}

bool DrawerReminderRules::respond(DrawerReminderCoordinatorState& state,
                                  DrawerReminderAction action, const DrawerReminder& reminder,
                                  Instant now) {
    if (action != DrawerReminderAction::snooze) {
        return false;
    }
    state.snoozed.push_back({reminder, now + kSnoozeSeconds});
    return true;
}

void DrawerReminderRules::pruneSeen(DrawerReminderCoordinatorState& state, Instant now) {
    std::erase_if(state.seen,
                  [&](const auto& entry) { return now - entry.second > kSeenLifetimeSeconds; });
}

DrawerReminder DrawerReminderRules::previewReminder(Instant now) {
    return {"preview", "A gentle reminder",
            "This is how Daywyn nudges you without a desktop banner.", now};
}

// The settings file's blobs: compact JSON, dates as seconds since 2001.

template <>
struct JsonRecord<DrawerReminder> {
    static constexpr std::string_view noun = "drawer reminder";
    static constexpr auto fields =
        std::tuple(jsonField("detail", &DrawerReminder::detail, FieldRule::required),
                   jsonField("due", &DrawerReminder::due, FieldRule::required),
                   jsonField("id", &DrawerReminder::id, FieldRule::required),
                   jsonField("title", &DrawerReminder::title, FieldRule::required));
};

template <>
struct JsonRecord<SnoozedReminder> {
    static constexpr std::string_view noun = "snoozed reminder";
    static constexpr auto fields =
        std::tuple(jsonField("reminder", &SnoozedReminder::reminder, FieldRule::required),
                   jsonField("until", &SnoozedReminder::until, FieldRule::required));
};

std::string DrawerReminderRules::encodeSeen(const std::map<std::string, Instant>& seen) {
    JsonBuffer buffer;
    CompactJsonWriter w(buffer);
    w.StartObject();
    for (const auto& [id, when] : seen) {
        writeKey(w, id);
        writeDate(w, when, DateCoding::referenceSeconds);
    }
    w.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

// Entries that are not dates are left out; a text that is not a JSON object is empty.
std::map<std::string, Instant> DrawerReminderRules::decodeSeen(std::string_view text) {
    std::map<std::string, Instant> seen;
    JsonInput input(text);
    JsonDecoder d(DateCoding::referenceSeconds);
    simdjson::ondemand::document document;
    JsonValue root;
    if (!input.iterate(d, document) || !d.check(document.get_value().get(root))) {
        return {};
    }
    const bool read = readJsonObject(d, root, [&](std::string_view id, JsonValue& value) {
        Instant when;
        if (readJson(d, value, when)) {
            seen.emplace(std::string(id), when);
            return true;
        }
        return !d.hasSyntaxError() && skipJson(d, value);
    });
    if (!read || !jsonAtEnd(document)) {
        return {};
    }
    return seen;
}

std::string DrawerReminderRules::encodeSnoozed(const std::vector<SnoozedReminder>& snoozed) {
    JsonBuffer buffer;
    CompactJsonWriter w(buffer);
    writeJson(w, snoozed, DateCoding::referenceSeconds);
    return {buffer.GetString(), buffer.GetSize()};
}

// All or nothing: one entry that does not decode empties the list.
std::vector<SnoozedReminder> DrawerReminderRules::decodeSnoozed(std::string_view text) {
    JsonInput input(text);
    JsonDecoder d(DateCoding::referenceSeconds);
    simdjson::ondemand::document document;
    JsonValue root;
    std::vector<SnoozedReminder> snoozed;
    if (!input.iterate(d, document) || !d.check(document.get_value().get(root)) ||
        !readJson(d, root, snoozed) || !jsonAtEnd(document)) {
        return {};
    }
    return snoozed;
}

DrawerReminderCoordinatorState DrawerReminderRules::restore(std::string_view seenText,
                                                            std::string_view snoozedText,
                                                            std::optional<Instant> lastNudge,
                                                            Instant now) {
    DrawerReminderCoordinatorState state;
    state.seen = decodeSeen(seenText);
    state.snoozed = decodeSnoozed(snoozedText);
    state.lastNudge = lastNudge.value_or(now);
    return state;
}

} // namespace daywyn
