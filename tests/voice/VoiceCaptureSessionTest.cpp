#include "voice/VoiceCaptureSession.h"

#include <gtest/gtest.h>

#include "support/FakeMicrophoneSource.h"
#include "support/FakeSpeechRecognizer.h"
#include "voice/FinalizationWait.h"
#include "voice/VoiceCaptureTexts.h"

namespace daywyn {
namespace {

using test::FakeMicrophoneSource;
using test::FakeSpeechRecognizer;

// A session over fake ports whose permission answers the test can change.
struct SessionUnderTest {
    FakeSpeechRecognizer recognizer;
    FakeMicrophoneSource microphone;
    SpeechAuthorization speech = SpeechAuthorization::authorized;
    bool microphoneGranted = true;
    VoiceCaptureSession session{
        recognizer, microphone,
        VoiceCaptureHooks{[this] { return speech; }, [this] { return microphoneGranted; }, {}}};

    // Presses the microphone button and lets the startup task run.
    void start() {
        auto generation = session.preparePermissions(true);
        ASSERT_TRUE(generation);
        session.runStartup(*generation);
    }
};

TEST(VoiceCaptureSession, StartsListeningOnceBothPermissionsAreGranted) {
    SessionUnderTest t;
    auto generation = t.session.preparePermissions(true);
    ASSERT_TRUE(generation);
    EXPECT_TRUE(t.session.isStarting());
    EXPECT_FALSE(t.session.preparePermissions(true)) << "a second press while starting";

    t.session.runStartup(*generation);

    EXPECT_FALSE(t.session.isStarting());
    EXPECT_TRUE(t.session.isRecording());
    EXPECT_TRUE(t.microphone.running);
    EXPECT_EQ(t.recognizer.lastGeneration, t.session.generation());
    EXPECT_EQ(t.session.permissionSummary(), voicetext::permissionsReady);
    EXPECT_FALSE(t.session.errorMessage());
}

TEST(VoiceCaptureSession, RefusedPermissionsShowTheirSentenceMicrophoneFirst) {
    struct Case {
        const char* name;
        SpeechAuthorization speech;
        bool microphone;
        const char* message;
    };
    const Case cases[] = {
        {"both refused", SpeechAuthorization::denied, false, voicetext::microphoneRequired},
        {"microphone refused", SpeechAuthorization::authorized, false,
         voicetext::microphoneRequired},
        {"speech model missing", SpeechAuthorization::denied, true, voicetext::speechRequired},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SessionUnderTest t;
        t.speech = c.speech;
        t.microphoneGranted = c.microphone;
        t.start();
        EXPECT_EQ(t.session.errorMessage(), c.message);
        EXPECT_FALSE(t.session.isRecording());
        EXPECT_FALSE(t.session.isStarting());
        EXPECT_EQ(t.recognizer.begins, 0);
        EXPECT_EQ(t.session.permissionSummary(), voicetext::permissionsNeedAttention);
        EXPECT_EQ(t.session.shouldOfferMicrophoneSettings(), !c.microphone);
        EXPECT_EQ(t.session.shouldOfferSpeechSettings(),
                  c.speech != SpeechAuthorization::authorized);
    }
}

TEST(VoiceCaptureSession, StartFailuresAreReportedAndReleaseTheDevices) {
    {
        SessionUnderTest t;
        t.recognizer.available = false;
        t.start();
        EXPECT_EQ(t.session.errorMessage(), voicetext::notAvailable);
    }
    {
        SessionUnderTest t;
        t.microphone.startFailure = "Device or resource busy";
        t.start();
        EXPECT_EQ(t.session.errorMessage(),
                  std::string(voicetext::couldNotStart) + "Device or resource busy");
        EXPECT_EQ(t.recognizer.cancels, 1) << "the begun recognition is abandoned";
        EXPECT_FALSE(t.session.isRecording());
        EXPECT_FALSE(t.session.hasRunningRecognition());
    }
    {
        FakeSpeechRecognizer recognizer;
        FakeMicrophoneSource microphone;
        VoiceCaptureSession session(
            recognizer, microphone,
            {[] { return SpeechAuthorization::authorized; }, [] { return true; },
             [] {
                 return std::optional<std::string>("The audio engine failed");
             }});
        session.runStartup(*session.preparePermissions(true));
        EXPECT_EQ(session.errorMessage(),
                  std::string(voicetext::couldNotStart) + "The audio engine failed");
        EXPECT_FALSE(session.isStarting());
    }
}

TEST(VoiceCaptureSession, StopBeforeListeningOrASecondStopIsHarmless) {
    SessionUnderTest t;
    auto generation = t.session.preparePermissions(true);
    t.session.reset(); // the sheet closed while still "Preparing microphone…"
    t.session.runStartup(*generation);
    EXPECT_FALSE(t.session.isRecording());
    EXPECT_FALSE(t.session.isStarting());
    EXPECT_EQ(t.recognizer.begins, 0);

    t.start();
    t.session.stop();
    t.session.stop();
    EXPECT_EQ(t.recognizer.endAudioCalls, 1);
    EXPECT_FALSE(t.microphone.running);
    EXPECT_TRUE(t.session.hasRunningRecognition()) << "still finishing";
}

TEST(VoiceCaptureSession, DetectsAudioOnlyFromAPeakAboveSilence) {
    SessionUnderTest t;
    t.start();
    t.microphone.deliver(FakeMicrophoneSource::bufferWithPeak(40));
    EXPECT_FALSE(t.session.hasDetectedAudio());
    t.microphone.deliver(FakeMicrophoneSource::bufferWithPeak(-4000));
    EXPECT_TRUE(t.session.hasDetectedAudio());
    EXPECT_EQ(t.recognizer.samplesAppended, 2048u) << "silence is decoded too";
}

TEST(VoiceCaptureSession, PartialsThenTheFinalResultBecomeTheTranscriptWithPauses) {
    SessionUnderTest t;
    t.start();
    t.recognizer.sendPartial("buy milk");
    EXPECT_EQ(t.session.transcript(), "buy milk");
    t.recognizer.sendPartial("  ");
    EXPECT_EQ(t.session.transcript(), "buy milk") << "an empty partial is ignored";
    t.session.stop();
    t.recognizer.sendFinal({{"buy", 0.2, 0.3}, {"milk", 0.5, 0.4}, {"call", 2.3, 0.3}});
    EXPECT_EQ(t.session.transcript(), "buy milk | call");
    EXPECT_TRUE(t.session.didReceiveFinalResult());
    EXPECT_FALSE(t.session.hasRunningRecognition());
    EXPECT_FALSE(t.session.errorMessage());
}

TEST(VoiceCaptureSession, AnEmptyFinalResultKeepsTheEarlierWords) {
    SessionUnderTest t;
    t.start();
    t.recognizer.sendPartial("water the plants");
    t.session.stop();
    t.recognizer.sendFinal({});
    EXPECT_EQ(t.session.transcript(), "water the plants");
    EXPECT_FALSE(t.session.didReceiveFinalResult());
    EXPECT_EQ(t.session.errorMessage(), voicetext::finalWasEmpty);

    SessionUnderTest silent;
    silent.start();
    silent.session.stop();
    silent.recognizer.sendFinal({});
    EXPECT_EQ(silent.session.errorMessage(), voicetext::nothingRecognized);
}

TEST(VoiceCaptureSession, LateResultsOfAnAbandonedCaptureAreIgnored) {
    SessionUnderTest t;
    t.start();
    const auto first = t.session.generation();
    t.recognizer.sendPartial("call mom");
    t.session.stop();
    t.session.invalidateAfterMissingFinalResult();
    EXPECT_EQ(t.session.errorMessage(), voicetext::finalDidNotArrive);

    t.recognizer.sendFinalFor(first, "call mom tomorrow");
    EXPECT_EQ(t.session.transcript(), "call mom");
    EXPECT_EQ(t.session.errorMessage(), voicetext::finalDidNotArrive);

    // A new capture: the old recognition's words never reach it.
    t.session.reset();
    t.start();
    t.recognizer.sendFinalFor(first, "stale words");
    EXPECT_EQ(t.session.transcript(), "");
    EXPECT_TRUE(t.session.isRecording());
}

TEST(VoiceCaptureSession, ARecognitionFailureOrEndWithoutFinalKeepsTheTranscript) {
    SessionUnderTest t;
    t.start();
    t.recognizer.sendPartial("book flights");
    t.recognizer.sendFailure("The decoder ran out of memory");
    EXPECT_EQ(t.session.errorMessage(),
              std::string(voicetext::stopped) + "The decoder ran out of memory");
    EXPECT_FALSE(t.session.isRecording());
    EXPECT_FALSE(t.microphone.running);
    EXPECT_EQ(t.session.transcript(), "book flights");

    SessionUnderTest ended;
    ended.start();
    ended.recognizer.sendPartial("pay rent");
    ended.session.stop();
    ended.recognizer.sendEnd();
    EXPECT_EQ(ended.session.errorMessage(), voicetext::endedBeforeFinal);
    EXPECT_EQ(ended.session.transcript(), "pay rent");
}

TEST(FinalizationWait, AFinalResultWithinTheWaitLeavesNoNotice) {
    SessionUnderTest t;
    t.start();
    t.recognizer.sendPartial("buy milk");
    t.session.stop();
    FinalizationWait wait(t.session);
    for (int i = 0; i < 20; ++i) { // 0.5 s of 25 ms steps
        ASSERT_EQ(wait.advance(t.session), FinalizationWait::Outcome::keepWaiting);
    }
    t.recognizer.sendFinal({{"buy", 0, 0.3}, {"milk", 0.3, 0.3}});
    EXPECT_EQ(wait.advance(t.session), FinalizationWait::Outcome::ready);
    EXPECT_FALSE(t.session.errorMessage());
}

TEST(FinalizationWait, GivesUpAfterTheThirtyNinthWaitAndKeepsThePartial) {
    SessionUnderTest t;
    t.start();
    t.recognizer.sendPartial("call the dentist");
    t.session.stop();
    FinalizationWait wait(t.session);
    int steps = 0;
    while (wait.advance(t.session) == FinalizationWait::Outcome::keepWaiting) {
        ++steps;
    }
    EXPECT_EQ(steps, FinalizationWait::maximumWaits);
    EXPECT_EQ(t.session.errorMessage(), voicetext::finalDidNotArrive);
    EXPECT_EQ(t.session.transcript(), "call the dentist");
    EXPECT_FALSE(t.session.hasRunningRecognition());
}

TEST(FinalizationWait, EndsWhenANewCaptureBegins) {
    SessionUnderTest t;
    t.start();
    t.session.stop();
    FinalizationWait wait(t.session);
    EXPECT_EQ(wait.advance(t.session), FinalizationWait::Outcome::keepWaiting);
    t.session.reset();
    EXPECT_EQ(wait.advance(t.session), FinalizationWait::Outcome::superseded);
    EXPECT_FALSE(t.session.errorMessage());
}

} // namespace
} // namespace daywyn
