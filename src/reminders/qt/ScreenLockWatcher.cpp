#include "reminders/qt/ScreenLockWatcher.h"

#include <unistd.h>

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace daywyn {
namespace {

const QString kLogin = QStringLiteral("org.freedesktop.login1");

} // namespace

ScreenLockWatcher::ScreenLockWatcher(QDBusConnection sessionBus, QDBusConnection systemBus,
                                     QObject* parent)
    : QObject(parent)
    , systemBus_(std::move(systemBus)) {
    if (sessionBus.isConnected()) {
        // KDE, Xfce and others speak the freedesktop name, GNOME its own; the paths
        // differ between desktops, so any path is accepted.
        for (const QString& interface : {QStringLiteral("org.freedesktop.ScreenSaver"),
                                         QStringLiteral("org.gnome.ScreenSaver")}) {
            sessionBus.connect(QString(), QString(), interface, QStringLiteral("ActiveChanged"),
                               this, SLOT(onActiveChanged(bool)));
        }
    }
    if (!systemBus_.isConnected()) {
        return;
    }
    // Our session's object, asked without waiting: logind may be slow or absent.
    QDBusMessage call = QDBusMessage::createMethodCall(
        kLogin, QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("GetSessionByPID"));
    call << uint(::getpid());
    auto* watcher = new QDBusPendingCallWatcher(systemBus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* w) {
        const QDBusPendingReply<QDBusObjectPath> reply = *w;
        w->deleteLater();
        if (!reply.isValid()) {
            return;
        }
        sessionPath_ = reply.value().path();
        const QString interface = QStringLiteral("org.freedesktop.login1.Session");
        systemBus_.connect(kLogin, sessionPath_, interface, QStringLiteral("Lock"), this,
                           SLOT(onLock()));
        systemBus_.connect(kLogin, sessionPath_, interface, QStringLiteral("Unlock"), this,
                           SLOT(onUnlock()));
        Q_EMIT sessionWatched();
    });
}

void ScreenLockWatcher::onActiveChanged(bool active) {
    setLocked(active);
}

void ScreenLockWatcher::onLock() {
    setLocked(true);
}

void ScreenLockWatcher::onUnlock() {
    setLocked(false);
}

void ScreenLockWatcher::setLocked(bool locked) {
    if (locked == locked_) {
        return;
    }
    locked_ = locked;
    Q_EMIT lockedChanged(locked);
}

} // namespace daywyn
