#pragma once

#include <QUrl>

#include "sync/CalDavCollection.h"
#include "sync/qt/CalDavSession.h"

namespace daywyn::sync {

// A task list on a CalDAV server (RFC 4791) over HTTP. Changes are listed with a
// sync-collection report (RFC 6578); a server without one, or one that refuses the
// token, gets a PROPFIND listing of every etag instead, skipped while the collection's
// ctag is unchanged. With sync tokens too, a pass asks for the ctag first and reports
// changes only when it moved: one cheap request when nothing changed. Objects are read with
// calendar-multiget and written with conditional PUT and DELETE. Calls block their thread for at
// most the time limit.
class CalDavClient final : public CalDavCollection {
public:
    CalDavClient(const QUrl& collection, DavCredentials credentials,
                 int timeoutMilliseconds = 30'000);

    Result<ChangeListing> changesSince(const std::string& syncToken) override;
    Result<std::vector<RemoteResource>> fetch(const std::vector<std::string>& hrefs) override;
    Result<WriteReply> put(const std::string& href, const std::string& ics,
                           const std::optional<std::string>& ifMatch) override;
    Result<WriteOutcome> remove(const std::string& href, const std::string& etag) override;
    std::string hrefFor(const std::string& uid) const override;

    // The requests sent so far.
    int requestCount() const { return session_.requestCount(); }
    // Ends the client's work early once `stop` is set.
    void stopWhen(StopFlag stop) { session_.stopWhen(std::move(stop)); }

private:
    Result<ChangeListing> reportChanges(const std::string& syncToken, bool& unsupported);
    Result<ChangeListing> listEverything(const std::string& knownCtag);
    // A PROPFIND or REPORT on the collection that must answer with a multistatus.
    Result<MultiStatus> askCollection(const QByteArray& method, const QByteArray& body,
                                      const QByteArray& depth);
    // The collection's ctag, empty when the server has none.
    Result<std::string> currentCtag();
    std::optional<std::string> collectionFailure(int status, const QByteArray& method) const;
    QUrl urlOf(const std::string& href) const;
    bool isCollectionItself(const std::string& href) const;

    QUrl collection_;
    std::string collectionPath_;
    CalDavSession session_;
};

} // namespace daywyn::sync
