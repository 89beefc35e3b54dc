#include "QtTestSupport.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTest>
#include <QThread>

namespace daywyn::test {

bool waitUntil(const std::function<bool()>& condition) {
    QDeadlineTimer deadline(5000);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QTest::qWait(5);
    }
    return true;
}

namespace {

// Items of a view are reliably linked as visual children, not always as QObject ones.
QQuickItem* findIn(QQuickItem* item, const QString& objectName) {
    if (item->objectName() == objectName) {
        return item;
    }
    for (QQuickItem* child : item->childItems()) {
        if (QQuickItem* found = findIn(child, objectName)) {
            return found;
        }
    }
    return nullptr;
}

} // namespace

QQuickItem* findItem(QQuickWindow& window, const QString& objectName) {
    return findIn(window.contentItem(), objectName);
}

void click(QQuickWindow& window, QQuickItem& item) {
    const QPointF centre = item.mapToScene(QPointF(item.width() / 2, item.height() / 2));
    QTest::mouseClick(&window, Qt::LeftButton, Qt::NoModifier, centre.toPoint());
}

bool eventually(const std::function<bool()>& condition, int seconds) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > seconds * 1000) {
            return false;
        }
        QThread::msleep(20);
    }
    return true;
}

void stopProcess(QProcess* process) {
    if (process && process->state() != QProcess::NotRunning) {
        process->terminate();
        if (!process->waitForFinished(3000)) {
            process->kill();
            process->waitForFinished(1000);
        }
    }
}

bool startUnlockedKeyring(QProcess& keyring) {
    keyring.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    keyring.start(QStringLiteral("gnome-keyring-daemon"),
                  {QStringLiteral("--foreground"), QStringLiteral("--unlock"),
                   QStringLiteral("--components=secrets")});
    if (!keyring.waitForStarted()) {
        return false;
    }
    // The daemon reads its password until the end of its input.
    keyring.write("test-password");
    keyring.waitForBytesWritten(5000);
    keyring.closeWriteChannel();
    return waitUntil([] {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(
            QStringLiteral("org.freedesktop.secrets"));
    });
}

} // namespace daywyn::test
