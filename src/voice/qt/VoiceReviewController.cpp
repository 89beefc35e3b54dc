#include "voice/qt/VoiceReviewController.h"

#include <QVariantMap>

#include "parsing/VoiceTaskParser.h"
#include "shell/DayText.h"
#include "voice/qt/VoiceCaptureManager.h"

namespace daywyn {

VoiceReviewController::VoiceReviewController(VoiceCaptureManager& voice, AddAction onAdd,
                                             Calendar calendar, Clock clock, QObject* parent)
    : QObject(parent)
    , voice_(voice)
    , onAdd_(std::move(onAdd))
    , calendar_(std::move(calendar))
    , clock_(std::move(clock)) {
    connect(&voice_, &VoiceCaptureManager::changed, this, &VoiceReviewController::changed);
    finalizationTimer_.setSingleShot(true);
    finalizationTimer_.setInterval(FinalizationWait::stepMilliseconds);
    finalizationTimer_.setTimerType(Qt::PreciseTimer);
    connect(&finalizationTimer_, &QTimer::timeout, this, &VoiceReviewController::stepFinalization);
}

QString VoiceReviewController::phase() const {
    if (isReviewing_) {
        return QStringLiteral("reviewing");
    }
    if (isFinalizing_) {
        return QStringLiteral("finalizing");
    }
    if (voice_.isStarting()) {
        return QStringLiteral("starting");
    }
    if (voice_.isRecording()) {
        return QStringLiteral("listening");
    }
    return QStringLiteral("idle");
}

QString VoiceReviewController::statusText() const {
    const QString p = phase();
    if (p == QLatin1String("starting")) {
        return QStringLiteral("Preparing microphone…");
    }
    if (p == QLatin1String("listening")) {
        return voice_.transcript().isEmpty() ? QStringLiteral("Waiting for speech…")
                                             : QStringLiteral("Listening");
    }
    if (p == QLatin1String("finalizing")) {
        return QStringLiteral("Preparing your list…");
    }
    if (p == QLatin1String("reviewing")) {
        return QStringLiteral("Review your list");
    }
    return QStringLiteral("Press the microphone to begin");
}

QString VoiceReviewController::audioText() const {
    return voice_.hasDetectedAudio() ? QStringLiteral("Microphone audio detected")
                                     : QStringLiteral("No microphone audio detected yet");
}

QVariantList VoiceReviewController::candidates() const {
    QVariantList list;
    const Instant now = clock_();
    for (const auto& c : candidates_) {
        QString when;
        if (c.scheduledStart) {
            when = QString::fromStdString(relativeDayText(*c.scheduledStart, now, calendar_) + " " +
                                          timeOfDayText(*c.scheduledStart, calendar_));
        } else if (c.scheduledDay) {
            when = QString::fromStdString(relativeDayText(*c.scheduledDay, now, calendar_));
        }
        list.append(QVariantMap{{QStringLiteral("title"), QString::fromStdString(c.title)},
                                {QStringLiteral("when"), when}});
    }
    return list;
}

QString VoiceReviewController::emptyReviewText() const {
    return isReviewing_ && candidates_.empty()
               ? QStringLiteral("No task titles were found. Go back and try speaking again.")
               : QString();
}

void VoiceReviewController::present() {
    voice_.refreshPermissionStatuses();
    Q_EMIT presentRequested();
}

void VoiceReviewController::toggleCapture() {
    if (isFinalizing_) {
        return;
    }
    if (voice_.isRecording()) {
        finalize();
        return;
    }
    if (voice_.isStarting()) {
        // Stop before Listening appeared: abandon the start.
        voice_.reset();
        return;
    }
    if (isReviewing_) {
        startOver();
    }
    voice_.reset();
    voice_.preparePermissions(true);
}

void VoiceReviewController::finalize() {
    isFinalizing_ = true;
    voice_.stop();
    finalization_.emplace(voice_.session());
    Q_EMIT changed();
    stepFinalization();
}

void VoiceReviewController::stepFinalization() {
    if (!finalization_) {
        return;
    }
    switch (finalization_->advance(voice_.session())) {
    case FinalizationWait::Outcome::keepWaiting:
        finalizationTimer_.start();
        return;
    case FinalizationWait::Outcome::superseded:
        finalization_.reset();
        isFinalizing_ = false;
        Q_EMIT changed();
        return;
    case FinalizationWait::Outcome::ready:
        finalization_.reset();
        showReview();
        return;
    }
}

void VoiceReviewController::showReview() {
    candidates_ =
        VoiceTaskParser::candidates(voice_.transcript().toStdString(), clock_(), calendar_);
    // The manager's message stays visible, so the user checks the text.
    reviewNotice_ = voice_.errorMessage();
    saveError_.clear();
    isFinalizing_ = false;
    isReviewing_ = true;
    Q_EMIT changed();
}

void VoiceReviewController::setCandidateTitle(int index, const QString& title) {
    if (index < 0 || index >= static_cast<int>(candidates_.size())) {
        return;
    }
    // No change signal: the list would be rebuilt under the field being typed in.
    candidates_[static_cast<std::size_t>(index)].title = title.toStdString();
}

void VoiceReviewController::removeCandidate(int index) {
    if (index < 0 || index >= static_cast<int>(candidates_.size())) {
        return;
    }
    candidates_.erase(candidates_.begin() + index);
    Q_EMIT changed();
}

bool VoiceReviewController::save() {
    if (!isReviewing_) {
        return false;
    }
    if (auto failure = onAdd_(candidates_)) {
        // The list stays, so the user can try again.
        saveError_ = QString::fromStdString(*failure);
        Q_EMIT changed();
        return false;
    }
    close();
    return true;
}

void VoiceReviewController::startOver() {
    candidates_.clear();
    isReviewing_ = false;
    reviewNotice_.clear();
    saveError_.clear();
    voice_.reset();
    Q_EMIT changed();
}

void VoiceReviewController::close() {
    finalizationTimer_.stop();
    finalization_.reset();
    isFinalizing_ = false;
    startOver();
    Q_EMIT closeRequested();
}

} // namespace daywyn
