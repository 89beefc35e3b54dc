#include "voice/qt/VoiceCaptureManager.h"

#include <QPointer>
#include <QTimer>

#include "voice/qt/AudioInputMicrophone.h"
#include "voice/qt/PocketSphinxRecognizer.h"

namespace daywyn {

VoiceCaptureManager::VoiceCaptureManager(SpeechRecognizer& recognizer, MicrophoneSource& microphone,
                                         VoiceCaptureHooks hooks, QObject* parent)
    : QObject(parent)
    , session_(std::make_unique<VoiceCaptureSession>(recognizer, microphone, std::move(hooks))) {
    session_->setOnChange([this] { Q_EMIT changed(); });
}

VoiceCaptureManager::~VoiceCaptureManager() = default;

VoiceCaptureManager* VoiceCaptureManager::forThisDesktop(QObject* parent) {
    const SpeechModel model = SpeechModel::installed();
    auto* recognizer = new PocketSphinxRecognizer(model);
    auto* microphone = new AudioInputMicrophone();
    VoiceCaptureHooks hooks{[recognizer] {
                                return recognizer->isAvailable() ? SpeechAuthorization::authorized
                                                                 : SpeechAuthorization::denied;
                            },
                            [microphone] { return microphone->hasInputDevice(); },
                            {}};
    auto* manager = new VoiceCaptureManager(*recognizer, *microphone, std::move(hooks), parent);
    // Children go after the manager's own members: the session, which cancels through
    // the ports on its way out, is gone before them.
    recognizer->setParent(manager);
    microphone->setParent(manager);
    // Loaded when the first capture is asked for, not at start-up.
    connect(manager, &VoiceCaptureManager::changed, recognizer, [manager, recognizer] {
        if (manager->isStarting()) {
            recognizer->warmUp();
        }
    });
    return manager;
}

QString VoiceCaptureManager::errorMessage() const {
    const auto& message = session_->errorMessage();
    return message ? QString::fromStdString(*message) : QString();
}

QString VoiceCaptureManager::permissionSummary() const {
    return QString::fromStdString(session_->permissionSummary());
}

void VoiceCaptureManager::preparePermissions(bool startRecognitionWhenReady) {
    const auto generation = session_->preparePermissions(startRecognitionWhenReady);
    if (!generation) {
        return;
    }
    QPointer<VoiceCaptureManager> self = this;
    QTimer::singleShot(0, this, [self, g = *generation] {
        if (self) {
            self->session_->runStartup(g);
        }
    });
}

} // namespace daywyn
