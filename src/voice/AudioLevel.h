#pragma once

#include <cstdint>
#include <span>

namespace daywyn {

// The peak, as a fraction of full scale, from which a microphone buffer counts as
// sound rather than silence ("Microphone audio detected").
inline constexpr double audioDetectionPeak = 0.002;

// The largest absolute sample of 16-bit audio as a fraction of full scale (0 … 1).
double peakLevel(std::span<const std::int16_t> samples);

// Whether the buffer's peak reaches the detection level.
bool containsAudibleSound(std::span<const std::int16_t> samples);

} // namespace daywyn
