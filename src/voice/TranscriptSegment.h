#pragma once

#include <string>

namespace daywyn {

// One recognised word (or run of words) with where it sits in the recording, in
// seconds from the start of the capture.
struct TranscriptSegment {
    std::string text;
    double timestamp = 0;
    double duration = 0;
    bool operator==(const TranscriptSegment&) const = default;
};

} // namespace daywyn
