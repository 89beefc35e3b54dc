#include "ui/qt/OnboardingWindow.h"

#include <QGuiApplication>
#include <QQuickView>
#include <QScreen>

#include "persistence/qt/UserSettings.h"

namespace daywyn {

OnboardingWindow::OnboardingWindow(QQmlEngine& engine, UserSettings& settings, QObject* parent)
    : QObject(parent)
    , engine_(engine)
    , settings_(settings) {}

OnboardingWindow::~OnboardingWindow() {
    delete window_.data();
}

QQuickView* OnboardingWindow::window() const {
    return window_.data();
}

bool OnboardingWindow::showIfNeeded() {
    if (settings_.boolValue(QString::fromLatin1(completedKey), false)) {
        return false;
    }
    if (!window_) {
        auto* view = new QQuickView(&engine_, nullptr);
        view->setTitle(QStringLiteral("Welcome to Daywyn"));
        view->setResizeMode(QQuickView::SizeRootObjectToView);
        view->setInitialProperties({{QStringLiteral("onboarding"), QVariant::fromValue(this)}});
        view->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Daywyn/Onboarding.qml")));
        view->resize(620, 580);
        if (QScreen* screen = QGuiApplication::primaryScreen()) {
            const QRect area = screen->availableGeometry();
            view->setPosition(area.center() - QPoint(310, 290));
        }
        // Once it is closed, finished or not, the window goes with everything it
        // drew: it opens at most once a launch, and is made again should it be needed.
        connect(view, &QWindow::visibleChanged, view, [view](bool visible) {
            if (!visible) {
                view->deleteLater();
            }
        });
        window_ = view;
    }
    window_->show();
    window_->raise();
    window_->requestActivate();
    return true;
}

void OnboardingWindow::complete() {
    settings_.setValue(QString::fromLatin1(completedKey), true);
    if (window_) {
        window_->close();
    }
    Q_EMIT completed();
}

} // namespace daywyn
