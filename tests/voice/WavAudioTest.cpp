#include "voice/WavAudio.h"

#include <cmath>
#include <functional>
#include <numbers>
#include <string>

#include <gtest/gtest.h>

namespace daywyn {
namespace {

// A WAV file's bytes: PCM of the given shape with `frames` frames of `sample(frame,
// channel)`, optionally with an extra chunk before the audio.
std::vector<std::uint8_t> wav(int rate, int channels, int bits, int format, std::size_t frames,
                              const std::function<int(std::size_t, int)>& sample,
                              bool extraChunk = false) {
    std::vector<std::uint8_t> b;
    auto put = [&b](std::uint32_t v, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
        }
    };
    auto tag = [&b](const char* t) {
        for (int i = 0; i < 4; ++i) {
            b.push_back(static_cast<std::uint8_t>(t[i]));
        }
    };
    const std::uint32_t dataSize = std::uint32_t(frames * channels * (bits / 8));
    tag("RIFF");
    put(0, 4); // a size recorders often leave wrong; never relied on
    tag("WAVE");
    tag("fmt ");
    put(16, 4);
    put(std::uint32_t(format), 2);
    put(std::uint32_t(channels), 2);
    put(std::uint32_t(rate), 4);
    put(std::uint32_t(rate * channels * bits / 8), 4);
    put(std::uint32_t(channels * bits / 8), 2);
    put(std::uint32_t(bits), 2);
    if (extraChunk) {
        tag("LIST");
        put(3, 4);
        tag("abc"); // three bytes of body and the pad byte of an odd size
    }
    tag("data");
    put(dataSize, 4);
    for (std::size_t f = 0; f < frames; ++f) {
        for (int c = 0; c < channels; ++c) {
            put(std::uint32_t(sample(f, c)), bits / 8);
        }
    }
    return b;
}

// Sign changes per second: twice the frequency of a pure tone.
double zeroCrossingsPerSecond(const std::vector<std::int16_t>& s, int rate) {
    int crossings = 0;
    for (std::size_t i = 1; i < s.size(); ++i) {
        crossings += (s[i - 1] < 0) != (s[i] < 0);
    }
    return crossings * double(rate) / double(s.size());
}

double rms(const std::vector<std::int16_t>& s) {
    double sum = 0;
    for (auto v : s) {
        sum += double(v) * v;
    }
    return std::sqrt(sum / double(s.size()));
}

std::function<int(std::size_t, int)> tone(double hz, int rate, double amplitude = 10000) {
    return [=](std::size_t f, int) {
        return int(std::lround(amplitude * std::sin(2 * std::numbers::pi * hz * f / rate)));
    };
}

TEST(WavAudio, ReadsRecognizerAudioAndAveragesChannels) {
    const auto mono = recognizerAudioFromWav(wav(
        16000, 1, 16, 1, 4, [](std::size_t f, int) { return int(f) * 100 - 150; }, true));
    ASSERT_TRUE(mono) << mono.error();
    EXPECT_EQ(mono.value(), (std::vector<std::int16_t>{-150, -50, 50, 150}));

    const auto stereo = recognizerAudioFromWav(
        wav(16000, 2, 16, 1, 3, [](std::size_t, int c) { return c == 0 ? 1000 : -3000; }));
    ASSERT_TRUE(stereo);
    EXPECT_EQ(stereo.value(), (std::vector<std::int16_t>{-1000, -1000, -1000}));
}

TEST(WavAudio, ResamplesOtherRatesKeepingTheVoiceAndDroppingWhatCannotBeHeld) {
    for (int rate : {8000, 22050, 44100, 48000}) {
        SCOPED_TRACE(rate);
        const auto audio = recognizerAudioFromWav(wav(rate, 1, 16, 1, rate, tone(440, rate)));
        ASSERT_TRUE(audio);
        EXPECT_NEAR(double(audio.value().size()), 16000, 1) << "one second stays one second";
        EXPECT_NEAR(zeroCrossingsPerSecond(audio.value(), 16000), 880, 10);
        EXPECT_NEAR(rms(audio.value()), 10000 / std::sqrt(2.0), 400);
    }
    // 12 kHz is above what 16 kHz can hold: filtered out, not folded down to 4 kHz.
    const auto high = recognizerAudioFromWav(wav(48000, 1, 16, 1, 48000, tone(12000, 48000)));
    ASSERT_TRUE(high);
    EXPECT_LT(rms(high.value()), 300);
}

TEST(WavAudio, RefusesWhatItCannotConvertWithASentence) {
    const std::string needed = " Daywyn reads 16-bit PCM WAV recordings (16 kHz mono is best; "
                               "other rates and channel counts are converted).";
    const std::vector<std::uint8_t> text = {'h', 'e', 'l', 'l', 'o'};
    EXPECT_EQ(recognizerAudioFromWav(text).error(), "This file is not a WAV recording." + needed);
    EXPECT_EQ(recognizerAudioFromWav(wav(16000, 1, 8, 1, 10, tone(440, 16000, 50))).error(),
              "This WAV file holds 8-bit non-PCM audio." + needed);
    EXPECT_EQ(recognizerAudioFromWav(wav(16000, 1, 32, 3, 10, tone(440, 16000, 0))).error(),
              "This WAV file holds 32-bit floating-point audio." + needed);
    auto headerOnly = wav(16000, 1, 16, 1, 0, tone(440, 16000));
    headerOnly.resize(36);
    EXPECT_EQ(recognizerAudioFromWav(headerOnly).error(), "This WAV file has no audio." + needed);
}

TEST(WavAudio, ATruncatedRecordingKeepsTheAudioThatIsThere) {
    auto bytes = wav(16000, 1, 16, 1, 100, tone(440, 16000));
    bytes.resize(bytes.size() - 51); // stopped mid-sample: 74 whole samples remain
    const auto audio = recognizerAudioFromWav(bytes);
    ASSERT_TRUE(audio);
    EXPECT_EQ(audio.value().size(), 74u);
}

} // namespace
} // namespace daywyn
