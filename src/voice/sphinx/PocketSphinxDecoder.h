#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/Result.h"
#include "voice/SpeechDecoder.h"
#include "voice/TranscriptSegment.h"
#include "voice/sphinx/SpeechModel.h"

namespace daywyn {

// One pocketsphinx decoder: not thread-safe, meant to live on one worker thread. It
// hears 16 kHz mono 16-bit audio and gives the best hypothesis so far while audio
// arrives and timed words at the end; silence keeps its length, so pauses survive.
class PocketSphinxDecoder final : public SpeechDecoder {
public:
    static constexpr int sampleRate = 16000;
    static constexpr std::size_t chunkSamples = 1024;

    // Loads the model (about a second); the failure as a sentence.
    static Result<std::unique_ptr<PocketSphinxDecoder>> open(const SpeechModel& model);
    ~PocketSphinxDecoder() override;
    PocketSphinxDecoder(const PocketSphinxDecoder&) = delete;
    PocketSphinxDecoder& operator=(const PocketSphinxDecoder&) = delete;

    void startUtterance() override;
    // Decodes more audio of the current utterance.
    void process(std::span<const std::int16_t> samples) override;
    // The words heard so far, fillers dropped, lower case ("call the dentist").
    std::string partialHypothesis() override;
    // The same words with their times so far, so that pauses show before the end.
    std::vector<TranscriptSegment> partialSegments() override;
    // Ends the utterance: its words with their times (100 frames a second).
    std::vector<TranscriptSegment> finishUtterance() override;
    bool inUtterance() const override { return inUtterance_; }

private:
    struct Handle;
    explicit PocketSphinxDecoder(std::unique_ptr<Handle> handle);
    std::unique_ptr<Handle> handle_;
    bool inUtterance_ = false;
};

// A recogniser word as the user should read it: nothing for silence and noise
// ("<sil>", "<s>", "[NOISE]", "++UH++"), and no alternative-pronunciation mark
// ("read(2)" → "read").
std::optional<std::string> spokenWord(std::string_view recognizerWord);

// Decodes a whole recording at once: its words with their times.
std::vector<TranscriptSegment> decodeRecording(PocketSphinxDecoder& decoder,
                                               std::span<const std::int16_t> samples);

} // namespace daywyn
