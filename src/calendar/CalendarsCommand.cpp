#include "calendar/CalendarsCommand.h"

#include <algorithm>

namespace daywyn {

namespace {

bool isAction(const std::string& word) {
    return word == "on" || word == "off" || word == "select" || word == "unselect";
}

std::string summary(const AppPreferences& preferences) {
    std::string out = std::string("Calendar events in the drawer: ") +
                      (preferences.calendarIntegrationEnabled ? "on" : "off") + "\n";
    if (preferences.selectedCalendarIdentifiers.empty()) {
        return out + "No calendars are selected.\n";
    }
    out += "Selected calendars:\n";
    for (const auto& id : preferences.selectedCalendarIdentifiers) {
        out += "  " + id + "\n";
    }
    return out;
}

} // namespace

bool calendarsCommandWrites(const std::vector<std::string>& words) {
    return !words.empty() && isAction(words[0]);
}

std::optional<std::string> calendarsCommandUsageProblem(const std::vector<std::string>& words) {
    if (words.empty()) {
        return std::nullopt;
    }
    const std::string& action = words[0];
    if (!isAction(action)) {
        return "Unknown action \"" + action + "\"; use on, off, select or unselect.";
    }
    if ((action == "on" || action == "off") && words.size() > 1) {
        return "'" + action + "' takes no calendar ids.";
    }
    if ((action == "select" || action == "unselect") && words.size() < 2) {
        return "Give one or more calendar ids.";
    }
    return std::nullopt;
}

std::string runCalendarsCommand(TodayTaskStore& store, const std::vector<std::string>& words) {
    if (words.empty()) {
        return summary(store.preferences());
    }
    const std::string& action = words[0];
    const std::vector<std::string> ids(words.begin() + 1, words.end());
    store.updatePreferences([&](AppPreferences& preferences) {
        auto& selected = preferences.selectedCalendarIdentifiers;
        if (action == "on" || action == "off") {
            preferences.calendarIntegrationEnabled = action == "on";
        } else if (action == "select") {
            for (const auto& id : ids) {
                if (std::find(selected.begin(), selected.end(), id) == selected.end()) {
                    selected.push_back(id);
                }
            }
        } else {
            for (const auto& id : ids) {
                selected.erase(std::remove(selected.begin(), selected.end(), id), selected.end());
            }
        }
    });
    return summary(store.preferences());
}

} // namespace daywyn
