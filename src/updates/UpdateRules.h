#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "updates/AppRelease.h"
#include "updates/AppVersion.h"

namespace daywyn {

// The scheme and host of an absolute URL ("https", "example.org"); the host is
// lower-cased, as hosts are matched without case. Empty parts when the text has none.
struct UrlParts {
    std::string scheme;
    std::string host;
    std::string path;

    static UrlParts parse(std::string_view url);
};

// A download the manifest may point at: https, on `expectedHost` when one is given, with
// a SHA-256 of 64 hexadecimal digits in either case. Fails with invalidManifest.
std::optional<UpdateError> validateRelease(const AppRelease& release,
                                           const std::optional<std::string>& expectedHost);

// A reply that may be trusted: an HTTP status from 200 to 299 (absent: not an HTTP
// reply), and a final URL after redirects that is https on `expectedHost` when one is
// given. Fails with untrustedResponse.
std::optional<UpdateError> validateResponse(std::optional<int> statusCode,
                                            std::string_view finalURL,
                                            const std::optional<std::string>& expectedHost);

// What a good manifest offers: every release, newest first, and the one to offer.
struct CheckedManifest {
    std::vector<AppRelease> releases;
    AppRelease latestRelease;
};

// Decodes and validates a manifest body: schema 1, a listed latest release, and every
// release valid (the first invalid one fails the whole check).
std::variant<CheckedManifest, UpdateError>
checkManifest(std::string_view body, const std::optional<std::string>& expectedHost);

// Releases ordered newest first by their versions; equal versions keep their order.
void sortNewestFirst(std::vector<AppRelease>& releases);

// True exactly when `latestVersion` is greater than `currentVersion` (builds play no part).
bool isUpdateAvailable(std::string_view latestVersion, std::string_view currentVersion);

// The computed digest (lower-case hex) against the manifest's, whose case does not matter.
bool checksumMatches(std::string_view computedHex, std::string_view expected);

// The file name a downloaded installer gets in the Downloads folder:
// "Daywyn-<version>.<extension of the download URL>", and when that is taken the first
// free of "Daywyn-<version>-2.<ext>" … "-99". Absent when all of them are taken.
// Characters that could leave the folder or confuse a file manager become "_".
std::optional<std::string>
destinationFileName(std::string_view version, std::string_view downloadURL,
                    const std::function<bool(const std::string&)>& exists);

} // namespace daywyn
