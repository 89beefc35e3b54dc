#include "voice/qt/VoiceCaptureWindow.h"

#include <QQuickView>

#include "voice/qt/VoiceReviewController.h"

namespace daywyn {

VoiceCaptureWindow::VoiceCaptureWindow(QQmlEngine& engine, VoiceReviewController& controller,
                                       QObject* parent)
    : QObject(parent)
    , engine_(engine)
    , controller_(controller) {
    connect(&controller_, &VoiceReviewController::presentRequested, this,
            &VoiceCaptureWindow::show);
    connect(&controller_, &VoiceReviewController::closeRequested, this, &VoiceCaptureWindow::hide);
}

VoiceCaptureWindow::~VoiceCaptureWindow() {
    delete window_.data();
}

QQuickView* VoiceCaptureWindow::window() const {
    return window_.data();
}

void VoiceCaptureWindow::show() {
    if (!window_) {
        auto* view = new QQuickView(&engine_, nullptr);
        view->setTitle(QStringLiteral("Voice Capture"));
        view->setResizeMode(QQuickView::SizeRootObjectToView);
        view->setMinimumSize(QSize(420, 460));
        view->resize(460, 560);
        view->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Daywyn/VoiceCaptureSheet.qml")));
        // Closing the window is leaving the screen: a running capture stops.
        connect(view, &QWindow::visibleChanged, this, [this](bool visible) {
            if (!visible && (controller_.isReviewing() || controller_.phase() != "idle")) {
                controller_.close();
            }
        });
        window_ = view;
    }
    window_->show();
    window_->raise();
    window_->requestActivate();
}

void VoiceCaptureWindow::hide() {
    if (window_ && window_->isVisible()) {
        window_->hide();
    }
}

} // namespace daywyn
