#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/Result.h"

namespace daywyn {

// Audio as the recogniser hears it: 16 kHz, one channel, 16-bit samples.
inline constexpr int recognizerSampleRate = 16000;

// Reads a WAV file's bytes into recogniser audio. 16-bit PCM at any rate and with any
// number of channels is converted (channels averaged, rate resampled); other encodings
// are refused with a sentence that says what the file holds and what is needed.
Result<std::vector<std::int16_t>> recognizerAudioFromWav(std::span<const std::uint8_t> bytes);

// Resamples one channel of 16-bit audio from `fromRate` to `toRate` (band-limited, so
// going down in rate does not fold high frequencies into speech).
std::vector<std::int16_t> resampled(std::span<const std::int16_t> samples, int fromRate,
                                    int toRate);

} // namespace daywyn
