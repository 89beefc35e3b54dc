#include "voice/qt/VoiceReviewController.h"

#include <cmath>

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTimer>
#include <gtest/gtest.h>

#include "base/Calendar.h"
#include "store/TodayTaskStore.h"
#include "support/FakeMicrophoneSource.h"
#include "support/FakeRepository.h"
#include "support/FakeSpeechRecognizer.h"
#include "support/qt/QtTestSupport.h"
#include "voice/VoiceCaptureTexts.h"
#include "voice/qt/VoiceCaptureManager.h"

namespace daywyn {
namespace {

using test::FakeMicrophoneSource;
using test::FakeSpeechRecognizer;
using test::waitUntil;

// The screen over fake devices and a store in memory, at a fixed time.
struct ScreenUnderTest {
    Calendar calendar;
    test::ManualClock clock{*parseIsoText("2026-03-04T08:15:00Z")};
    FakeSpeechRecognizer recognizer;
    FakeMicrophoneSource microphone;
    test::FakeRepository* repo = nullptr;
    std::unique_ptr<TodayTaskStore> store;
    std::unique_ptr<VoiceCaptureManager> voice;
    std::unique_ptr<VoiceReviewController> screen;

    ScreenUnderTest() {
        auto repository = test::FakeRepository::holding(PersistedState{});
        repo = repository.get();
        store = std::make_unique<TodayTaskStore>(std::move(repository), clock.now(), calendar);
        voice = std::make_unique<VoiceCaptureManager>(
            recognizer, microphone,
            VoiceCaptureHooks{
                [] { return SpeechAuthorization::authorized; }, [] { return true; }, {}});
        screen = std::make_unique<VoiceReviewController>(
            *voice,
            [this](const std::vector<VoiceTaskCandidate>& candidates) {
                return store->addVoiceTasks(candidates, clock.now(), calendar);
            },
            calendar, clock.function());
    }

