#include "voice/qt/PocketSphinxRecognizer.h"

#include <QMetaObject>
#include <QPointer>

#include "base/HelperModule.h"
#include "voice/PauseMarkers.h"
#include "voice/SpeechDecoder.h"

namespace daywyn {

namespace {

// The decoder from daywyn-speech.so, loaded with it on first use; null, with `failure`
// set, when the module or the model cannot be loaded.
std::unique_ptr<SpeechDecoder> openDecoder(const SpeechModel& model,
                                           std::optional<std::string>& failure) {
    using Open = SpeechDecoder* (*)(const SpeechModel&, std::string&);
    std::string why;
    void* module = openHelperModule("daywyn-speech.so", why);
    auto open = reinterpret_cast<Open>(helperModuleFunction(module, "daywynOpenSpeechDecoder"));
    if (open == nullptr) {
        failure = "Daywyn could not load its speech recogniser (" +
                  (module != nullptr ? std::string("daywyn-speech.so is incomplete") : why) + ").";
        return nullptr;
    }
    std::unique_ptr<SpeechDecoder> decoder(open(model, why));
    if (!decoder) {
        failure = why;
    }
    return decoder;
}

} // namespace

// Lives on the recogniser's thread and owns the decoder there: pocketsphinx is not
// thread-safe, so every call into it happens on this one thread.
class PocketSphinxWorker : public QObject {
public:
    PocketSphinxWorker(SpeechModel model, PocketSphinxRecognizer* owner,
                       std::shared_ptr<std::atomic<std::uint64_t>> active)
        : model_(std::move(model))
        , owner_(owner)
        , active_(std::move(active)) {}

    std::optional<std::string> load() {
        if (!decoder_ && !loadFailure_) {
            decoder_ = openDecoder(model_, loadFailure_);
        }
        return loadFailure_;
    }

    void begin(std::uint64_t generation) {
        if (auto failure = load()) {
            post([generation, failure](PocketSphinxRecognizer* r) {
                r->deliverFailure(generation, *failure);
                r->deliverEnd(generation);
            });
            return;
        }
        decoder_->startUtterance();
        current_ = generation;
        lastPartial_.clear();
        chunksSincePartial_ = 0;
    }

    void process(std::uint64_t generation, const std::vector<std::int16_t>& samples) {
        if (generation != current_ || active_->load() != generation) {
            return;
        }
        decoder_->process(samples);
        // A partial hypothesis costs a backtrace: one every ~0.25 s of audio is enough
        // for the words to appear as they are spoken.
        if (++chunksSincePartial_ < 4) {
            return;
        }
        chunksSincePartial_ = 0;
        auto segments = decoder_->partialSegments();
        std::string partial = transcriptWithPauseMarkers(segments);
        if (partial != lastPartial_) {
            lastPartial_ = partial;
            SpeechRecognitionResult result{std::move(segments), false};
            post([generation, result](PocketSphinxRecognizer* r) {
                r->deliverResult(generation, result);
            });
        }
    }

    void finish(std::uint64_t generation) {
        if (generation != current_) {
            return;
        }
        current_ = 0;
        SpeechRecognitionResult result{decoder_->finishUtterance(), true};
        post([generation, result](PocketSphinxRecognizer* r) {
            r->deliverResult(generation, result);
            r->deliverEnd(generation);
        });
    }

    void cancel(std::uint64_t generation) {
        if (generation != current_ || !decoder_) {
            return;
        }
        current_ = 0;
        decoder_->finishUtterance();
    }

private:
    template <typename F>
    void post(F f) {
        QPointer<PocketSphinxRecognizer> owner = owner_;
        QMetaObject::invokeMethod(
            owner_,
            [owner, f] {
                if (owner) {
                    f(owner.data());
                }
            },
            Qt::QueuedConnection);
    }

    SpeechModel model_;
    PocketSphinxRecognizer* owner_;
    std::shared_ptr<std::atomic<std::uint64_t>> active_;
    std::unique_ptr<SpeechDecoder> decoder_;
    std::optional<std::string> loadFailure_;
    std::uint64_t current_ = 0;
    std::string lastPartial_;
    int chunksSincePartial_ = 0;
};

PocketSphinxRecognizer::PocketSphinxRecognizer(SpeechModel model, QObject* parent)
    : QObject(parent)
    , model_(std::move(model))
    , active_(std::make_shared<std::atomic<std::uint64_t>>(0)) {
    worker_ = new PocketSphinxWorker(model_, this, active_);
    worker_->moveToThread(&thread_);
    connect(&thread_, &QThread::finished, worker_, &QObject::deleteLater);
    thread_.setObjectName(QStringLiteral("speech recogniser"));
    // The thread starts with the first capture (startThread): until then the work
    // queued for the worker waits in its event queue.
}

PocketSphinxRecognizer::~PocketSphinxRecognizer() {
    active_->store(0);
    if (!thread_.isRunning()) {
        // Never started: the worker's deleteLater on `finished` would never run.
        delete worker_;
        return;
    }
    thread_.quit();
    thread_.wait();
}

void PocketSphinxRecognizer::startThread() {
    if (!thread_.isRunning()) {
        thread_.start();
    }
}

void PocketSphinxRecognizer::warmUp() {
    if (!isAvailable()) {
        return;
    }
    startThread();
    QMetaObject::invokeMethod(
        worker_, [w = worker_] { w->load(); }, Qt::QueuedConnection);
}

bool PocketSphinxRecognizer::isAvailable() const {
    return model_.isInstalled();
}

std::optional<std::string> PocketSphinxRecognizer::begin(std::uint64_t generation,
                                                         SpeechRecognitionListener& listener) {
    listener_ = &listener;
    active_->store(generation);
    startThread();
    QMetaObject::invokeMethod(
        worker_, [w = worker_, generation] { w->begin(generation); }, Qt::QueuedConnection);
    return std::nullopt;
}

void PocketSphinxRecognizer::append(std::span<const std::int16_t> samples) {
    const std::uint64_t generation = active_->load();
    if (generation == 0 || samples.empty()) {
        return;
    }
    QMetaObject::invokeMethod(
        worker_,
        [w = worker_, generation,
         audio = std::vector<std::int16_t>(samples.begin(), samples.end())] {
            w->process(generation, audio);
        },
        Qt::QueuedConnection);
}

void PocketSphinxRecognizer::endAudio() {
    const std::uint64_t generation = active_->load();
    if (generation == 0) {
        return;
    }
    QMetaObject::invokeMethod(
        worker_, [w = worker_, generation] { w->finish(generation); }, Qt::QueuedConnection);
}

void PocketSphinxRecognizer::cancel() {
    const std::uint64_t generation = active_->exchange(0);
    if (generation == 0) {
        return;
    }
    QMetaObject::invokeMethod(
        worker_, [w = worker_, generation] { w->cancel(generation); }, Qt::QueuedConnection);
}

void PocketSphinxRecognizer::deliverResult(std::uint64_t generation,
                                           SpeechRecognitionResult result) {
    if (listener_) {
        listener_->recognitionResult(generation, std::move(result));
    }
}

void PocketSphinxRecognizer::deliverFailure(std::uint64_t generation, std::string description) {
    if (listener_) {
        listener_->recognitionFailed(generation, std::move(description));
    }
}

void PocketSphinxRecognizer::deliverEnd(std::uint64_t generation) {
    if (generation == active_->load()) {
        active_->store(0);
    }
    if (listener_) {
        listener_->recognitionEnded(generation);
    }
}

} // namespace daywyn
