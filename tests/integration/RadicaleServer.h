#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QUrl>

namespace daywyn::test {

// A real Radicale CalDAV server on 127.0.0.1 with a temporary storage folder and
// plain-text htpasswd users ("ama" with "secret", "bo" with "other"). Stopping it keeps
// the storage and the port, so a restart serves the same task lists.
class RadicaleServer {
public:
    RadicaleServer();
    ~RadicaleServer();

    // False (with the reason in `problem()`) when the server did not come up.
    bool start();
    void stop();
    bool running() const { return process_.state() == QProcess::Running; }
    const QString& problem() const { return problem_; }

    // http://127.0.0.1:PORT/ + `path`.
    QUrl url(const QString& path = QStringLiteral("/")) const;
    int port() const { return port_; }

private:
    QTemporaryDir folder_;
    QProcess process_;
    int port_ = 0;
    QString problem_;
};

} // namespace daywyn::test
