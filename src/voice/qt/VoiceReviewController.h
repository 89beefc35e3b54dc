#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantList>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "model/VoiceTaskCandidate.h"
#include "voice/FinalizationWait.h"

namespace daywyn {

class VoiceCaptureManager;

// The voice capture screen's state: listening through the manager, the bounded wait
// for the final result after Stop, the candidates the splitter makes of the transcript
// for the user to edit, and saving them in one step. Nothing is saved until the user
// approves the list.
class VoiceReviewController : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString phase READ phase NOTIFY changed)
    Q_PROPERTY(QString statusText READ statusText NOTIFY changed)
    Q_PROPERTY(QString audioText READ audioText NOTIFY changed)
    Q_PROPERTY(bool isReviewing READ isReviewing NOTIFY changed)
    Q_PROPERTY(bool isFinalizing READ isFinalizing NOTIFY changed)
    Q_PROPERTY(QVariantList candidates READ candidates NOTIFY changed)
    Q_PROPERTY(QString saveError READ saveError NOTIFY changed)
    Q_PROPERTY(QString reviewNotice READ reviewNotice NOTIFY changed)
    Q_PROPERTY(QString emptyReviewText READ emptyReviewText NOTIFY changed)

public:
    using AddAction =
        std::function<std::optional<std::string>(const std::vector<VoiceTaskCandidate>&)>;

    VoiceReviewController(VoiceCaptureManager& voice, AddAction onAdd, Calendar calendar,
                          Clock clock, QObject* parent = nullptr);

    // "idle", "starting", "listening", "finalizing" or "reviewing".
    QString phase() const;
    QString statusText() const;
    QString audioText() const;
    bool isReviewing() const { return isReviewing_; }
    bool isFinalizing() const { return isFinalizing_; }
    QVariantList candidates() const;
    const std::vector<VoiceTaskCandidate>& candidateList() const { return candidates_; }
    QString saveError() const { return saveError_; }
    QString reviewNotice() const { return reviewNotice_; }
    QString emptyReviewText() const;

    // Opens the screen (asks the window to show); recording starts only on the button.
    Q_INVOKABLE void present();
    // The microphone button: starts listening, or stops and prepares the review.
    Q_INVOKABLE void toggleCapture();
    Q_INVOKABLE void setCandidateTitle(int index, const QString& title);
    Q_INVOKABLE void removeCandidate(int index);
    // Hands the list to the add action; success closes the screen.
    Q_INVOKABLE bool save();
    // Back to capture: the reviewed list is discarded.
    Q_INVOKABLE void startOver();
    // Leaving the screen stops a running capture and forgets the list.
    Q_INVOKABLE void close();

Q_SIGNALS:
    void changed();
    void presentRequested();
    void closeRequested();

private:
    void finalize();
    void stepFinalization();
    void showReview();

    VoiceCaptureManager& voice_;
    AddAction onAdd_;
    Calendar calendar_;
    Clock clock_;
    std::vector<VoiceTaskCandidate> candidates_;
    bool isReviewing_ = false;
    bool isFinalizing_ = false;
    QString saveError_;
    QString reviewNotice_;
    std::optional<FinalizationWait> finalization_;
    QTimer finalizationTimer_;
};

} // namespace daywyn
