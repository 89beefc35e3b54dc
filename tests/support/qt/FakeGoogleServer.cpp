#include "support/qt/FakeGoogleServer.h"

#include <QCryptographicHash>
#include <QFile>
#include <QProcess>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QTimer>
#include <QUrl>
#include <QUrlQuery>

namespace daywyn::test {
namespace {

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray statusText(int status) {
    switch (status) {
    case 200:
        return "200 OK";
    case 302:
        return "302 Found";
    case 400:
        return "400 Bad Request";
    case 401:
        return "401 Unauthorized";
    case 404:
        return "404 Not Found";
    default:
        return "500 Internal Server Error";
    }
}

QByteArray json(const QString& text) {
    return text.toUtf8();
}

} // namespace

FakeGoogleServer::FakeGoogleServer(QObject* parent)
    : QObject(parent) {}

FakeGoogleServer::~FakeGoogleServer() {
    for (auto& entry : received_) {
        entry.first->disconnect(this);
    }
}

bool FakeGoogleServer::start(const QString& folder) {
    const QString keyPath = folder + QStringLiteral("/google-key.pem");
    certificatePath_ = folder + QStringLiteral("/google.pem");
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                   QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                   QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
                   QStringLiteral("-keyout"), keyPath, QStringLiteral("-out"), certificatePath_,
                   QStringLiteral("-days"), QStringLiteral("2"), QStringLiteral("-subj"),
                   QStringLiteral("/CN=127.0.0.1"), QStringLiteral("-addext"),
                   QStringLiteral("subjectAltName=DNS:localhost,IP:127.0.0.1")});
    if (!openssl.waitForFinished(30'000) || openssl.exitCode() != 0) {
        return false;
    }
    certificate_ = QSslCertificate(readAll(certificatePath_), QSsl::Pem);
    const QSslKey key(readAll(keyPath), QSsl::Ec, QSsl::Pem);
    if (certificate_.isNull() || key.isNull()) {
        return false;
    }
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificate(certificate_);
    tls.setPrivateKey(key);
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    server_.setSslConfiguration(tls);
    connect(&server_, &QSslServer::pendingConnectionAvailable, this,
            &FakeGoogleServer::onConnection);
    return server_.listen(QHostAddress::LocalHost, 0);
}

QString FakeGoogleServer::origin() const {
    return QStringLiteral("https://127.0.0.1:%1").arg(server_.serverPort());
}

void FakeGoogleServer::onConnection() {
    while (QTcpSocket* pending = server_.nextPendingConnection()) {
        auto* socket = qobject_cast<QSslSocket*>(pending);
        if (!socket) {
            pending->deleteLater();
            continue;
        }
        received_[socket] = QByteArray();
        connect(socket, &QSslSocket::readyRead, this, [this, socket] { onReadable(socket); });
        connect(socket, &QSslSocket::disconnected, this, [this, socket] {
            received_.erase(socket);
            socket->deleteLater();
        });
        onReadable(socket);
    }
}

void FakeGoogleServer::onReadable(QSslSocket* socket) {
    auto found = received_.find(socket);
    if (found == received_.end()) {
        return;
    }
    QByteArray& buffer = found->second;
    buffer += socket->readAll();
    const qsizetype end = buffer.indexOf("\r\n\r\n");
    if (end < 0) {
        return;
    }
    const QByteArray head = buffer.left(end);
    qsizetype length = 0;
    for (const QByteArray& line : head.split('\n')) {
        if (line.toLower().startsWith("content-length:")) {
            length = line.mid(15).trimmed().toLongLong();
        }
    }
    if (buffer.size() < end + 4 + length) {
        return;
    }
    const QByteArray body = buffer.mid(end + 4, length);
    const QList<QByteArray> requestLine = head.left(head.indexOf("\r\n")).split(' ');
    // The connection stays open for the client's next request, as Google's do.
    buffer.remove(0, end + 4 + length);
    if (requestLine.size() != 3) {
        socket->disconnectFromHost();
        return;
    }
    const QByteArray method = requestLine[0];
    const QByteArray target = requestLine[1];
    requests_ << QString::fromUtf8(method + ' ' + target.left(target.indexOf('?')));
    const Answer answer = route(method, target, head, body);
    QByteArray reply = "HTTP/1.1 " + statusText(answer.status) + "\r\n";
    if (!answer.location.isEmpty()) {
        reply += "Location: " + answer.location + "\r\n";
    }
    reply += "Content-Type: application/json; charset=utf-8\r\nContent-Length: " +
             QByteArray::number(answer.body.size()) + "\r\n\r\n" + answer.body;
    // The socket is the timer's context: a client gone meanwhile cancels the answer.
    QTimer::singleShot(latency_, socket, [socket, reply] { socket->write(reply); });
}

FakeGoogleServer::Account* FakeGoogleServer::byBearer(const QByteArray& headers) {
    for (const QByteArray& line : headers.split('\n')) {
        if (!line.toLower().startsWith("authorization: bearer ")) {
            continue;
        }
        const QString token = QString::fromUtf8(line.mid(22).trimmed());
        for (Account& account : accounts_) {
            if (!account.accessToken.isEmpty() && account.accessToken == token) {
                return &account;
            }
        }
    }
    return nullptr;
}

