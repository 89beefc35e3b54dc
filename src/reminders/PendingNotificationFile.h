#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"
#include "base/Uuid.h"

namespace daywyn {

// One notification waiting for its moment, as the pending-reminders file keeps it.
struct PendingNotificationEntry {
    std::string identifier;
    std::string title;
    std::string body;
    std::optional<std::string> category;
    // Seconds since 1970-01-01T00:00:00Z.
    double fireAt = 0.0;
    std::optional<Uuid> taskId;
    bool operator==(const PendingNotificationEntry&) const = default;
};

// One notification on screen, by the server's id and the server process showing it.
struct ShownNotificationEntry {
    double id = 0.0;
    std::string identifier;
    std::string server;
    std::optional<Uuid> taskId;
    bool operator==(const ShownNotificationEntry&) const = default;
};

// The notification manager's file: what is still to be shown and what is on screen.
struct PendingNotificationFile {
    std::vector<PendingNotificationEntry> pending;
    std::vector<ShownNotificationEntry> shown;
    bool operator==(const PendingNotificationFile&) const = default;

    // Two-space indented JSON with sorted keys.
    std::string encode() const;
    // The error (a syntax error sentence) when the text is not one JSON object; an
    // entry that does not decode is left out, the rest are kept.
    static Result<PendingNotificationFile> decode(std::string_view text);
};

} // namespace daywyn
