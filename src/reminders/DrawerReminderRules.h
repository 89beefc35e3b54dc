#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "calendar/CalendarEventItem.h"
#include "model/TaskItem.h"
#include "reminders/DrawerReminder.h"
#include "reminders/DrawerReminderCoordinatorState.h"
#include "reminders/DrawerReminderDecision.h"
#include "reminders/DrawerReminderSettings.h"

namespace daywyn {

// The pop-out coordinator's decisions over its remembered state: which reminder,
// if any, a check shows, what the pop-out's buttons change, and how the memory is
// written to and read from the settings file. The owner persists the state after
// a presented reminder and after a snooze.
class DrawerReminderRules {
public:
    // At most one pop-out every 30 s; a check-in once the day has open tasks and
    // nudgeHours have passed; seen entries are forgotten after 7 days.
    static constexpr double kSpacingSeconds = 30.0;
    static constexpr double kSnoozeSeconds = 600.0;
    static constexpr double kSeenLifetimeSeconds = 604800.0;

    // One check at now: disabled shows nothing; paused or locked closes the visible
    // pop-out; outside the active hours or within 30 s of the last pop-out nothing.
    // Otherwise the first due snooze, else the oldest planner candidate not yet
    // seen, else the check-in. A presented reminder is marked seen at now.
    static DrawerReminderDecision check(DrawerReminderCoordinatorState& state,
                                        const DrawerReminderSettings& settings,
                                        const std::vector<TaskItem>& tasks,
                                        const std::vector<CalendarEventItem>& events, Instant now,
                                        const Calendar& calendar);

    // A button of a shown pop-out. Every button closes the pop-out and open also
    // shows the drawer; snooze brings the reminder back at now + 10 min. Dismiss and
    // open leave it seen, so it does not return. True when the state is to be saved.
    static bool respond(DrawerReminderCoordinatorState& state, DrawerReminderAction action,
                        const DrawerReminder& reminder, Instant now);

    // Forgets seen entries older than 7 days.
    static void pruneSeen(DrawerReminderCoordinatorState& state, Instant now);

    // The settings screen's sample pop-out; it touches no state.
    static DrawerReminder previewReminder(Instant now);

    // The seen map as a JSON object of id -> seconds since 2001; anything that does
    // not decode is an empty map, an entry that is not a number is left out.
    static std::string encodeSeen(const std::map<std::string, Instant>& seen);
    static std::map<std::string, Instant> decodeSeen(std::string_view text);
    // The snoozed list as a JSON array of {"reminder", "until"} with dates as
    // seconds since 2001; data that does not decode as a whole is an empty list.
    static std::string encodeSnoozed(const std::vector<SnoozedReminder>& snoozed);
    static std::vector<SnoozedReminder> decodeSnoozed(std::string_view text);

    // The state at start-up from the three stored values; a missing last check-in
    // counts from now, so the first one comes nudgeHours after the first launch.
    static DrawerReminderCoordinatorState restore(std::string_view seenText,
                                                  std::string_view snoozedText,
                                                  std::optional<Instant> lastNudge, Instant now);
};

} // namespace daywyn
