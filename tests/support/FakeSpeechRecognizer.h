#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "voice/SpeechRecognizer.h"

namespace daywyn::test {

// A recogniser that records what it is asked and reports only what the test tells it
// to, with any generation the test chooses (so late reports can be simulated).
class FakeSpeechRecognizer : public SpeechRecognizer {
public:
    bool available = true;
    std::optional<std::string> beginFailure;

    int begins = 0;
    int endAudioCalls = 0;
    int cancels = 0;
    std::size_t samplesAppended = 0;
    std::uint64_t lastGeneration = 0;
    SpeechRecognitionListener* listener = nullptr;

    bool isAvailable() const override { return available; }
    std::optional<std::string> begin(std::uint64_t generation,
                                     SpeechRecognitionListener& l) override;
    void append(std::span<const std::int16_t> samples) override;
    void endAudio() override { ++endAudioCalls; }
    void cancel() override { ++cancels; }

    // Reports as the recogniser would, by default for the latest recognition.
    void sendPartial(const std::string& words);
    void sendFinal(const std::vector<TranscriptSegment>& segments);
    void sendFinalFor(std::uint64_t generation, const std::string& words);
    void sendFailure(const std::string& description);
    void sendEnd();
};

} // namespace daywyn::test
