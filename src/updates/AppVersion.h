#pragma once

#include <string_view>

namespace daywyn {

enum class VersionOrder { less, equal, greater };

// Orders release versions such as "1.10", "1.2.0-rc1" and "1.2.0-beta.10". The number
// part is compared component by component (missing or non-numeric components count 0);
// a version without a pre-release text is greater than the same version with one, and
// two pre-release texts compare digit runs as numbers ("beta.2" < "beta.10").
struct AppVersion {
    static VersionOrder compare(std::string_view a, std::string_view b);
};

} // namespace daywyn
