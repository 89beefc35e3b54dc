#include "persistence/FileSystem.h"

#include <cstring>

namespace daywyn {

std::string describeSystemError(int error) {
    // strerror is not thread-safe and the background remover may fail at the same time.
    char buffer[256];
    return std::string(strerror_r(error, buffer, sizeof buffer));
}

} // namespace daywyn
