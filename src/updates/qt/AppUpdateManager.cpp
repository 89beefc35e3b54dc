#include "updates/qt/AppUpdateManager.h"

#include <unistd.h>

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkCookieJar>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QStandardPaths>
#include <QTemporaryFile>
#include <QVariantMap>

#include "base/Version.h"
#include "persistence/qt/UserSettings.h"
#include "updates/UpdateRules.h"
#include "updates/UpdateStatusText.h"

namespace daywyn {
namespace {

// A manifest is a few kilobytes; anything far larger is not one.
constexpr qint64 maximumManifestBytes = 1024 * 1024;
// What the network layer may hold of a download before we write it out: the download
// streams to disk, so memory stays small whatever the file's size.
constexpr qint64 downloadReadBufferBytes = 256 * 1024;
constexpr int maximumRedirects = 10;

QString fromStd(const std::string& text) {
    return QString::fromStdString(text);
}

QVariantMap releaseForDisplay(const AppRelease& release) {
    QStringList notes;
    for (const std::string& line : release.notes) {
        notes.append(fromStd(line));
    }
    return {
        {QStringLiteral("version"), fromStd(release.version)},
        {QStringLiteral("build"), QString::number(release.build)},
        {QStringLiteral("publishedAt"), fromStd(release.publishedAt)},
        {QStringLiteral("minimumSystem"), fromStd(release.minimumMacOS)},
        {QStringLiteral("notes"), notes},
    };
}

} // namespace

AppUpdateManager::AppUpdateManager(Options options, QObject* parent)
    : QObject(parent)
    , options_(std::move(options)) {
    if (options_.manifestURL.isEmpty()) {
        options_.manifestURL = defaultManifestURL();
    }
    if (options_.currentVersion.isEmpty()) {
        options_.currentVersion = QString::fromUtf8(appVersion());
    }
    if (options_.currentBuild.isEmpty()) {
        options_.currentBuild = QString::fromUtf8(appBuildNumber());
    }
    for (QTimer* deadline : {&manifestDeadline_, &downloadDeadline_}) {
        deadline->setSingleShot(true);
        deadline->setInterval(options_.overallTimeoutMilliseconds);
    }
    connect(&manifestDeadline_, &QTimer::timeout, this, [this] {
        if (manifestReply_) {
            manifestReply_->abort();
        }
    });
    connect(&downloadDeadline_, &QTimer::timeout, this, [this] {
        if (downloadReply_) {
            pendingError_ = UpdateError::untrustedResponse;
            downloadReply_->abort();
        }
    });
}

AppUpdateManager::~AppUpdateManager() {
    // Replies finish synchronously when aborted; nothing may be reported from here.
    disconnect(this);
    for (QNetworkReply* reply : {manifestReply_.data(), downloadReply_.data()}) {
        if (reply) {
            reply->disconnect(this);
            reply->abort();
            delete reply;
        }
    }
}

QUrl AppUpdateManager::defaultManifestURL() {
    return QUrl(QStringLiteral("https://daywyn.org/updates/manifest.json"));
}

QUrl AppUpdateManager::manifestURLFrom(const UserSettings& settings) {
    const QString text = settings.stringValue(QStringLiteral("updateManifestURL")).trimmed();
    return text.isEmpty() ? defaultManifestURL() : QUrl(text);
}

bool AppUpdateManager::updateAvailable() const {
    return latestRelease_ &&
           isUpdateAvailable(latestRelease_->version, options_.currentVersion.toStdString());
}

QVariantList AppUpdateManager::releasesForDisplay() const {
    QVariantList list;
    for (const AppRelease& release : releases_) {
        list.append(releaseForDisplay(release));
    }
    return list;
}

QVariantMap AppUpdateManager::latestReleaseForDisplay() const {
    return latestRelease_ ? releaseForDisplay(*latestRelease_) : QVariantMap();
}

std::optional<std::string> AppUpdateManager::expectedHost() const {
    // Always the manifest's host: the manifest, every download and every final reply
    // must come from it.
    return options_.manifestURL.host().toStdString();
}

QNetworkReply* AppUpdateManager::get(const QUrl& url, qint64 readBufferSize) {
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    // Each redirect is looked at before it is followed, so a redirect off the manifest's
    // host is never even contacted.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setMaximumRedirectsAllowed(maximumRedirects);
    request.setTransferTimeout(options_.transferTimeoutMilliseconds);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("Daywyn/") + options_.currentVersion);
    if (!options_.extraCaCertificates.isEmpty()) {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.addCaCertificates(options_.extraCaCertificates);
        request.setSslConfiguration(tls);
    }
    // Made by the first check, not at start-up: an app that never checks for updates
    // never sets up Qt's network stack (its proxy lookup, TLS and Kerberos libraries).
    if (!network_) {
        network_ = new QNetworkAccessManager(this);
        // Nothing of an update check stays behind: no disk cache, and cookies live only
        // as long as this manager.
        network_->setCache(nullptr);
        network_->setCookieJar(new QNetworkCookieJar(network_));
        network_->setAutoDeleteReplies(false);
    }
    QNetworkReply* reply = network_->get(request);
    reply->setReadBufferSize(readBufferSize);
    connect(reply, &QNetworkReply::redirected, this, [this, reply](const QUrl& target) {
        if (validateResponse(200, target.toString().toStdString(), expectedHost())) {
            if (reply == downloadReply_) {
                pendingError_ = UpdateError::untrustedResponse;
            }
            reply->abort();
            return;
        }
        Q_EMIT reply->redirectAllowed();
    });
    return reply;
}

