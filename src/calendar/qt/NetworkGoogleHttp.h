#pragma once

#include <memory>

#include <QNetworkAccessManager>
#include <QObject>

#include "calendar/GoogleHttp.h"

namespace daywyn {

// GoogleHttp over Qt Network: no disk cache and a cookie jar of its own that is never
// saved, a 30 s transfer timeout and a 90 s limit on a whole request. A reply that
// ends on another scheme or host than it was sent to (after redirects) counts as no
// answer. Requests still under way when this is destroyed never complete.
class NetworkGoogleHttp : public QObject, public GoogleHttp {
    Q_OBJECT

public:
    explicit NetworkGoogleHttp(QObject* parent = nullptr);
    ~NetworkGoogleHttp() override;
    void send(GoogleHttpRequest request, Completion done) override;

private:
    QNetworkAccessManager& network();

    std::unique_ptr<QNetworkAccessManager> network_;
};

} // namespace daywyn
