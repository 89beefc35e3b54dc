#include "support/qt/PrivateDesktop.h"

#include "support/qt/QtTestSupport.h"

namespace daywyn::test {

PrivateDesktop::PrivateDesktop(QString screenSize) {
    for (int attempt = 0; attempt < 3 && !ready_; ++attempt) {
        ready_ = start(screenSize);
        if (!ready_) {
            stop();
        }
    }
}

PrivateDesktop::~PrivateDesktop() {
    stop();
}

bool PrivateDesktop::start(const QString& screenSize) {
    server_ = std::make_unique<QProcess>();
    // -displayfd picks a free display and writes its number once the server listens.
    server_->start(QStringLiteral("Xvfb"),
                   {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                    QStringLiteral("0"), screenSize, QStringLiteral("-nolisten"),
                    QStringLiteral("tcp")});
    QString number;
    eventually(
        [&] {
            server_->waitForReadyRead(50);
            number += QString::fromLatin1(server_->readAllStandardOutput());
            return number.contains(QLatin1Char('\n')) || server_->state() == QProcess::NotRunning;
        },
        10);
    display_ = QLatin1Char(':') + number.trimmed();
    // Xvfb reports displays it found taken on its way to a free one.
    const QString serverSaid = QString::fromLocal8Bit(server_->readAllStandardError());
    environment_ = QProcessEnvironment::systemEnvironment();
    environment_.insert(QStringLiteral("DISPLAY"), display_);

    windowManager_ = std::make_unique<QProcess>();
    windowManager_->setProcessEnvironment(environment_);
    windowManager_->start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")});
    windowManager_->waitForStarted(5000);
    const bool answered = eventually(
        [&] {
            return run(QStringLiteral("xprop"),
                       {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTED")})
                .contains(QLatin1String("_NET_ACTIVE_WINDOW"));
        },
        10);
    if (answered) {
        return true;
    }
    const auto ended = [](QProcess& process) {
        return process.waitForFinished(0) || process.state() == QProcess::NotRunning;
    };
    failure_ +=
        QStringLiteral("Xvfb on %1 %2 and said \"%3\"; openbox %4 and said \"%5\". ")
            .arg(display_, ended(*server_) ? QStringLiteral("ended") : QStringLiteral("runs"),
                 (serverSaid + QString::fromLocal8Bit(server_->readAllStandardError())).trimmed(),
                 ended(*windowManager_) ? QStringLiteral("ended") : QStringLiteral("runs"),
                 QString::fromLocal8Bit(windowManager_->readAllStandardError()).trimmed());
    return false;
}

void PrivateDesktop::stop() {
    stopProcess(windowManager_.get());
    stopProcess(server_.get());
    windowManager_.reset();
    server_.reset();
}

QString PrivateDesktop::run(const QString& program, const QStringList& args) const {
    QProcess tool;
    tool.setProcessEnvironment(environment_);
    tool.start(program, args);
    tool.waitForFinished(10000);
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

} // namespace daywyn::test
