#include "support/FakeSpeechRecognizer.h"

namespace daywyn::test {

std::optional<std::string> FakeSpeechRecognizer::begin(std::uint64_t generation,
                                                       SpeechRecognitionListener& l) {
    ++begins;
    if (beginFailure) {
        return beginFailure;
    }
    lastGeneration = generation;
    listener = &l;
    return std::nullopt;
}

void FakeSpeechRecognizer::append(std::span<const std::int16_t> samples) {
    samplesAppended += samples.size();
}

void FakeSpeechRecognizer::sendPartial(const std::string& words) {
    listener->recognitionResult(lastGeneration, {{{words, 0, 1}}, false});
}

void FakeSpeechRecognizer::sendFinal(const std::vector<TranscriptSegment>& segments) {
    listener->recognitionResult(lastGeneration, {segments, true});
    listener->recognitionEnded(lastGeneration);
}

void FakeSpeechRecognizer::sendFinalFor(std::uint64_t generation, const std::string& words) {
    listener->recognitionResult(generation, {{{words, 0, 1}}, true});
    listener->recognitionEnded(generation);
}

void FakeSpeechRecognizer::sendFailure(const std::string& description) {
    listener->recognitionFailed(lastGeneration, description);
}

void FakeSpeechRecognizer::sendEnd() {
    listener->recognitionEnded(lastGeneration);
}

} // namespace daywyn::test
