#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QByteArray>
#include <QString>
#include <QUrl>

#include "base/Result.h"

class QNetworkAccessManager;

namespace daywyn::sync {

// One property of a WebDAV reply: its text, the hrefs inside it (principal, home set),
// the qualified names of its child elements (resourcetype) and the `name` attributes
// of the comp elements inside it (supported-calendar-component-set).
struct DavProperty {
    QString text;
    std::vector<QString> hrefs;
    std::vector<QString> children;
    std::vector<QString> componentNames;
};

// One <response> of a multistatus reply. `status` is the response's own status (404
// for a member removed since a sync token); the properties are those of its propstat
// with status 200, keyed "namespace|name" ("DAV:|getetag").
struct DavResponse {
    QString href;
    int status = 0;
    std::map<QString, DavProperty> properties;

    const DavProperty* property(const char* key) const;
};

struct MultiStatus {
    std::vector<DavResponse> responses;
    QString syncToken;
};

// Reads a 207 multistatus body. The error says what was wrong in it.
Result<MultiStatus> parseMultiStatus(const QByteArray& body);

// One HTTP exchange as the client saw it.
struct DavReply {
    int status = 0;
    QByteArray body;
    QByteArray etag;
    QByteArray location;
};

// Where a CalDAV account lives and how to get in. The password is held in memory only.
struct DavCredentials {
    QString user;
    QString password;
};

// Set from any thread to end a session's work early: the request under way is dropped
// and no other is sent (a set-up step the user cancelled, an app that quits).
using StopFlag = std::shared_ptr<const std::atomic<bool>>;

// HTTP for CalDAV, synchronous: each call runs a local event loop until the reply, or
// the time limit, ends it. Basic authentication is sent with every request to the
// account's host (and to no other host). Refuses plain http except to this computer.
// Used from one thread at a time: the thread that makes the first call.
class CalDavSession {
public:
    // `server`: the account's URL; its host is the one that gets the credentials.
    CalDavSession(const QUrl& server, DavCredentials credentials, int timeoutMilliseconds = 30'000);
    ~CalDavSession();
    CalDavSession(const CalDavSession&) = delete;
    CalDavSession& operator=(const CalDavSession&) = delete;

    // A sentence when `url` may not be used: neither https nor http to a loopback host.
    static std::optional<std::string> urlProblem(const QUrl& url);

    // Sends the request and returns whatever HTTP status came back; the Error is for no
    // answer at all (refused connection, time limit, certificate, bad URL). Redirects
    // are followed (at most five) when `followRedirects`, each hop checked like the URL.
    Result<DavReply> send(const QByteArray& method, const QUrl& url, const QByteArray& body = {},
                          const std::map<QByteArray, QByteArray>& headers = {},
                          bool followRedirects = false);

    // From now on the session ends its work once `stop` is set.
    void stopWhen(StopFlag stop) { stop_ = std::move(stop); }

    // The error of a request given up because the session was told to stop.
    static const char* stoppedSentence();

    // The requests sent so far (each redirect hop counts).
    int requestCount() const { return requests_; }

    // The sentence for an HTTP status that ends an operation (401, 403, 5xx, others).
    static std::string statusSentence(int status, const QByteArray& method);

private:
    Result<DavReply> sendOnce(const QByteArray& method, const QUrl& url, const QByteArray& body,
                              const std::map<QByteArray, QByteArray>& headers);

    DavCredentials credentials_;
    int timeout_;
    QString authHost_;
    int requests_ = 0;
    StopFlag stop_;
    std::unique_ptr<QNetworkAccessManager> network_;
};

// The path of an href as this client compares them: percent-decoded and re-encoded the
// same way, whatever form the server wrote it in (a full URL or a path).
std::string canonicalHref(const QString& href);
// One path segment (a resource's name) encoded the way canonicalHref writes it.
std::string hrefSegment(const QString& name);

} // namespace daywyn::sync
