#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calendar/CalendarChoice.h"
#include "calendar/CalendarEventItem.h"
#include "calendar/CalendarSource.h"

namespace daywyn {

// The choices for the settings page, sorted by source title and title.
std::vector<CalendarChoice> calendarChoices(const std::vector<SourceCalendar>& calendars,
                                            std::string_view locale = {});

// The drawer's events of the day: occurrences in the selected calendars that share
// time with the day, as items with the calendar's title and colour, de-duplicated.
// An event without a title shows "Untitled event"; one without an identifier gets a
// fresh one from `freshIdentifier`; one that ends before it starts is shown as
// ending at its start.
std::vector<CalendarEventItem> dayEventItems(const CalendarSnapshot& snapshot,
                                             const std::vector<std::string>& selected,
                                             const DayInterval& day,
                                             const std::function<std::string()>& freshIdentifier);

// The sentences the Calendars settings page and the drawer show to explain why no
// events appear, for the access status, the integration switch, the calendars and
// the selection. Empty when there is nothing to explain.
std::vector<std::string> calendarExplanations(CalendarAccessStatus status, bool integrationEnabled,
                                              const std::vector<CalendarChoice>& calendars,
                                              const std::vector<std::string>& selected);

// The row's time: "All day", or the start and end in the calendar's short time style
// joined by an en dash ("9:00 AM – 9:30 AM").
std::string eventTimeSpanText(const CalendarEventItem& item, const Calendar& calendar);

// The event's link when it is safe to open as a meeting link (an https address), else
// absent.
std::optional<std::string> meetingLink(const CalendarEventItem& item);

} // namespace daywyn
