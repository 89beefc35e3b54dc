#include "calendar/qt/GoogleLoopback.h"

#include <QHostAddress>
#include <QPointer>
#include <QTcpSocket>

#include "calendar/GoogleLoopbackRequest.h"
#include "calendar/GoogleOAuthUtilities.h"

namespace daywyn {

GoogleLoopback::GoogleLoopback(QObject* parent)
    : QObject(parent) {
    timeout_.setSingleShot(true);
    connect(&timeout_, &QTimer::timeout, this,
            [this] { finish(Result<std::string>::failure(std::string(kGoogleSignInTimedOut))); });
    connect(&server_, &QTcpServer::newConnection, this, &GoogleLoopback::onNewConnection);
}

GoogleLoopback::~GoogleLoopback() {
    // The sockets are the server's children and would report their closing to this
    // object after its members are gone.
    for (QTcpSocket* socket : server_.findChildren<QTcpSocket*>()) {
        socket->disconnect(this);
        socket->abort();
    }
}

Result<quint16> GoogleLoopback::start(std::string state, int timeoutMilliseconds) {
    state_ = std::move(state);
    if (!server_.listen(QHostAddress(QHostAddress::LocalHost), 0)) {
        return Result<quint16>::failure(std::string(kGoogleCallbackUnavailable));
    }
    timeout_.start(timeoutMilliseconds);
    return server_.serverPort();
}

void GoogleLoopback::code(Done done) {
    if (pending_) {
        auto result = std::move(*pending_);
        pending_.reset();
        done(std::move(result));
        return;
    }
    waiter_ = std::move(done);
}

void GoogleLoopback::stop(const std::string& error) {
    finish(Result<std::string>::failure(error));
}

void GoogleLoopback::onNewConnection() {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
        received_.insert(socket, QByteArray());
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            received_.remove(socket);
            socket->deleteLater();
        });
        // A client that never completes its head is answered and let go.
        QPointer<QTcpSocket> guarded = socket;
        QTimer::singleShot(connectionTimeout_, this, [this, guarded] {
            if (guarded && received_.contains(guarded.data())) {
                answer(guarded.data(), false);
            }
        });
        if (socket->bytesAvailable() > 0) {
            onReadyRead(socket);
        }
    }
}

void GoogleLoopback::onReadyRead(QTcpSocket* socket) {
    auto it = received_.find(socket);
    if (it == received_.end()) {
        socket->readAll();
        return;
    }
    // Never hold more than the bound, however much the client sends.
    const qint64 room = static_cast<qint64>(kLoopbackMaxHeadBytes) - it->size() + 1;
    it->append(socket->read(std::max<qint64>(room, 0)));
    const auto head =
        LoopbackRequestHead::parse(std::string_view(it->constData(), std::size_t(it->size())));
    switch (head.state) {
    case LoopbackRequestHead::State::incomplete:
        return;
    case LoopbackRequestHead::State::malformed:
        answer(socket, false);
        return;
    case LoopbackRequestHead::State::complete:
        break;
    }
    if (finished_) {
        answer(socket, false);
        return;
    }
    auto code = GoogleOAuthUtilities::callbackCode(head.target, state_);
    answer(socket, code.has_value());
    if (code) {
        finish(std::move(*code));
    } else {
        finish(Result<std::string>::failure(std::string(kGoogleNotGranted)));
    }
}

void GoogleLoopback::answer(QTcpSocket* socket, bool accepted) {
    received_.remove(socket);
    const std::string reply = loopbackReply(accepted);
    socket->write(reply.data(), static_cast<qint64>(reply.size()));
    socket->disconnectFromHost();
}

void GoogleLoopback::finish(Result<std::string> result) {
    if (finished_) {
        return;
    }
    finished_ = true;
    timeout_.stop();
    server_.close();
    if (waiter_) {
        Done done = std::move(waiter_);
        waiter_ = nullptr;
        done(std::move(result));
    } else {
        pending_ = std::move(result);
    }
}

} // namespace daywyn
