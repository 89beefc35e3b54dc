#pragma once

#include <QObject>
#include <QPointer>

class QQmlEngine;
class QQuickView;

namespace daywyn {

class VoiceReviewController;

// The voice capture sheet's own window, built from the engine's QML on first use;
// shown when the controller asks, and closing it abandons the capture.
class VoiceCaptureWindow : public QObject {
    Q_OBJECT

public:
    VoiceCaptureWindow(QQmlEngine& engine, VoiceReviewController& controller,
                       QObject* parent = nullptr);
    ~VoiceCaptureWindow() override;

    void show();
    void hide();
    QQuickView* window() const;

private:
    QQmlEngine& engine_;
    VoiceReviewController& controller_;
    QPointer<QQuickView> window_;
};

} // namespace daywyn
