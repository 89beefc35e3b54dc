#pragma once

#include <functional>

#include <QObject>
#include <QString>
#include <QStringList>

#include "shell/SystemSettingsDestination.h"

namespace daywyn {

// Opens the desktop's settings at the pane a missing permission or device needs, trying
// each known command in turn until one starts.
class SystemSettingsNavigator : public QObject {
    Q_OBJECT

public:
    // Starts a program detached; false when it could not be started (not installed).
    using Launcher = std::function<bool(const QString& program, const QStringList& arguments)>;

    // The real launcher is QProcess::startDetached.
    explicit SystemSettingsNavigator(QObject* parent = nullptr);
    SystemSettingsNavigator(Launcher launcher, QObject* parent = nullptr);

    // True at the first command that starts; false when none does, and the caller then
    // shows failureMessage().
    bool open(SystemSettingsDestination destination);
    // The same for QML: "microphone", "speechRecognition", "calendars", "notifications".
    Q_INVOKABLE bool open(const QString& destination);
    Q_INVOKABLE QString failureMessage() const;

private:
    Launcher launcher_;
};

} // namespace daywyn
