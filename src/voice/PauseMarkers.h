#pragma once

#include <span>
#include <string>

#include "voice/TranscriptSegment.h"

namespace daywyn {

// The silence, in seconds, that separates two spoken tasks.
inline constexpr double taskPauseSeconds = 1.15;

// The segments' texts joined with single spaces, except that a silence of 1.15 s or
// more between the end of one segment and the start of the next is written " | ",
// which the transcript splitter treats as a boundary between tasks.
std::string transcriptWithPauseMarkers(std::span<const TranscriptSegment> segments);

} // namespace daywyn
