#include "calendar/CalendarReading.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "base/Text.h"

namespace daywyn {

std::vector<CalendarChoice> calendarChoices(const std::vector<SourceCalendar>& calendars,
                                            std::string_view locale) {
    std::vector<CalendarChoice> choices;
    choices.reserve(calendars.size());
    for (const auto& calendar : calendars) {
        choices.push_back(CalendarChoice{calendar.id, calendar.title, calendar.sourceTitle,
                                         CalendarEventItem::hexColorFromText(calendar.colorText)});
    }
    CalendarChoice::sort(choices, locale);
    return choices;
}

std::vector<CalendarEventItem> dayEventItems(const CalendarSnapshot& snapshot,
                                             const std::vector<std::string>& selected,
                                             const DayInterval& day,
                                             const std::function<std::string()>& freshIdentifier) {
    if (snapshot.status != CalendarAccessStatus::fullAccess || selected.empty()) {
        return {};
    }
    const std::unordered_set<std::string> wanted(selected.begin(), selected.end());
    std::unordered_map<std::string, const SourceCalendar*> calendars;
    for (const auto& calendar : snapshot.calendars) {
        if (wanted.count(calendar.id) != 0) {
            calendars.emplace(calendar.id, &calendar);
        }
    }
    std::unordered_map<std::string, std::string> colors;
    std::vector<CalendarEventItem> items;
    for (const auto& event : snapshot.events) {
        const auto found = calendars.find(event.calendarIdentifier);
        if (found == calendars.end()) {
            continue;
        }
        const Instant end = std::max(event.end, event.start);
        if (!day.overlaps(event.start, end)) {
            continue;
        }
        const SourceCalendar& calendar = *found->second;
        auto color = colors.find(calendar.id);
        if (color == colors.end()) {
            color =
                colors.emplace(calendar.id, CalendarEventItem::hexColorFromText(calendar.colorText))
                    .first;
        }
        CalendarEventItem item;
        item.eventIdentifier =
            event.eventIdentifier.empty() ? freshIdentifier() : event.eventIdentifier;
        item.calendarIdentifier = calendar.id;
        item.calendarTitle = calendar.title;
        item.colorHex = color->second;
        item.title =
            isBlank(event.title) ? std::string(kUntitledEventTitle) : trimWhitespace(event.title);
        item.start = event.start;
        item.end = end;
        item.isAllDay = event.isAllDay;
        item.url = event.url;
        item.id = CalendarEventItem::occurrenceId(item.calendarIdentifier, item.eventIdentifier,
                                                  item.start);
        items.push_back(std::move(item));
    }
    return CalendarEventItem::deduplicated(std::move(items));
}

std::vector<std::string> calendarExplanations(CalendarAccessStatus status, bool integrationEnabled,
                                              const std::vector<CalendarChoice>& calendars,
                                              const std::vector<std::string>& selected) {
    std::vector<std::string> texts;
    if (status != CalendarAccessStatus::fullAccess) {
        if (integrationEnabled) {
            texts.emplace_back(
                "Calendar integration is enabled, but access to your calendars is missing.");
        }
        if (status == CalendarAccessStatus::unavailable) {
            texts.emplace_back("Calendar access is unavailable. Change it in Settings if desired.");
        } else if (integrationEnabled) {
            texts.emplace_back("Calendar access status is unavailable.");
        }
        return texts;
    }
    if (!integrationEnabled) {
        return texts;
    }
    if (calendars.empty()) {
        texts.emplace_back("No event calendars are currently available.");
        return texts;
    }
    const bool anySelected = std::any_of(calendars.begin(), calendars.end(), [&](const auto& c) {
        return std::find(selected.begin(), selected.end(), c.id) != selected.end();
    });
    if (!anySelected) {
        texts.emplace_back("No calendars are selected in Settings.");
    }
    return texts;
}

std::string eventTimeSpanText(const CalendarEventItem& item, const Calendar& calendar) {
    if (item.isAllDay) {
        return "All day";
    }
    const std::string start = calendar.shortTimeText(item.start);
    if (!(item.end > item.start)) {
        return start;
    }
    return start + " \u2013 " + calendar.shortTimeText(item.end);
}

std::optional<std::string> meetingLink(const CalendarEventItem& item) {
    if (!item.url) {
        return std::nullopt;
    }
    const std::string link = trimWhitespace(*item.url);
    constexpr std::string_view scheme = "https://";
    if (link.size() <= scheme.size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < scheme.size(); ++i) {
        const char c = link[i];
        const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        if (lower != scheme[i]) {
            return std::nullopt;
        }
    }
    if (link.find_first_of(" \t\r\n") != std::string::npos) {
        return std::nullopt;
    }
    return link;
}

} // namespace daywyn
