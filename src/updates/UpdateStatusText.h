#pragma once

#include <string>
#include <string_view>

#include "updates/AppRelease.h"

namespace daywyn {

// The sentences the About page shows while checking and downloading. Every failure ends
// in one of two of them, so the user never sees a raw network or file error.
struct UpdateStatusText {
    static std::string checking();
    static std::string available(std::string_view latestVersion);
    static std::string upToDate(std::string_view currentVersion);
    static std::string checkFailed();
    static std::string downloading(std::string_view version);
    static std::string downloaded(std::string_view version);
    // checksumMismatch has its own sentence; every other failure shares one.
    static std::string downloadFailed(UpdateError error);
};

} // namespace daywyn
