#include <fstream>
#include <iterator>

#include <QImage>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <gtest/gtest.h>

#include "app/qt/ScreenEngine.h"
#include "base/Calendar.h"
#include "shell/qt/SystemSettingsNavigator.h"
#include "store/TodayTaskStore.h"
#include "support/FakeMicrophoneSource.h"
#include "support/FakeRepository.h"
#include "support/SpokenPhrases.h"
#include "support/qt/QtTestSupport.h"
#include "support/qt/SlowWait.h"
#include "ui/qt/Theme.h"
#include "voice/WavAudio.h"
#include "voice/qt/PocketSphinxRecognizer.h"
#include "voice/qt/VoiceCaptureManager.h"
#include "voice/qt/VoiceReviewController.h"

namespace daywyn {
namespace {

QString textOf(QQuickView& view, const char* name) {
    QQuickItem* item = test::findItem(view, QString::fromUtf8(name));
    return item ? item->property("text").toString() : QStringLiteral("<missing>");
}

// The sheet as the user sees it, with a spoken list really recognised: the real
// recogniser hears a recording through a stand-in microphone.
TEST(VoiceCaptureSheet, ShowsTheRecognisedListForReviewAndSavesIt) {
    if (!test::canMakeSpokenPhrases()) {
        GTEST_SKIP() << "flite and sox are needed to speak the phrases";
    }
    Calendar calendar;
    test::ManualClock clock{*parseIsoText("2026-03-04T08:15:00Z")};
    TodayTaskStore store(test::FakeRepository::holding(PersistedState{}), clock.now(), calendar);
    PocketSphinxRecognizer recognizer(SpeechModel::installed());
    test::FakeMicrophoneSource microphone;
    VoiceCaptureManager voice(
        recognizer, microphone,
        {[] { return SpeechAuthorization::authorized; }, [] { return true; }, {}});
    VoiceReviewController screen(
        voice,
        [&](const std::vector<VoiceTaskCandidate>& candidates) {
            return store.addVoiceTasks(candidates, clock.now(), calendar);
        },
        calendar, clock.function());
    Theme theme(false);
    SystemSettingsNavigator settings;
    ScreenServices parts;
    parts.theme = &theme;
    parts.voice = &voice;
    parts.voiceReview = &screen;
    parts.systemSettings = &settings;
    ScreenEngine engine(parts);
    QQuickView view(&engine, nullptr);
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.resize(460, 560);
    view.setSource(QUrl(QStringLiteral("qrc:/qt/qml/Daywyn/VoiceCaptureSheet.qml")));
    ASSERT_EQ(view.status(), QQuickView::Ready) << view.errors().value(0).toString().toStdString();
    view.show();
    EXPECT_EQ(textOf(view, "voiceStatus"), "Press the microphone to begin");

    QQuickItem* microphoneButton = test::findItem(view, QStringLiteral("voiceMicrophone"));
    ASSERT_TRUE(microphoneButton);
    test::click(view, *microphoneButton);
    ASSERT_TRUE(test::waitLongUntil([&] { return screen.phase() == "listening"; }));
    EXPECT_EQ(textOf(view, "voiceTranscript"), "Your words will appear here.");
    EXPECT_EQ(textOf(view, "voiceAudio"), "No microphone audio detected yet");

    std::ifstream file(
        test::spokenList({"buy milk", "call mom tomorrow at ten am", "pay the rent on friday"},
                         1.6),
        std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file),
                                          std::istreambuf_iterator<char>()};
    const auto audio = recognizerAudioFromWav(bytes).value();
    for (std::size_t at = 0; at < audio.size(); at += 1024) {
        microphone.deliver({audio.begin() + static_cast<long>(at),
                            audio.begin() + static_cast<long>(std::min(at + 1024, audio.size()))});
    }
    EXPECT_EQ(textOf(view, "voiceAudio"), "Microphone audio detected");
    ASSERT_TRUE(test::waitLongUntil([&] { return voice.transcript().endsWith("friday"); }));
    test::click(view, *microphoneButton);
    ASSERT_TRUE(test::waitLongUntil([&] { return screen.isReviewing(); }));
    ASSERT_TRUE(test::waitUntil([&] { return textOf(view, "voiceSave") == "Add 3 tasks"; }));

    if (const char* path = std::getenv("DAYWYN_VOICE_SCREENSHOT")) {
        view.grabWindow().save(QString::fromUtf8(path));
    }
    EXPECT_TRUE(test::findItem(view, QStringLiteral("voiceReviewHeading"))->isVisible());
    EXPECT_FALSE(test::findItem(view, QStringLiteral("voiceReviewNotice"))->isVisible());
    QStringList titles;
    for (const auto& c : screen.candidateList()) {
        titles << QString::fromStdString(c.title);
    }
    EXPECT_EQ(titles, (QStringList{"Buy milk", "Call mom", "Pay the rent on friday"}));

    test::click(view, *test::findItem(view, QStringLiteral("voiceSave")));
    EXPECT_EQ(store.tasks().size(), 3u);
}

} // namespace
} // namespace daywyn
