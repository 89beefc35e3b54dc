#include "persistence/StateFileDecoding.h"

#include <cstdint>
#include <optional>

#include "base/JsonReader.h"
#include "model/RecordJson.h"
#include "persistence/TaskListReadAhead.h"

namespace daywyn {

namespace {

// Where a member's value starts, and whether it decoded in the current format.
struct Member {
    std::optional<std::size_t> at;
    bool decoded = false;
};

} // namespace

// One pass over the file in the usual case. The version is written last (keys are
// sorted), so each member is decoded in the current format as it comes; a member that
// does not decode is skipped and remembered, and only when the version turns out to be
// an old one are the remembered members read again in the earlier format.
Result<DecodedStateFile> decodeStateFile(std::string_view bytes) {
    JsonReader reader(bytes);
    const auto readAhead = TaskListReadAhead::start(bytes);
    PersistedState state;
    Member tasks;
    Member preferences;
    Member reports;
    std::optional<std::int64_t> version;
    bool versionSeen = false;

    auto decodeMember = [&reader](Member& member, auto decode) {
        if (member.at) {
            return reader.skipValue(); // a repeated name: the first one counts
        }
        member.at = reader.offset();
        member.decoded = decode();
        if (!member.decoded && !reader.hasSyntaxError()) {
            reader.rewind(*member.at);
            return reader.skipValue();
        }
        return !reader.hasSyntaxError();
    };

    if (!reader.beginObject()) {
        return Error{reader.hasSyntaxError() ? reader.syntaxError()
                                             : "The state file does not hold a JSON object."};
    }
    std::string_view name;
    while (reader.nextKey(name)) {
        bool ok = true;
        if (name == "tasks") {
            ok = decodeMember(tasks, [&] {
                return (readAhead ? readAhead->decode(reader, state.tasks)
                                  : decodeTaskList(reader, DateCoding::iso8601, state.tasks))
                    .ok();
            });
        } else if (name == "preferences") {
            ok = decodeMember(preferences, [&] {
                auto decoded = decodePreferences(reader);
                if (decoded) {
                    state.preferences = std::move(decoded).value();
                }
                return decoded.ok();
            });
        } else if (name == "reports") {
            ok = decodeMember(reports, [&] {
                return decodeReportList(reader, DateCoding::iso8601, state.reports).ok();
            });
        } else if (name == "version" && !versionSeen) {
            versionSeen = true;
            version = reader.readInt64();
            ok = version || reader.skipValue();
        } else {
            ok = reader.skipValue();
        }
        if (!ok) {
            break;
        }
    }
    if (reader.hasSyntaxError() || !reader.atEnd()) {
        return Error{reader.syntaxError()};
    }
    if (!version) {
        return Error{"The state file has no version."};
    }

    if (*version >= PersistedState::kCurrentVersion) {
        if (!tasks.decoded || !preferences.decoded || !reports.decoded) {
            return Error{"The state file's tasks, preferences or reports are not valid."};
        }
        state.version = *version;
        return DecodedStateFile(std::move(state));
    }

    LegacyPersistedState legacy;
    legacy.version = *version;
    if (!tasks.at || !preferences.at) {
        return Error{"The old-format state lacks its tasks or preferences."};
    }
    reader.rewind(*tasks.at);
    if (auto decoded = LegacyPersistedState::decodeTasks(reader, legacy.tasks); !decoded) {
        return Error{decoded.error()};
    }
    reader.rewind(*preferences.at);
    auto decodedPreferences = decodePreferences(reader);
    if (!decodedPreferences) {
        return Error{decodedPreferences.error()};
    }
    legacy.preferences = std::move(decodedPreferences).value();
    return DecodedStateFile(std::move(legacy));
}

} // namespace daywyn