std::optional<UpdateError> AppUpdateManager::validate(QNetworkReply& reply) const {
    if (reply.error() != QNetworkReply::NoError) {
        return UpdateError::untrustedResponse;
    }
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    return validateResponse(status.isValid() ? std::optional<int>(status.toInt()) : std::nullopt,
                            reply.url().toString().toStdString(), expectedHost());
}

void AppUpdateManager::setStatus(const QString& text) {
    if (statusMessage_ != text) {
        statusMessage_ = text;
        Q_EMIT statusMessageChanged();
    }
}

void AppUpdateManager::setChecking(bool value) {
    if (isChecking_ != value) {
        isChecking_ = value;
        Q_EMIT isCheckingChanged();
    }
}

void AppUpdateManager::setDownloading(bool value) {
    if (isDownloading_ != value) {
        isDownloading_ = value;
        Q_EMIT isDownloadingChanged();
    }
}

void AppUpdateManager::checkForUpdates() {
    if (isChecking_) {
        return;
    }
    setChecking(true);
    setStatus(fromStd(UpdateStatusText::checking()));
    manifestReply_ = get(options_.manifestURL, maximumManifestBytes + 1);
    // A body larger than any manifest would fill the read buffer and stall until the
    // transfer timeout; stop at once instead.
    connect(manifestReply_, &QNetworkReply::readyRead, this, [this] {
        if (manifestReply_ && manifestReply_->bytesAvailable() > maximumManifestBytes) {
            manifestReply_->abort();
        }
    });
    connect(manifestReply_, &QNetworkReply::finished, this, &AppUpdateManager::onManifestFinished);
    manifestDeadline_.start();
}

void AppUpdateManager::onManifestFinished() {
    manifestDeadline_.stop();
    QNetworkReply* reply = manifestReply_;
    manifestReply_ = nullptr;
    if (!reply) {
        return;
    }
    reply->deleteLater();

    std::optional<UpdateError> error = validate(*reply);
    std::optional<CheckedManifest> checked;
    if (!error) {
        const QByteArray body = reply->read(maximumManifestBytes + 1);
        if (body.size() > maximumManifestBytes) {
            error = UpdateError::invalidManifest;
        } else {
            auto outcome =
                checkManifest(std::string_view(body.constData(), body.size()), expectedHost());
            if (auto* good = std::get_if<CheckedManifest>(&outcome)) {
                checked = std::move(*good);
            } else {
                error = std::get<UpdateError>(outcome);
            }
        }
    }

    if (checked) {
        releases_ = std::move(checked->releases);
        latestRelease_ = std::move(checked->latestRelease);
        Q_EMIT releasesChanged();
        setStatus(updateAvailable()
                      ? fromStd(UpdateStatusText::available(latestRelease_->version))
                      : fromStd(UpdateStatusText::upToDate(options_.currentVersion.toStdString())));
    } else {
        setStatus(fromStd(UpdateStatusText::checkFailed()));
    }
    setChecking(false);
    Q_EMIT checkFinished();
}

void AppUpdateManager::downloadLatest() {
    if (latestRelease_) {
        download(*latestRelease_);
    }
}

