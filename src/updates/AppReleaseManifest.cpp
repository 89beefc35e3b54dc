#include "updates/AppReleaseManifest.h"

#include "base/JsonFields.h"

namespace daywyn {

template <>
struct JsonRecord<AppRelease> {
    static constexpr std::string_view noun = "release";
    static constexpr auto fields =
        std::tuple(jsonField("build", &AppRelease::build, FieldRule::required),
                   jsonField("downloadURL", &AppRelease::downloadURL, FieldRule::required),
                   jsonField("minimumMacOS", &AppRelease::minimumMacOS, FieldRule::required),
                   jsonField("notes", &AppRelease::notes, FieldRule::required),
                   jsonField("publishedAt", &AppRelease::publishedAt, FieldRule::required),
                   jsonField("sha256", &AppRelease::sha256, FieldRule::required),
                   jsonField("version", &AppRelease::version, FieldRule::required));
};

template <>
struct JsonRecord<AppReleaseManifest> {
    static constexpr std::string_view noun = "manifest";
    static constexpr auto fields = std::tuple(
        jsonField("latest", &AppReleaseManifest::latest, FieldRule::required),
        jsonField("releases", &AppReleaseManifest::releases, FieldRule::required),
        jsonField("schemaVersion", &AppReleaseManifest::schemaVersion, FieldRule::required));
};

std::optional<AppRelease> AppReleaseManifest::latestRelease() const {
    for (const AppRelease& release : releases) {
        if (release.version == latest) {
            return release;
        }
    }
    return std::nullopt;
}

Result<AppReleaseManifest> AppReleaseManifest::decode(std::string_view json) {
    // Every decoding failure reaches the user as the same status text; the reason only
    // tells a developer what was wrong.
    auto manifest = decodeJsonRecord<AppReleaseManifest>(json, DateCoding::iso8601);
    if (!manifest) {
        return Result<AppReleaseManifest>::failure("The release manifest is not valid: " +
                                                   manifest.error());
    }
    return manifest;
}

} // namespace daywyn
