#include <algorithm>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "parsing/VoiceTaskParser.h"
#include "support/Process.h"
#include "support/SpokenPhrases.h"
#include "voice/PauseMarkers.h"
#include "voice/WavAudio.h"
#include "voice/sphinx/PocketSphinxDecoder.h"

namespace daywyn {
namespace {

std::vector<std::int16_t> audioOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file),
                                          std::istreambuf_iterator<char>()};
    auto audio = recognizerAudioFromWav(bytes);
    EXPECT_TRUE(audio) << path << ": " << (audio ? "" : audio.error());
    return audio ? audio.value() : std::vector<std::int16_t>{};
}

// One decoder for the whole program: loading the model takes most of a second.
PocketSphinxDecoder& decoder() {
    static auto opened = PocketSphinxDecoder::open(SpeechModel::installed());
    if (!opened) {
        ADD_FAILURE() << opened.error();
        std::abort();
    }
    return *opened.value();
}

TEST(PocketSphinxRecognition, DecodesTheReferenceRecordingWithOrderedWordTimes) {
    const auto segments = decodeRecording(decoder(), audioOf(test::goForwardRecording()));
    EXPECT_EQ(transcriptWithPauseMarkers(segments), "go forward ten meters");
    ASSERT_EQ(segments.size(), 4u) << "silence and fillers are not words";
    for (std::size_t i = 1; i < segments.size(); ++i) {
        EXPECT_GE(segments[i].timestamp, segments[i - 1].timestamp + segments[i - 1].duration);
    }
    // The recording is 2.3 s long; the words sit inside it.
    EXPECT_GT(segments.front().timestamp, 0.1);
    EXPECT_LT(segments.back().timestamp + segments.back().duration, 2.4);
}

TEST(PocketSphinxRecognition, PartialResultsGrowWhileAudioArrivesAndKeepPauses) {
    if (!test::canMakeSpokenPhrases()) {
        GTEST_SKIP() << "flite and sox are needed to speak the phrases";
    }
    const auto audio = audioOf(test::spokenList({"buy milk", "pay rent"}, 1.6));
    auto& d = decoder();
    d.startUtterance();
    std::vector<std::string> partials;
    for (std::size_t at = 0; at < audio.size(); at += PocketSphinxDecoder::chunkSamples) {
        d.process(std::span(audio).subspan(
            at, std::min(PocketSphinxDecoder::chunkSamples, audio.size() - at)));
        partials.push_back(transcriptWithPauseMarkers(d.partialSegments()));
    }
    EXPECT_EQ(transcriptWithPauseMarkers(d.finishUtterance()), "buy milk | pay rent");
    EXPECT_NE(std::find(partials.begin(), partials.end(), "buy milk"), partials.end());
    EXPECT_EQ(partials.back(), "buy milk | pay rent") << "the pause is there before the end";
}

TEST(PocketSphinxRecognition, PartialHypothesesGrowWhileAudioArrives) {
    const auto audio = audioOf(test::goForwardRecording());
    auto& d = decoder();
    d.startUtterance();
    std::vector<std::string> partials;
    for (std::size_t at = 0; at < audio.size(); at += PocketSphinxDecoder::chunkSamples) {
        d.process(std::span(audio).subspan(
            at, std::min(PocketSphinxDecoder::chunkSamples, audio.size() - at)));
        partials.push_back(d.partialHypothesis());
    }
    const auto final = transcriptWithPauseMarkers(d.finishUtterance());
    EXPECT_EQ(final, "go forward ten meters");
    EXPECT_EQ(partials.front(), "") << "nothing is said in the first 64 ms";
    EXPECT_NE(std::find(partials.begin(), partials.end(), "go forward"), partials.end())
        << "the words appear before the end";
}

