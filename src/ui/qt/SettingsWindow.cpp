#include "ui/qt/SettingsWindow.h"

#include <QQuickItem>
#include <QQuickView>

namespace daywyn {

SettingsWindow::SettingsWindow(QQmlEngine& engine, QObject* parent)
    : QObject(parent)
    , engine_(engine) {}

SettingsWindow::~SettingsWindow() {
    delete window_.data();
}

QQuickView* SettingsWindow::window() const {
    return window_.data();
}

void SettingsWindow::show(const QString& page) {
    if (!window_) {
        auto* view = new QQuickView(&engine_, nullptr);
        view->setTitle(QStringLiteral("Daywyn Settings"));
        view->setResizeMode(QQuickView::SizeRootObjectToView);
        view->setMinimumSize(QSize(680, 520));
        view->resize(780, 600);
        view->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Daywyn/Settings.qml")));
        window_ = view;
    }
    if (QQuickItem* root = window_->rootObject()) {
        root->setProperty("page", page);
    }
    window_->show();
    window_->raise();
    window_->requestActivate();
}

} // namespace daywyn
