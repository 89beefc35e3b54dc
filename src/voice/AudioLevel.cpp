#include "voice/AudioLevel.h"

#include <cstdlib>

namespace daywyn {

double peakLevel(std::span<const std::int16_t> samples) {
    int peak = 0;
    for (const std::int16_t s : samples) {
        // Widened first: the absolute value of -32768 does not fit in 16 bits.
        const int magnitude = std::abs(static_cast<int>(s));
        if (magnitude > peak) {
            peak = magnitude;
        }
    }
    return peak / 32768.0;
}

bool containsAudibleSound(std::span<const std::int16_t> samples) {
    return peakLevel(samples) >= audioDetectionPeak;
}

} // namespace daywyn
