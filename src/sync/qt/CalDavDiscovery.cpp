#include "sync/qt/CalDavDiscovery.h"

#include <algorithm>

#include <QUuid>

namespace daywyn::sync {

namespace {

const QByteArray kXmlType = "application/xml; charset=utf-8";
constexpr const char* kCalDav = "urn:ietf:params:xml:ns:caldav";

const QByteArray kStartProperties =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<D:propfind xmlns:D=\"DAV:\" xmlns:C=\"urn:ietf:params:xml:ns:caldav\"><D:prop>"
    "<D:current-user-principal/><C:calendar-home-set/><D:resourcetype/><D:displayname/>"
    "<C:supported-calendar-component-set/></D:prop></D:propfind>";

const QByteArray kListProperties =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<D:propfind xmlns:D=\"DAV:\" xmlns:C=\"urn:ietf:params:xml:ns:caldav\"><D:prop>"
    "<D:resourcetype/><D:displayname/><C:supported-calendar-component-set/></D:prop>"
    "</D:propfind>";

QString key(const char* ns, const char* name) {
    return QString::fromLatin1(ns) + QLatin1Char('|') + QString::fromLatin1(name);
}

const DavProperty* propertyOf(const DavResponse& response, const char* ns, const char* name) {
    const auto found = response.properties.find(key(ns, name));
    return found == response.properties.end() ? nullptr : &found->second;
}

// A calendar collection that takes VTODOs (one that names no components takes all).
bool holdsTasks(const DavResponse& response) {
    const DavProperty* type = propertyOf(response, "DAV:", "resourcetype");
    if (!type || std::find(type->children.begin(), type->children.end(),
                           key(kCalDav, "calendar")) == type->children.end()) {
        return false;
    }
    const DavProperty* components =
        propertyOf(response, kCalDav, "supported-calendar-component-set");
    return !components || components->componentNames.empty() ||
           std::find(components->componentNames.begin(), components->componentNames.end(),
                     QStringLiteral("VTODO")) != components->componentNames.end();
}

std::string nameOf(const DavResponse& response, const QUrl& url) {
    const DavProperty* name = propertyOf(response, "DAV:", "displayname");
    if (name && !name->text.trimmed().isEmpty()) {
        return name->text.trimmed().toStdString();
    }
    QString path = url.path();
    if (path.endsWith(QLatin1Char('/'))) {
        path.chop(1);
    }
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1).toStdString();
}

QUrl resolvedHref(const QUrl& base, const QString& href) {
    return base.resolved(QUrl(href, QUrl::TolerantMode));
}

Result<MultiStatus> propfind(CalDavSession& session, const QUrl& url, const QByteArray& body,
                             const char* depth, int& status) {
    auto reply =
        session.send("PROPFIND", url, body, {{"Content-Type", kXmlType}, {"Depth", depth}}, true);
    if (!reply) {
        return Error{reply.error()};
    }
    status = reply.value().status;
    if (status != 207) {
        return MultiStatus{};
    }
    return parseMultiStatus(reply.value().body);
}

} // namespace

CalDavDiscovery::CalDavDiscovery(const QUrl& server, DavCredentials credentials,
                                 int timeoutMilliseconds)
    : server_(server)
    , session_(server, std::move(credentials), timeoutMilliseconds) {}

Result<CalDavAccountInfo> CalDavDiscovery::discover() {
    if (auto problem = CalDavSession::urlProblem(server_)) {
        return Error{*problem};
    }
    std::vector<QUrl> starts;
    if (!server_.path().isEmpty() && server_.path() != QLatin1String("/")) {
        starts.push_back(server_);
    }
    QUrl root = server_;
    root.setPath(QStringLiteral("/.well-known/caldav"));
    root.setQuery(QString());
    starts.push_back(root);
    root.setPath(QStringLiteral("/"));
    starts.push_back(root);
    for (const QUrl& start : starts) {
        bool answered = false;
        auto found = tryStart(start, answered);
        if (!found || answered) {
            return found;
        }
    }
    return Error{"No CalDAV account was found at " + server_.toDisplayString().toStdString() +
                 "; check the address."};
}

