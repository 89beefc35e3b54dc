#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class QQmlEngine;
class QQuickView;

namespace daywyn {

// The settings window: eight pages ("history", "reports", "general", "notifications",
// "calendars", "voice", "appearance", "about") in one ordinary, resizable window, built
// from the engine's QML on first use and kept for the whole run.
class SettingsWindow : public QObject {
    Q_OBJECT

public:
    explicit SettingsWindow(QQmlEngine& engine, QObject* parent = nullptr);
    ~SettingsWindow() override;

    // Brings the window to the front at `page` (an unknown name keeps the current page).
    Q_INVOKABLE void show(const QString& page = QStringLiteral("general"));
    QQuickView* window() const;

private:
    QQmlEngine& engine_;
    QPointer<QQuickView> window_;
};

} // namespace daywyn
