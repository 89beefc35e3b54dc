#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "voice/MicrophoneSource.h"
#include "voice/SpeechRecognizer.h"

namespace daywyn {

// What the user allowed. On this desktop "speech recognition" is authorized when the
// speech model is installed, and the microphone when a default input device exists.
enum class SpeechAuthorization { notDetermined, denied, authorized };
enum class MicrophoneAuthorization { notDetermined, denied, authorized };

// Stand-ins for the platform's permission requests and the start of recognition, set
// at construction so that the rules run without devices.
struct VoiceCaptureHooks {
    std::function<SpeechAuthorization()> speechPermissionRequest;
    std::function<bool()> microphonePermissionRequest;
    // Replaces the real start of recognition when set; returns the failure's
    // description when it "throws".
    std::function<std::optional<std::string>()> recognitionStartOverride;
};

// One listening session at a time, from the microphone through the recogniser into a
// transcript with pause markers: idle → starting → recording → finishing → idle.
// Every start and every abandonment increments `generation`, and reports that carry
// an older generation are ignored, so a late callback is always harmless. Failures
// become one of the sentences of voicetext in `errorMessage`; the transcript captured
// so far is never cleared by a failure. Runs on one thread; the ports call back on it.
class VoiceCaptureSession : private SpeechRecognitionListener {
public:
    VoiceCaptureSession(SpeechRecognizer& recognizer, MicrophoneSource& microphone,
                        VoiceCaptureHooks hooks);
    ~VoiceCaptureSession() override;
    VoiceCaptureSession(const VoiceCaptureSession&) = delete;
    VoiceCaptureSession& operator=(const VoiceCaptureSession&) = delete;

    bool isRecording() const { return isRecording_; }
    bool isStarting() const { return isStarting_; }
    const std::string& transcript() const { return transcript_; }
    const std::optional<std::string>& errorMessage() const { return errorMessage_; }
    SpeechAuthorization speechAuthorization() const { return speechAuthorization_; }
    MicrophoneAuthorization microphoneAuthorization() const { return microphoneAuthorization_; }
    bool hasDetectedAudio() const { return hasDetectedAudio_; }
    std::uint64_t generation() const { return generation_; }
    bool didReceiveFinalResult() const { return didReceiveFinalResult_; }
    // A recognition has begun and has not ended yet (it may still be finishing).
    bool hasRunningRecognition() const { return hasRunningRecognition_; }

    // Called after every change of the published state above.
    void setOnChange(std::function<void()> onChange) { onChange_ = std::move(onChange); }

    // Re-reads both statuses.
    void refreshPermissionStatuses();
    std::string permissionSummary() const;
    bool shouldOfferSpeechSettings() const;
    bool shouldOfferMicrophoneSettings() const;

    // Begins a start: ignored (nullopt) while recording or starting; otherwise a new
    // generation, `isStarting`, and the generation that runStartup must be given once
    // the caller's event loop turns (so "Preparing microphone…" can show).
    std::optional<std::uint64_t> preparePermissions(bool startRecognitionWhenReady);
    // The startup task: asks for both permissions, then starts recognition when both
    // are granted and it was asked to. Stops silently when cancelled or superseded.
    void runStartup(std::uint64_t startupGeneration);

    // Ends audio capture; the recogniser still delivers its final result.
    void stop();
    // Abandons everything for a new capture: cancels, a new generation, an empty
    // transcript, no message, no audio detected.
    void reset();
    // Applies one recognition result.
    void acceptRecognizedTranscript(const std::string& text, bool isFinal);
    // Abandons a recognition whose final result never came; a late result is ignored.
    void invalidateAfterMissingFinalResult();

private:
    void beginRecognition(std::uint64_t forGeneration);
    void audioArrived(std::span<const std::int16_t> samples);
    void recognitionResult(std::uint64_t generation, SpeechRecognitionResult result) override;
    void recognitionFailed(std::uint64_t generation, std::string description) override;
    void recognitionEnded(std::uint64_t generation) override;
    void endRecognition();
    void setError(std::string message);
    void changed();

    SpeechRecognizer& recognizer_;
    MicrophoneSource& microphone_;
    VoiceCaptureHooks hooks_;
    std::function<void()> onChange_;

    bool isRecording_ = false;
    bool isStarting_ = false;
    std::string transcript_;
    std::optional<std::string> errorMessage_;
    SpeechAuthorization speechAuthorization_ = SpeechAuthorization::notDetermined;
    MicrophoneAuthorization microphoneAuthorization_ = MicrophoneAuthorization::notDetermined;
    bool hasDetectedAudio_ = false;

    std::uint64_t generation_ = 0;
    bool startRecognitionWhenReady_ = false;
    bool didReceiveFinalResult_ = false;
    bool hasRunningRecognition_ = false;
    bool audioEnded_ = false;
    bool microphoneRunning_ = false;
};

} // namespace daywyn
