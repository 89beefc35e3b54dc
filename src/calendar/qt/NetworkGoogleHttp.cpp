#include "calendar/qt/NetworkGoogleHttp.h"

#include <QNetworkCookieJar>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace daywyn {

namespace {

constexpr int kTransferTimeout = 30'000;
constexpr int kOverallTimeout = 90'000;

} // namespace

NetworkGoogleHttp::NetworkGoogleHttp(QObject* parent)
    : QObject(parent) {}

NetworkGoogleHttp::~NetworkGoogleHttp() = default;

QNetworkAccessManager& NetworkGoogleHttp::network() {
    // Made by the first request: without a Google account Qt's network stack is never
    // set up.
    if (!network_) {
        network_ = std::make_unique<QNetworkAccessManager>();
        network_->setCookieJar(new QNetworkCookieJar(network_.get()));
        network_->setTransferTimeout(kTransferTimeout);
        network_->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    }
    return *network_;
}

void NetworkGoogleHttp::send(GoogleHttpRequest request, Completion done) {
    const QUrl url(QString::fromStdString(request.url));
    QNetworkRequest outgoing(url);
    outgoing.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                          QNetworkRequest::AlwaysNetwork);
    outgoing.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    if (request.bearerToken) {
        outgoing.setRawHeader("Authorization", QByteArray("Bearer ") +
                                                   QByteArray::fromStdString(*request.bearerToken));
    }
    QNetworkReply* reply = nullptr;
    if (request.formBody) {
        outgoing.setHeader(QNetworkRequest::ContentTypeHeader,
                           QByteArrayLiteral("application/x-www-form-urlencoded"));
        reply = network().post(outgoing, QByteArray::fromStdString(*request.formBody));
    } else {
        reply = network().get(outgoing);
    }
    auto* overall = new QTimer(reply);
    overall->setSingleShot(true);
    connect(overall, &QTimer::timeout, reply, &QNetworkReply::abort);
    overall->start(kOverallTimeout);
    connect(reply, &QNetworkReply::finished, this, [reply, url, done = std::move(done)] {
        reply->deleteLater();
        GoogleHttpResponse response;
        const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        const QUrl finalUrl = reply->url();
        const bool sameOrigin = finalUrl.scheme() == url.scheme() && finalUrl.host() == url.host();
        if (status.isValid() && sameOrigin) {
            response.status = status.toInt();
            response.body = reply->readAll().toStdString();
        }
        done(std::move(response));
    });
}

} // namespace daywyn
