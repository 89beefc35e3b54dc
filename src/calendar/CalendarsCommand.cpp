#include "calendar/CalendarsCommand.h"

#include <algorithm>

#include "base/Json.h"
#include "calendar/CalendarReading.h"

namespace daywyn {

namespace {

bool contains(const std::vector<std::string>& list, const std::string& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

std::string summaryText(const AppPreferences& preferences,
                        const std::optional<CalendarSnapshot>& listing) {
    const auto& selected = preferences.selectedCalendarIdentifiers;
    std::string out = std::string("Calendar events in the drawer: ") +
                      (preferences.calendarIntegrationEnabled ? "on" : "off") + "\n";
    std::vector<std::string> unlisted = selected;
    if (listing) {
        const auto choices = calendarChoices(listing->calendars);
        if (!choices.empty()) {
            out += "\nCalendars ([x] chosen):\n";
        }
        for (const auto& choice : choices) {
            out += std::string("  ") + (contains(selected, choice.id) ? "[x] " : "[ ] ") +
                   choice.title + " \u2014 " + choice.sourceTitle + "  " + choice.colorHex + "  " +
                   choice.id + "\n";
            unlisted.erase(std::remove(unlisted.begin(), unlisted.end(), choice.id),
                           unlisted.end());
        }
        // The switch is off here on purpose: these sentences say why nothing is listed or
        // chosen, whatever the drawer shows.
        const auto explanations = calendarExplanations(listing->status, true, choices, selected);
        if (!explanations.empty()) {
            out += "\n";
        }
        for (const auto& sentence : explanations) {
            out += sentence + "\n";
        }
        if (listing->errorMessage) {
            out += *listing->errorMessage + "\n";
        }
    } else if (selected.empty()) {
        out += "No calendars are selected.\n";
    }
    if (!unlisted.empty()) {
        out += listing ? "\nChosen but not found now:\n" : "Selected calendars:\n";
        for (const auto& id : unlisted) {
            out += "  " + id + "\n";
        }
    }
    return out;
}

std::string summaryJson(const AppPreferences& preferences,
                        const std::optional<CalendarSnapshot>& listing) {
    const auto& selected = preferences.selectedCalendarIdentifiers;
    JsonBuffer buffer;
    CompactJsonWriter w(buffer);
    {
        w.StartObject();
        writeKey(w, "calendars");
        w.StartArray();
        if (listing) {
            for (const auto& choice : calendarChoices(listing->calendars)) {
                w.StartObject();
                writeKey(w, "colorHex");
                writeString(w, choice.colorHex);
                writeKey(w, "id");
                writeString(w, choice.id);
                writeKey(w, "selected");
                w.Bool(contains(selected, choice.id));
                writeKey(w, "sourceTitle");
                writeString(w, choice.sourceTitle);
                writeKey(w, "title");
                writeString(w, choice.title);
                w.EndObject();
            }
        }
        w.EndArray();
        writeKey(w, "integrationEnabled");
        w.Bool(preferences.calendarIntegrationEnabled);
        writeKey(w, "selectedCalendarIdentifiers");
        w.StartArray();
        for (const auto& id : selected) {
            writeString(w, id);
        }
        w.EndArray();
        w.EndObject();
    }
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

} // namespace

std::optional<std::string> calendarsCommandUsageProblem(const CalendarsRequest& request) {
    const auto& words = request.words;
    if (words.empty()) {
        if (request.all) {
            return "--all goes with select or unselect.";
        }
        return std::nullopt;
    }
    const std::string& action = words[0];
    if (action != "on" && action != "off" && action != "select" && action != "unselect") {
        return "Unknown action \"" + action + "\"; use on, off, select or unselect.";
    }
    if (action == "on" || action == "off") {
        if (words.size() > 1 || request.all) {
            return "'" + action + "' takes no calendar ids.";
        }
        return std::nullopt;
    }
    if (request.all && words.size() > 1) {
        return "Give calendar ids or --all, not both.";
    }
    if (!request.all && words.size() < 2) {
        return "Give one or more calendar ids, or --all.";
    }
    return std::nullopt;
}

CalendarsCommandResult runCalendarsCommand(TodayTaskStore& store, const CalendarsRequest& request,
                                           const std::optional<CalendarSnapshot>& listing) {
    const auto show = [&] {
        return CalendarsCommandResult{true,
                                      request.json ? summaryJson(store.preferences(), listing)
                                                   : summaryText(store.preferences(), listing),
                                      {}};
    };
    if (request.words.empty()) {
        return show();
    }
    const std::string& action = request.words[0];
    std::vector<std::string> ids(request.words.begin() + 1, request.words.end());
    const bool listed = listing && listing->status == CalendarAccessStatus::fullAccess;
    if (request.all) {
        if (action == "select" && !listed) {
            return {false,
                    {},
                    "Daywyn has no calendar list to choose from here (calendar events are off, "
                    "or no calendar could be read); turn calendar events on first, or give "
                    "calendar ids.\n"};
        }
        if (action == "select") {
            for (const auto& calendar : listing->calendars) {
                ids.push_back(calendar.id);
            }
        } else {
            ids = store.preferences().selectedCalendarIdentifiers;
        }
    } else if (action == "select" && listed) {
        // A mistyped id would select nothing the drawer could ever show.
        for (const auto& id : ids) {
            const bool known = std::any_of(listing->calendars.begin(), listing->calendars.end(),
                                           [&id](const SourceCalendar& c) { return c.id == id; });
            if (!known) {
                return {false,
                        {},
                        "No calendar has the id \"" + id +
                            "\"; nothing was changed. Run 'daywyn calendars' to see the ids.\n"};
            }
        }
    }
    store.updatePreferences([&](AppPreferences& preferences) {
        auto& selected = preferences.selectedCalendarIdentifiers;
        if (action == "on" || action == "off") {
            preferences.calendarIntegrationEnabled = action == "on";
        } else if (action == "select") {
            for (const auto& id : ids) {
                if (!contains(selected, id)) {
                    selected.push_back(id);
                }
            }
        } else {
            for (const auto& id : ids) {
                selected.erase(std::remove(selected.begin(), selected.end(), id), selected.end());
            }
        }
    });
    return show();
}

} // namespace daywyn
