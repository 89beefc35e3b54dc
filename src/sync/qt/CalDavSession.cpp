#include "sync/qt/CalDavSession.h"

#include <QEventLoop>
#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslError>
#include <QTimer>
#include <QXmlStreamReader>

namespace daywyn::sync {

namespace {

constexpr int kMostRedirects = 5;

QString qualified(const QXmlStreamReader& xml) {
    return xml.namespaceUri().toString() + QLatin1Char('|') + xml.name().toString();
}

bool isDav(const QXmlStreamReader& xml, const char* name) {
    return xml.namespaceUri() == QLatin1String("DAV:") && xml.name() == QLatin1String(name);
}

// "HTTP/1.1 404 Not Found" -> 404.
int statusCodeOf(const QString& line) {
    const auto parts = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return parts.size() >= 2 ? parts[1].toInt() : 0;
}

// Reads one property element (the reader is on its start) into `property`.
void readProperty(QXmlStreamReader& xml, DavProperty& property) {
    int depth = 1;
    while (depth > 0 && !xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            if (depth == 1) {
                property.children.push_back(qualified(xml));
            }
            if (isDav(xml, "href")) {
                const QString href = xml.readElementText(QXmlStreamReader::IncludeChildElements);
                property.hrefs.push_back(href.trimmed());
                property.text += href;
                break;
            }
            if (xml.name() == QLatin1String("comp")) {
                property.componentNames.push_back(
                    xml.attributes().value(QLatin1String("name")).toString().toUpper());
            }
            ++depth;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::Characters:
            property.text += xml.text();
            break;
        default:
            break;
        }
    }
}

// Reads a <propstat> (the reader is on its start) and keeps its properties when its
// status is 2xx.
void readPropstat(QXmlStreamReader& xml, DavResponse& response) {
    std::map<QString, DavProperty> properties;
    int status = 200;
    while (xml.readNextStartElement()) {
        if (isDav(xml, "prop")) {
            while (xml.readNextStartElement()) {
                DavProperty& property = properties[qualified(xml)];
                readProperty(xml, property);
            }
        } else if (isDav(xml, "status")) {
            status = statusCodeOf(xml.readElementText(QXmlStreamReader::IncludeChildElements));
        } else {
            xml.skipCurrentElement();
        }
    }
    if (status >= 200 && status < 300) {
        for (auto& [key, property] : properties) {
            response.properties[key] = std::move(property);
        }
    }
}

bool isLoopbackHost(const QString& host) {
    if (host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0) {
        return true;
    }
    const QHostAddress address(host);
    return !address.isNull() && address.isLoopback();
}

std::string text(const QString& s) {
    return s.toStdString();
}

// A system reason after ": ", ending the sentence with one full stop.
std::string reason(const QString& s) {
    std::string r = s.trimmed().toStdString();
    return r.empty() || r.back() == '.' ? r : r + ".";
}

} // namespace

const DavProperty* DavResponse::property(const char* key) const {
    const auto found = properties.find(QString::fromLatin1(key));
    return found == properties.end() ? nullptr : &found->second;
}

Result<MultiStatus> parseMultiStatus(const QByteArray& body) {
    QXmlStreamReader xml(body);
    MultiStatus result;
    if (!xml.readNextStartElement() || !isDav(xml, "multistatus")) {
        if (xml.hasError()) {
            return Error{"The sync server sent a reply Daywyn could not read: " +
                         reason(xml.errorString())};
        }
        return Error{"The sync server sent a reply Daywyn could not read: it is not a "
                     "WebDAV multistatus."};
    }
    while (xml.readNextStartElement()) {
        if (isDav(xml, "sync-token")) {
            result.syncToken =
                xml.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
            continue;
        }
        if (!isDav(xml, "response")) {
            xml.skipCurrentElement();
            continue;
        }
        DavResponse response;
        while (xml.readNextStartElement()) {
            if (isDav(xml, "href")) {
                response.href =
                    xml.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
            } else if (isDav(xml, "status")) {
                response.status =
                    statusCodeOf(xml.readElementText(QXmlStreamReader::IncludeChildElements));
            } else if (isDav(xml, "propstat")) {
                readPropstat(xml, response);
            } else {
                xml.skipCurrentElement();
            }
        }
        if (!response.href.isEmpty()) {
            result.responses.push_back(std::move(response));
        }
    }
    if (xml.hasError()) {
        return Error{"The sync server sent a reply Daywyn could not read: " +
                     reason(xml.errorString())};
    }
    return result;
}

std::string canonicalHref(const QString& href) {
    const QUrl url(href, QUrl::TolerantMode);
    // Segment by segment, so that an encoded "/" inside a name stays inside it.
    const QStringList segments = url.path(QUrl::FullyEncoded).split(QLatin1Char('/'));
    std::string path;
    for (qsizetype i = 0; i < segments.size(); ++i) {
        if (i > 0) {
            path += '/';
        }
        path += hrefSegment(QUrl::fromPercentEncoding(segments[i].toUtf8()));
    }
    return path;
}

std::string hrefSegment(const QString& name) {
    return QUrl::toPercentEncoding(name, "@:+,;=!$&'()*").toStdString();
}

CalDavSession::CalDavSession(const QUrl& server, DavCredentials credentials,
                             int timeoutMilliseconds)
    : credentials_(std::move(credentials))
    , timeout_(timeoutMilliseconds)
    , authHost_(server.host()) {}

