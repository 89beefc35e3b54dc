#include "persistence/StateFileDecoding.h"

#include <optional>

#include "base/JsonFields.h"
#include "model/RecordFields.h"
#include "model/RecordJson.h"

namespace daywyn {

static_assert(FileBytes::kSlack >= simdjson::SIMDJSON_PADDING, "a file's bytes are read in place");

namespace {

constexpr std::string_view kNotAnObject = "The state file does not hold a JSON object.";
constexpr std::string_view kNoVersion = "The state file has no version.";
constexpr std::string_view kInvalidMembers =
    "The state file's tasks, preferences or reports are not valid.";
// From this size on the task list is counted before it is read (see
// decodeTaskListValue): at about 1 KB a task, from some 8,000 tasks.
constexpr std::size_t kCountTasksFrom = 8 * 1024 * 1024;

// The first "version" member: absent when it is not an integer.
bool readVersion(JsonDecoder& d, JsonValue& value, std::optional<long long>& version) {
    long long number = 0;
    if (readJson(d, value, number)) {
        version = number;
        return true;
    }
    return !d.hasSyntaxError() && skipJson(d, value);
}

// The members of the earlier format, as text, for a second reading in that format.
struct LegacyTexts {
    std::optional<std::string_view> tasks;
    std::optional<std::string_view> preferences;
    std::optional<long long> version;
};

// Reads the root once more, keeping the text of the first "tasks" list and of the
// first "preferences" object; everything else is walked past and checked.
Result<LegacyTexts> findLegacyMembers(JsonInput& input) {
    JsonDecoder d;
    simdjson::ondemand::document document;
    simdjson::ondemand::object root;
    if (!input.iterate(d, document) || !d.check(document.get_object().get(root))) {
        return Error{d.hasSyntaxError() ? d.error() : std::string(kNotAnObject)};
    }
    LegacyTexts texts;
    bool tasksSeen = false;
    bool preferencesSeen = false;
    bool versionSeen = false;
    for (auto member : root) {
        simdjson::ondemand::field field;
        std::string_view key;
        if (!d.check(std::move(member).get(field)) || !readJsonKey(d, field, key)) {
            break;
        }
        JsonValue value = field.value();
        bool ok = true;
        if (key == "tasks" && !tasksSeen) {
            tasksSeen = true;
            simdjson::ondemand::array list;
            std::string_view text;
            if (value.get_array().get(list) == simdjson::SUCCESS &&
                d.check(list.raw_json().get(text))) {
                texts.tasks = text;
            } else {
                ok = !d.hasSyntaxError() && skipJson(d, value);
            }
        } else if (key == "preferences" && !preferencesSeen) {
            preferencesSeen = true;
            simdjson::ondemand::object object;
            std::string_view text;
            if (value.get_object().get(object) == simdjson::SUCCESS &&
                d.check(object.raw_json().get(text))) {
                texts.preferences = text;
            } else {
                ok = !d.hasSyntaxError() && skipJson(d, value);
            }
        } else if (key == "version" && !versionSeen) {
            versionSeen = true;
            ok = readVersion(d, value, texts.version);
        } else {
            ok = skipJson(d, value);
        }
        if (!ok) {
            break;
        }
    }
    if (d.hasSyntaxError()) {
        return Error{d.error()};
    }
    if (!jsonAtEnd(document)) {
        return Error{jsonSyntaxError(simdjson::TRAILING_CONTENT)};
    }
    return texts;
}

// The second reading, for files that are not (or not wholly) in the current format.
Result<DecodedStateFile> decodeEarlierFormat(JsonInput& input) {
    auto found = findLegacyMembers(input);
    if (!found) {
        return Error{found.error()};
    }
    const LegacyTexts& texts = found.value();
    if (!texts.version) {
        return Error{std::string(kNoVersion)};
    }
    if (*texts.version >= PersistedState::kCurrentVersion) {
        return Error{std::string(kInvalidMembers)};
    }
    if (!texts.tasks || !texts.preferences) {
        return Error{"The old-format state lacks its tasks or preferences."};
    }
    LegacyPersistedState legacy;
    legacy.version = *texts.version;
    if (auto decoded = LegacyPersistedState::decodeTasks(*texts.tasks, legacy.tasks); !decoded) {
        return Error{decoded.error()};
    }
    auto preferences = decodePreferences(*texts.preferences);
    if (!preferences) {
        return Error{preferences.error()};
    }
    legacy.preferences = std::move(preferences).value();
    return DecodedStateFile(std::move(legacy));
}

} // namespace

// One pass over the file in the usual case. The version is written last (keys are
// sorted), so each member is decoded in the current format as it comes. When one does
// not decode, or the version turns out to be an old one, the file is read a second
// time for the earlier format.
namespace {

Result<DecodedStateFile> decodeStateInput(JsonInput& input) {
    JsonDecoder d;
    simdjson::ondemand::document document;
    simdjson::ondemand::object root;
    if (!input.iterate(d, document) || !d.check(document.get_object().get(root))) {
        return Error{d.hasSyntaxError() ? d.error() : std::string(kNotAnObject)};
    }
    PersistedState state;
    bool tasks = false;
    bool preferences = false;
    bool reports = false;
    bool versionSeen = false;
    std::optional<long long> version;
    bool current = true;
    for (auto member : root) {
        simdjson::ondemand::field field;
        std::string_view key;
        if (!d.check(std::move(member).get(field)) || !readJsonKey(d, field, key)) {
            break;
        }
        JsonValue value = field.value();
        // Of a repeated name the first counts.
        if (key == "tasks" && !tasks) {
            tasks = true;
            current = decodeTaskListValue(d, value, state.tasks, input.size() >= kCountTasksFrom);
        } else if (key == "preferences" && !preferences) {
            preferences = true;
            current = decodeRecordValue(d, value, state.preferences);
        } else if (key == "reports" && !reports) {
            reports = true;
            current = decodeReportListValue(d, value, state.reports);
        } else if (key == "version" && !versionSeen) {
            versionSeen = true;
            current = readVersion(d, value, version);
        } else {
            current = skipJson(d, value);
        }
        if (!current) {
            break;
        }
    }
    if (d.hasSyntaxError()) {
        return Error{d.error()};
    }
    if (!current) {
        return decodeEarlierFormat(input);
    }
    if (!jsonAtEnd(document)) {
        return Error{jsonSyntaxError(simdjson::TRAILING_CONTENT)};
    }
    if (!version) {
        return Error{std::string(kNoVersion)};
    }
    if (*version < PersistedState::kCurrentVersion) {
        return decodeEarlierFormat(input);
    }
    if (!tasks || !preferences || !reports) {
        return Error{std::string(kInvalidMembers)};
    }
    state.version = *version;
    return DecodedStateFile(std::move(state));
}

} // namespace

Result<DecodedStateFile> decodeStateFile(std::string_view bytes) {
    JsonInput input(bytes);
    return decodeStateInput(input);
}

Result<DecodedStateFile> decodeStateFile(const FileBytes& bytes, JsonParser& parser) {
    JsonInput input(bytes.data(), bytes.size(), bytes.readable(), parser);
    return decodeStateInput(input);
}

} // namespace daywyn
