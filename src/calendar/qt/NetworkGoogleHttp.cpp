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
    : QObject(parent) {
    network_.setCookieJar(new QNetworkCookieJar(&network_));
    network_.setTransferTimeout(kTransferTimeout);
    network_.setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
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
        reply = network_.post(outgoing, QByteArray::fromStdString(*request.formBody));
    } else {
        reply = network_.get(outgoing);
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
