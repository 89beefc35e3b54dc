#include "updates/UpdateRules.h"

#include <algorithm>

#include "updates/AppReleaseManifest.h"

namespace daywyn {
namespace {

bool isAsciiAlpha(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
}

std::string lowerAscii(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return result;
}

// Only characters that are safe in a file name on any desktop survive; the manifest is
// not trusted to name files ("../" or a slash in a version must not leave Downloads).
std::string safeFileNamePart(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        const bool safe = isAsciiAlpha(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' ||
                          c == '+' || c == '~' || c == '-';
        if (!safe) {
            c = '_';
        }
    }
    return result;
}

std::string extensionOf(std::string_view downloadURL) {
    const std::string path = UrlParts::parse(downloadURL).path;
    const auto slash = path.rfind('/');
    const std::string_view last = slash == std::string::npos
                                      ? std::string_view(path)
                                      : std::string_view(path).substr(slash + 1);
    const auto dot = last.rfind('.');
    if (dot == std::string_view::npos || dot + 1 == last.size()) {
        return {};
    }
    return safeFileNamePart(last.substr(dot + 1));
}

} // namespace

UrlParts UrlParts::parse(std::string_view url) {
    UrlParts parts;
    const auto colon = url.find(':');
    if (colon == std::string_view::npos || colon == 0 || !isAsciiAlpha(url.front())) {
        return parts;
    }
    const std::string_view scheme = url.substr(0, colon);
    const bool schemeOk = std::all_of(scheme.begin(), scheme.end(), [](char c) {
        return isAsciiAlpha(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
    });
    if (!schemeOk) {
        return parts;
    }
    parts.scheme.assign(scheme);
    std::string_view rest = url.substr(colon + 1);
    if (rest.substr(0, 2) == "//") {
        rest.remove_prefix(2);
        const auto authorityEnd = rest.find_first_of("/?#");
        std::string_view authority = rest.substr(0, authorityEnd);
        rest =
            authorityEnd == std::string_view::npos ? std::string_view() : rest.substr(authorityEnd);
        if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
            authority.remove_prefix(at + 1);
        }
        if (!authority.empty() && authority.front() == '[') {
            const auto close = authority.find(']');
            authority = close == std::string_view::npos ? std::string_view()
                                                        : authority.substr(1, close - 1);
        } else if (const auto portColon = authority.rfind(':');
                   portColon != std::string_view::npos) {
            authority = authority.substr(0, portColon);
        }
        parts.host = lowerAscii(authority);
    }
    parts.path.assign(rest.substr(0, rest.find_first_of("?#")));
    return parts;
}

std::optional<UpdateError> validateRelease(const AppRelease& release,
                                           const std::optional<std::string>& expectedHost) {
    const UrlParts url = UrlParts::parse(release.downloadURL);
    if (url.scheme != "https") {
        return UpdateError::invalidManifest;
    }
    if (expectedHost && (url.host.empty() || url.host != *expectedHost)) {
        return UpdateError::invalidManifest;
    }
    const std::string checksum = lowerAscii(release.sha256);
    if (checksum.size() != 64 || !std::all_of(checksum.begin(), checksum.end(), isHexDigit)) {
        return UpdateError::invalidManifest;
    }
    return std::nullopt;
}

std::optional<UpdateError> validateResponse(std::optional<int> statusCode,
                                            std::string_view finalURL,
                                            const std::optional<std::string>& expectedHost) {
    if (!statusCode || *statusCode < 200 || *statusCode > 299) {
        return UpdateError::untrustedResponse;
    }
    const UrlParts url = UrlParts::parse(finalURL);
    if (url.scheme != "https") {
        return UpdateError::untrustedResponse;
    }
    if (expectedHost && (url.host.empty() || url.host != *expectedHost)) {
        return UpdateError::untrustedResponse;
    }
    return std::nullopt;
}

void sortNewestFirst(std::vector<AppRelease>& releases) {
    std::stable_sort(releases.begin(), releases.end(),
                     [](const AppRelease& a, const AppRelease& b) {
                         return AppVersion::compare(a.version, b.version) == VersionOrder::greater;
                     });
}

std::variant<CheckedManifest, UpdateError>
checkManifest(std::string_view body, const std::optional<std::string>& expectedHost) {
    const auto decoded = AppReleaseManifest::decode(body);
    if (!decoded) {
        return UpdateError::invalidManifest;
    }
    const AppReleaseManifest& manifest = decoded.value();
    const std::optional<AppRelease> latest = manifest.latestRelease();
    if (manifest.schemaVersion != 1 || !latest) {
        return UpdateError::invalidManifest;
    }
    if (const auto error = validateRelease(*latest, expectedHost)) {
        return *error;
    }
    for (const AppRelease& release : manifest.releases) {
        if (const auto error = validateRelease(release, expectedHost)) {
            return *error;
        }
    }
    CheckedManifest checked{manifest.releases, *latest};
    sortNewestFirst(checked.releases);
    const std::string latestKey = latest->versionAndBuild();
    const auto found = std::find_if(
        checked.releases.begin(), checked.releases.end(),
        [&latestKey](const AppRelease& release) { return release.versionAndBuild() == latestKey; });
    checked.latestRelease = *found;
    return checked;
}

bool isUpdateAvailable(std::string_view latestVersion, std::string_view currentVersion) {
    return AppVersion::compare(latestVersion, currentVersion) == VersionOrder::greater;
}

bool checksumMatches(std::string_view computedHex, std::string_view expected) {
    return lowerAscii(computedHex) == lowerAscii(expected);
}

std::optional<std::string>
destinationFileName(std::string_view version, std::string_view downloadURL,
                    const std::function<bool(const std::string&)>& exists) {
    const std::string stem = "Daywyn-" + safeFileNamePart(version);
    const std::string extension = extensionOf(downloadURL);
    const std::string suffix = extension.empty() ? std::string() : "." + extension;
    if (const std::string name = stem + suffix; !exists(name)) {
        return name;
    }
    for (int n = 2; n <= 99; ++n) {
        if (const std::string name = stem + "-" + std::to_string(n) + suffix; !exists(name)) {
            return name;
        }
    }
    return std::nullopt;
}

} // namespace daywyn
