#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <QList>
#include <QObject>
#include <QPointer>
#include <QSslCertificate>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <QVariantList>

#include "base/Sha.h"
#include "updates/AppRelease.h"

class QNetworkAccessManager;
class QNetworkReply;
class QTemporaryFile;

namespace daywyn {

class UserSettings;

// Checks the release manifest for a newer Daywyn and downloads the release it offers into
// the Downloads folder, keeping the file only when its SHA-256 matches the manifest. It
// never installs or runs what it downloads. Every outcome ends in one status sentence;
// a failed check keeps the previous list, a failed download keeps no file.
class AppUpdateManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString currentVersion READ currentVersion CONSTANT)
    Q_PROPERTY(QString currentBuild READ currentBuild CONSTANT)
    Q_PROPERTY(bool isChecking READ isChecking NOTIFY isCheckingChanged)
    Q_PROPERTY(bool isDownloading READ isDownloading NOTIFY isDownloadingChanged)
    Q_PROPERTY(QString statusMessage READ statusMessage NOTIFY statusMessageChanged)
    Q_PROPERTY(QVariantList releases READ releasesForDisplay NOTIFY releasesChanged)
    // A plain value to the screens (var), which read its keys by name.
    Q_PROPERTY(QVariant latestRelease READ latestReleaseForDisplay NOTIFY releasesChanged)
    Q_PROPERTY(bool updateAvailable READ updateAvailable NOTIFY releasesChanged)
    Q_PROPERTY(QUrl downloadedInstallerURL READ downloadedInstallerURL NOTIFY
                   downloadedInstallerURLChanged)
    Q_PROPERTY(QString downloadedInstallerPath READ downloadedInstallerPath NOTIFY
                   downloadedInstallerURLChanged)
    // Numbers for the screens (a byte count fits a double exactly below 2^53).
    Q_PROPERTY(double bytesReceived READ bytesReceived NOTIFY progressChanged)
    // -1 while the size is not known.
    Q_PROPERTY(double bytesTotal READ bytesTotal NOTIFY progressChanged)

public:
    static constexpr int defaultTransferTimeoutMilliseconds = 30'000;
    static constexpr int defaultOverallTimeoutMilliseconds = 90'000;

    struct Options {
        // Empty: the built-in manifest.
        QUrl manifestURL;
        // Empty: the desktop's Downloads folder.
        QString downloadFolder;
        // Trusted besides the system's certificate authorities (a private mirror).
        QList<QSslCertificate> extraCaCertificates;
        int transferTimeoutMilliseconds = defaultTransferTimeoutMilliseconds;
        int overallTimeoutMilliseconds = defaultOverallTimeoutMilliseconds;
        QString currentVersion;
        QString currentBuild;
    };

    explicit AppUpdateManager(Options options, QObject* parent = nullptr);
    ~AppUpdateManager() override;

    static QUrl defaultManifestURL();
    // The "updateManifestURL" setting, or the built-in manifest when it is absent or empty.
    static QUrl manifestURLFrom(const UserSettings& settings);

    QString currentVersion() const { return options_.currentVersion; }
    QString currentBuild() const { return options_.currentBuild; }
    QUrl manifestURL() const { return options_.manifestURL; }
    bool isChecking() const { return isChecking_; }
    bool isDownloading() const { return isDownloading_; }
    QString statusMessage() const { return statusMessage_; }
    const std::vector<AppRelease>& releases() const { return releases_; }
    const std::optional<AppRelease>& latestRelease() const { return latestRelease_; }
    bool updateAvailable() const;
    QUrl downloadedInstallerURL() const { return downloadedInstallerURL_; }
    QString downloadedInstallerPath() const { return downloadedInstallerURL_.toLocalFile(); }
    qint64 bytesReceived() const { return bytesReceived_; }
    qint64 bytesTotal() const { return bytesTotal_; }
    QVariantList releasesForDisplay() const;
    QVariantMap latestReleaseForDisplay() const;

    // Fetches and validates the manifest; ignored while a check is running.
    Q_INVOKABLE void checkForUpdates();
    // Downloads the offered release; ignored while a download runs or none is offered.
    Q_INVOKABLE void downloadLatest();
    void download(const AppRelease& release);
    // Opens the verified file with the desktop's default application (its package
    // installer); does nothing when there is none.
    Q_INVOKABLE void openDownloadedInstaller();

Q_SIGNALS:
    void isCheckingChanged();
    void isDownloadingChanged();
    void statusMessageChanged();
    void releasesChanged();
    void downloadedInstallerURLChanged();
    void progressChanged();
    // A check or download has ended, however it ended.
    void checkFinished();
    void downloadFinished();

private:
    QNetworkReply* get(const QUrl& url, qint64 readBufferSize);
    std::optional<std::string> expectedHost() const;
    std::optional<UpdateError> validate(QNetworkReply& reply) const;
    void onManifestFinished();
    void onDownloadReadyRead();
    void onDownloadFinished();
    void finishDownload(std::optional<UpdateError> error, const QUrl& saved = {});
    void setStatus(const QString& text);
    void setChecking(bool value);
    void setDownloading(bool value);

    Options options_;
    QNetworkAccessManager* network_ = nullptr;
    bool isChecking_ = false;
    bool isDownloading_ = false;
    QString statusMessage_;
    std::vector<AppRelease> releases_;
    std::optional<AppRelease> latestRelease_;
    QUrl downloadedInstallerURL_;
    qint64 bytesReceived_ = 0;
    qint64 bytesTotal_ = -1;

    QPointer<QNetworkReply> manifestReply_;
    QTimer manifestDeadline_;
    QPointer<QNetworkReply> downloadReply_;
    QTimer downloadDeadline_;
    std::optional<AppRelease> downloading_;
    std::unique_ptr<QTemporaryFile> partial_;
    Sha256Stream hash_;
    // A failure found while the transfer still runs (a write that failed, a redirect
    // off the manifest's host); the reply is aborted and this is reported instead.
    std::optional<UpdateError> pendingError_;
};

} // namespace daywyn
