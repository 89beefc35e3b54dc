#pragma once

#include <map>
#include <vector>

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTcpServer>
#include <QUrl>

class QTcpSocket;

namespace daywyn::test {

// The discovery side of a CalDAV account as plain HTTP/1.1 on 127.0.0.1: any address
// names the calendar home /ama/ of user "ama" (password "secret"), whose task lists
// are listed with Depth 1; MKCALENDAR adds one. Every other request, and a wrong
// password, gets the status a real server would give.
class FakeDavServer : public QObject {
    Q_OBJECT

public:
    struct List {
        QString path;
        QString name;
    };

    explicit FakeDavServer(QObject* parent = nullptr);
    bool start();
    QUrl url(const QString& path = QStringLiteral("/")) const;

    void addList(const QString& path, const QString& name) { lists_.push_back({path, name}); }
    const std::vector<List>& lists() const { return lists_; }
    // While silent, requests are taken in and never answered: a server that hangs.
    void setSilent(bool silent) { silent_ = silent; }
    // "METHOD /path" of every request, in arrival order.
    const QStringList& requests() const { return requests_; }

private:
    struct Answer {
        int status = 200;
        QByteArray body;
    };
    void onReadable(QTcpSocket* socket);
    Answer route(const QByteArray& method, const QByteArray& path, const QByteArray& headers);

    std::vector<List> lists_;
    QStringList requests_;
    bool silent_ = false;
    std::map<QTcpSocket*, QByteArray> received_;
    // Last, so that it goes first: its open sockets still reach `received_` as they close.
    QTcpServer server_;
};

} // namespace daywyn::test