FakeGoogleServer::Answer FakeGoogleServer::route(const QByteArray& method, const QByteArray& target,
                                                 const QByteArray& headers,
                                                 const QByteArray& body) {
    const QUrl url(QStringLiteral("https://127.0.0.1") + QString::fromUtf8(target));
    const QUrlQuery query(url);
    const QString path = url.path();
    if (method == "GET" && path == QStringLiteral("/o/oauth2/v2/auth")) {
        if (signIns_ >= static_cast<int>(accounts_.size())) {
            return {400, "{}", {}};
        }
        const QString code = QStringLiteral("code-%1").arg(signIns_);
        codes_[code] = {signIns_, query.queryItemValue(QStringLiteral("code_challenge"))};
        ++signIns_;
        const QString redirect =
            query.queryItemValue(QStringLiteral("redirect_uri"), QUrl::FullyDecoded) +
            QStringLiteral("/?code=") + code + QStringLiteral("&state=") +
            query.queryItemValue(QStringLiteral("state"));
        return {302, {}, redirect.toUtf8()};
    }
    if (method == "POST" && path == QStringLiteral("/token")) {
        const QUrlQuery form(QString::fromUtf8(body));
        const QString grant = form.queryItemValue(QStringLiteral("grant_type"));
        if (grant == QStringLiteral("authorization_code")) {
            const auto found = codes_.find(form.queryItemValue(QStringLiteral("code")));
            const QByteArray verifier =
                form.queryItemValue(QStringLiteral("code_verifier")).toUtf8();
            const QByteArray challenge =
                QCryptographicHash::hash(verifier, QCryptographicHash::Sha256)
                    .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
            if (found == codes_.end() || found->second.second.toUtf8() != challenge) {
                return {400, R"({"error":"invalid_grant"})", {}};
            }
            Account& account = accounts_.at(static_cast<std::size_t>(found->second.first));
            codes_.erase(found);
            account.accessToken = QStringLiteral("at-%1-0").arg(account.id);
            return {200,
                    json(QStringLiteral(R"({"access_token":"%1","refresh_token":"rt-%2",)"
                                        R"("expires_in":%3,"token_type":"Bearer"})")
                             .arg(account.accessToken, account.id)
                             .arg(account.expiresIn)),
                    {}};
        }
        for (Account& account : accounts_) {
            if (QStringLiteral("rt-%1").arg(account.id) ==
                form.queryItemValue(QStringLiteral("refresh_token"))) {
                if (account.revoked) {
                    return {400, R"({"error":"invalid_grant"})", {}};
                }
                ++account.tokenRefreshes;
                account.accessToken =
                    QStringLiteral("at-%1-%2").arg(account.id).arg(account.tokenRefreshes);
                return {200,
                        json(QStringLiteral(R"({"access_token":"%1","expires_in":3600})")
                                 .arg(account.accessToken)),
                        {}};
            }
        }
        return {400, R"({"error":"invalid_grant"})", {}};
    }
    Account* account = byBearer(headers);
    if (!account) {
        return {401, R"({"error":"unauthorized"})", {}};
    }
    if (path == QStringLiteral("/oauth2/v2/userinfo")) {
        return {
            200,
            json(QStringLiteral(R"({"id":"%1","email":"%2"})").arg(account->id, account->email)),
            {}};
    }
    if (path == QStringLiteral("/calendar/v3/users/me/calendarList")) {
        const int page = query.queryItemValue(QStringLiteral("pageToken")).mid(5).toInt();
        QStringList items;
        const int first = page * account->calendarsPerPage;
        for (int i = first; i < std::min(account->calendars, first + account->calendarsPerPage);
             ++i) {
            items << QStringLiteral(R"({"id":"cal-%1-%2@group","summary":"%3 %2",)"
                                    R"("backgroundColor":"#%4"})")
                         .arg(account->id)
                         .arg(i)
                         .arg(account->email.section('@', 0, 0))
                         .arg(i % 2 == 0 ? QStringLiteral("9fc6e7") : QStringLiteral("f691b2"));
        }
        QString next;
        if (first + account->calendarsPerPage < account->calendars) {
            next = QStringLiteral(R"(,"nextPageToken":"page-%1")").arg(page + 1);
        }
        return {200, json(QStringLiteral(R"({"items":[%1]%2})").arg(items.join(','), next)), {}};
    }
    if (path.startsWith(QStringLiteral("/calendar/v3/calendars/")) &&
        path.endsWith(QStringLiteral("/events"))) {
        if (account->failEvents) {
            return {500, "{}", {}};
        }
        const QString calendar = path.section('/', 4, 4);
        const QDateTime start =
            QDateTime::fromString(
                query.queryItemValue(QStringLiteral("timeMin"), QUrl::FullyDecoded), Qt::ISODate)
                .addSecs(10 * 3600);
        return {200,
                json(QStringLiteral(R"({"items":[{"id":"ev-%1","summary":"Meeting %1",)"
                                    R"("start":{"dateTime":"%2"},"end":{"dateTime":"%3"},)"
                                    R"("htmlLink":"https://calendar.google.com/event?eid=%1"},)"
                                    R"({"id":"gone","status":"cancelled"}]})")
                         .arg(calendar, start.toString(Qt::ISODate),
                              start.addSecs(1800).toString(Qt::ISODate))),
                {}};
    }
    return {404, "{}", {}};
}

} // namespace daywyn::test