    // Presses the microphone button and waits for Listening.
    void listen() {
        screen->toggleCapture();
        EXPECT_EQ(screen->phase(), "starting");
        EXPECT_EQ(screen->statusText(), "Preparing microphone…");
        ASSERT_TRUE(waitUntil([this] { return screen->phase() == "listening"; }));
    }
    void speak(const std::string& words) { recognizer.sendPartial(words); }
    QStringList titles() const {
        QStringList list;
        for (const auto& c : screen->candidateList()) {
            list << QString::fromStdString(c.title);
        }
        return list;
    }
};

TEST(VoiceReviewController, AFinalResultHalfASecondAfterStopOpensTheReviewWithoutNotice) {
    ScreenUnderTest t;
    t.listen();
    EXPECT_EQ(t.screen->statusText(), "Waiting for speech…");
    t.microphone.deliver(FakeMicrophoneSource::bufferWithPeak(3000));
    EXPECT_EQ(t.screen->audioText(), "Microphone audio detected");
    t.speak("buy milk call the");

    t.screen->toggleCapture();
    EXPECT_EQ(t.screen->phase(), "finalizing");
    QTimer::singleShot(500, [&t] {
        t.recognizer.sendFinal({{"buy", 0.1, 0.3},
                                {"milk", 0.4, 0.4},
                                {"call", 2.0, 0.3},
                                {"mom", 2.3, 0.3},
                                {"tomorrow", 2.6, 0.5},
                                {"at", 3.1, 0.1},
                                {"five", 3.2, 0.3},
                                {"pm", 3.5, 0.3}});
    });
    ASSERT_TRUE(waitUntil([&t] { return t.screen->isReviewing(); }));
    EXPECT_EQ(t.screen->reviewNotice(), "");
    EXPECT_EQ(t.titles(), (QStringList{"Buy milk", "Call mom"}));
    EXPECT_EQ(t.screen->candidates().at(1).toMap().value("when").toString(), "tomorrow 17:00");
}

TEST(VoiceReviewController, WithoutAFinalResultTheReviewOpensAfterAboutASecondWithThePartial) {
    ScreenUnderTest t;
    t.listen();
    t.speak("water the plants next task email sam");
    QElapsedTimer elapsed;
    elapsed.start();
    t.screen->toggleCapture();
    ASSERT_TRUE(waitUntil([&t] { return t.screen->isReviewing(); }));
    // 39 waits of 25 ms; a loaded machine only makes it later.
    EXPECT_GE(elapsed.elapsed(), 39 * 25);
    EXPECT_EQ(t.screen->reviewNotice(), voicetext::finalDidNotArrive);
    EXPECT_EQ(t.titles(), (QStringList{"Water the plants", "Email sam"}));
    EXPECT_EQ(t.recognizer.cancels, 1) << "the abandoned recognition is cancelled";

    // The final result arriving now changes nothing.
    t.recognizer.sendFinalFor(t.recognizer.lastGeneration, "something else");
    EXPECT_EQ(t.voice->transcript(), "water the plants next task email sam");
}

TEST(VoiceReviewController, AnEmptyFinalAfterWordsKeepsTheWordsAndSaysSo) {
    ScreenUnderTest t;
    t.listen();
    t.speak("book flights");
    t.screen->toggleCapture();
    t.recognizer.sendFinal({});
    ASSERT_TRUE(waitUntil([&t] { return t.screen->isReviewing(); }));
    EXPECT_EQ(t.screen->reviewNotice(), voicetext::finalWasEmpty);
    EXPECT_EQ(t.titles(), QStringList{"Book flights"});
}

TEST(VoiceReviewController, SavesTheEditedListInOneStepAndKeepsItOnFailure) {
    ScreenUnderTest t;
    t.listen();
    t.speak("buy milk next task call the bank next task pay rent");
    t.screen->toggleCapture();
    t.recognizer.sendFinal({{"buy milk next task call the bank next task pay rent", 0, 3}});
    ASSERT_TRUE(waitUntil([&t] { return t.screen->isReviewing(); }));
    ASSERT_EQ(t.titles().size(), 3);

    t.screen->setCandidateTitle(0, "Buy oat milk");
    t.screen->removeCandidate(2);
    t.repo->failNextSaves(1, "Disk full");
    EXPECT_FALSE(t.screen->save());
    EXPECT_EQ(t.screen->saveError(),
              "Daywyn could not save your voice tasks. Please try again: Disk full");
    EXPECT_EQ(t.titles(), (QStringList{"Buy oat milk", "Call the bank"}));
    EXPECT_TRUE(t.store->tasks().empty());

    QSignalSpy closed(t.screen.get(), &VoiceReviewController::closeRequested);
    EXPECT_TRUE(t.screen->save());
    ASSERT_EQ(t.store->tasks().size(), 2u);
    EXPECT_EQ(t.store->tasks()[0].title, "Buy oat milk");
    EXPECT_EQ(t.store->tasks()[1].title, "Call the bank");
    EXPECT_EQ(closed.count(), 1);
    EXPECT_EQ(t.screen->phase(), "idle");
    EXPECT_EQ(t.voice->transcript(), "") << "a new capture starts empty";
}

TEST(VoiceReviewController, BlankTitlesOrNoWordsLeaveNothingToSave) {
    ScreenUnderTest t;
    t.listen();
    t.speak("buy milk");
    t.screen->toggleCapture();
    t.recognizer.sendFinal({{"buy", 0, 0.3}, {"milk", 0.3, 0.3}});
    ASSERT_TRUE(waitUntil([&t] { return t.screen->isReviewing(); }));
    t.screen->setCandidateTitle(0, "   ");
    EXPECT_FALSE(t.screen->save());
    EXPECT_EQ(t.screen->saveError(), "Add at least one task title before saving.");

    ScreenUnderTest silent;
    silent.listen();
    silent.screen->toggleCapture();
    silent.recognizer.sendFinal({});
    ASSERT_TRUE(waitUntil([&silent] { return silent.screen->isReviewing(); }));
    EXPECT_EQ(silent.screen->emptyReviewText(),
              "No task titles were found. Go back and try speaking again.");
    EXPECT_EQ(silent.screen->reviewNotice(), voicetext::nothingRecognized);
}

TEST(VoiceReviewController, StopBeforeListeningAndClosingMidCaptureLeaveNothingRunning) {
    ScreenUnderTest t;
    t.screen->toggleCapture();
    EXPECT_EQ(t.screen->phase(), "starting");
    t.screen->toggleCapture(); // pressed again before Listening appeared
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    EXPECT_EQ(t.screen->phase(), "idle");
    EXPECT_EQ(t.recognizer.begins, 0);
    EXPECT_FALSE(t.microphone.running);

    t.listen();
    t.speak("call mom");
    t.screen->close();
    EXPECT_FALSE(t.microphone.running);
    EXPECT_EQ(t.screen->phase(), "idle");
    t.recognizer.sendFinalFor(t.recognizer.lastGeneration, "call mom");
    EXPECT_EQ(t.voice->transcript(), "") << "a closed capture's late words are dropped";
}

TEST(VoiceReviewController, ATenMinuteRecordingEndsInReviewWithEveryTaskAndKeepsTheLoopFree) {
    // Ten minutes of 16 kHz audio in the microphone's 1024-sample buffers, a task spoken
    // every 20 seconds with the recogniser's partial growing as it goes; the fake ports
    // let it run in far less than ten minutes.
    ScreenUnderTest t;
    t.listen();
    constexpr int kTasks = 30;
    constexpr std::size_t kBuffer = 1024;
    constexpr std::size_t kSamples = 10 * 60 * 16000;
    const auto taskWords = [](int n) {
        return "call client number " + std::to_string(n);
    };
    std::string partial;
    std::vector<TranscriptSegment> segments;
    int loopTicks = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&loopTicks] { ++loopTicks; });
    ticker.start(0);
    int nextTask = 0;
    for (std::size_t sent = 0; sent < kSamples; sent += kBuffer) {
        const double seconds = static_cast<double>(sent) / 16000.0;
        // Speech for the first two seconds of every twenty, silence between.
        const bool speaking = std::fmod(seconds, 20.0) < 2.0;
        t.microphone.deliver(FakeMicrophoneSource::bufferWithPeak(speaking ? 4000 : 10, kBuffer));
        if (speaking && nextTask == static_cast<int>(seconds / 20.0)) {
            const std::string words = taskWords(nextTask);
            partial += (partial.empty() ? "" : " ") + words;
            t.speak(partial);
            double at = nextTask * 20.0;
            for (const char* word : {"call", "client", "number"}) {
                segments.push_back({word, at, 0.3});
                at += 0.35;
            }
            segments.push_back({std::to_string(nextTask), at, 0.3});
            ++nextTask;
        }
        if (sent % (kBuffer * 64) == 0) {
            QCoreApplication::processEvents();
        }
    }
    ASSERT_EQ(nextTask, kTasks);
    EXPECT_EQ(t.recognizer.samplesAppended, (kSamples + kBuffer - 1) / kBuffer * kBuffer);
    EXPECT_EQ(t.screen->phase(), "listening");
    EXPECT_EQ(t.voice->transcript().toStdString(), partial);
    // The event loop kept running while the audio came in.
    EXPECT_GT(loopTicks, 100);

    t.screen->toggleCapture();
    EXPECT_EQ(t.screen->phase(), "finalizing");
    const int ticksBeforeFinal = loopTicks;
    QTimer::singleShot(200, [&t, &segments] { t.recognizer.sendFinal(segments); });
    ASSERT_TRUE(waitUntil([&t] { return t.screen->isReviewing(); }));
    EXPECT_GT(loopTicks, ticksBeforeFinal) << "the wait for the final result never blocks";
    EXPECT_EQ(t.screen->reviewNotice(), "");
    ASSERT_EQ(t.titles().size(), kTasks);
    EXPECT_EQ(t.titles().front(), "Call client number 0");
    EXPECT_EQ(t.titles().back(), "Call client number 29");
    // The whole transcript is kept, one pause marker between each two tasks.
    const std::string transcript = t.voice->transcript().toStdString();
    EXPECT_EQ(std::count(transcript.begin(), transcript.end(), '|'), kTasks - 1);
    EXPECT_FALSE(t.microphone.running);

    // And it saves in one step.
    EXPECT_TRUE(t.screen->save());
    EXPECT_EQ(t.store->tasks().size(), static_cast<std::size_t>(kTasks));
}

} // namespace
} // namespace daywyn
