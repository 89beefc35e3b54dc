#include "updates/AppReleaseManifest.h"

#include <simdjson.h>

namespace daywyn {
namespace {

namespace od = simdjson::ondemand;

// Reading stops at the first problem; the message only tells a developer what was wrong,
// since every decoding failure reaches the user as the same status text.
struct Reader {
    std::optional<std::string> problem;

    bool fail(std::string message) {
        if (!problem) {
            problem = std::move(message);
        }
        return false;
    }

    bool readString(simdjson::simdjson_result<od::value> value, std::string& out, const char* key) {
        std::string_view text;
        if (value.get_string().get(text)) {
            return fail(std::string("\"") + key + "\" is not a string");
        }
        out.assign(text);
        return true;
    }

    bool readInteger(simdjson::simdjson_result<od::value> value, std::int64_t& out,
                     const char* key) {
        if (value.get_int64().get(out)) {
            return fail(std::string("\"") + key + "\" is not an integer");
        }
        return true;
    }

    bool readNotes(simdjson::simdjson_result<od::value> value, std::vector<std::string>& out) {
        od::array array;
        if (value.get_array().get(array)) {
            return fail("\"notes\" is not an array");
        }
        for (auto element : array) {
            std::string_view line;
            if (element.get_string().get(line)) {
                return fail("a note is not a string");
            }
            out.emplace_back(line);
        }
        return true;
    }

    bool readRelease(simdjson::simdjson_result<od::value> value, AppRelease& release) {
        od::object object;
        if (value.get_object().get(object)) {
            return fail("a release is not an object");
        }
        unsigned seen = 0;
        for (auto field : object) {
            std::string_view key;
            if (field.unescaped_key().get(key)) {
                return fail("a release key is not readable");
            }
            bool ok = true;
            if (key == "version") {
                ok = readString(field.value(), release.version, "version");
                seen |= 1U;
            } else if (key == "build") {
                ok = readInteger(field.value(), release.build, "build");
                seen |= 2U;
            } else if (key == "publishedAt") {
                ok = readString(field.value(), release.publishedAt, "publishedAt");
                seen |= 4U;
            } else if (key == "minimumMacOS") {
                ok = readString(field.value(), release.minimumMacOS, "minimumMacOS");
                seen |= 8U;
            } else if (key == "downloadURL") {
                ok = readString(field.value(), release.downloadURL, "downloadURL");
                seen |= 16U;
            } else if (key == "sha256") {
                ok = readString(field.value(), release.sha256, "sha256");
                seen |= 32U;
            } else if (key == "notes") {
                release.notes.clear();
                ok = readNotes(field.value(), release.notes);
                seen |= 64U;
            }
            if (!ok) {
                return false;
            }
        }
        if (problem) {
            return false;
        }
        if (seen != 127U) {
            return fail("a release lacks a required key");
        }
        return true;
    }

    bool readManifest(od::document& document, AppReleaseManifest& manifest) {
        od::object object;
        if (document.get_object().get(object)) {
            return fail("the manifest is not a JSON object");
        }
        unsigned seen = 0;
        for (auto field : object) {
            std::string_view key;
            if (field.unescaped_key().get(key)) {
                return fail("a manifest key is not readable");
            }
            bool ok = true;
            if (key == "schemaVersion") {
                ok = readInteger(field.value(), manifest.schemaVersion, "schemaVersion");
                seen |= 1U;
            } else if (key == "latest") {
                ok = readString(field.value(), manifest.latest, "latest");
                seen |= 2U;
            } else if (key == "releases") {
                seen |= 4U;
                manifest.releases.clear();
                od::array array;
                if (field.value().get_array().get(array)) {
                    return fail("\"releases\" is not an array");
                }
                for (auto element : array) {
                    AppRelease release;
                    if (!readRelease(element, release)) {
                        return false;
                    }
                    manifest.releases.push_back(std::move(release));
                }
            }
            if (!ok) {
                return false;
            }
        }
        if (problem) {
            return false;
        }
        if (seen != 7U) {
            return fail("the manifest lacks a required key");
        }
        const char* location = nullptr;
        if (document.current_location().get(location) != simdjson::OUT_OF_BOUNDS) {
            return fail("the manifest has content after its object");
        }
        return true;
    }
};

} // namespace

std::optional<AppRelease> AppReleaseManifest::latestRelease() const {
    for (const AppRelease& release : releases) {
        if (release.version == latest) {
            return release;
        }
    }
    return std::nullopt;
}

Result<AppReleaseManifest> AppReleaseManifest::decode(std::string_view json) {
    const simdjson::padded_string padded(json);
    od::parser parser;
    od::document document;
    if (const auto error = parser.iterate(padded).get(document); error) {
        return Result<AppReleaseManifest>::failure(
            std::string("The release manifest is not JSON: ") + simdjson::error_message(error));
    }
    Reader reader;
    AppReleaseManifest manifest;
    if (!reader.readManifest(document, manifest)) {
        return Result<AppReleaseManifest>::failure("The release manifest is not valid: " +
                                                   reader.problem.value_or("unreadable"));
    }
    return manifest;
}

} // namespace daywyn
