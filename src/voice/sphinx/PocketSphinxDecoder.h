#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/Result.h"
#include "voice/TranscriptSegment.h"

namespace daywyn {

// Where the US English speech model and our task-phrase language model live.
struct SpeechModel {
    std::string acousticModel;     // folder with mdef, means, …
    std::string dictionary;        // pronunciations
    std::string languageModel;     // the generic model (en-us.lm.bin)
    std::string taskLanguageModel; // ARPA text; empty: the generic model alone
    // Share of the task model in the mixture with the generic one (0 … 1).
    float taskWeight = 0.7F;
    // Further decoder options ("-beam", "1e-40", …), after ours.
    std::vector<std::string> options;

    // The installed model: $DAYWYN_SPEECH_MODEL_DIR or Debian's pocketsphinx-en-us
    // folder, with the task model found beside the program (or $DAYWYN_TASK_LM).
    static SpeechModel installed();
    // Whether the acoustic model, dictionary and generic language model exist.
    bool isInstalled() const;
};

// One pocketsphinx decoder: not thread-safe, meant to live on one worker thread. It
// hears 16 kHz mono 16-bit audio and gives the best hypothesis so far while audio
// arrives and timed words at the end; silence keeps its length, so pauses survive.
class PocketSphinxDecoder {
public:
    static constexpr int sampleRate = 16000;
    static constexpr std::size_t chunkSamples = 1024;

    // Loads the model (about a second); the failure as a sentence.
    static Result<std::unique_ptr<PocketSphinxDecoder>> open(const SpeechModel& model);
    ~PocketSphinxDecoder();
    PocketSphinxDecoder(const PocketSphinxDecoder&) = delete;
    PocketSphinxDecoder& operator=(const PocketSphinxDecoder&) = delete;

    void startUtterance();
    // Decodes more audio of the current utterance.
    void process(std::span<const std::int16_t> samples);
    // The words heard so far, fillers dropped, lower case ("call the dentist").
    std::string partialHypothesis();
    // The same words with their times so far, so that pauses show before the end.
    std::vector<TranscriptSegment> partialSegments();
    // Ends the utterance: its words with their times (100 frames a second).
    std::vector<TranscriptSegment> finishUtterance();
    bool inUtterance() const { return inUtterance_; }

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
