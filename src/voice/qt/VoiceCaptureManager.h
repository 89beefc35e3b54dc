#pragma once

#include <memory>

#include <QObject>
#include <QString>

#include "voice/VoiceCaptureSession.h"

namespace daywyn {

// Voice capture for the screens: the listening session (see VoiceCaptureSession) with
// its state published as properties, and the startup task run from the event loop so
// "Preparing microphone…" shows and Stop can come before Listening.
class VoiceCaptureManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY changed)
    Q_PROPERTY(bool isStarting READ isStarting NOTIFY changed)
    Q_PROPERTY(QString transcript READ transcript NOTIFY changed)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY changed)
    Q_PROPERTY(bool hasDetectedAudio READ hasDetectedAudio NOTIFY changed)
    Q_PROPERTY(QString permissionSummary READ permissionSummary NOTIFY changed)
    Q_PROPERTY(bool shouldOfferSpeechSettings READ shouldOfferSpeechSettings NOTIFY changed)
    Q_PROPERTY(bool shouldOfferMicrophoneSettings READ shouldOfferMicrophoneSettings NOTIFY changed)

public:
    // `recognizer` and `microphone` must outlive the manager.
    VoiceCaptureManager(SpeechRecognizer& recognizer, MicrophoneSource& microphone,
                        VoiceCaptureHooks hooks, QObject* parent = nullptr);
    ~VoiceCaptureManager() override;

    // The manager of the app: pocketsphinx with the installed model and the default
    // audio input; "speech permission" is the model being installed and "microphone
    // permission" a default input device existing.
    static VoiceCaptureManager* forThisDesktop(QObject* parent);

    bool isRecording() const { return session_->isRecording(); }
    bool isStarting() const { return session_->isStarting(); }
    QString transcript() const { return QString::fromStdString(session_->transcript()); }
    QString errorMessage() const;
    bool hasDetectedAudio() const { return session_->hasDetectedAudio(); }
    QString permissionSummary() const;
    bool shouldOfferSpeechSettings() const { return session_->shouldOfferSpeechSettings(); }
    bool shouldOfferMicrophoneSettings() const { return session_->shouldOfferMicrophoneSettings(); }
    VoiceCaptureSession& session() { return *session_; }

    Q_INVOKABLE void refreshPermissionStatuses() { session_->refreshPermissionStatuses(); }
    Q_INVOKABLE void preparePermissions(bool startRecognitionWhenReady);
    Q_INVOKABLE void stop() { session_->stop(); }
    Q_INVOKABLE void reset() { session_->reset(); }

Q_SIGNALS:
    void changed();

private:
    std::unique_ptr<VoiceCaptureSession> session_;
};

} // namespace daywyn
