#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "voice/TranscriptSegment.h"

namespace daywyn {

// A speech decoder (pocketsphinx, in daywyn-speech.so for the app): not thread-safe,
// meant to live on one worker thread. It hears 16 kHz mono 16-bit audio and gives the
// best hypothesis so far while audio arrives and timed words at the end.
class SpeechDecoder {
public:
    virtual ~SpeechDecoder() = default;

    virtual void startUtterance() = 0;
    // Decodes more audio of the current utterance.
    virtual void process(std::span<const std::int16_t> samples) = 0;
    // The words heard so far, fillers dropped, lower case ("call the dentist").
    virtual std::string partialHypothesis() = 0;
    // The same words with their times so far, so that pauses show before the end.
    virtual std::vector<TranscriptSegment> partialSegments() = 0;
    // Ends the utterance: its words with their times (100 frames a second).
    virtual std::vector<TranscriptSegment> finishUtterance() = 0;
    virtual bool inUtterance() const = 0;
};

} // namespace daywyn
