#pragma once

#include <atomic>
#include <memory>

#include <QObject>
#include <QThread>

#include "voice/SpeechRecognizer.h"
#include "voice/sphinx/SpeechModel.h"

namespace daywyn {

class PocketSphinxWorker;

// The device's recogniser for voice capture: pocketsphinx decoding on one worker
// thread of its own, so the screens never wait for it. Audio is queued to the worker;
// partial hypotheses and the final timed words come back to the main thread, each
// with the generation its recognition was begun with.
class PocketSphinxRecognizer : public QObject, public SpeechRecognizer {
    Q_OBJECT

public:
    explicit PocketSphinxRecognizer(SpeechModel model, QObject* parent = nullptr);
    ~PocketSphinxRecognizer() override;

    // Loads the model on the worker now rather than at the first capture (it takes
    // about a second), so that the first words are not queued behind the loading.
    void warmUp();

    bool isAvailable() const override;
    std::optional<std::string> begin(std::uint64_t generation,
                                     SpeechRecognitionListener& listener) override;
    void append(std::span<const std::int16_t> samples) override;
    void endAudio() override;
    void cancel() override;

private:
    void startThread();
    void deliverResult(std::uint64_t generation, SpeechRecognitionResult result);
    void deliverFailure(std::uint64_t generation, std::string description);
    void deliverEnd(std::uint64_t generation);

    friend class PocketSphinxWorker;
    SpeechModel model_;
    QThread thread_;
    PocketSphinxWorker* worker_ = nullptr;
    SpeechRecognitionListener* listener_ = nullptr;
    // The recognition being fed (0: none). Read by the worker to skip queued audio of
    // a cancelled recognition instead of decoding it.
    std::shared_ptr<std::atomic<std::uint64_t>> active_;
};

} // namespace daywyn
