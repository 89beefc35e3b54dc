#include "calendar/GoogleCalendarRules.h"

#include "calendar/GoogleOAuthUtilities.h"

namespace daywyn {

namespace {

constexpr double kTokenMargin = 60.0;
constexpr double kGapAfterFailure = 60.0;
constexpr double kGapAfterSuccess = 300.0;

} // namespace

bool googleTokenIsUsable(const GoogleAccount& account, Instant now) {
    return account.expiresAt - now >= kTokenMargin;
}

std::optional<std::string_view> googleStatusError(int status) {
    if (status >= 200 && status <= 299) {
        return std::nullopt;
    }
    if (status == 400 || status == 401) {
        return kGoogleAccessExpired;
    }
    return kGoogleCouldNotLoad;
}

std::set<std::string> selectionAfterLoad(bool first, const std::set<std::string>& current,
                                         const std::vector<GoogleCalendarChoice>& choices) {
    if (first && current.empty()) {
        std::set<std::string> all;
        for (const GoogleCalendarChoice& choice : choices) {
            all.insert(choice.id);
        }
        return all;
    }
    return current;
}

std::string googleListQuery(const std::vector<std::pair<std::string, std::string>>& items,
                            const std::optional<std::string>& pageToken) {
    std::string query;
    const auto add = [&query](std::string_view key, std::string_view value) {
        if (!query.empty()) {
            query += '&';
        }
        query += GoogleOAuthUtilities::percentEncoded(key);
        query += '=';
        query += GoogleOAuthUtilities::percentEncoded(value);
    };
    for (const auto& [key, value] : items) {
        add(key, value);
    }
    add("maxResults", "250");
    if (pageToken) {
        add("pageToken", *pageToken);
    }
    return query;
}

std::string googleEventsPath(std::string_view calendarId) {
    return "calendars/" + GoogleOAuthUtilities::percentEncoded(calendarId) + "/events";
}

std::vector<std::pair<std::string, std::string>> googleDayQuery(const DayInterval& day) {
    return {{"timeMin", isoText(day.start)},
            {"timeMax", isoText(day.end)},
            {"singleEvents", "true"},
            {"orderBy", "startTime"}};
}

GooglePaging::Step GooglePaging::accept(const std::optional<std::string>& nextPageToken) {
    if (!nextPageToken) {
        return Step::done;
    }
    if (!seen_.insert(*nextPageToken).second) {
        return Step::repeatedToken;
    }
    pageToken_ = nextPageToken;
    return Step::nextPage;
}

bool GoogleRefreshThrottle::isDue(Instant now, const Calendar& calendar) const {
    if (!lastAttempt_) {
        return true;
    }
    double gap = kGapAfterFailure;
    if (lastSucceeded_ && lastRefresh_ && calendar.isSameDay(*lastRefresh_, now)) {
        gap = kGapAfterSuccess;
    }
    return now - *lastAttempt_ > gap;
}

void GoogleRefreshThrottle::recordAttempt(Instant at, bool succeeded) {
    lastAttempt_ = at;
    lastSucceeded_ = succeeded;
    if (succeeded) {
        lastRefresh_ = at;
    }
}

bool GoogleRefreshCycle::request() {
    if (running_) {
        requested_ = true;
        return false;
    }
    return true;
}

std::optional<DayInterval> GoogleRefreshCycle::beginPass(Instant now, const Calendar& calendar) {
    const auto day = calendarDay(now, calendar);
    if (!day) {
        return std::nullopt;
    }
    running_ = true;
    requested_ = false;
    passDay_ = day->start;
    return day;
}

bool GoogleRefreshCycle::endPass(const std::vector<GoogleAccountOutcome>& outcomes, Instant now,
                                 const Calendar& calendar) {
    std::vector<std::string> messages;
    bool allSucceeded = true;
    accountMessages_.clear();
    for (const GoogleAccountOutcome& outcome : outcomes) {
        if (outcome.events) {
            eventsByAccount_[outcome.accountID] = *outcome.events;
            eventsDayByAccount_[outcome.accountID] = passDay_.value_or(now);
            continue;
        }
        allSucceeded = false;
        const auto day = eventsDayByAccount_.find(outcome.accountID);
        const bool keepsLastGood = day != eventsDayByAccount_.end() &&
                                   calendar.isSameDay(day->second, now) &&
                                   eventsByAccount_.contains(outcome.accountID);
        if (keepsLastGood) {
            messages.push_back(outcome.email + " is showing its last available events. " +
                               outcome.error);
            accountMessages_[outcome.accountID] =
                std::string(kGoogleShowingLastEvents) + outcome.error;
        } else {
            eventsByAccount_.erase(outcome.accountID);
            eventsDayByAccount_.erase(outcome.accountID);
            messages.push_back(outcome.email + " could not be refreshed. " + outcome.error);
            accountMessages_[outcome.accountID] = outcome.error;
        }
    }
    const bool dayChanged = !passDay_ || !calendar.isSameDay(*passDay_, now);
    if (dayChanged) {
        discardStaleEvents(now, calendar);
        messages.emplace_back(kGoogleDayChanged);
        requested_ = true;
    }
    throttle_.recordAttempt(now, allSucceeded && !dayChanged);
    publishEvents();
    if (messages.empty()) {
        errorMessage_.reset();
    } else {
        std::string joined;
        for (const std::string& message : messages) {
            if (!joined.empty()) {
                joined += '\n';
            }
            joined += message;
        }
        errorMessage_ = std::move(joined);
    }
    running_ = false;
    passDay_.reset();
    const bool again = requested_;
    requested_ = false;
    return again;
}

void GoogleRefreshCycle::forget(const std::string& accountID) {
    eventsByAccount_.erase(accountID);
    eventsDayByAccount_.erase(accountID);
    accountMessages_.erase(accountID);
    publishEvents();
}

void GoogleRefreshCycle::discardStaleEvents(Instant now, const Calendar& calendar) {
    for (auto it = eventsDayByAccount_.begin(); it != eventsDayByAccount_.end();) {
        if (calendar.isSameDay(it->second, now)) {
            ++it;
        } else {
            eventsByAccount_.erase(it->first);
            it = eventsDayByAccount_.erase(it);
        }
    }
    publishEvents();
}

std::optional<std::string> GoogleRefreshCycle::accountMessage(const std::string& accountID) const {
    const auto it = accountMessages_.find(accountID);
    if (it == accountMessages_.end()) {
        return std::nullopt;
    }
    return it->second;
}

void GoogleRefreshCycle::publishEvents() {
    std::vector<CalendarEventItem> all;
    for (const auto& [id, events] : eventsByAccount_) {
        all.insert(all.end(), events.begin(), events.end());
    }
    events_ = CalendarEventItem::deduplicated(std::move(all));
}

} // namespace daywyn
