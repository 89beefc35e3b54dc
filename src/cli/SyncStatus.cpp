#include "cli/SyncStatus.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "base/Json.h"
#include "shell/DayText.h"
#include "sync/SyncStateFile.h"

namespace daywyn {

using namespace sync;

namespace {

std::string whenText(Instant at, Instant now, const Calendar& calendar) {
    return relativeDayText(at, now, calendar) + " " + timeOfDayText(at, calendar);
}

} // namespace

Result<std::optional<SyncState>> readSyncStateForStatus(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        if (errno == ENOENT) {
            return std::optional<SyncState>();
        }
        return Error{"Daywyn could not read its sync state (" + path +
                     "): " + std::strerror(errno) + "."};
    }
    std::ostringstream bytes;
    bytes << file.rdbuf();
    auto decoded = decodeSyncState(bytes.str());
    if (!decoded) {
        return Error{"Daywyn could not read its sync state (" + path + "): " + decoded.error()};
    }
    return std::optional<SyncState>(std::move(decoded.value()));
}

std::string syncStatusText(const std::optional<SyncState>& state, Instant now,
                           const Calendar& calendar) {
    if (!state || !state->account) {
        return "Task sync is not set up. Run 'daywyn sync setup URL' to choose a CalDAV "
               "server.\n";
    }
    const SyncAccount& account = *state->account;
    std::string out = "Tasks sync with the task list \"" + account.listName + "\" at " +
                      account.collectionUrl + " as " + account.user + ".\n";
    if (!state->lastPassAt) {
        out += "No pass yet. Run 'daywyn sync' to sync now.\n";
    } else if (!state->lastError.empty()) {
        out += "Last pass " + whenText(*state->lastPassAt, now, calendar) +
               " stopped: " + state->lastError + "\n";
    } else {
        out += "Last pass " + whenText(*state->lastPassAt, now, calendar) + ": " +
               (state->lastSummary.empty() ? "done." : state->lastSummary) + "\n";
    }
    const std::size_t pending = state->localChanges.size();
    if (pending > 0) {
        out += std::to_string(pending) + (pending == 1 ? " change waits" : " changes wait") +
               " to be sent.\n";
    }
    if (!state->conflicts.empty()) {
        out +=
            "\nConflicts (" + std::to_string(state->conflicts.size()) + "), the later edit kept:\n";
        for (auto c = state->conflicts.rbegin(); c != state->conflicts.rend(); ++c) {
            out += "  " + whenText(c->at, now, calendar) + "  " + c->title + ": " + c->field +
                   " \"" + c->keptValue + "\" kept, \"" + c->setAsideValue + "\" from " +
                   (c->lost == ConflictSide::local ? "this computer" : "the server") +
                   " set aside\n";
        }
    }
    return out;
}

std::string syncStatusJson(const std::optional<SyncState>& state) {
    JsonBuffer buffer;
    CompactJsonWriter w(buffer);
    w.StartObject();
    writeKey(w, "account");
    if (state && state->account) {
        const SyncAccount& a = *state->account;
        w.StartObject();
        for (const auto& [key, value] :
             {std::pair{"collectionUrl", &a.collectionUrl}, std::pair{"listName", &a.listName},
              std::pair{"serverUrl", &a.serverUrl}, std::pair{"user", &a.user}}) {
            writeKey(w, key);
            writeString(w, *value);
        }
        w.EndObject();
    } else {
        w.Null();
    }
    writeKey(w, "conflicts");
    w.StartArray();
    if (state) {
        for (auto c = state->conflicts.rbegin(); c != state->conflicts.rend(); ++c) {
            w.StartObject();
            writeKey(w, "at");
            writeDate(w, c->at, DateCoding::iso8601);
            writeKey(w, "field");
            writeString(w, c->field);
            writeKey(w, "keptValue");
            writeString(w, c->keptValue);
            writeKey(w, "lost");
            writeString(w, c->lost == ConflictSide::local ? "local" : "remote");
            writeKey(w, "setAsideValue");
            writeString(w, c->setAsideValue);
            writeKey(w, "taskId");
            writeUuid(w, c->taskId);
            writeKey(w, "title");
            writeString(w, c->title);
            w.EndObject();
        }
    }
    w.EndArray();
    writeKey(w, "lastError");
    writeString(w, state ? state->lastError : std::string());
    writeKey(w, "lastPassAt");
    if (state && state->lastPassAt) {
        writeDate(w, *state->lastPassAt, DateCoding::iso8601);
    } else {
        w.Null();
    }
    writeKey(w, "lastSummary");
    writeString(w, state ? state->lastSummary : std::string());
    writeKey(w, "pendingChanges");
    w.Uint64(state ? state->localChanges.size() : 0);
    w.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

std::string syncPassJson(const SyncSummary& summary, const std::string& error) {
    JsonBuffer buffer;
    CompactJsonWriter w(buffer);
    w.StartObject();
    for (const auto& [key, value] :
         {std::pair{"conflicts", summary.conflicts}, std::pair{"deletedHere", summary.deletedHere},
          std::pair{"deletedThere", summary.deletedThere}}) {
        writeKey(w, key);
        w.Int(value);
    }
    writeKey(w, "error");
    writeString(w, error);
    writeKey(w, "pulled");
    w.Int(summary.pulled);
    writeKey(w, "pushed");
    w.Int(summary.pushed);
    writeKey(w, "sentence");
    writeString(w, summary.sentence());
    writeKey(w, "unreadable");
    w.Int(summary.unreadable);
    w.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

} // namespace daywyn
