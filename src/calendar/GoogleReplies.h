#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "base/Result.h"
#include "calendar/CalendarEventItem.h"
#include "calendar/GoogleAccount.h"

namespace daywyn {

// The colour of a Google calendar whose list entry gives none.
inline constexpr std::string_view kGoogleDefaultColor = "#4285F4";

// The client registration of this build ("installed" → client_id, client_secret).
struct GoogleClientRegistration {
    std::string clientId;
    std::string clientSecret;
    bool operator==(const GoogleClientRegistration&) const = default;
    static Result<GoogleClientRegistration> decode(std::string_view json);
};

// The token endpoint's answer.
struct GoogleToken {
    std::string accessToken;
    std::optional<std::string> refreshToken;
    double expiresIn = 0;
    static Result<GoogleToken> decode(std::string_view json);
};

// The userinfo answer: the account's key and its address.
struct GoogleProfile {
    std::string id;
    std::string email;
    static Result<GoogleProfile> decode(std::string_view json);
};

// A start or end as the Calendar API writes it: a dateTime for a timed event, a date
// for an all-day one.
struct GoogleMoment {
    std::optional<std::string> dateTime;
    std::optional<std::string> date;
    bool operator==(const GoogleMoment&) const = default;

    // The dateTime as an RFC 3339 time with a zone (with or without a fraction), else
    // the date's local midnight in `calendar`; absent when neither reads.
    std::optional<Instant> parsed(const Calendar& calendar) const;
};

// One event as the Calendar API lists it.
struct GoogleEventPayload {
    std::string id;
    std::optional<std::string> summary;
    std::optional<std::string> status;
    std::optional<GoogleMoment> start;
    std::optional<GoogleMoment> end;
    std::optional<std::string> htmlLink;
    bool operator==(const GoogleEventPayload&) const = default;

    // The drawer's item for this event, or nothing for a cancelled event or one whose
    // start or end does not read.
    std::optional<CalendarEventItem> item(std::string_view accountID,
                                          const GoogleCalendarChoice& calendar,
                                          const Calendar& localCalendar) const;
};

// One page of a list: its items in order and the token of the next page.
template <typename Item>
struct GooglePage {
    std::vector<Item> items;
    std::optional<std::string> nextPageToken;
    static Result<GooglePage> decode(std::string_view json);
};

// An RFC 3339 date-time with a zone designator ("2026-03-05T09:30:00.250+01:00").
std::optional<Instant> parseInternetDateTime(std::string_view text);

} // namespace daywyn
