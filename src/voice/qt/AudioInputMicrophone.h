#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>

#include "voice/MicrophoneSource.h"

class QAudioSource;
class QIODevice;

namespace daywyn {

// The desktop's default audio input (PulseAudio or PipeWire's Pulse server) through
// Qt Multimedia, at 16 kHz mono 16-bit, read on the main thread as it arrives.
class AudioInputMicrophone : public QObject, public MicrophoneSource {
    Q_OBJECT

public:
    explicit AudioInputMicrophone(QObject* parent = nullptr);
    ~AudioInputMicrophone() override;

    bool hasInputDevice() const override;
    std::optional<std::string> start(BufferHandler handler) override;
    void stop() override;

private:
    void readAvailable();

    QAudioSource* source_ = nullptr;
    QPointer<QIODevice> device_;
    BufferHandler handler_;
    QByteArray pending_;
};

} // namespace daywyn
