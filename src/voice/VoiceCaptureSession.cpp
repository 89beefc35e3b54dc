#include "voice/VoiceCaptureSession.h"

#include <algorithm>
#include <cctype>

#include "voice/AudioLevel.h"
#include "voice/PauseMarkers.h"
#include "voice/VoiceCaptureTexts.h"

namespace daywyn {

namespace {

bool isBlank(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](unsigned char c) { return std::isspace(c) != 0; });
}

} // namespace

VoiceCaptureSession::VoiceCaptureSession(SpeechRecognizer& recognizer, MicrophoneSource& microphone,
                                         VoiceCaptureHooks hooks)
    : recognizer_(recognizer)
    , microphone_(microphone)
    , hooks_(std::move(hooks)) {}

VoiceCaptureSession::~VoiceCaptureSession() {
    // Nothing may call back into a session that is gone.
    onChange_ = {};
    if (hasRunningRecognition_) {
        recognizer_.cancel();
    }
    if (microphoneRunning_) {
        microphone_.stop();
    }
}

void VoiceCaptureSession::changed() {
    if (onChange_) {
        onChange_();
    }
}

void VoiceCaptureSession::setError(std::string message) {
    errorMessage_ = std::move(message);
}

void VoiceCaptureSession::refreshPermissionStatuses() {
    if (hooks_.speechPermissionRequest) {
        speechAuthorization_ = hooks_.speechPermissionRequest();
    }
    if (hooks_.microphonePermissionRequest) {
        microphoneAuthorization_ = hooks_.microphonePermissionRequest()
                                       ? MicrophoneAuthorization::authorized
                                       : MicrophoneAuthorization::denied;
    }
    changed();
}

std::string VoiceCaptureSession::permissionSummary() const {
    if (speechAuthorization_ == SpeechAuthorization::authorized &&
        microphoneAuthorization_ == MicrophoneAuthorization::authorized) {
        return voicetext::permissionsReady;
    }
    if (speechAuthorization_ == SpeechAuthorization::notDetermined ||
        microphoneAuthorization_ == MicrophoneAuthorization::notDetermined) {
        return voicetext::permissionsNotRequested;
    }
    return voicetext::permissionsNeedAttention;
}

bool VoiceCaptureSession::shouldOfferSpeechSettings() const {
    return speechAuthorization_ == SpeechAuthorization::denied;
}

bool VoiceCaptureSession::shouldOfferMicrophoneSettings() const {
    return microphoneAuthorization_ == MicrophoneAuthorization::denied;
}

std::optional<std::uint64_t>
VoiceCaptureSession::preparePermissions(bool startRecognitionWhenReady) {
    if (isRecording_ || isStarting_) {
        return std::nullopt;
    }
    ++generation_;
    isStarting_ = true;
    startRecognitionWhenReady_ = startRecognitionWhenReady;
    changed();
    return generation_;
}

void VoiceCaptureSession::runStartup(std::uint64_t startupGeneration) {
    // Cancelled by reset(), or superseded by another start, before it ran.
    if (!isStarting_ || startupGeneration != generation_) {
        return;
    }
    const SpeechAuthorization speech = hooks_.speechPermissionRequest
                                           ? hooks_.speechPermissionRequest()
                                           : SpeechAuthorization::denied;
    const bool microphone =
        hooks_.microphonePermissionRequest ? hooks_.microphonePermissionRequest() : false;
    if (!isStarting_ || startupGeneration != generation_) {
        return;
    }
    speechAuthorization_ = speech;
    microphoneAuthorization_ =
        microphone ? MicrophoneAuthorization::authorized : MicrophoneAuthorization::denied;
    // The microphone is checked first: with both refused, its sentence is the one shown.
    if (!microphone) {
        setError(voicetext::microphoneRequired);
    } else if (speech != SpeechAuthorization::authorized) {
        setError(voicetext::speechRequired);
    } else if (startRecognitionWhenReady_) {
        if (hooks_.recognitionStartOverride) {
            if (auto failure = hooks_.recognitionStartOverride()) {
                setError(voicetext::couldNotStart + *failure);
            }
        } else {
            beginRecognition(startupGeneration);
        }
    }
    isStarting_ = false;
    changed();
}

