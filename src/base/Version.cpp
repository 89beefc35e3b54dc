#include "base/Version.h"

namespace daywyn {

const char* appVersion() {
    return DAYWYN_VERSION;
}
const char* appBuildNumber() {
    return DAYWYN_BUILD_NUMBER;
}

std::string versionLine() {
    return DAYWYN_VERSION_LINE;
}

} // namespace daywyn
