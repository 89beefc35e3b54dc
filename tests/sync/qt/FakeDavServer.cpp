#include "FakeDavServer.h"

#include <QTcpSocket>

namespace daywyn::test {

namespace {

const QByteArray kHome = "/ama/";

QByteArray header(const QByteArray& headers, const QByteArray& name) {
    for (const QByteArray& line : headers.split('\n')) {
        const int colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).trimmed().toLower() == name) {
            return line.mid(colon + 1).trimmed();
        }
    }
    return {};
}

QByteArray multistatus(const QByteArray& responses) {
    return "<?xml version=\"1.0\"?><D:multistatus xmlns:D=\"DAV:\" "
           "xmlns:C=\"urn:ietf:params:xml:ns:caldav\">" +
           responses + "</D:multistatus>";
}

QByteArray response(const QByteArray& href, const QByteArray& props) {
    return "<D:response><D:href>" + href + "</D:href><D:propstat><D:prop>" + props +
           "</D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>";
}

} // namespace

FakeDavServer::FakeDavServer(QObject* parent)
    : QObject(parent) {
    connect(&server_, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = server_.nextPendingConnection()) {
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadable(socket); });
            connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
                received_.erase(socket);
                socket->deleteLater();
            });
        }
    });
}

bool FakeDavServer::start() {
    return server_.listen(QHostAddress::LocalHost);
}

QUrl FakeDavServer::url(const QString& path) const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(server_.serverPort()).arg(path));
}

void FakeDavServer::onReadable(QTcpSocket* socket) {
    QByteArray& buffer = received_[socket];
    buffer += socket->readAll();
    for (;;) {
        const int end = buffer.indexOf("\r\n\r\n");
        if (end < 0) {
            return;
        }
        const QByteArray head = buffer.left(end);
        const int length = header(head, "content-length").toInt();
        if (buffer.size() < end + 4 + length) {
            return;
        }
        buffer.remove(0, end + 4 + length);
        const QList<QByteArray> requestLine = head.left(head.indexOf("\r\n")).split(' ');
        const QByteArray method = requestLine.value(0);
        const QByteArray path = requestLine.value(1);
        requests_.append(QString::fromLatin1(method + ' ' + path));
        if (silent_) {
            continue;
        }
        const Answer answer = route(method, path, head);
        QByteArray reply = "HTTP/1.1 " + QByteArray::number(answer.status) + " Fake\r\n";
        if (!answer.body.isEmpty()) {
            reply += "Content-Type: application/xml; charset=utf-8\r\n";
        }
        reply += "Content-Length: " + QByteArray::number(answer.body.size()) + "\r\n\r\n";
        socket->write(reply + answer.body);
    }
}

FakeDavServer::Answer FakeDavServer::route(const QByteArray& method, const QByteArray& path,
                                           const QByteArray& headers) {
    if (header(headers, "authorization") != "Basic " + QByteArray("ama:secret").toBase64()) {
        return {401, {}};
    }
    if (method == "MKCALENDAR") {
        lists_.push_back({QString::fromLatin1(path), QStringLiteral("Daywyn")});
        return {201, {}};
    }
    if (method != "PROPFIND") {
        return {405, {}};
    }
    if (header(headers, "depth") == "1" && path == kHome) {
        QByteArray listed = response(kHome, "<D:resourcetype><D:collection/></D:resourcetype>");
        for (const List& list : lists_) {
            listed += response(list.path.toUtf8(),
                               "<D:resourcetype><D:collection/><C:calendar/></D:resourcetype>"
                               "<D:displayname>" +
                                   list.name.toHtmlEscaped().toUtf8() +
                                   "</D:displayname><C:supported-calendar-component-set>"
                                   "<C:comp name=\"VTODO\"/></C:supported-calendar-component-set>");
        }
        return {207, multistatus(listed)};
    }
    return {207, multistatus(response(path, "<C:calendar-home-set><D:href>" + kHome +
                                                "</D:href></C:calendar-home-set>"))};
}

} // namespace daywyn::test
