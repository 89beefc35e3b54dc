#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

namespace daywyn {

// Tells when the screen locks and unlocks, from whichever source the desktop has:
// ActiveChanged(b) of org.freedesktop.ScreenSaver and org.gnome.ScreenSaver on the
// session bus, and Lock/Unlock of our own logind session on the system bus. Without
// a system bus only the session bus is watched.
class ScreenLockWatcher : public QObject {
    Q_OBJECT

public:
    ScreenLockWatcher(QDBusConnection sessionBus, QDBusConnection systemBus,
                      QObject* parent = nullptr);

    bool isLocked() const { return locked_; }
    // The logind session object watched, once known (empty before or without one).
    QString sessionPath() const { return sessionPath_; }

Q_SIGNALS:
    void lockedChanged(bool locked);
    // The logind session was found and its signals are watched.
    void sessionWatched();

private Q_SLOTS:
    void onActiveChanged(bool active);
    void onLock();
    void onUnlock();

private:
    void setLocked(bool locked);

    QDBusConnection systemBus_;
    QString sessionPath_;
    bool locked_ = false;
};

} // namespace daywyn
