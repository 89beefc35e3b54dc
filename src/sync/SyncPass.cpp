#include "sync/SyncPass.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "model/RecordFields.h"
#include "sync/TaskMerge.h"

namespace daywyn::sync {

namespace {

// A write refused because the server's copy changed meanwhile is merged and tried
// again this often before it waits for the next pass.
constexpr int kMostWriteAttempts = 3;
// Resources fetched per request.
constexpr std::size_t kFetchBatch = 100;

std::string plural(int count, std::string_view one, std::string_view many) {
    return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

// The server's current copy of a task.
struct RemoteTask {
    std::string href;
    std::string etag;
    std::string ics;
    TaskItem task;
    Instant editedAt;
    // The fields whose change times Daywyn wrote and no other program changed since.
    FieldTimes fieldTimes;

    EditTimes edits() const { return {editedAt, fieldTimes}; }
};

class Pass {
public:
    Pass(CalDavCollection& collection, const TaskCoding& coding, const std::vector<TaskItem>& local,
         SyncState state, Instant now, const Calendar& calendar)
        : collection_(collection)
        , coding_(coding)
        , now_(now)
        , calendar_(calendar) {
        out_.tasks = local;
        out_.state = std::move(state);
    }

    SyncOutcome run() {
        auto listing = collection_.changesSince(state().syncToken);
        if (!listing) {
            return finish(listing.error());
        }
        readListing(listing.value());
        if (!fetchChanged()) {
            return finish(error_);
        }
        settleEveryTask();
        if (error_.empty() && refused_ > 0) {
            error_ = "The sync server kept refusing changes to " +
                     plural(refused_, "task", "tasks") +
                     "; they are kept here and will be sent again.";
        }
        if (error_.empty() && listingComplete_) {
            state().syncToken = listing->syncToken;
        }
        return finish(error_);
    }

private:
    SyncState& state() { return out_.state; }

    // ---- what changed on the server -------------------------------------------------

    void readListing(const ChangeListing& listing) {
        std::unordered_map<std::string, Uuid> byHref;
        for (const auto& [id, synced] : state().synced) {
            byHref.emplace(synced.href, id);
        }
        std::map<std::string, std::string> skipped;
        for (auto& entry : state().skipped) {
            skipped.emplace(std::move(entry.href), std::move(entry.etag));
        }
        std::unordered_set<std::string> listed;
        for (const auto& resource : listing.changed) {
            listed.insert(resource.href);
            const auto known = byHref.find(resource.href);
            if (known != byHref.end() && state().synced[known->second].etag == resource.etag) {
                continue;
            }
            if (const auto passed = skipped.find(resource.href);
                passed != skipped.end() && passed->second == resource.etag) {
                continue;
            }
            skipped.erase(resource.href);
            toFetch_.push_back(resource.href);
        }
        // Entries gone from the list are forgotten.
        for (const auto& href : listing.removed) {
            skipped.erase(href);
        }
        if (listing.complete) {
            std::erase_if(skipped,
                          [&](const auto& entry) { return !listed.contains(entry.first); });
        }
        state().skipped.clear();
        for (auto& [href, etag] : skipped) {
            state().skipped.push_back({href, std::move(etag)});
        }
        if (listing.complete) {
            if (listed.empty() && !state().synced.empty()) {
                // A server that lost everything (a restored backup, a recreated list) must
                // not empty this machine: the tasks are kept and sent again.
                refill_ = true;
                out_.summary.emptyServerRefilled = true;
            }
            for (const auto& [id, synced] : state().synced) {
                if (!listed.contains(synced.href)) {
                    removedThere_.insert(id);
                }
            }
        } else {
            for (const auto& href : listing.removed) {
                const auto known = byHref.find(href);
                if (known != byHref.end() && !listed.contains(href)) {
                    removedThere_.insert(known->second);
                }
            }
        }
        hrefToId_ = std::move(byHref);
    }

    bool fetchChanged() {
        for (std::size_t first = 0; first < toFetch_.size(); first += kFetchBatch) {
            const std::size_t last = std::min(toFetch_.size(), first + kFetchBatch);
            const std::vector<std::string> batch(toFetch_.begin() + static_cast<long>(first),
                                                 toFetch_.begin() + static_cast<long>(last));
            auto fetched = collection_.fetch(batch);
            if (!fetched) {
                error_ = fetched.error();
                return false;
            }
            std::unordered_set<std::string> arrived;
            for (auto& resource : fetched.value()) {
                arrived.insert(resource.href);
                auto remote = decodeRemote(std::move(resource));
                if (!remote) {
                    continue;
                }
                const Uuid id = remote->task.id;
                if (changedThere_.contains(id)) {
                    // Two objects with one UID: the first is the task, the other is left.
                    ++out_.summary.unreadable;
                    state().skipped.push_back({remote->href, remote->etag});
                    continue;
                }
                changedThere_.emplace(id, std::move(*remote));
            }
            if (arrived.size() < batch.size()) {
                // Gone between the listing and the fetch: the next listing says so.
                listingComplete_ = false;
            }
        }
        return true;
    }

    std::optional<RemoteTask> decodeRemote(RemoteResource resource) {
        auto decoded = coding_.decode(resource.ics, calendar_);
        if (!decoded) {
            ++out_.summary.unreadable;
            if (!hrefToId_.contains(resource.href)) {
                state().skipped.push_back({std::move(resource.href), std::move(resource.etag)});
            }
            return std::nullopt;
        }
        RemoteTask remote;
        remote.task = std::move(decoded.value().task);
        if (const auto known = hrefToId_.find(resource.href); known != hrefToId_.end()) {
            remote.task.id = known->second;
        }
        remote.editedAt = decoded->lastModified.value_or(Instant{});
        remote.fieldTimes = std::move(decoded.value().fieldTimes);
        remote.href = std::move(resource.href);
        remote.etag = std::move(resource.etag);
        remote.ics = std::move(resource.ics);
        return remote;
    }

    // ---- each task ------------------------------------------------------------------

    void settleEveryTask() {
        std::vector<Uuid> order;
        std::unordered_set<Uuid> seen;
        for (std::size_t i = 0; i < out_.tasks.size(); ++i) {
            localIndex_.emplace(out_.tasks[i].id, i);
            if (seen.insert(out_.tasks[i].id).second) {
                order.push_back(out_.tasks[i].id);
            }
        }
        for (const auto& [id, synced] : state().synced) {
            if (seen.insert(id).second) {
                order.push_back(id);
            }
        }
        // New tasks from the server in a stable order: by creation, then id.
        std::vector<const RemoteTask*> arrivals;
        for (const auto& [id, remote] : changedThere_) {
            if (!seen.contains(id)) {
                arrivals.push_back(&remote);
            }
        }
        std::sort(arrivals.begin(), arrivals.end(), [](const RemoteTask* a, const RemoteTask* b) {
            return a->task.createdAt != b->task.createdAt ? a->task.createdAt < b->task.createdAt
                                                          : a->task.id < b->task.id;
        });
        for (const RemoteTask* remote : arrivals) {
            order.push_back(remote->task.id);
        }
        for (const Uuid& id : order) {
            if (!error_.empty()) {
                break;
            }
            settle(id);
        }
        // Before the removals: they leave localIndex_ pointing past the tasks that moved.
        forgetSettledChanges();
        if (!removedHere_.empty()) {
            std::erase_if(out_.tasks,
                          [&](const TaskItem& task) { return removedHere_.contains(task.id); });
        }
    }

    TaskItem* localTask(const Uuid& id) {
        const auto found = localIndex_.find(id);
        if (found == localIndex_.end() || removedHere_.contains(id)) {
            return nullptr;
        }
        return &out_.tasks[found->second];
    }

    // When the copy here was edited: each field at its recorded change time; without
    // one, when the task was noted as changed; without that, just after the last pass
    // (the edit cannot be older), or the task's creation.
    EditTimes localEdits(const TaskItem& task) {
        if (const auto change = state().localChanges.find(task.id);
            change != state().localChanges.end()) {
            return {change->second.changedAt, change->second.fields};
        }
        return {state().lastPassAt.value_or(task.createdAt)};
    }

    // When the copy here was last edited, any field.
    Instant localEditTime(const TaskItem& task) {
        if (const auto change = state().localChanges.find(task.id);
            change != state().localChanges.end()) {
            return change->second.latest();
        }
        return state().lastPassAt.value_or(task.createdAt);
    }

    // The times of the fields edited here since `base` (every field of a new task).
    FieldTimes localFieldTimes(const TaskItem& task, const TaskItem* base) {
        const EditTimes edits = localEdits(task);
        FieldTimes times;
        if (base == nullptr) {
            std::apply(
                [&](const auto&... field) {
                    (times.emplace(std::string(field.key), edits.of(field.key)), ...);
                },
                JsonRecord<TaskItem>::fields);
            return times;
        }
        for (const std::string_view field : differingFields(*base, task)) {
            times.emplace(std::string(field), edits.of(field));
        }
        return times;
    }

    void settle(const Uuid& id) {
        TaskItem* local = localTask(id);
        const auto syncedAt = state().synced.find(id);
        SyncedTask* base = syncedAt == state().synced.end() ? nullptr : &syncedAt->second;
        const auto remoteAt = changedThere_.find(id);
        const RemoteTask* remote = remoteAt == changedThere_.end() ? nullptr : &remoteAt->second;
        if (remote && base && sameAtWholeSeconds(remote->task, base->task)) {
            // Rewritten by the server (or our own write without an etag): nothing new.
            base->etag = remote->etag;
            base->ics = remote->ics;
            remote = nullptr;
        }
        const bool removedThere = removedThere_.contains(id);

        if (local == nullptr && base == nullptr) {
            if (remote) {
                takeRemote(*remote, true);
            }
            return;
        }
        if (local == nullptr) {
            if (remote) {
                // Deleted here, edited there: the edit wins.
                takeRemote(*remote, true);
            } else if (removedThere) {
                state().synced.erase(id);
            } else {
                removeThere(*base);
            }
            return;
        }
        const bool changedHere = base == nullptr || !sameAtWholeSeconds(*local, base->task);
        if (remote) {
            if (!changedHere) {
                takeRemote(*remote, false);
                return;
            }
            mergeAndSend(*local, base ? std::optional<TaskItem>(base->task) : std::nullopt,
                         *remote);
            return;
        }
        if (base == nullptr) {
            send(*local, std::nullopt, collection_.hrefFor(local->id.text()), {}, std::nullopt,
                 localEditTime(*local), localFieldTimes(*local, nullptr));
            return;
        }
        if (removedThere || refill_) {
            if (changedHere || refill_) {
                // Deleted there, edited here (or the server lost it): sent again.
                const std::string href = base->href;
                const std::string ics = base->ics;
                const TaskItem before = base->task;
                state().synced.erase(id);
                FieldTimes times = localFieldTimes(*local, &before);
                send(*local, before, href, ics, std::nullopt, localEditTime(*local),
                     std::move(times));
            } else {
                removedHere_.insert(id);
                state().synced.erase(id);
                ++out_.summary.deletedHere;
                out_.tasksChanged = true;
            }
            return;
        }
        if (changedHere) {
            FieldTimes times = localFieldTimes(*local, &base->task);
            send(*local, base->task, base->href, base->ics, base->etag, localEditTime(*local),
                 std::move(times));
        }
    }

    // The server's copy replaces the one here (or arrives as a new task).
    void takeRemote(const RemoteTask& remote, bool added) {
        if (added) {
            localIndex_[remote.task.id] = out_.tasks.size();
            removedHere_.erase(remote.task.id);
            out_.tasks.push_back(remote.task);
        } else {
            TaskItem* local = localTask(remote.task.id);
            *local = withMachineLocalFieldsOf(remote.task, local);
        }
        state().synced[remote.task.id] = {remote.task, remote.href, remote.etag, remote.ics};
        ++out_.summary.pulled;
        out_.tasksChanged = true;
    }

    // A merge kept here stays a change of this machine's until the server has it; each
    // merged value keeps the time of the edit it came from, so that the next pass weighs
    // a value taken from the server by the server's time, not by this machine's.
    void keepMergedTimes(const TaskItem& task, const FieldTimes& times) {
        const Instant noted = localEditTime(task);
        auto [change, added] =
            state().localChanges.try_emplace(task.id, LocalChange{task.id, noted, {}});
        for (const auto& [field, at] : times) {
            change->second.fields.insert_or_assign(field, at);
        }
    }

    void logConflicts(const MergedTask& merged) {
        for (const auto& conflict : merged.conflicts) {
            state().conflicts.push_back({now_, merged.task.id, merged.task.title, conflict.field,
                                         conflict.keptValue, conflict.setAsideValue,
                                         conflict.lost});
        }
        out_.summary.conflicts += static_cast<int>(merged.conflicts.size());
    }

    // Both sides changed the task: the merge is kept here and, when it differs from the
    // server's copy, written over that copy.
    void mergeAndSend(TaskItem& local, const std::optional<TaskItem>& base,
                      const RemoteTask& remote) {
        const Instant localAt = localEditTime(local);
        MergedTask merged = mergeTask(base ? &*base : nullptr, local, localEdits(local),
                                      remote.task, remote.edits());
        logConflicts(merged);
        keepMergedTimes(local, merged.fieldTimes);
        if (!(merged.task == local)) {
            local = merged.task;
            out_.tasksChanged = true;
        }
        if (sameAtWholeSeconds(merged.task, remote.task)) {
            state().synced[local.id] = {remote.task, remote.href, remote.etag, remote.ics};
            return;
        }
        send(local, base, remote.href, remote.ics, remote.etag, std::max(localAt, remote.editedAt),
             std::move(merged.fieldTimes));
    }

    // Writes the task (over `previous`, the text it was last synced as), with the times
    // of the fields that changed since `base`; a write refused because the server's copy
    // changed is merged with that copy and tried again.
    void send(TaskItem& local, std::optional<TaskItem> base, std::string href, std::string previous,
              std::optional<std::string> ifMatch, Instant editedAt, FieldTimes times) {
        for (int attempt = 0; attempt < kMostWriteAttempts; ++attempt) {
            const std::string ics = coding_.encode(local, times, previous, editedAt, calendar_);
            auto reply = collection_.put(href, ics, ifMatch);
            if (!reply) {
                error_ = reply.error();
                return;
            }
            if (reply->outcome == WriteOutcome::written) {
                state().synced[local.id] = {atWholeSeconds(local), href, reply->etag, ics};
                ++out_.summary.pushed;
                return;
            }
            if (reply->outcome == WriteOutcome::notFound && ifMatch) {
                // Deleted there meanwhile: the edit here wins, so the task is created again.
                ifMatch.reset();
                continue;
            }
            auto fetched = collection_.fetch({href});
            if (!fetched) {
                error_ = fetched.error();
                return;
            }
            if (fetched->empty()) {
                ifMatch.reset();
                continue;
            }
            auto remote = decodeRemote(std::move(fetched.value().front()));
            if (!remote) {
                // Its copy cannot be read, so it cannot be merged: it is left as it is.
                ++refused_;
                return;
            }
            remote->task.id = local.id;
            MergedTask merged =
                mergeTask(base ? &*base : nullptr, local, EditTimes{editedAt, times}, remote->task,
                          remote->edits());
            logConflicts(merged);
            keepMergedTimes(local, merged.fieldTimes);
            if (!(merged.task == local)) {
                local = merged.task;
                out_.tasksChanged = true;
            }
            if (sameAtWholeSeconds(merged.task, remote->task)) {
                state().synced[local.id] = {remote->task, remote->href, remote->etag, remote->ics};
                return;
            }
            editedAt = std::max(editedAt, remote->editedAt);
            times = std::move(merged.fieldTimes);
            base = remote->task;
            previous = remote->ics;
            ifMatch = remote->etag;
        }
        ++refused_;
    }

    // Deleted here: deleted there too, unless the server's copy was edited meanwhile.
    void removeThere(SyncedTask base) {
        const Uuid id = base.task.id;
        std::string etag = base.etag;
        for (int attempt = 0; attempt < kMostWriteAttempts; ++attempt) {
            auto reply = collection_.remove(base.href, etag);
            if (!reply) {
                error_ = reply.error();
                return;
            }
            if (reply.value() != WriteOutcome::preconditionFailed) {
                state().synced.erase(id);
                if (reply.value() == WriteOutcome::written) {
                    ++out_.summary.deletedThere;
                }
                return;
            }
            auto fetched = collection_.fetch({base.href});
            if (!fetched) {
                error_ = fetched.error();
                return;
            }
            if (fetched->empty()) {
                state().synced.erase(id);
                return;
            }
            auto remote = decodeRemote(std::move(fetched.value().front()));
            if (!remote) {
                ++refused_;
                return;
            }
            remote->task.id = id;
            if (!sameAtWholeSeconds(remote->task, base.task)) {
                takeRemote(*remote, true);
                return;
            }
            etag = remote->etag;
        }
        ++refused_;
    }

    // A change time is kept only while the task still differs from its synced copy.
    void forgetSettledChanges() {
        std::erase_if(state().localChanges, [&](const auto& entry) {
            const TaskItem* local = localTask(entry.first);
            const auto synced = state().synced.find(entry.first);
            if (local == nullptr) {
                return synced == state().synced.end();
            }
            return synced != state().synced.end() &&
                   sameAtWholeSeconds(*local, synced->second.task);
        });
    }

    SyncOutcome finish(std::string error) {
        out_.error = std::move(error);
        if (out_.state.conflicts.size() > kMostConflicts) {
            out_.state.conflicts.erase(out_.state.conflicts.begin(),
                                       out_.state.conflicts.end() -
                                           static_cast<long>(kMostConflicts));
        }
        state().lastPassAt = now_;
        state().lastError = out_.error;
        state().lastSummary = out_.summary.sentence();
        return std::move(out_);
    }

    CalDavCollection& collection_;
    const TaskCoding& coding_;
    const Instant now_;
    const Calendar& calendar_;
    SyncOutcome out_;
    std::string error_;
    int refused_ = 0;
    bool refill_ = false;
    bool listingComplete_ = true;
    std::unordered_map<std::string, Uuid> hrefToId_;
    std::vector<std::string> toFetch_;
    std::map<Uuid, RemoteTask> changedThere_;
    std::set<Uuid> removedThere_;
    std::unordered_map<Uuid, std::size_t> localIndex_;
    std::unordered_set<Uuid> removedHere_;
};

} // namespace

std::string SyncSummary::sentence() const {
    std::string text;
    const int sent = pushed + deletedThere;
    const int received = pulled + deletedHere;
    if (sent > 0 && received > 0) {
        text = "Sent " + plural(sent, "change", "changes") + ", received " +
               std::to_string(received) + ".";
    } else if (sent > 0) {
        text = "Sent " + plural(sent, "change", "changes") + ".";
    } else if (received > 0) {
        text = "Received " + plural(received, "change", "changes") + ".";
    } else {
        text = "Everything is up to date.";
    }
    if (conflicts > 0) {
        text +=
            " " + std::string(conflicts == 1 ? "One field was edited on both sides; the later edit "
                                               "was kept and the other is in the conflict log."
                                             : std::to_string(conflicts) +
                                                   " fields were edited on both sides; the later "
                                                   "edits were kept and the others are in the "
                                                   "conflict log.");
    }
    if (emptyServerRefilled) {
        text += " The server's task list came back empty, so the tasks here were kept and sent "
                "again.";
    }
    if (unreadable > 0) {
        text +=
            " " + std::string(unreadable == 1 ? "One entry on the server is not a task Daywyn can "
                                                "read; it was left as it is."
                                              : std::to_string(unreadable) +
                                                    " entries on the server are not tasks Daywyn "
                                                    "can read; they were left as they are.");
    }
    return text;
}

SyncOutcome runSyncPass(CalDavCollection& collection, const TaskCoding& coding,
                        const std::vector<TaskItem>& local, SyncState state, Instant now,
                        const Calendar& calendar) {
    return Pass(collection, coding, local, std::move(state), now, calendar).run();
}

std::vector<TaskItem> applySyncResult(const std::vector<TaskItem>& current,
                                      const std::vector<TaskItem>& snapshot,
                                      const std::vector<TaskItem>& synced) {
    std::unordered_map<Uuid, const TaskItem*> before;
    for (const auto& task : snapshot) {
        before.emplace(task.id, &task);
    }
    std::unordered_map<Uuid, const TaskItem*> after;
    for (const auto& task : synced) {
        after.emplace(task.id, &task);
    }
    std::vector<TaskItem> result;
    result.reserve(std::max(current.size(), synced.size()));
    std::unordered_set<Uuid> present;
    for (const auto& task : current) {
        present.insert(task.id);
        const auto was = before.find(task.id);
        if (was == before.end() || !(withMachineLocalFieldsOf(*was->second, &task) == task)) {
            // Added or edited while the pass ran: as the user left it.
            result.push_back(task);
            continue;
        }
        // The bookkeeping of reminders this machine scheduled meanwhile stays.
        if (const auto now = after.find(task.id); now != after.end()) {
            result.push_back(withMachineLocalFieldsOf(*now->second, &task));
        }
    }
    for (const auto& task : synced) {
        // New from the server; a task the user deleted meanwhile stays deleted.
        if (!present.contains(task.id) && !before.contains(task.id)) {
            result.push_back(task);
        }
    }
    return result;
}

} // namespace daywyn::sync