TEST(PocketSphinxRecognition, ConvertsOtherRatesAndChannelCountsBeforeDecoding) {
    const std::string original = test::goForwardRecording();
    const std::string stereo = test::makeTempFolder() + "/stereo44.wav";
    ASSERT_EQ(
        test::runProcess({"/usr/bin/sox", "-D", original, "-r", "44100", "-c", "2", stereo}).status,
        0);
    const auto segments = decodeRecording(decoder(), audioOf(stereo));
    EXPECT_EQ(transcriptWithPauseMarkers(segments), "go forward ten meters");
}

TEST(PocketSphinxRecognition, ALongPauseBetweenSpokenTasksGivesTwoCandidates) {
    if (!test::canMakeSpokenPhrases()) {
        GTEST_SKIP() << "flite and sox are needed to speak the phrases";
    }
    const auto list = test::spokenList({"buy milk", "call the dentist at five pm"}, 2.0);
    const std::string transcript =
        transcriptWithPauseMarkers(decodeRecording(decoder(), audioOf(list)));
    EXPECT_EQ(transcript, "buy milk | call the dentist at five pm");

    const Calendar calendar;
    const Instant now = *parseIsoText("2026-03-04T08:15:00Z");
    const auto candidates = VoiceTaskParser::candidates(transcript, now, calendar);
    ASSERT_EQ(candidates.size(), 2u);
    EXPECT_EQ(candidates[0].title, "Buy milk");
    EXPECT_EQ(candidates[1].title, "Call the dentist");
    EXPECT_TRUE(candidates[1].scheduledStart);

    // Without the pause the same words stay one task.
    const auto together = test::spokenList({"buy milk", "call the dentist at five pm"}, 0.2);
    EXPECT_EQ(transcriptWithPauseMarkers(decodeRecording(decoder(), audioOf(together))).find('|'),
              std::string::npos);
}

TEST(PocketSphinxRecognition, AHundredSecondListWithLongSilencesKeepsEveryTask) {
    // Twelve tasks with eight seconds of silence between them: over 100 seconds of audio,
    // decoded in one utterance, as a long memo would be.
    if (!test::canMakeSpokenPhrases()) {
        GTEST_SKIP() << "flite and sox are needed to speak the phrases";
    }
    std::vector<std::string> phrases;
    for (int round = 0; round < 2; ++round) {
        for (const char* phrase : {"buy milk", "call the dentist at five pm", "pay the rent",
                                   "water the plants", "email sam", "walk the dog"}) {
            phrases.emplace_back(phrase);
        }
    }
    const auto audio = audioOf(test::spokenList(phrases, 8.0));
    ASSERT_GT(audio.size(), 16000u * 100);
    const std::string transcript = transcriptWithPauseMarkers(decodeRecording(decoder(), audio));
    EXPECT_EQ(std::count(transcript.begin(), transcript.end(), '|'), 11) << transcript;
    const Calendar calendar;
    const auto candidates =
        VoiceTaskParser::candidates(transcript, *parseIsoText("2026-03-04T08:15:00Z"), calendar);
    ASSERT_EQ(candidates.size(), 12u) << transcript;
    EXPECT_EQ(candidates.front().title, "Buy milk");
    EXPECT_EQ(candidates.back().title, "Walk the dog");
}

TEST(PocketSphinxRecognition, AMissingModelIsASentenceNotACrash) {
    SpeechModel missing = SpeechModel::installed();
    missing.acousticModel = "/nonexistent/en-us";
    EXPECT_FALSE(missing.isInstalled());
    auto opened = PocketSphinxDecoder::open(missing);
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error(),
              "The speech model is not installed (apt install pocketsphinx-en-us).");
}

TEST(SpokenWord, DropsFillersAndAlternativePronunciationMarks) {
    for (const char* filler : {"<s>", "</s>", "<sil>", "[NOISE]", "++UH++"}) {
        SCOPED_TRACE(filler);
        EXPECT_FALSE(spokenWord(filler));
    }
    EXPECT_EQ(spokenWord("read(2)"), "read");
    EXPECT_EQ(spokenWord("the"), "the");
    EXPECT_EQ(spokenWord("doctor's"), "doctor's");
}

} // namespace
} // namespace daywyn
