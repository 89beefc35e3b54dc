#pragma once

#include <vector>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVirtualObject>
#include <QDateTime>
#include <QStringList>
#include <QVariantMap>

namespace daywyn::test {

// A desktop notification server on the test's private session bus: it owns
// org.freedesktop.Notifications on a connection of its own, records every Notify call
// and sends the server's signals on request. Header-only (no moc) so both the unit
// and the integration programs use it.
class FakeNotificationServer : public QDBusVirtualObject {
public:
    struct Call {
        QString appName;
        QString summary;
        QString body;
        QStringList actions;
        QVariantMap hints;
        uint id = 0;
        // Wall-clock seconds since 1970 when the call arrived.
        double receivedAt = 0;
    };

    explicit FakeNotificationServer(QStringList capabilities)
        : capabilities_(std::move(capabilities))
        , connection_(QDBusConnection::connectToBus(
              QDBusConnection::SessionBus,
              QStringLiteral("fake-notification-server-%1").arg(++instances()))) {}

    ~FakeNotificationServer() override {
        stop();
        QDBusConnection::disconnectFromBus(connection_.name());
    }

    // Registers the object and takes the name; false when the bus refused.
    bool start() {
        return connection_.registerVirtualObject(path(), this) &&
               connection_.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }
    void stop() {
        connection_.unregisterService(QStringLiteral("org.freedesktop.Notifications"));
        connection_.unregisterObject(path());
    }

    const std::vector<Call>& calls() const { return calls_; }
    int getCapabilitiesCalls() const { return capabilityQueries_; }

    void invokeAction(uint id, const QString& key) {
        QDBusMessage signal =
            QDBusMessage::createSignal(path(), interface(), QStringLiteral("ActionInvoked"));
        signal << id << key;
        connection_.send(signal);
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QString member = message.member();
        QDBusMessage reply;
        if (member == QStringLiteral("GetCapabilities")) {
            ++capabilityQueries_;
            reply = message.createReply(QVariant(capabilities_));
        } else if (member == QStringLiteral("Notify") && message.arguments().size() == 8) {
            const QVariantList a = message.arguments();
            Call call;
            call.appName = a[0].toString();
            call.summary = a[3].toString();
            call.body = a[4].toString();
            call.actions = a[5].toStringList();
            call.hints = qdbus_cast<QVariantMap>(a[6]);
            call.id = ++nextId_;
            call.receivedAt = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
            calls_.push_back(call);
            reply = message.createReply(QVariant::fromValue(call.id));
        } else {
            reply = message.createErrorReply(QDBusError::UnknownMethod, member);
        }
        return connection.send(reply);
    }

private:
    static QString path() { return QStringLiteral("/org/freedesktop/Notifications"); }
    static QString interface() { return QStringLiteral("org.freedesktop.Notifications"); }
    static int& instances() {
        static int count = 0;
        return count;
    }

    QStringList capabilities_;
    QDBusConnection connection_;
    std::vector<Call> calls_;
    uint nextId_ = 0;
    int capabilityQueries_ = 0;
};

} // namespace daywyn::test
