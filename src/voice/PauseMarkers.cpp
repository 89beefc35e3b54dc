#include "voice/PauseMarkers.h"

#include <cmath>

namespace daywyn {

std::string transcriptWithPauseMarkers(std::span<const TranscriptSegment> segments) {
    std::string text;
    const TranscriptSegment* previous = nullptr;
    for (const auto& segment : segments) {
        if (segment.text.empty()) {
            continue;
        }
        if (previous) {
            // Compared in whole milliseconds: recogniser times are frame counts divided
            // by the frame rate, and 1.15 s must not become 1.1499999 on the way.
            const double gap = segment.timestamp - (previous->timestamp + previous->duration);
            const bool pause =
                std::llround(gap * 1000.0) >= std::llround(taskPauseSeconds * 1000.0);
            text += pause ? " | " : " ";
        }
        text += segment.text;
        previous = &segment;
    }
    return text;
}

} // namespace daywyn
