#include "voice/sphinx/TranscribeCommand.h"

#include <sstream>

#include <gtest/gtest.h>

#include "base/Calendar.h"
#include "support/Process.h"
#include "support/SpokenPhrases.h"

namespace daywyn {
namespace {

struct Transcribed {
    int status;
    std::string out;
    std::string err;
};

Transcribed transcribe(std::vector<std::string> args) {
    args.insert(args.begin(), "transcribe");
    std::ostringstream out;
    std::ostringstream err;
    const int status =
        runTranscribeCommand(args, *parseIsoText("2026-03-04T08:15:00Z"), Calendar(), out, err);
    return {status, out.str(), err.str()};
}

TEST(TranscribeCommand, PrintsTheTranscriptAndTheTasksOfARecording) {
    if (!test::canMakeSpokenPhrases()) {
        GTEST_SKIP() << "flite and sox are needed to speak the phrases";
    }
    const auto list = test::spokenList({"buy milk", "call mom tomorrow at ten am"}, 1.8);

    const auto plain = transcribe({list});
    EXPECT_EQ(plain.status, 0) << plain.err;
    EXPECT_EQ(plain.out, "buy milk | call mom tomorrow at ten am\n");

    const auto tasks = transcribe({"--tasks", list});
    EXPECT_EQ(tasks.out, "buy milk | call mom tomorrow at ten am\n"
                         "1. Buy milk\n"
                         "2. Call mom  (tomorrow 10:00)\n");

    const auto json = transcribe({"--json", "--tasks", list});
    EXPECT_NE(json.out.find(R"("transcript":"buy milk | call mom tomorrow at ten am")"),
              std::string::npos);
    EXPECT_NE(json.out.find(R"({"title":"Call mom","scheduledDay":"2026-03-04T18:15:00Z")"),
              std::string::npos)
        << json.out;
    EXPECT_NE(json.out.find(R"("segments":[{"text":"buy","timestamp":)"), std::string::npos);
}

TEST(TranscribeCommand, RefusesWhatItCannotReadWithASentence) {
    const std::string folder = test::makeTempFolder();
    test::writeFile(folder + "/notes.txt", "buy milk");
    const auto text = transcribe({folder + "/notes.txt"});
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.err, "This file is not a WAV recording. Daywyn reads 16-bit PCM WAV "
                        "recordings (16 kHz mono is best; other rates and channel counts are "
                        "converted).\n");

    const std::string eightBit = folder + "/eight.wav";
    ASSERT_EQ(test::runProcess({"/usr/bin/sox", "-D", "-n", "-r", "8000", "-b", "8", "-c", "1",
                                eightBit, "trim", "0", "0.5"})
                  .status,
              0);
    EXPECT_NE(transcribe({eightBit}).err.find("This WAV file holds 8-bit non-PCM audio."),
              std::string::npos);

    EXPECT_EQ(transcribe({folder + "/missing.wav"}).err,
              "Daywyn could not open " + folder + "/missing.wav.\n");
    EXPECT_EQ(transcribe({}).status, 2);
    EXPECT_EQ(transcribe({"--loud", "x.wav"}).err,
              "daywyn transcribe: Unknown option --loud. Run 'daywyn transcribe --help' for "
              "usage.\n");
}

#ifdef DAYWYN_BINARY_PATH
TEST(TranscribeCommand, RunsAsAVerbOfTheProgramAndSaysWhenTheModelIsMissing) {
    const auto recording = test::goForwardRecording();
    const auto heard = test::runProcess({DAYWYN_BINARY_PATH, "transcribe", recording});
    EXPECT_EQ(heard.status, 0) << heard.err;
    EXPECT_EQ(heard.out, "go forward ten meters\n");

    const auto missing = test::runProcess({DAYWYN_BINARY_PATH, "transcribe", recording},
                                          {{"DAYWYN_SPEECH_MODEL_DIR", "/nonexistent"}});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "Daywyn could not transcribe " + recording +
                               ": The speech model is not installed (apt install "
                               "pocketsphinx-en-us).\n");
}
#endif

} // namespace
} // namespace daywyn
