#include "LocalHttpsServer.h"

#include <QCryptographicHash>
#include <QFile>
#include <QProcess>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTemporaryDir>

namespace daywyn::test {
namespace {

constexpr qint64 chunkBytes = 64 * 1024;
// How far the server writes ahead of what the socket has sent.
constexpr qint64 writeAheadBytes = 256 * 1024;

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

LocalHttpsServer::LocalHttpsServer(QObject* parent)
    : QObject(parent) {}

LocalHttpsServer::~LocalHttpsServer() {
    // Open sockets close as the server goes; their signals must not reach the streams.
    for (auto& entry : streams_) {
        entry.first->disconnect(this);
        delete entry.first;
    }
    streams_.clear();
}

bool LocalHttpsServer::start() {
    QTemporaryDir folder;
    if (!folder.isValid()) {
        return false;
    }
    const QString keyPath = folder.filePath(QStringLiteral("key.pem"));
    const QString certificatePath = folder.filePath(QStringLiteral("certificate.pem"));
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                   QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                   QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
                   QStringLiteral("-keyout"), keyPath, QStringLiteral("-out"), certificatePath,
                   QStringLiteral("-days"), QStringLiteral("2"), QStringLiteral("-subj"),
                   QStringLiteral("/CN=localhost"), QStringLiteral("-addext"),
                   QStringLiteral("subjectAltName=DNS:localhost,IP:127.0.0.1")});
    if (!openssl.waitForFinished(30'000) || openssl.exitCode() != 0) {
        return false;
    }
    certificate_ = QSslCertificate(readAll(certificatePath), QSsl::Pem);
    key_ = QSslKey(readAll(keyPath), QSsl::Ec, QSsl::Pem);
    if (certificate_.isNull() || key_.isNull()) {
        return false;
    }
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificate(certificate_);
    tls.setPrivateKey(key_);
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    server_.setSslConfiguration(tls);
    connect(&server_, &QSslServer::pendingConnectionAvailable, this,
            &LocalHttpsServer::onConnection);
    return server_.listen(QHostAddress::LocalHost, 0);
}

QUrl LocalHttpsServer::url(const QString& host, const QString& path) const {
    return QUrl(QStringLiteral("https://%1:%2%3").arg(host).arg(server_.serverPort()).arg(path));
}

void LocalHttpsServer::setReply(const QString& path, Reply reply) {
    replies_[path] = std::move(reply);
}

int LocalHttpsServer::requestCount(const QString& path) const {
    const auto found = requests_.find(path);
    return found == requests_.end() ? 0 : found->second;
}

QByteArray LocalHttpsServer::generatedChunk(qint64 offset, qint64 length) {
    QByteArray bytes(length, Qt::Uninitialized);
    for (qint64 index = 0; index < length; ++index) {
        const qint64 at = offset + index;
        bytes[index] = static_cast<char>((at * 31 + at / 4099) & 0xff);
    }
    return bytes;
}

QByteArray LocalHttpsServer::generatedSha256(qint64 size) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (qint64 offset = 0; offset < size; offset += chunkBytes) {
        hash.addData(generatedChunk(offset, std::min(chunkBytes, size - offset)));
    }
    return hash.result().toHex();
}

void LocalHttpsServer::resume() {
    resumed_ = true;
    std::vector<QSslSocket*> sockets;
    for (auto& entry : streams_) {
        sockets.push_back(entry.first);
    }
    for (QSslSocket* socket : sockets) {
        pump(socket);
    }
}

void LocalHttpsServer::onConnection() {
    while (QTcpSocket* pending = server_.nextPendingConnection()) {
        auto* socket = qobject_cast<QSslSocket*>(pending);
        if (!socket) {
            pending->deleteLater();
            continue;
        }
        streams_[socket] = Stream{};
        connect(socket, &QSslSocket::readyRead, this, [this, socket] { onReadable(socket); });
        connect(socket, &QSslSocket::encryptedBytesWritten, this, [this, socket] { pump(socket); });
        connect(socket, &QSslSocket::disconnected, this, [this, socket] {
            streams_.erase(socket);
            socket->deleteLater();
        });
        if (socket->bytesAvailable() > 0) {
            onReadable(socket);
        }
    }
}

void LocalHttpsServer::onReadable(QSslSocket* socket) {
    Stream& stream = streams_[socket];
    stream.head += socket->readAll();
    if (stream.answered || !stream.head.contains("\r\n\r\n")) {
        return;
    }
    stream.answered = true;
    const QList<QByteArray> requestLine = stream.head.left(stream.head.indexOf("\r\n")).split(' ');
    const QString path = requestLine.size() >= 2 ? QString::fromUtf8(requestLine[1]) : QString();
    ++requests_[path];
    const auto found = replies_.find(path);
    Reply reply = found == replies_.end() ? Reply{404, "Not found", -1, {}, -1, -1} : found->second;
    stream.total = reply.generatedSize >= 0 ? reply.generatedSize : reply.body.size();
    QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.status) + " Reply\r\n" +
                      "Content-Length: " + QByteArray::number(stream.total) + "\r\n" +
                      "Content-Type: application/octet-stream\r\nConnection: close\r\n";
    if (!reply.location.isEmpty()) {
        head += "Location: " + reply.location + "\r\n";
    }
    socket->write(head + "\r\n");
    stream.reply = std::move(reply);
    pump(socket);
}

void LocalHttpsServer::pump(QSslSocket* socket) {
    const auto found = streams_.find(socket);
    if (found == streams_.end() || !found->second.answered) {
        return;
    }
    Stream& stream = found->second;
    qint64 limit =
        stream.reply.cutAfter >= 0 ? std::min(stream.reply.cutAfter, stream.total) : stream.total;
    const bool held = stream.reply.holdAfter >= 0 && !resumed_;
    if (held) {
        limit = std::min(limit, stream.reply.holdAfter);
    }
    while (stream.sent < limit &&
           socket->encryptedBytesToWrite() + socket->bytesToWrite() < writeAheadBytes) {
        const qint64 length = std::min(chunkBytes, limit - stream.sent);
        const QByteArray bytes = stream.reply.generatedSize >= 0
                                     ? generatedChunk(stream.sent, length)
                                     : stream.reply.body.mid(stream.sent, length);
        socket->write(bytes);
        stream.sent += length;
    }
    if (stream.sent >= limit && !held) {
        // Closes once everything written has gone out.
        socket->disconnectFromHost();
    }
}

} // namespace daywyn::test
