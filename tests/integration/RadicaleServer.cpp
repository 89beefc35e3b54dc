#include "RadicaleServer.h"

#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include "support/qt/QtTestSupport.h"

namespace daywyn::test {

namespace {

int freePort() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

bool accepts(int port) {
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
    return socket.waitForConnected(200);
}

} // namespace

RadicaleServer::RadicaleServer()
    : port_(freePort()) {
    QFile users(folder_.filePath(QStringLiteral("users")));
    users.open(QIODevice::WriteOnly);
    users.write("ama:secret\nbo:other\n");
    users.close();
    QFile config(folder_.filePath(QStringLiteral("config")));
    config.open(QIODevice::WriteOnly);
    config.write(QStringLiteral("[server]\nhosts = 127.0.0.1:%1\n"
                                "[auth]\ntype = htpasswd\nhtpasswd_filename = %2\n"
                                "htpasswd_encryption = plain\ndelay = 0\n"
                                "[rights]\ntype = owner_only\n"
                                "[storage]\nfilesystem_folder = %3\n"
                                "[web]\ntype = none\n"
                                "[logging]\nlevel = warning\n")
                     .arg(port_)
                     .arg(folder_.filePath(QStringLiteral("users")),
                          folder_.filePath(QStringLiteral("storage")))
                     .toUtf8());
    config.close();
}

RadicaleServer::~RadicaleServer() {
    stop();
}

bool RadicaleServer::start() {
    process_.setProcessChannelMode(QProcess::ForwardedChannels);
    process_.start(QStringLiteral("/usr/bin/radicale"),
                   {QStringLiteral("--config"), folder_.filePath(QStringLiteral("config"))});
    if (!process_.waitForStarted(5000)) {
        problem_ = QStringLiteral("radicale did not start: ") + process_.errorString();
        return false;
    }
    // waitForFinished lets QProcess notice an early exit (a bad configuration).
    const bool listening = eventually(
        [this] { return accepts(port_) || process_.waitForFinished(50) || !running(); }, 20);
    if (!listening || !running()) {
        problem_ = QStringLiteral("radicale did not listen on port %1").arg(port_);
        return false;
    }
    return true;
}

void RadicaleServer::stop() {
    if (running()) {
        stopProcess(&process_);
    }
}

QUrl RadicaleServer::url(const QString& path) const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(port_).arg(path));
}

} // namespace daywyn::test