CalDavSession::~CalDavSession() = default;

const char* CalDavSession::stoppedSentence() {
    return "The sync server's answer is no longer wanted.";
}

std::optional<std::string> CalDavSession::urlProblem(const QUrl& url) {
    if (!url.isValid() || url.host().isEmpty()) {
        return "\"" + text(url.toString()) + "\" is not a server address Daywyn can use.";
    }
    const QString scheme = url.scheme().toLower();
    if (scheme == QLatin1String("https")) {
        return std::nullopt;
    }
    if (scheme == QLatin1String("http") && isLoopbackHost(url.host())) {
        return std::nullopt;
    }
    if (scheme == QLatin1String("http")) {
        return "Daywyn sends your password only over https; " + text(url.host()) +
               " is not this computer, so use an https address.";
    }
    return "\"" + text(url.toString()) + "\" is not an https address.";
}

std::string CalDavSession::statusSentence(int status, const QByteArray& method) {
    if (status == 401) {
        return "The sync server refused the user name or password.";
    }
    if (status == 403) {
        return "The sync server refused access to the task list.";
    }
    if (status == 507) {
        return "The sync server has no room left for more tasks (HTTP 507).";
    }
    if (status >= 500) {
        return "The sync server had a problem (HTTP " + std::to_string(status) +
               "); Daywyn will try again later.";
    }
    return "The sync server answered HTTP " + std::to_string(status) + " to " +
           method.toStdString() + ".";
}

Result<DavReply> CalDavSession::send(const QByteArray& method, const QUrl& url,
                                     const QByteArray& body,
                                     const std::map<QByteArray, QByteArray>& headers,
                                     bool followRedirects) {
    QUrl target = url;
    for (int hop = 0;; ++hop) {
        auto reply = sendOnce(method, target, body, headers);
        if (!reply || !followRedirects || hop == kMostRedirects) {
            return reply;
        }
        const int status = reply.value().status;
        const bool redirect =
            status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
        if (!redirect || reply.value().location.isEmpty()) {
            return reply;
        }
        target = target.resolved(QUrl::fromEncoded(reply.value().location));
    }
}

Result<DavReply> CalDavSession::sendOnce(const QByteArray& method, const QUrl& url,
                                         const QByteArray& body,
                                         const std::map<QByteArray, QByteArray>& headers) {
    if (auto problem = urlProblem(url)) {
        return Error{*problem};
    }
    if (stop_ && stop_->load()) {
        return Error{stoppedSentence()};
    }
    // Made on first use, so that it belongs to the thread that makes the calls.
    if (!network_) {
        network_ = std::make_unique<QNetworkAccessManager>();
        network_->setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
        network_->setCookieJar(nullptr);
    }
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setTransferTimeout(timeout_);
    if (url.host().compare(authHost_, Qt::CaseInsensitive) == 0) {
        const QByteArray pair =
            (credentials_.user + QLatin1Char(':') + credentials_.password).toUtf8().toBase64();
        request.setRawHeader("Authorization", "Basic " + pair);
    }
    for (const auto& [name, value] : headers) {
        request.setRawHeader(name, value);
    }
    ++requests_;
    QNetworkReply* reply = network_->sendCustomRequest(request, method, body);
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    bool timedOut = false;
    QObject::connect(&limit, &QTimer::timeout, &loop, [&] {
        timedOut = true;
        reply->abort();
    });
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    // Looked at a few times a second: a stop need not be noticed sooner.
    QTimer stopCheck;
    bool stopped = false;
    if (stop_) {
        QObject::connect(&stopCheck, &QTimer::timeout, &loop, [&] {
            if (stop_->load()) {
                stopped = true;
                reply->abort();
            }
        });
        stopCheck.start(50);
    }
    QString tlsProblem;
    QObject::connect(reply, &QNetworkReply::sslErrors, &loop, [&](const QList<QSslError>& errors) {
        if (!errors.isEmpty()) {
            tlsProblem = errors.first().errorString();
        }
    });
    // A transfer that stalls for the limit ends through the request's own timeout; this
    // one ends a server that trickles bytes forever.
    limit.start(timeout_ * 3);
    if (!reply->isFinished()) {
        loop.exec();
    }
    limit.stop();
    stopCheck.stop();
    std::unique_ptr<QNetworkReply> owned(reply);
    if (stopped) {
        return Error{stoppedSentence()};
    }

    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const QNetworkReply::NetworkError error = reply->error();
    const std::string seconds = std::to_string((timeout_ + 999) / 1000);
    if (timedOut || error == QNetworkReply::OperationCanceledError ||
        error == QNetworkReply::TimeoutError) {
        return Error{"The sync server did not answer within " + seconds + " seconds."};
    }
    if (error == QNetworkReply::SslHandshakeFailedError || !tlsProblem.isEmpty()) {
        const QString why = tlsProblem.isEmpty() ? reply->errorString() : tlsProblem;
        return Error{"Daywyn could not make a secure connection to the sync server: " +
                     reason(why)};
    }
    if (!status.isValid()) {
        return Error{"The sync server could not be reached: " + reason(reply->errorString())};
    }
    DavReply result;
    result.status = status.toInt();
    result.body = reply->readAll();
    result.etag = reply->rawHeader("ETag");
    result.location = reply->rawHeader("Location");
    return result;
}

} // namespace daywyn::sync
