#include "voice/qt/PocketSphinxRecognizer.h"

#include <fstream>
#include <iterator>

#include <QCoreApplication>
#include <QThread>
#include <gtest/gtest.h>

#include "support/SpokenPhrases.h"
#include "support/qt/QtTestSupport.h"
#include "support/qt/SlowWait.h"
#include "voice/PauseMarkers.h"
#include "voice/WavAudio.h"

namespace daywyn {
namespace {

// Records every report with the thread it arrived on.
struct RecordingListener : SpeechRecognitionListener {
    struct Report {
        std::uint64_t generation;
        std::string kind;
        std::string text;
        bool onMainThread;
    };
    std::vector<Report> reports;
    bool ended(std::uint64_t generation) const {
        return std::any_of(reports.begin(), reports.end(), [generation](const Report& r) {
            return r.generation == generation && r.kind == "end";
        });
    }
    bool main() const { return QThread::currentThread() == QCoreApplication::instance()->thread(); }
    void recognitionResult(std::uint64_t g, SpeechRecognitionResult r) override {
        reports.push_back(
            {g, r.isFinal ? "final" : "partial", transcriptWithPauseMarkers(r.segments), main()});
    }
    void recognitionFailed(std::uint64_t g, std::string d) override {
        reports.push_back({g, "failed", d, main()});
    }
    void recognitionEnded(std::uint64_t g) override { reports.push_back({g, "end", "", main()}); }
};

std::vector<std::int16_t> goForward() {
    std::ifstream file(test::goForwardRecording(), std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file),
                                          std::istreambuf_iterator<char>()};
    return recognizerAudioFromWav(bytes).value();
}

void feed(PocketSphinxRecognizer& recognizer, const std::vector<std::int16_t>& audio) {
    for (std::size_t at = 0; at < audio.size(); at += 1024) {
        recognizer.append(
            std::span(audio).subspan(at, std::min<std::size_t>(1024, audio.size() - at)));
    }
}

TEST(PocketSphinxRecognizer, DecodesOnItsWorkerAndReportsOnTheMainThreadWithTheGeneration) {
    PocketSphinxRecognizer recognizer(SpeechModel::installed());
    RecordingListener listener;
    ASSERT_FALSE(recognizer.begin(7, listener));
    feed(recognizer, goForward());
    recognizer.endAudio();
    ASSERT_TRUE(test::waitLongUntil([&] { return listener.ended(7); }));

    ASSERT_GE(listener.reports.size(), 2u);
    const auto& final = listener.reports[listener.reports.size() - 2];
    EXPECT_EQ(final.kind, "final");
    EXPECT_EQ(final.text, "go forward ten meters");
    for (const auto& r : listener.reports) {
        EXPECT_EQ(r.generation, 7u);
        EXPECT_TRUE(r.onMainThread) << r.kind;
    }
    EXPECT_EQ(listener.reports.front().kind, "partial") << "words show while audio arrives";
}

TEST(PocketSphinxRecognizer, ACancelledRecognitionReportsNothingMore) {
    PocketSphinxRecognizer recognizer(SpeechModel::installed());
    RecordingListener listener;
    const auto audio = goForward();
    ASSERT_FALSE(recognizer.begin(1, listener));
    feed(recognizer, audio);
    recognizer.cancel();
    recognizer.endAudio(); // a Stop after the cancel changes nothing

    ASSERT_FALSE(recognizer.begin(2, listener));
    feed(recognizer, audio);
    recognizer.endAudio();
    ASSERT_TRUE(test::waitLongUntil([&] { return listener.ended(2); }));
    for (const auto& r : listener.reports) {
        EXPECT_TRUE(r.generation == 2 || r.kind == "partial")
            << "generation " << r.generation << " " << r.kind;
    }
    EXPECT_EQ(listener.reports[listener.reports.size() - 2].text, "go forward ten meters");
}

TEST(PocketSphinxRecognizer, AMissingModelIsUnavailableAndFailsWithASentence) {
    SpeechModel missing = SpeechModel::installed();
    missing.acousticModel = "/nonexistent";
    PocketSphinxRecognizer recognizer(missing);
    EXPECT_FALSE(recognizer.isAvailable());
    RecordingListener listener;
    ASSERT_FALSE(recognizer.begin(3, listener));
    ASSERT_TRUE(test::waitLongUntil([&] { return listener.ended(3); }));
    EXPECT_EQ(listener.reports.front().kind, "failed");
    EXPECT_EQ(listener.reports.front().text,
              "The speech model is not installed (apt install pocketsphinx-en-us).");
}

} // namespace
} // namespace daywyn
