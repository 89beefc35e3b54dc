#include "sync/SyncStateFile.h"

#include <cerrno>

#include "model/RecordFields.h"
#include "persistence/AtomicFile.h"
#include "persistence/XdgPaths.h"

namespace daywyn {

using namespace sync;

// Field times as an object: {"title": "2026-03-09T10:00:00Z"}. Beside Instant, where
// the record coding looks for them.
template <typename Writer>
void writeJson(Writer& w, const FieldTimes& times, DateCoding dates) {
    w.StartObject();
    for (const auto& [field, at] : times) {
        writeKey(w, field);
        writeJson(w, at, dates);
    }
    w.EndObject();
}

bool readJson(JsonDecoder& d, JsonValue& v, FieldTimes& out) {
    FieldTimes times;
    const bool read = readJsonObject(d, v, [&](std::string_view key, JsonValue& value) {
        Instant at;
        if (!readJson(d, value, at)) {
            return false;
        }
        times.insert_or_assign(std::string(key), at);
        return true;
    });
    if (read) {
        out = std::move(times);
    }
    return read;
}

namespace sync {

template <typename Writer>
void writeJson(Writer& w, ConflictSide side, DateCoding) {
    writeString(w, side == ConflictSide::local ? "local" : "remote");
}

bool readJson(JsonDecoder& d, JsonValue& v, ConflictSide& out) {
    std::string_view text;
    if (!readJsonText(d, v, text)) {
        return false;
    }
    if (text == "local" || text == "remote") {
        out = text == "local" ? ConflictSide::local : ConflictSide::remote;
        return true;
    }
    return false;
}

// The account is an optional record, which the field table writes through here.
template <typename Writer>
void writeJson(Writer& w, const SyncAccount& account, DateCoding dates) {
    encodeFields(w, account, dates);
}

// Maps by task id are written as lists of their values.
template <typename Writer, typename T>
void writeJson(Writer& w, const std::map<Uuid, T>& map, DateCoding dates) {
    w.StartArray();
    for (const auto& [id, value] : map) {
        encodeFields(w, value, dates);
    }
    w.EndArray();
}

template <typename T, typename KeyOf>
bool readMap(JsonDecoder& d, JsonValue& v, std::map<Uuid, T>& out, KeyOf keyOf) {
    std::map<Uuid, T> map;
    const bool read = readJsonArray(d, v, [&](JsonValue& element) {
        T value{};
        if (!decodeFields(d, element, value)) {
            return false;
        }
        const Uuid key = keyOf(value);
        map.insert_or_assign(key, std::move(value));
        return true;
    });
    if (read) {
        out = std::move(map);
    }
    return read;
}

bool readJson(JsonDecoder& d, JsonValue& v, std::map<Uuid, SyncedTask>& out) {
    return readMap(d, v, out, [](const SyncedTask& synced) { return synced.task.id; });
}

bool readJson(JsonDecoder& d, JsonValue& v, std::map<Uuid, LocalChange>& out) {
    return readMap(d, v, out, [](const LocalChange& change) { return change.taskId; });
}

} // namespace sync

template <>
struct JsonRecord<SyncAccount> {
    using A = SyncAccount;
    static constexpr std::string_view noun = "sync account";
    static constexpr auto fields =
        std::tuple(jsonField("collectionUrl", &A::collectionUrl, FieldRule::required),
                   jsonField("listName", &A::listName, FieldRule::lenient),
                   jsonField("serverUrl", &A::serverUrl, FieldRule::required),
                   jsonField("user", &A::user, FieldRule::lenient));
};

template <>
struct JsonRecord<SyncedTask> {
    using S = SyncedTask;
    static constexpr std::string_view noun = "synced task";
    static constexpr auto fields = std::tuple(jsonField("etag", &S::etag, FieldRule::required),
                                              jsonField("href", &S::href, FieldRule::required),
                                              jsonField("ics", &S::ics, FieldRule::required),
                                              jsonField("task", &S::task, FieldRule::required));
};

template <>
struct JsonRecord<LocalChange> {
    static constexpr std::string_view noun = "local change";
    static constexpr auto fields =
        std::tuple(jsonField("changedAt", &LocalChange::changedAt, FieldRule::required),
                   jsonField("fields", &LocalChange::fields, FieldRule::lenient),
                   jsonField("taskId", &LocalChange::taskId, FieldRule::required));
};

template <>
struct JsonRecord<SkippedEntry> {
    static constexpr std::string_view noun = "skipped entry";
    static constexpr auto fields =
        std::tuple(jsonField("etag", &SkippedEntry::etag, FieldRule::required),
                   jsonField("href", &SkippedEntry::href, FieldRule::required));
};

template <>
struct JsonRecord<ConflictRecord> {
    using C = ConflictRecord;
    static constexpr std::string_view noun = "conflict";
    static constexpr auto fields =
        std::tuple(jsonField("at", &C::at, FieldRule::required),
                   jsonField("field", &C::field, FieldRule::required),
                   jsonField("keptValue", &C::keptValue, FieldRule::required),
                   jsonField("lost", &C::lost, FieldRule::required),
                   jsonField("setAsideValue", &C::setAsideValue, FieldRule::required),
                   jsonField("taskId", &C::taskId, FieldRule::required),
                   jsonField("title", &C::title, FieldRule::required));
};

template <>
struct JsonRecord<SyncState> {
    using S = SyncState;
    static constexpr std::string_view noun = "sync state";
    static constexpr auto fields =
        std::tuple(jsonField("account", &S::account, FieldRule::optional),
                   jsonField("conflicts", &S::conflicts, FieldRule::lenient),
                   jsonField("lastError", &S::lastError, FieldRule::lenient),
                   jsonField("lastPassAt", &S::lastPassAt, FieldRule::optional),
                   jsonField("lastSummary", &S::lastSummary, FieldRule::lenient),
                   jsonField("localChanges", &S::localChanges, FieldRule::lenient),
                   jsonField("skipped", &S::skipped, FieldRule::lenient),
                   jsonField("syncToken", &S::syncToken, FieldRule::lenient),
                   jsonField("synced", &S::synced, FieldRule::lenient));
};

namespace sync {

std::string encodeSyncState(const SyncState& state) {
    JsonBuffer buffer;
    PrettyJsonWriter writer(buffer);
    useTwoSpaceIndent(writer);
    encodeFields(writer, state, DateCoding::iso8601);
    return std::string(buffer.GetString(), buffer.GetSize());
}

Result<SyncState> decodeSyncState(std::string_view json) {
    return decodeJsonRecord<SyncState>(json, DateCoding::iso8601);
}

SyncStateFile::SyncStateFile(std::string path, std::shared_ptr<FileSystem> fileSystem)
    : path_(std::move(path))
    , fs_(std::move(fileSystem)) {}

Result<std::string> SyncStateFile::defaultPath(const Environment& environment) {
    auto folder = daywynFolder(XdgBase::state, environment);
    if (!folder) {
        return Error{folder.error()};
    }
    return folder.value() + "/sync/state.json";
}

Result<LoadedSyncState> SyncStateFile::load(Instant now) {
    LoadedSyncState loaded;
    if (!fs_->exists(path_)) {
        return loaded;
    }
    FileBytes bytes;
    if (const int error = fs_->readFile(path_, bytes); error != 0) {
        return Error{"Daywyn could not read its sync state: " + describeSystemError(error)};
    }
    auto decoded = decodeSyncState(bytes.view());
    if (decoded) {
        loaded.state = std::move(decoded).value();
        return loaded;
    }
    std::string stamp = isoText(now);
    for (char& c : stamp) {
        if (c == ':') {
            c = '-';
        }
    }
    const std::string name = "state-corrupt-" + stamp + ".json";
    if (const int error = fs_->moveNoReplace(path_, parentDirectory(path_) + "/" + name);
        error != 0) {
        return Error{"Daywyn could not read its sync state (" + decoded.error() +
                     "), and could not move it aside: " + describeSystemError(error)};
    }
    loaded.notice = "Daywyn could not read its sync state and starts afresh; the old one was "
                    "kept as " +
                    name + ".";
    return loaded;
}

Status SyncStateFile::save(const SyncState& state) {
    if (const int error = fs_->createDirectories(parentDirectory(path_)); error != 0) {
        return Error{"Daywyn could not save its sync state: " + describeSystemError(error)};
    }
    if (auto written = writeFileAtomically(*fs_, path_, encodeSyncState(state), 0600); !written) {
        return Error{"Daywyn could not save its sync state: " + written.error()};
    }
    return {};
}

} // namespace sync
} // namespace daywyn
