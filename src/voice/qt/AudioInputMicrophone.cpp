#include "voice/qt/AudioInputMicrophone.h"

#include <cstring>

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSource>
#include <QMediaDevices>

#include "voice/WavAudio.h"

namespace daywyn {

AudioInputMicrophone::AudioInputMicrophone(QObject* parent)
    : QObject(parent) {}

AudioInputMicrophone::~AudioInputMicrophone() {
    stop();
}

bool AudioInputMicrophone::hasInputDevice() const {
    return !QMediaDevices::defaultAudioInput().isNull();
}

std::optional<std::string> AudioInputMicrophone::start(BufferHandler handler) {
    stop();
    const QAudioDevice device = QMediaDevices::defaultAudioInput();
    if (device.isNull()) {
        return std::string("No microphone is connected.");
    }
    QAudioFormat format;
    format.setSampleRate(recognizerSampleRate);
    format.setChannelCount(1);
    format.setSampleFormat(QAudioFormat::Int16);
    source_ = new QAudioSource(device, format, this);
    // About 1024 frames a buffer, the size the recogniser is fed in.
    source_->setBufferSize(4096);
    device_ = source_->start();
    if (!device_ || source_->error() != QAudio::NoError) {
        delete source_;
        source_ = nullptr;
        return "The microphone " + device.description().toStdString() + " could not be opened.";
    }
    handler_ = std::move(handler);
    connect(device_, &QIODevice::readyRead, this, &AudioInputMicrophone::readAvailable);
    return std::nullopt;
}

void AudioInputMicrophone::readAvailable() {
    if (!device_ || !handler_) {
        return;
    }
    pending_ += device_->readAll();
    // Whole samples only; an odd byte waits for its partner.
    const qsizetype usable = pending_.size() - (pending_.size() % 2);
    if (usable == 0) {
        return;
    }
    std::vector<std::int16_t> samples(static_cast<std::size_t>(usable / 2));
    std::memcpy(samples.data(), pending_.constData(), static_cast<std::size_t>(usable));
    pending_.remove(0, usable);
    // Copy the handler: it may stop this microphone while it runs.
    BufferHandler handler = handler_;
    handler(samples);
}

void AudioInputMicrophone::stop() {
    handler_ = {};
    pending_.clear();
    if (source_) {
        source_->stop();
        delete source_;
        source_ = nullptr;
    }
}

} // namespace daywyn
