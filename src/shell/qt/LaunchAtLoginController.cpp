#include "shell/qt/LaunchAtLoginController.h"

#include <cerrno>
#include <cstring>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include "persistence/AtomicFile.h"
#include "persistence/PosixFileSystem.h"
#include "shell/LaunchAtLoginEntry.h"

namespace daywyn {

LaunchAtLoginController::LaunchAtLoginController(QString entryPath, QString executablePath,
                                                 QObject* parent)
    : QObject(parent)
    , entryPath_(std::move(entryPath))
    , executablePath_(std::move(executablePath)) {
    refresh();
}

QString LaunchAtLoginController::defaultEntryPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/daywyn.desktop");
}

void LaunchAtLoginController::refresh() {
    QFile file(entryPath_);
    bool enabled = false;
    if (file.open(QIODevice::ReadOnly)) {
        // An entry the user switched off in the desktop's own startup settings stays
        // on disk with Hidden=true.
        enabled = !file.readAll().contains("\nHidden=true");
    }
    if (enabled != enabled_) {
        enabled_ = enabled;
        Q_EMIT changed();
    }
}

void LaunchAtLoginController::setEnabled(bool enabled) {
    QString error;
    if (enabled) {
        const QString folder = QFileInfo(entryPath_).absolutePath();
        if (!QDir().mkpath(folder)) {
            error = QStringLiteral("The folder %1 could not be created.").arg(folder);
        } else {
            PosixFileSystem files;
            const Status written =
                writeFileAtomically(files, entryPath_.toStdString(),
                                    LaunchAtLoginEntry::text(executablePath_.toStdString()), 0644);
            if (!written) {
                error = QString::fromStdString(written.error());
            }
        }
    } else if (QFile::exists(entryPath_) && !QFile::remove(entryPath_)) {
        error = QFile(entryPath_).errorString();
        if (error.isEmpty()) {
            error = QString::fromLocal8Bit(std::strerror(errno));
        }
    }
    const QString message =
        error.isEmpty()
            ? QString()
            : QString::fromStdString(LaunchAtLoginEntry::errorMessage(error.toStdString()));
    if (message != errorMessage_) {
        errorMessage_ = message;
        Q_EMIT changed();
    }
    refresh();
}

} // namespace daywyn
