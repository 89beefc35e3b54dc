#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/TaskItem.h"

namespace daywyn::sync {

// The server account a task list syncs with. The password is never here: it lives in
// the user's keyring.
struct SyncAccount {
    std::string serverUrl;
    std::string user;
    // The task list (a calendar collection that holds VTODOs) the tasks go to.
    std::string collectionUrl;
    std::string listName;
    bool operator==(const SyncAccount&) const = default;
};

// A task as it was when the server and this machine last agreed on it: the merge's
// common ancestor, and the text a later upload edits so that what other programs
// wrote is kept.
struct SyncedTask {
    // The task as both sides last held it.
    TaskItem task;
    std::string href;
    std::string etag;
    // The whole iCalendar object as last sent or received.
    std::string ics;
    bool operator==(const SyncedTask&) const = default;
};

// When each field of a task last changed, by the field's name as the task record names
// it ("title", "estimatedMinutes").
using FieldTimes = std::map<std::string, Instant, std::less<>>;

// A task changed (or deleted) here since it was last synced, and when.
struct LocalChange {
    Uuid taskId;
    // When the task was first noted as changed here (created, or deleted): the time of
    // every field without a time of its own.
    Instant changedAt;
    // The fields edited here, each at the time of its latest edit. Empty in state files
    // written before fields had their own times: every field is then at `changedAt`.
    FieldTimes fields;

    // The time of one field's edit, and of the latest edit of any field.
    Instant fieldChangedAt(std::string_view field) const;
    Instant latest() const;
    bool operator==(const LocalChange&) const = default;
};

// An entry of the task list that is not a task Daywyn can read (an event in a list
// that holds both, a malformed object), at the etag it was read at: it is left alone
// and read again only when it changes.
struct SkippedEntry {
    std::string href;
    std::string etag;
    bool operator==(const SkippedEntry&) const = default;
};

enum class ConflictSide { local, remote };

// One field edited on both machines: the later edit was kept and the other set aside.
struct ConflictRecord {
    Instant at;
    Uuid taskId;
    std::string title;
    // The field's name as the task record names it ("title", "scheduledStart").
    std::string field;
    // Both values as short readable text ("Call the bank", "2026-03-04T08:15:00Z", "none").
    std::string keptValue;
    std::string setAsideValue;
    // The side whose edit was set aside.
    ConflictSide lost = ConflictSide::local;
    bool operator==(const ConflictRecord&) const = default;
};

// What a machine remembers between sync passes. Kept in its own file beside the
// state file, never in daywyn.json.
struct SyncState {
    std::optional<SyncAccount> account;
    // The server's token for an incremental listing; empty before the first pass.
    std::string syncToken;
    // By task id.
    std::map<Uuid, SyncedTask> synced;
    std::vector<SkippedEntry> skipped;
    // Tasks with changes not yet on the server, by task id.
    std::map<Uuid, LocalChange> localChanges;
    // Oldest first; the oldest are dropped beyond kMostConflicts.
    std::vector<ConflictRecord> conflicts;
    std::optional<Instant> lastPassAt;
    // The sentence of the last pass that stopped early; empty after a clean pass.
    std::string lastError;
    // The last pass's sentence for people ("Sent 3 changes, received 1.").
    std::string lastSummary;

    bool operator==(const SyncState&) const = default;
};

inline constexpr std::size_t kMostConflicts = 200;

// Records which tasks changed between two versions of the list, at `now`: a task whose
// record differs (with the time of each field that differs), a new task and a removed
// one. Called by whatever changes the store
// (the app on each store change, the command line on each verb that writes). Returns
// whether anything was noted: a change to machine-local fields alone notes nothing.
bool noteLocalChanges(SyncState& state, const std::vector<TaskItem>& before,
                      const std::vector<TaskItem>& after, Instant now);

// Forgets the server: the account, the token, the synced bases and the local change
// times (the conflict log stays). Used when the account or the task list changes.
void forgetServer(SyncState& state);

} // namespace daywyn::sync
