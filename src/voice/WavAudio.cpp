#include "voice/WavAudio.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <string_view>

namespace daywyn {

namespace {

constexpr const char* kNeeded = "Daywyn reads 16-bit PCM WAV recordings (16 kHz mono is "
                                "best; other rates and channel counts are converted).";

std::uint32_t le32(std::span<const std::uint8_t> b, std::size_t at) {
    return std::uint32_t(b[at]) | (std::uint32_t(b[at + 1]) << 8) |
           (std::uint32_t(b[at + 2]) << 16) | (std::uint32_t(b[at + 3]) << 24);
}
std::uint16_t le16(std::span<const std::uint8_t> b, std::size_t at) {
    return static_cast<std::uint16_t>(b[at] | (b[at + 1] << 8));
}
bool tagAt(std::span<const std::uint8_t> b, std::size_t at, std::string_view tag) {
    return at + 4 <= b.size() && std::equal(tag.begin(), tag.end(), b.begin() + at,
                                            [](char c, std::uint8_t u) { return c == char(u); });
}

Result<std::vector<std::int16_t>> refused(const std::string& what) {
    return Result<std::vector<std::int16_t>>::failure(what + " " + kNeeded);
}

double sinc(double x) {
    return x == 0 ? 1.0 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

} // namespace

std::vector<std::int16_t> resampled(std::span<const std::int16_t> samples, int fromRate,
                                    int toRate) {
    if (fromRate == toRate || samples.empty() || fromRate <= 0 || toRate <= 0) {
        return {samples.begin(), samples.end()};
    }
    // A windowed-sinc interpolator whose cut-off is the lower of the two Nyquist
    // frequencies: slow for music, plenty for a voice memo, and free of a library.
    const double ratio = double(toRate) / fromRate;
    const double cutoff = std::min(1.0, ratio);
    constexpr int halfWidth = 16;
    const double reach = halfWidth / cutoff;
    const auto outputCount = static_cast<std::size_t>(std::floor(samples.size() * ratio));
    std::vector<std::int16_t> out(outputCount);
    for (std::size_t i = 0; i < outputCount; ++i) {
        const double centre = i / ratio;
        const auto first = static_cast<long>(std::ceil(centre - reach));
        const auto last = static_cast<long>(std::floor(centre + reach));
        double sum = 0;
        for (long k = std::max(first, 0L);
             k <= std::min(last, static_cast<long>(samples.size()) - 1); ++k) {
            const double distance = centre - k;
            const double window = 0.5 + 0.5 * std::cos(std::numbers::pi * distance / reach);
            sum += samples[static_cast<std::size_t>(k)] * cutoff * sinc(cutoff * distance) * window;
        }
        out[i] = static_cast<std::int16_t>(std::clamp(std::lround(sum), -32768L, 32767L));
    }
    return out;
}

Result<std::vector<std::int16_t>> recognizerAudioFromWav(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 12 || !tagAt(bytes, 0, "RIFF") || !tagAt(bytes, 8, "WAVE")) {
        return refused("This file is not a WAV recording.");
    }
    std::size_t at = 12;
    bool haveFormat = false;
    std::uint16_t format = 0;
    std::uint16_t channels = 0;
    std::uint32_t rate = 0;
    std::uint16_t bits = 0;
    while (at + 8 <= bytes.size()) {
        const std::uint32_t size = le32(bytes, at + 4);
        const std::size_t body = at + 8;
        if (tagAt(bytes, at, "fmt ") && size >= 16 && body + 16 <= bytes.size()) {
            format = le16(bytes, body);
            channels = le16(bytes, body + 2);
            rate = le32(bytes, body + 4);
            bits = le16(bytes, body + 14);
            // WAVE_FORMAT_EXTENSIBLE keeps the real format in its sub-format GUID.
            if (format == 0xFFFE && size >= 26 && body + 26 <= bytes.size()) {
                format = le16(bytes, body + 24);
            }
            haveFormat = true;
        } else if (tagAt(bytes, at, "data")) {
            if (!haveFormat) {
                return refused("This WAV file has no format description before its audio.");
            }
            if (format != 1 || bits != 16) {
                return refused("This WAV file holds " + std::to_string(bits) + "-bit " +
                               (format == 3 ? "floating-point" : "non-PCM") + " audio.");
            }
            if (channels == 0 || rate < 4000 || rate > 192000) {
                return refused("This WAV file's channel count or sample rate is not usable.");
            }
            // A recorder that stopped early may leave a size larger than the file.
            const std::size_t available = std::min<std::size_t>(size, bytes.size() - body);
            const std::size_t frames = available / (2u * channels);
            std::vector<std::int16_t> mono(frames);
            for (std::size_t f = 0; f < frames; ++f) {
                long sum = 0;
                for (std::size_t c = 0; c < channels; ++c) {
                    sum += static_cast<std::int16_t>(le16(bytes, body + (f * channels + c) * 2));
                }
                mono[f] = static_cast<std::int16_t>(sum / long(channels));
            }
            return resampled(mono, int(rate), recognizerSampleRate);
        }
        // Chunks are padded to an even size.
        at = body + size + (size & 1u);
    }
    return refused("This WAV file has no audio.");
}

} // namespace daywyn