void AppUpdateManager::download(const AppRelease& release) {
    if (isDownloading_) {
        return;
    }
    setDownloading(true);
    if (!downloadedInstallerURL_.isEmpty()) {
        downloadedInstallerURL_.clear();
        Q_EMIT downloadedInstallerURLChanged();
    }
    setStatus(fromStd(UpdateStatusText::downloading(release.version)));
    bytesReceived_ = 0;
    bytesTotal_ = -1;
    Q_EMIT progressChanged();
    downloading_ = release;
    pendingError_.reset();
    hash_.reset();

    // The release was validated with the manifest; a release handed in from elsewhere
    // gets the same scrutiny.
    if (const auto invalid = validateRelease(release, expectedHost())) {
        finishDownload(invalid);
        return;
    }
    QString folder = options_.downloadFolder;
    if (folder.isEmpty()) {
        folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    }
    if (folder.isEmpty() || !QDir().mkpath(folder)) {
        finishDownload(UpdateError::downloadFolderUnavailable);
        return;
    }
    // The partial file sits beside its destination so the final move is a rename within
    // one folder; it is hidden, so a file manager does not offer a half-written package.
    partial_ = std::make_unique<QTemporaryFile>(
        QDir(folder).filePath(QStringLiteral(".Daywyn-download-XXXXXX.part")));
    if (!partial_->open()) {
        finishDownload(UpdateError::downloadFolderUnavailable);
        return;
    }

    downloadReply_ = get(QUrl(fromStd(release.downloadURL)), downloadReadBufferBytes);
    connect(downloadReply_, &QNetworkReply::readyRead, this,
            &AppUpdateManager::onDownloadReadyRead);
    // Progress counts what reached the file; Qt's own progress signal is rate-limited
    // and can lag behind at the end or while the server pauses.
    connect(downloadReply_, &QNetworkReply::metaDataChanged, this, [this] {
        if (!downloadReply_) {
            return;
        }
        const QVariant length = downloadReply_->header(QNetworkRequest::ContentLengthHeader);
        bytesTotal_ = length.isValid() && length.toLongLong() > 0 ? length.toLongLong() : -1;
        Q_EMIT progressChanged();
    });
    connect(downloadReply_, &QNetworkReply::finished, this, &AppUpdateManager::onDownloadFinished);
    downloadDeadline_.start();
}

void AppUpdateManager::onDownloadReadyRead() {
    QNetworkReply* reply = downloadReply_;
    if (!reply || !partial_ || pendingError_) {
        return;
    }
    // An error page or a redirect's body is not part of the file.
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && (status.toInt() < 200 || status.toInt() > 299)) {
        reply->readAll();
        return;
    }
    while (reply->bytesAvailable() > 0) {
        const QByteArray chunk = reply->read(downloadReadBufferBytes);
        if (chunk.isEmpty()) {
            break;
        }
        if (partial_->write(chunk) != chunk.size()) {
            // A full disk or a folder that went away: stop now rather than fetch the rest.
            pendingError_ = UpdateError::downloadFolderUnavailable;
            reply->abort();
            return;
        }
        hash_.addData(chunk.constData(), static_cast<std::size_t>(chunk.size()));
        bytesReceived_ += chunk.size();
        Q_EMIT progressChanged();
    }
}

void AppUpdateManager::onDownloadFinished() {
    downloadDeadline_.stop();
    QNetworkReply* reply = downloadReply_;
    if (!reply) {
        return;
    }
    if (!pendingError_) {
        onDownloadReadyRead();
    }
    downloadReply_ = nullptr;
    reply->deleteLater();
    if (pendingError_) {
        finishDownload(pendingError_);
        return;
    }
    if (const auto untrusted = validate(*reply)) {
        finishDownload(untrusted);
        return;
    }
    if (!partial_->flush() || ::fsync(partial_->handle()) != 0) {
        finishDownload(UpdateError::downloadFolderUnavailable);
        return;
    }
    if (!checksumMatches(hash_.hexDigest(), downloading_->sha256)) {
        finishDownload(UpdateError::checksumMismatch);
        return;
    }

    const QDir folder = QFileInfo(partial_->fileName()).absoluteDir();
    // Renaming never replaces an existing file (Qt renames with RENAME_NOREPLACE), so a
    // file that appears between choosing a name and moving just moves us to the next.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const auto name =
            destinationFileName(downloading_->version, downloading_->downloadURL,
                                [&folder](const std::string& candidate) {
                                    return QFileInfo::exists(folder.filePath(fromStd(candidate)));
                                });
        if (!name) {
            break;
        }
        const QString destination = folder.filePath(fromStd(*name));
        if (partial_->rename(destination)) {
            partial_->setAutoRemove(false);
            finishDownload(std::nullopt, QUrl::fromLocalFile(destination));
            return;
        }
        if (!QFileInfo::exists(destination)) {
            break;
        }
    }
    finishDownload(UpdateError::downloadFolderUnavailable);
}

void AppUpdateManager::finishDownload(std::optional<UpdateError> error, const QUrl& saved) {
    // The partial file goes with its object unless it was moved into place.
    partial_.reset();
    const std::string version = downloading_ ? downloading_->version : std::string();
    downloading_.reset();
    pendingError_.reset();
    if (error) {
        setStatus(fromStd(UpdateStatusText::downloadFailed(*error)));
    } else {
        downloadedInstallerURL_ = saved;
        Q_EMIT downloadedInstallerURLChanged();
        setStatus(fromStd(UpdateStatusText::downloaded(version)));
    }
    setDownloading(false);
    Q_EMIT downloadFinished();
}

void AppUpdateManager::openDownloadedInstaller() {
    if (!downloadedInstallerURL_.isEmpty()) {
        QDesktopServices::openUrl(downloadedInstallerURL_);
    }
}

} // namespace daywyn
