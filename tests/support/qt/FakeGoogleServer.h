#pragma once

#include <map>
#include <vector>

#include <QByteArray>
#include <QObject>
#include <QSslCertificate>
#include <QSslServer>
#include <QString>
#include <QStringList>

class QSslSocket;

namespace daywyn::test {

// Google's sign-in, token, userinfo and Calendar API endpoints as an HTTPS/1.1 server
// on 127.0.0.1, with a certificate made when it starts. Sign-ins are granted to the
// accounts in the order they were added; the PKCE verifier is checked against the
// challenge; calendar lists come in pages; every answer can be delayed.
class FakeGoogleServer : public QObject {
    Q_OBJECT

public:
    struct Account {
        QString id;
        QString email;
        int calendars = 3;
        int calendarsPerPage = 2;
        int expiresIn = 3600;
        // Events requests of this account answer 500.
        bool failEvents = false;
        // Refreshing its token answers 400 invalid_grant.
        bool revoked = false;
        // Filled by the server.
        QString accessToken;
        int tokenRefreshes = 0;
    };

    explicit FakeGoogleServer(QObject* parent = nullptr);
    ~FakeGoogleServer() override;

    // Makes the certificate (written to `folder`/google.pem) and listens; false on failure.
    bool start(const QString& folder);
    QString origin() const;
    QString certificatePath() const { return certificatePath_; }
    QSslCertificate certificate() const { return certificate_; }
    void addAccount(Account account) { accounts_.push_back(std::move(account)); }
    Account& account(int index) { return accounts_.at(static_cast<std::size_t>(index)); }
    // Delay of every answer.
    void setLatency(int milliseconds) { latency_ = milliseconds; }
    // "METHOD /path" of every request, in arrival order.
    const QStringList& requests() const { return requests_; }

private:
    struct Answer {
        int status = 200;
        QByteArray body;
        QByteArray location;
    };
    void onConnection();
    void onReadable(QSslSocket* socket);
    Answer route(const QByteArray& method, const QByteArray& target, const QByteArray& headers,
                 const QByteArray& body);
    Account* byBearer(const QByteArray& headers);

    QSslServer server_;
    QSslCertificate certificate_;
    QString certificatePath_;
    std::vector<Account> accounts_;
    std::map<QString, std::pair<int, QString>> codes_;
    int signIns_ = 0;
    int latency_ = 0;
    QStringList requests_;
    std::map<QSslSocket*, QByteArray> received_;
};

} // namespace daywyn::test
