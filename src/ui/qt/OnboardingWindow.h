#pragma once

#include <QObject>
#include <QPointer>

class QQmlEngine;
class QQuickView;

namespace daywyn {

class UserSettings;

// The "Welcome to Daywyn" window (620 x 580): a short walk through the drawer, quick
// capture and notifications, shown at launch until the user finishes it, which sets
// "onboardingCompleted".
class OnboardingWindow : public QObject {
    Q_OBJECT

public:
    static constexpr const char* completedKey = "onboardingCompleted";

    OnboardingWindow(QQmlEngine& engine, UserSettings& settings, QObject* parent = nullptr);
    ~OnboardingWindow() override;

    // Opens the window centred when onboarding has not been completed; true when shown.
    bool showIfNeeded();
    // Records onboarding as done and closes the window.
    Q_INVOKABLE void complete();
    // The open window; null once it has been closed (it is released then).
    QQuickView* window() const;

Q_SIGNALS:
    // The last step was finished (not merely the window closed).
    void completed();

private:
    QQmlEngine& engine_;
    UserSettings& settings_;
    QPointer<QQuickView> window_;
};

} // namespace daywyn
