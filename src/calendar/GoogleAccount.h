#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/Instant.h"
#include "base/Result.h"

namespace daywyn {

// One calendar of a Google account's calendar list.
struct GoogleCalendarChoice {
    std::string id;
    std::optional<std::string> summary;
    // As Google writes it ("#9fc6e7"); absent when the list gives none.
    std::optional<std::string> backgroundColor;
    bool operator==(const GoogleCalendarChoice&) const = default;
};

// A connected Google account with its tokens, calendar list and selection. All accounts
// are kept together as one blob in the desktop's secret store, never in the state file.
struct GoogleAccount {
    // Google's user id: the key of the account.
    std::string id;
    std::string email;
    std::string accessToken;
    std::string refreshToken;
    Instant expiresAt;
    std::vector<GoogleCalendarChoice> calendars;
    std::set<std::string> selected;
    // Whether the calendar list has been loaded once; absent in older blobs.
    std::optional<bool> didLoadCalendars;
    bool operator==(const GoogleAccount&) const = default;

    // The blob of every account: a JSON array of objects with keys equal to the field
    // names in sorted order, dates as seconds since 2001-01-01 00:00:00 UTC.
    static std::string encodeAll(const std::vector<GoogleAccount>& accounts);
    // Reads a blob written by encodeAll (or by an older version without
    // didLoadCalendars); the error names what was wrong, without any of its values.
    static Result<std::vector<GoogleAccount>> decodeAll(std::string_view json);
};

} // namespace daywyn