void VoiceCaptureSession::beginRecognition(std::uint64_t forGeneration) {
    if (!recognizer_.isAvailable()) {
        setError(voicetext::notAvailable);
        return;
    }
    if (hasRunningRecognition_) {
        recognizer_.cancel();
        hasRunningRecognition_ = false;
    }
    didReceiveFinalResult_ = false;
    audioEnded_ = false;
    if (auto failure = recognizer_.begin(forGeneration, *this)) {
        setError(voicetext::couldNotStart + *failure);
        return;
    }
    hasRunningRecognition_ = true;
    auto started =
        microphone_.start([this](std::span<const std::int16_t> samples) { audioArrived(samples); });
    if (started) {
        recognizer_.cancel();
        hasRunningRecognition_ = false;
        setError(voicetext::couldNotStart + *started);
        return;
    }
    microphoneRunning_ = true;
    isRecording_ = true;
}

void VoiceCaptureSession::audioArrived(std::span<const std::int16_t> samples) {
    if (!isRecording_) {
        return;
    }
    recognizer_.append(samples);
    if (!hasDetectedAudio_ && containsAudibleSound(samples)) {
        hasDetectedAudio_ = true;
        changed();
    }
}

void VoiceCaptureSession::stop() {
    if (microphoneRunning_) {
        microphone_.stop();
        microphoneRunning_ = false;
    }
    // Ends the audio (not a cancel), so the recogniser still delivers its final
    // result; a second Stop does not end it twice.
    if (hasRunningRecognition_ && !audioEnded_) {
        audioEnded_ = true;
        recognizer_.endAudio();
    }
    if (isRecording_) {
        isRecording_ = false;
        changed();
    }
}

void VoiceCaptureSession::reset() {
    isStarting_ = false;
    if (hasRunningRecognition_) {
        recognizer_.cancel();
        hasRunningRecognition_ = false;
    }
    ++generation_;
    stop();
    didReceiveFinalResult_ = false;
    transcript_.clear();
    errorMessage_.reset();
    hasDetectedAudio_ = false;
    changed();
}

void VoiceCaptureSession::acceptRecognizedTranscript(const std::string& text, bool isFinal) {
    if (!isBlank(text)) {
        transcript_ = text;
        if (isFinal) {
            didReceiveFinalResult_ = true;
        }
    } else if (isFinal) {
        didReceiveFinalResult_ = false;
        setError(transcript_.empty() ? voicetext::nothingRecognized : voicetext::finalWasEmpty);
    }
    changed();
}

void VoiceCaptureSession::invalidateAfterMissingFinalResult() {
    if (hasRunningRecognition_) {
        recognizer_.cancel();
        hasRunningRecognition_ = false;
    }
    ++generation_;
    if (!errorMessage_) {
        setError(voicetext::finalDidNotArrive);
    }
    changed();
}

void VoiceCaptureSession::recognitionResult(std::uint64_t generation,
                                            SpeechRecognitionResult result) {
    if (generation != generation_) {
        return;
    }
    acceptRecognizedTranscript(transcriptWithPauseMarkers(result.segments), result.isFinal);
    if (result.isFinal) {
        // Over before stop(), so a recognition that finished by itself is not sent an
        // end of audio it no longer expects.
        endRecognition();
        stop();
    }
}

void VoiceCaptureSession::recognitionFailed(std::uint64_t generation, std::string description) {
    if (generation != generation_) {
        return;
    }
    if (isRecording_) {
        setError(voicetext::stopped + description);
        stop();
    }
    endRecognition();
}

void VoiceCaptureSession::recognitionEnded(std::uint64_t generation) {
    if (generation != generation_) {
        return;
    }
    endRecognition();
}

void VoiceCaptureSession::endRecognition() {
    if (!hasRunningRecognition_) {
        return;
    }
    hasRunningRecognition_ = false;
    if (microphoneRunning_) {
        microphone_.stop();
        microphoneRunning_ = false;
    }
    isRecording_ = false;
    if (!didReceiveFinalResult_ && !errorMessage_) {
        setError(voicetext::endedBeforeFinal);
    }
    changed();
}

} // namespace daywyn
