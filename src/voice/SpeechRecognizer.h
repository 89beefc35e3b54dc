#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "voice/TranscriptSegment.h"

namespace daywyn {

// One recognition update: the best transcription so far (partial) or the last one.
struct SpeechRecognitionResult {
    std::vector<TranscriptSegment> segments;
    bool isFinal = false;
    bool operator==(const SpeechRecognitionResult&) const = default;
};

// Receives what a recogniser hears. Every call carries the generation the recognition
// was begun with, so that the receiver can ignore an abandoned one; calls arrive on the
// receiver's own (main) thread.
class SpeechRecognitionListener {
public:
    virtual ~SpeechRecognitionListener() = default;
    virtual void recognitionResult(std::uint64_t generation, SpeechRecognitionResult result) = 0;
    virtual void recognitionFailed(std::uint64_t generation, std::string description) = 0;
    // The recognition is over (after its final result, a failure, or without either).
    virtual void recognitionEnded(std::uint64_t generation) = 0;
};

// The device's speech recogniser: fed 16 kHz mono 16-bit audio, it reports partial
// transcripts while audio arrives and timed segments once the audio has ended.
class SpeechRecognizer {
public:
    virtual ~SpeechRecognizer() = default;
    // Whether recognition can run at all (the speech model is installed).
    virtual bool isAvailable() const = 0;
    // Begins a recognition whose reports go to `listener` with `generation`; the
    // description of the failure when it cannot begin.
    virtual std::optional<std::string> begin(std::uint64_t generation,
                                             SpeechRecognitionListener& listener) = 0;
    // Queues audio of the running recognition; never blocks on decoding.
    virtual void append(std::span<const std::int16_t> samples) = 0;
    // No more audio: the final result follows, then the end.
    virtual void endAudio() = 0;
    // Abandons the running recognition: nothing more is reported for it.
    virtual void cancel() = 0;
};

} // namespace daywyn
