#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace daywyn {

// One published release as the release manifest lists it; every key is required.
// `publishedAt` and `minimumMacOS` are shown as written, never interpreted.
struct AppRelease {
    std::string version;
    std::int64_t build = 0;
    std::string publishedAt;
    std::string minimumMacOS;
    std::string downloadURL;
    std::string sha256;
    std::vector<std::string> notes;

    // The version and build as one text ("1.4.0-12"), which tells releases apart.
    std::string versionAndBuild() const { return version + "-" + std::to_string(build); }

    bool operator==(const AppRelease&) const = default;
};

// Why an update check or download failed. Each maps onto one status text.
enum class UpdateError {
    invalidManifest,
    untrustedResponse,
    checksumMismatch,
    downloadFolderUnavailable
};

} // namespace daywyn
