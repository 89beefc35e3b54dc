// Arbitrary bytes as the WAV file of `daywyn transcribe`: reading never crashes, hangs or
// reads past the bytes, whatever the header claims; a refusal is a sentence, and audio
// that is read is never longer than the bytes could hold once resampled to 16 kHz.
#include "voice/WavAudio.h"

#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace daywyn;
    const auto audio = recognizerAudioFromWav(std::span<const std::uint8_t>(data, size));
    if (!audio) {
        if (audio.error().empty() || audio.error().back() != '.') {
            std::abort();
        }
        return 0;
    }
    // The slowest rate that still resamples (1 Hz) could stretch each input sample to
    // 16,000: anything beyond that came from nowhere.
    if (audio.value().size() > (size / 2 + 1) * recognizerSampleRate) {
        std::abort();
    }
    return 0;
}
