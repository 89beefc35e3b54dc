#pragma once

#include <optional>
#include <string>

#include "base/Instant.h"
#include "base/Uuid.h"

namespace daywyn {

// One task heard in a spoken list, for the user to review before it is saved.
struct VoiceTaskCandidate {
    Uuid id;
    // Cleaned, never empty, first letter upper-cased (editing in review may blank it).
    std::string title;
    std::optional<Instant> scheduledStart;
    // Midnight of the day that was said.
    std::optional<Instant> scheduledDay;
    bool operator==(const VoiceTaskCandidate&) const = default;
};

} // namespace daywyn
