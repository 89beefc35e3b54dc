#include "sync/SyncStatusText.h"

#include <algorithm>
#include <cmath>

#include "shell/DayText.h"

namespace daywyn::sync {

namespace {

std::string capitalised(std::string text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
    return text;
}

// A record's field as words: "estimatedMinutes" reads "Estimated minutes".
std::string fieldWords(const std::string& field) {
    std::string words;
    for (const char c : field) {
        if (c >= 'A' && c <= 'Z') {
            words += ' ';
            words += static_cast<char>(c - 'A' + 'a');
        } else {
            words += c;
        }
    }
    return capitalised(words);
}

} // namespace

std::string SyncStatusText::drawerLine(const SyncState& state, bool passRunning, Instant now,
                                       const Calendar& calendar) {
    if (!state.account) {
        return {};
    }
    if (!state.lastError.empty()) {
        return state.lastError;
    }
    if (!state.lastPassAt) {
        return passRunning ? "Syncing…" : "Not synced yet";
    }
    // A clock set back (or another machine's later time) reads as just now.
    const double seconds = std::max(0.0, now.seconds - state.lastPassAt->seconds);
    const auto minutes = static_cast<long long>(std::floor(seconds / 60));
    if (minutes < 1) {
        return "Synced just now";
    }
    if (minutes < 60) {
        return "Synced " + std::to_string(minutes) + " min ago";
    }
    if (minutes < 24 * 60) {
        return "Synced " + std::to_string(minutes / 60) + " h ago";
    }
    const std::string day = relativeDayText(*state.lastPassAt, now, calendar);
    return day == "yesterday" ? "Synced yesterday" : "Synced on " + day;
}

std::string SyncStatusText::when(Instant at, Instant now, const Calendar& calendar) {
    return capitalised(relativeDayText(at, now, calendar)) + " " + timeOfDayText(at, calendar);
}

std::string SyncStatusText::lastPass(const SyncState& state, Instant now,
                                     const Calendar& calendar) {
    if (!state.lastPassAt) {
        return state.lastError.empty() ? "No pass yet." : state.lastError;
    }
    const std::string at = when(*state.lastPassAt, now, calendar) + ": ";
    if (!state.lastError.empty()) {
        return at + state.lastError;
    }
    return at + (state.lastSummary.empty() ? "done." : state.lastSummary);
}

std::string SyncStatusText::conflict(const ConflictRecord& record) {
    const std::string from = record.lost == ConflictSide::local ? "this computer" : "the server";
    return fieldWords(record.field) + " \"" + record.keptValue + "\" kept; \"" +
           record.setAsideValue + "\" from " + from + " replaced.";
}

} // namespace daywyn::sync
