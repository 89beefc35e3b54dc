#include "updates/UpdateStatusText.h"

namespace daywyn {

std::string UpdateStatusText::checking() {
    return "Checking for updates\u2026";
}

std::string UpdateStatusText::available(std::string_view latestVersion) {
    return "Daywyn " + std::string(latestVersion) + " is available.";
}

std::string UpdateStatusText::upToDate(std::string_view currentVersion) {
    return "Daywyn " + std::string(currentVersion) + " is up to date.";
}

std::string UpdateStatusText::checkFailed() {
    return "Couldn\u2019t check for updates. Try again when you\u2019re online.";
}

std::string UpdateStatusText::downloading(std::string_view version) {
    return "Downloading Daywyn " + std::string(version) + "\u2026";
}

std::string UpdateStatusText::downloaded(std::string_view version) {
    return "Daywyn " + std::string(version) + " is downloaded and verified.";
}

std::string UpdateStatusText::downloadFailed(UpdateError error) {
    if (error == UpdateError::checksumMismatch) {
        return "The installer could not be verified, so Daywyn did not keep it.";
    }
    return "The installer could not be downloaded. Try again.";
}

} // namespace daywyn