Result<CalDavAccountInfo> CalDavDiscovery::tryStart(const QUrl& start, bool& answered) {
    int status = 0;
    auto reply = propfind(session_, start, kStartProperties, "0", status);
    if (!reply) {
        return Error{reply.error()};
    }
    if (status == 401) {
        return Error{CalDavSession::statusSentence(status, "PROPFIND")};
    }
    if (status != 207 || reply.value().responses.empty()) {
        return CalDavAccountInfo{};
    }
    const DavResponse& response = reply.value().responses.front();
    const QUrl here = resolvedHref(start, response.href);
    if (holdsTasks(response)) {
        answered = true;
        return CalDavAccountInfo{
            {}, {TaskListInfo{here.toString().toStdString(), nameOf(response, here)}}};
    }
    QUrl home;
    if (const DavProperty* set = propertyOf(response, kCalDav, "calendar-home-set");
        set && !set->hrefs.empty()) {
        home = resolvedHref(start, set->hrefs.front());
    } else if (const DavProperty* principal =
                   propertyOf(response, "DAV:", "current-user-principal");
               principal && !principal->hrefs.empty()) {
        const QUrl principalUrl = resolvedHref(start, principal->hrefs.front());
        auto asked = propfind(session_, principalUrl, kStartProperties, "0", status);
        if (!asked) {
            return Error{asked.error()};
        }
        if (status != 207) {
            return Error{CalDavSession::statusSentence(status, "PROPFIND")};
        }
        for (const DavResponse& r : asked.value().responses) {
            if (const DavProperty* homeSet = propertyOf(r, kCalDav, "calendar-home-set");
                homeSet && !homeSet->hrefs.empty()) {
                home = resolvedHref(principalUrl, homeSet->hrefs.front());
            }
        }
    }
    if (home.isEmpty()) {
        return CalDavAccountInfo{};
    }
    answered = true;
    auto lists = listsIn(home);
    if (!lists) {
        return Error{lists.error()};
    }
    return CalDavAccountInfo{home.toString().toStdString(), std::move(lists.value())};
}

Result<std::vector<TaskListInfo>> CalDavDiscovery::listsIn(const QUrl& home) {
    int status = 0;
    auto reply = propfind(session_, home, kListProperties, "1", status);
    if (!reply) {
        return Error{reply.error()};
    }
    if (status != 207) {
        return Error{CalDavSession::statusSentence(status, "PROPFIND")};
    }
    std::vector<TaskListInfo> lists;
    for (const DavResponse& response : reply.value().responses) {
        const QUrl url = resolvedHref(home, response.href);
        if (holdsTasks(response) && url != home) {
            lists.push_back(TaskListInfo{url.toString().toStdString(), nameOf(response, url)});
        }
    }
    return lists;
}

Result<TaskListInfo> CalDavDiscovery::createTaskList(const std::string& homeUrl,
                                                     const std::string& name) {
    QUrl home(QString::fromStdString(homeUrl));
    if (!home.path().endsWith(QLatin1Char('/'))) {
        home.setPath(home.path() + QLatin1Char('/'));
    }
    const QUrl url = home.resolved(
        QUrl(QUuid::createUuid().toString(QUuid::WithoutBraces).toLower() + QLatin1Char('/')));
    const QByteArray body =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        "<C:mkcalendar xmlns:D=\"DAV:\" xmlns:C=\"urn:ietf:params:xml:ns:caldav\"><D:set>"
        "<D:prop><D:displayname>" +
        QString::fromStdString(name).toHtmlEscaped().toUtf8() +
        "</D:displayname><C:supported-calendar-component-set><C:comp name=\"VTODO\"/>"
        "</C:supported-calendar-component-set></D:prop></D:set></C:mkcalendar>";
    auto reply = session_.send("MKCALENDAR", url, body, {{"Content-Type", kXmlType}});
    if (!reply) {
        return Error{reply.error()};
    }
    const int status = reply.value().status;
    if (status != 201 && status != 200) {
        return Error{"The sync server did not create the task list \"" + name +
                     "\": " + CalDavSession::statusSentence(status, "MKCALENDAR")};
    }
    return TaskListInfo{url.toString().toStdString(), name};
}

} // namespace daywyn::sync
