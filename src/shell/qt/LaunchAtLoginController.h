#pragma once

#include <QObject>
#include <QString>

namespace daywyn {

// "Launch Daywyn at login" through an XDG autostart entry
// ($XDG_CONFIG_HOME/autostart/daywyn.desktop) that starts this executable. Linux never
// asks for approval. Errors are shown, never thrown, and the state is read back from
// the disk after every attempt.
class LaunchAtLoginController : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isEnabled READ isEnabled WRITE setEnabled NOTIFY changed)
    Q_PROPERTY(bool requiresApproval READ requiresApproval CONSTANT)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY changed)

public:
    // `entryPath` is where the entry lives, `executablePath` what it starts.
    LaunchAtLoginController(QString entryPath, QString executablePath, QObject* parent = nullptr);

    // $XDG_CONFIG_HOME/autostart/daywyn.desktop.
    static QString defaultEntryPath();

    // Reads whether the entry exists (and is not hidden by Hidden=true).
    void refresh();
    bool isEnabled() const { return enabled_; }
    // Writes or removes the entry; a failure fills errorMessage with "Launch at login
    // could not be changed: <reason>", a success clears it.
    void setEnabled(bool enabled);
    bool requiresApproval() const { return false; }
    QString errorMessage() const { return errorMessage_; }

Q_SIGNALS:
    void changed();

private:
    QString entryPath_;
    QString executablePath_;
    bool enabled_ = false;
    QString errorMessage_;
};

} // namespace daywyn
