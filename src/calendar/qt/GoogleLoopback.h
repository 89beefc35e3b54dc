#pragma once

#include <functional>
#include <optional>
#include <string>

#include <QHash>
#include <QObject>
#include <QTcpServer>
#include <QTimer>

#include "base/Result.h"

class QTcpSocket;

namespace daywyn {

// The one-shot receiver of the browser's sign-in redirect: an HTTP/1.1 listener on
// 127.0.0.1 with a port the system chooses. Every accepted connection is read on its
// own (browsers open idle extra ones), so a silent or slow client never holds up the
// real callback. The first whole request decides: its target is checked for the
// expected state, answered with 200 or 400, and the sign-in finishes with the code or
// "Google access was not granted. …". Bytes that are not a GET request head, or a
// head not complete within the per-connection time, are answered 400 and closed.
class GoogleLoopback : public QObject {
    Q_OBJECT

public:
    using Done = std::function<void(Result<std::string>)>;

    explicit GoogleLoopback(QObject* parent = nullptr);
    ~GoogleLoopback() override;

    // Starts listening for a callback carrying `state`; the port, or "Could not open
    // the local sign-in callback. Please try again.". After `timeout` without a
    // callback the sign-in finishes with "Sign-in timed out. …".
    Result<quint16> start(std::string state, int timeoutMilliseconds = 180'000);
    // Calls done with the result once there is one: at once when it came before.
    void code(Done done);
    // Ends the receiver; a waiter gets `error`.
    void stop(const std::string& error);

    // How long one connection may take to send its request head.
    void setConnectionTimeout(int milliseconds) { connectionTimeout_ = milliseconds; }

private:
    void onNewConnection();
    void onReadyRead(QTcpSocket* socket);
    void answer(QTcpSocket* socket, bool accepted);
    void finish(Result<std::string> result);

    QTcpServer server_;
    QTimer timeout_;
    std::string state_;
    QHash<QTcpSocket*, QByteArray> received_;
    std::optional<Result<std::string>> pending_;
    Done waiter_;
    bool finished_ = false;
    int connectionTimeout_ = 10'000;
};

} // namespace daywyn
