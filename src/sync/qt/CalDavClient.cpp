#include "sync/qt/CalDavClient.h"

#include <algorithm>

namespace daywyn::sync {

namespace {

// A listing that fell back from sync tokens to ctags carries the ctag as its token,
// marked so that the next call compares ctags instead of asking for a report.
constexpr std::string_view kCtagToken = "daywyn-ctag:";
// A listing from sync tokens carries the collection's ctag beside the token
// ("daywyn-ctag+sync:<ctag>\n<token>"; no ctag when the server has none), so that a pass
// first asks for the ctag alone and reports changes only when it moved. Servers that
// work out both from every entry of the list (Radicale) answer the ctag sooner.
constexpr std::string_view kCtagAndSyncToken = "daywyn-ctag+sync:";

// Hrefs per calendar-multiget, so that a list of thousands is not one huge request.
constexpr std::size_t kHrefsPerFetch = 200;

const QByteArray kXmlType = "application/xml; charset=utf-8";

QByteArray escaped(const std::string& text) {
    return QString::fromStdString(text).toHtmlEscaped().toUtf8();
}

bool startsWith(const std::string& text, std::string_view prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

// The etag as the server sent it, quotes included: If-Match wants it that way.
std::string etagOf(const DavResponse& response) {
    const DavProperty* etag = response.property("DAV:|getetag");
    return etag ? etag->text.trimmed().toStdString() : std::string();
}

bool isCollectionResource(const DavResponse& response) {
    const DavProperty* type = response.property("DAV:|resourcetype");
    return type && std::find(type->children.begin(), type->children.end(),
                             QStringLiteral("DAV:|collection")) != type->children.end();
}

} // namespace

CalDavClient::CalDavClient(const QUrl& collection, DavCredentials credentials,
                           int timeoutMilliseconds)
    : collection_(collection)
    , session_(collection, std::move(credentials), timeoutMilliseconds) {
    if (!collection_.path().endsWith(QLatin1Char('/'))) {
        collection_.setPath(collection_.path() + QLatin1Char('/'));
    }
    collectionPath_ = canonicalHref(collection_.toString());
}

QUrl CalDavClient::urlOf(const std::string& href) const {
    return collection_.resolved(QUrl::fromEncoded(QByteArray::fromStdString(href)));
}

bool CalDavClient::isCollectionItself(const std::string& href) const {
    return href == collectionPath_ || href + "/" == collectionPath_;
}

std::string CalDavClient::hrefFor(const std::string& uid) const {
    // Characters a path segment may not hold are encoded; the rest of the UID stays
    // readable on the server.
    return collectionPath_ + hrefSegment(QString::fromStdString(uid) + QStringLiteral(".ics"));
}

std::optional<std::string> CalDavClient::collectionFailure(int status,
                                                           const QByteArray& method) const {
    if (status == 404 || status == 410) {
        return "The task list was not found on the sync server: " +
               collection_.toDisplayString().toStdString() + ".";
    }
    return CalDavSession::statusSentence(status, method);
}

Result<ChangeListing> CalDavClient::changesSince(const std::string& syncToken) {
    if (startsWith(syncToken, kCtagToken)) {
        return listEverything(syncToken.substr(kCtagToken.size()));
    }
    std::string token = syncToken;
    std::optional<std::string> knownCtag;
    if (startsWith(syncToken, kCtagAndSyncToken)) {
        const std::string both = syncToken.substr(kCtagAndSyncToken.size());
        const auto newline = both.find('\n');
        knownCtag = both.substr(0, newline);
        token = newline == std::string::npos ? std::string() : both.substr(newline + 1);
    }
    // Read before the report: a change made after it moves the ctag again, so the next
    // pass reports it.
    std::string ctag;
    if (!knownCtag || !knownCtag->empty()) {
        auto current = currentCtag();
        if (!current) {
            return Error{current.error()};
        }
        ctag = current.value();
        if (knownCtag && ctag == *knownCtag && !token.empty()) {
            ChangeListing unchanged;
            unchanged.syncToken = syncToken;
            return unchanged;
        }
    }
    bool unsupported = false;
    auto listing = reportChanges(token, unsupported);
    if (!listing && unsupported) {
        return listEverything({});
    }
    if (!listing) {
        return listing;
    }
    ChangeListing changes = std::move(listing).value();
    if (!changes.syncToken.empty()) {
        changes.syncToken = std::string(kCtagAndSyncToken) + ctag + "\n" + changes.syncToken;
    }
    return changes;
}

Result<ChangeListing> CalDavClient::reportChanges(const std::string& syncToken, bool& unsupported) {
    const QByteArray body = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                            "<D:sync-collection xmlns:D=\"DAV:\"><D:sync-token>" +
                            escaped(syncToken) +
                            "</D:sync-token><D:sync-level>1</D:sync-level>"
                            "<D:prop><D:getetag/></D:prop></D:sync-collection>";
    auto reply =
        session_.send("REPORT", collection_, body, {{"Content-Type", kXmlType}, {"Depth", "0"}});
    if (!reply) {
        return Error{reply.error()};
    }
    const int status = reply.value().status;
    // 403 or 409 with valid-sync-token: the token is no longer good; the report without
    // one lists everything with a fresh token.
    if ((status == 403 || status == 409) && reply.value().body.contains("valid-sync-token")) {
        if (syncToken.empty()) {
            unsupported = true;
            return Error{"The sync server refused to list the task list's changes."};
        }
        return reportChanges({}, unsupported);
    }
    // No such report here: a full listing answers the question.
    if (status == 400 || status == 405 || status == 409 || status == 415 || status == 501) {
        unsupported = true;
        return Error{"The sync server has no sync-collection report."};
    }
    if (status != 207) {
        return Error{*collectionFailure(status, "REPORT")};
    }
    auto parsed = parseMultiStatus(reply.value().body);
    if (!parsed) {
        return Error{parsed.error()};
    }
    ChangeListing listing;
    listing.complete = syncToken.empty();
    listing.syncToken = parsed.value().syncToken.toStdString();
    for (const DavResponse& response : parsed.value().responses) {
        const std::string href = canonicalHref(response.href);
        if (isCollectionItself(href) || isCollectionResource(response)) {
            continue;
        }
        if (response.status == 404 || response.status == 410) {
            listing.removed.push_back(href);
            continue;
        }
        const std::string etag = etagOf(response);
        if (!etag.empty()) {
            listing.changed.push_back(ResourceEtag{href, etag});
        }
    }
    return listing;
}

Result<MultiStatus> CalDavClient::askCollection(const QByteArray& method, const QByteArray& body,
                                                const QByteArray& depth) {
    auto reply =
        session_.send(method, collection_, body, {{"Content-Type", kXmlType}, {"Depth", depth}});
    if (!reply) {
        return Error{reply.error()};
    }
    if (reply.value().status != 207) {
        return Error{*collectionFailure(reply.value().status, method)};
    }
    return parseMultiStatus(reply.value().body);
}

Result<std::string> CalDavClient::currentCtag() {
    const QByteArray body = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                            "<D:propfind xmlns:D=\"DAV:\" "
                            "xmlns:CS=\"http://calendarserver.org/ns/\"><D:prop><CS:getctag/>"
                            "</D:prop></D:propfind>";
    auto parsed = askCollection("PROPFIND", body, "0");
    if (!parsed) {
        return Error{parsed.error()};
    }
    for (const DavResponse& response : parsed.value().responses) {
        if (const DavProperty* ctag = response.property("http://calendarserver.org/ns/|getctag")) {
            return ctag->text.trimmed().toStdString();
        }
    }
    return std::string();
}

Result<ChangeListing> CalDavClient::listEverything(const std::string& knownCtag) {
    std::string ctag;
    if (!knownCtag.empty()) {
        auto current = currentCtag();
        if (!current) {
            return Error{current.error()};
        }
        if (current.value() == knownCtag) {
            ChangeListing unchanged;
            unchanged.syncToken = std::string(kCtagToken) + knownCtag;
            return unchanged;
        }
        ctag = current.value();
    }
    const QByteArray body = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                            "<D:propfind xmlns:D=\"DAV:\" "
                            "xmlns:CS=\"http://calendarserver.org/ns/\"><D:prop><D:getetag/>"
                            "<D:resourcetype/><CS:getctag/></D:prop></D:propfind>";
    auto parsed = askCollection("PROPFIND", body, "1");
    if (!parsed) {
        return Error{parsed.error()};
    }
    ChangeListing listing;
    listing.complete = true;
    for (const DavResponse& response : parsed.value().responses) {
        const std::string href = canonicalHref(response.href);
        if (isCollectionItself(href)) {
            if (const auto* tag = response.property("http://calendarserver.org/ns/|getctag")) {
                ctag = tag->text.trimmed().toStdString();
            }
            continue;
        }
        if (isCollectionResource(response)) {
            continue;
        }
        const std::string etag = etagOf(response);
        if (!etag.empty()) {
            listing.changed.push_back(ResourceEtag{href, etag});
        }
    }
    if (!ctag.empty()) {
        listing.syncToken = std::string(kCtagToken) + ctag;
    }
    return listing;
}

Result<std::vector<RemoteResource>> CalDavClient::fetch(const std::vector<std::string>& hrefs) {
    std::vector<RemoteResource> resources;
    for (std::size_t from = 0; from < hrefs.size(); from += kHrefsPerFetch) {
        QByteArray body = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                          "<C:calendar-multiget xmlns:D=\"DAV:\" "
                          "xmlns:C=\"urn:ietf:params:xml:ns:caldav\"><D:prop><D:getetag/>"
                          "<C:calendar-data/></D:prop>";
        const std::size_t to = std::min(hrefs.size(), from + kHrefsPerFetch);
        for (std::size_t i = from; i < to; ++i) {
            body +=
                "<D:href>" + escaped(canonicalHref(QString::fromStdString(hrefs[i]))) + "</D:href>";
        }
        body += "</C:calendar-multiget>";
        auto parsed = askCollection("REPORT", body, "1");
        if (!parsed) {
            return Error{parsed.error()};
        }
        for (const DavResponse& response : parsed.value().responses) {
            const DavProperty* data =
                response.property("urn:ietf:params:xml:ns:caldav|calendar-data");
            if (response.status == 404 || data == nullptr) {
                continue;
            }
            resources.push_back(RemoteResource{canonicalHref(response.href), etagOf(response),
                                               data->text.toStdString()});
        }
    }
    return resources;
}

Result<WriteReply> CalDavClient::put(const std::string& href, const std::string& ics,
                                     const std::optional<std::string>& ifMatch) {
    std::map<QByteArray, QByteArray> headers{{"Content-Type", "text/calendar; charset=utf-8"}};
    if (ifMatch && !ifMatch->empty()) {
        headers["If-Match"] = QByteArray::fromStdString(*ifMatch);
    } else {
        headers["If-None-Match"] = "*";
    }
    auto reply = session_.send("PUT", urlOf(href), QByteArray::fromStdString(ics), headers);
    if (!reply) {
        return Error{reply.error()};
    }
    const int status = reply.value().status;
    if (status == 412) {
        return WriteReply{WriteOutcome::preconditionFailed, {}};
    }
    if (status == 404 || status == 410) {
        // A PUT with If-Match to a resource that is gone.
        if (ifMatch && !ifMatch->empty()) {
            return WriteReply{WriteOutcome::notFound, {}};
        }
        return Error{*collectionFailure(status, "PUT")};
    }
    if (status == 413) {
        return Error{"The sync server refused a task as too large."};
    }
    if (status < 200 || status >= 300) {
        return Error{CalDavSession::statusSentence(status, "PUT")};
    }
    return WriteReply{WriteOutcome::written, reply.value().etag.toStdString()};
}

Result<WriteOutcome> CalDavClient::remove(const std::string& href, const std::string& etag) {
    std::map<QByteArray, QByteArray> headers;
    if (!etag.empty()) {
        headers["If-Match"] = QByteArray::fromStdString(etag);
    }
    auto reply = session_.send("DELETE", urlOf(href), {}, headers);
    if (!reply) {
        return Error{reply.error()};
    }
    const int status = reply.value().status;
    if (status == 412) {
        return WriteOutcome::preconditionFailed;
    }
    if (status == 404 || status == 410) {
        return WriteOutcome::notFound;
    }
    if (status < 200 || status >= 300) {
        return Error{CalDavSession::statusSentence(status, "DELETE")};
    }
    return WriteOutcome::written;
}

} // namespace daywyn::sync
