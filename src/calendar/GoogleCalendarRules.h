#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "calendar/CalendarDay.h"
#include "calendar/CalendarEventItem.h"
#include "calendar/GoogleAccount.h"

namespace daywyn {

inline constexpr std::string_view kGoogleAccessExpired =
    "Google access expired or was declined. Connect the account again.";
inline constexpr std::string_view kGoogleCouldNotLoad =
    "Google Calendar could not be loaded. Check your connection and calendar permissions, then "
    "refresh.";
inline constexpr std::string_view kGoogleIncompletePage =
    "Google returned an incomplete calendar page. Refresh to retry.";
inline constexpr std::string_view kGoogleRegistrationMissing =
    "This build is missing its Google desktop registration.";
inline constexpr std::string_view kGoogleDayChanged =
    "The day changed while Google Calendar was refreshing. Refreshing today\u2019s events again.";
inline constexpr std::string_view kGoogleRestoreFailed =
    "Google accounts could not be restored securely. ";
inline constexpr std::string_view kGoogleUnlockKeyring =
    "Unlock your login Keychain to restore Google accounts.";
inline constexpr std::string_view kGoogleSaveFailed = "Could not save Google access in Keychain.";
inline constexpr std::string_view kGoogleUpdateFailed =
    "Could not update Google access in Keychain.";
inline constexpr std::string_view kGoogleShowingLastEvents =
    "Showing this account\u2019s last available events. ";

// An access token is used as it is while 60 seconds or more of it remain.
bool googleTokenIsUsable(const GoogleAccount& account, Instant now);

// The sentence for an HTTP status of a Google request, or nothing for 200–299: 400 and
// 401 mean the access is gone, anything else that Google could not be reached.
std::optional<std::string_view> googleStatusError(int status);

// The selection after the calendar list was loaded: on the first load with nothing
// selected, every calendar; otherwise the current selection unchanged (ids no longer
// listed included).
std::set<std::string> selectionAfterLoad(bool first, const std::set<std::string>& current,
                                         const std::vector<GoogleCalendarChoice>& choices);

// The query of one page of a Calendar API list: the given items, maxResults=250 and,
// after the first page, the page token; every value percent-encoded.
std::string googleListQuery(const std::vector<std::pair<std::string, std::string>>& items,
                            const std::optional<std::string>& pageToken);

// The events list path of one calendar ("calendars/<escaped id>/events") and the
// query items that ask for one day's events, repeats expanded, in start order.
std::string googleEventsPath(std::string_view calendarId);
std::vector<std::pair<std::string, std::string>> googleDayQuery(const DayInterval& day);

// Follows the page tokens of one list: a token seen before ends the list as incomplete,
// so a server that loops cannot keep the refresh going forever.
class GooglePaging {
public:
    enum class Step { nextPage, done, repeatedToken };
    // The token to send with the next request; absent for the first page.
    const std::optional<std::string>& pageToken() const { return pageToken_; }
    Step accept(const std::optional<std::string>& nextPageToken);

private:
    std::optional<std::string> pageToken_;
    std::set<std::string> seen_;
};

// When the throttled refresh is due: 60 s after a failed attempt; after a successful
// one 300 s while the last good refresh is on today, else 60 s. Strictly more than
// the gap must have passed.
class GoogleRefreshThrottle {
public:
    bool isDue(Instant now, const Calendar& calendar) const;
    void recordAttempt(Instant at, bool succeeded);
    std::optional<Instant> lastRefresh() const { return lastRefresh_; }

private:
    std::optional<Instant> lastAttempt_;
    std::optional<Instant> lastRefresh_;
    bool lastSucceeded_ = false;
};

// What one account's refresh gave, for the pass that collects them.
struct GoogleAccountOutcome {
    std::string accountID;
    std::string email;
    // Today's events when the refresh succeeded.
    std::optional<std::vector<CalendarEventItem>> events;
    // Why it failed.
    std::string error;
};

// The events of every account, each account keeping its last good result for the day
// it belongs to, and the state of the refresh passes: one pass at a time, a request
// meanwhile folded into one more pass, and the day checked again when a pass ends.
class GoogleRefreshCycle {
public:
    // True when a pass should start now; false when one is running (another pass
    // will follow it).
    bool request();
    bool isRunning() const { return running_; }
    // Starts a pass for the day of `now`; absent (nothing started) when the calendar
    // cannot form that day.
    std::optional<DayInterval> beginPass(Instant now, const Calendar& calendar);
    // Ends the pass with each account's outcome. True when another pass must start at
    // once: one was asked for meanwhile, or the day changed during this one.
    bool endPass(const std::vector<GoogleAccountOutcome>& outcomes, Instant now,
                 const Calendar& calendar);

    // Drops an account's events (after it was disconnected).
    void forget(const std::string& accountID);
    // Drops cached events of any other day than the one of `now`.
    void discardStaleEvents(Instant now, const Calendar& calendar);

    // Every account's events, by start, one per occurrence id.
    const std::vector<CalendarEventItem>& events() const { return events_; }
    // The pass's messages, one a line; absent after a pass without any.
    const std::optional<std::string>& errorMessage() const { return errorMessage_; }
    // Per account, the last pass's sentence for that account (absent when it was fine).
    std::optional<std::string> accountMessage(const std::string& accountID) const;
    const GoogleRefreshThrottle& throttle() const { return throttle_; }
    GoogleRefreshThrottle& throttle() { return throttle_; }

private:
    void publishEvents();

    bool running_ = false;
    bool requested_ = false;
    std::optional<Instant> passDay_;
    std::map<std::string, std::vector<CalendarEventItem>> eventsByAccount_;
    std::map<std::string, Instant> eventsDayByAccount_;
    std::map<std::string, std::string> accountMessages_;
    std::vector<CalendarEventItem> events_;
    std::optional<std::string> errorMessage_;
    GoogleRefreshThrottle throttle_;
};

} // namespace daywyn
