#pragma once

#include <string>

namespace daywyn {

// The program's version from the build ("0.1.0") and its build number.
const char* appVersion();
const char* appBuildNumber();
// "Daywyn 0.1.0 (build 0)"
std::string versionLine();

} // namespace daywyn
