#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"
#include "updates/AppRelease.h"

namespace daywyn {

// The release manifest served over HTTPS: its schema version, the version to offer,
// and every published release.
struct AppReleaseManifest {
    std::int64_t schemaVersion = 0;
    std::string latest;
    std::vector<AppRelease> releases;

    // The first release whose version is `latest`; absent when none is.
    std::optional<AppRelease> latestRelease() const;

    // Reads a manifest document. Unknown keys are ignored; a missing key, a value of the
    // wrong type, or anything that is not one JSON object fails with a short reason.
    static Result<AppReleaseManifest> decode(std::string_view json);

    bool operator==(const AppReleaseManifest&) const = default;
};

} // namespace daywyn
