// The CalDAV client and discovery against a real Radicale server on 127.0.0.1, and
// against small in-process servers for the replies Radicale never gives.
#include "sync/qt/CalDavClient.h"

#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "RadicaleServer.h"
#include "support/qt/FakeGoogleServer.h"
#include "sync/qt/CalDavDiscovery.h"

namespace daywyn::sync {
namespace {

std::string vtodo(const std::string& uid, const std::string& summary) {
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//test//EN\r\nBEGIN:VTODO\r\nUID:" + uid +
           "\r\nDTSTAMP:20260304T081500Z\r\nSUMMARY:" + summary +
           "\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
}

class CalDavRadicale : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(server.start()) << server.problem().toStdString(); }

    // A fresh task list of the user "ama", made through discovery.
    QUrl makeList() {
        CalDavDiscovery discovery(server.url(), {"ama", "secret"});
        auto account = discovery.discover();
        EXPECT_TRUE(account.ok()) << account.error();
        auto list = discovery.createTaskList(account->homeUrl, "Daywyn");
        EXPECT_TRUE(list.ok()) << list.error();
        return QUrl(QString::fromStdString(list->url));
    }

    test::RadicaleServer server;
};

TEST_F(CalDavRadicale, DiscoveryFindsTheTaskListsItMadeAndSkipsEventCalendars) {
    CalDavDiscovery discovery(server.url(), {"ama", "secret"});
    auto before = discovery.discover();
    ASSERT_TRUE(before.ok()) << before.error();
    EXPECT_TRUE(before->lists.empty());
    EXPECT_FALSE(before->homeUrl.empty());

    const QUrl list = makeList();
    // An events-only calendar beside it is not a task list.
    CalDavSession session(server.url(), {"ama", "secret"});
    auto made = session.send(
        "MKCALENDAR", QUrl(QString::fromStdString(before->homeUrl) + "events/"),
        "<C:mkcalendar xmlns:D=\"DAV:\" xmlns:C=\"urn:ietf:params:xml:ns:caldav\"><D:set><D:prop>"
        "<C:supported-calendar-component-set><C:comp name=\"VEVENT\"/>"
        "</C:supported-calendar-component-set></D:prop></D:set></C:mkcalendar>");
    ASSERT_TRUE(made.ok());
    ASSERT_EQ(made->status, 201);

    auto after = discovery.discover();
    ASSERT_TRUE(after.ok()) << after.error();
    ASSERT_EQ(after->lists.size(), 1U);
    EXPECT_EQ(after->lists[0].name, "Daywyn");
    EXPECT_EQ(QUrl(QString::fromStdString(after->lists[0].url)), list);

    // Pointed at the list itself, discovery finds just it.
    CalDavDiscovery direct(list, {"ama", "secret"});
    auto itself = direct.discover();
    ASSERT_TRUE(itself.ok()) << itself.error();
    ASSERT_EQ(itself->lists.size(), 1U);
    EXPECT_EQ(itself->lists[0].name, "Daywyn");
}

TEST_F(CalDavRadicale, WritesAreConditionalAndTheListingFollowsThem) {
    CalDavClient client(makeList(), {"ama", "secret"});
    const std::string href = client.hrefFor("task-1");

    auto created = client.put(href, vtodo("task-1", "Call Ama"), std::nullopt);
    ASSERT_TRUE(created.ok()) << created.error();
    EXPECT_EQ(created->outcome, WriteOutcome::written);
    // A second create of the same resource is refused, not an overwrite.
    auto again = client.put(href, vtodo("task-1", "Other"), std::nullopt);
    ASSERT_TRUE(again.ok()) << again.error();
    EXPECT_EQ(again->outcome, WriteOutcome::preconditionFailed);

    auto all = client.changesSince("");
    ASSERT_TRUE(all.ok()) << all.error();
    EXPECT_TRUE(all->complete);
    ASSERT_EQ(all->changed.size(), 1U);
    EXPECT_EQ(all->changed[0].href, href);
    const std::string etag = all->changed[0].etag;
    EXPECT_FALSE(all->syncToken.empty());

    // Nothing changed: one request, nothing listed.
    const int requests = client.requestCount();
    auto none = client.changesSince(all->syncToken);
    ASSERT_TRUE(none.ok()) << none.error();
    EXPECT_FALSE(none->complete);
    EXPECT_TRUE(none->changed.empty());
    EXPECT_TRUE(none->removed.empty());
    EXPECT_EQ(client.requestCount(), requests + 1);

    auto updated = client.put(href, vtodo("task-1", "Call Ama at 10"), etag);
    ASSERT_TRUE(updated.ok()) << updated.error();
    EXPECT_EQ(updated->outcome, WriteOutcome::written);
    // The old etag no longer matches, for writes and deletes alike.
    EXPECT_EQ(client.put(href, vtodo("task-1", "Stale"), etag)->outcome,
              WriteOutcome::preconditionFailed);
    EXPECT_EQ(client.remove(href, etag).value(), WriteOutcome::preconditionFailed);

    auto fetched = client.fetch({href, client.hrefFor("missing")});
    ASSERT_TRUE(fetched.ok()) << fetched.error();
    ASSERT_EQ(fetched->size(), 1U);
    EXPECT_NE(fetched->at(0).ics.find("SUMMARY:Call Ama at 10"), std::string::npos);
    const std::string current = fetched->at(0).etag;

    EXPECT_EQ(client.remove(href, current).value(), WriteOutcome::written);
    EXPECT_EQ(client.remove(href, current).value(), WriteOutcome::notFound);
    auto gone = client.changesSince(none->syncToken);
    ASSERT_TRUE(gone.ok()) << gone.error();
    EXPECT_EQ(gone->removed, std::vector<std::string>{href});
}

TEST_F(CalDavRadicale, AnObjectWrittenByCurlIsListedAndFetched) {
    const QUrl list = makeList();
    CalDavClient client(list, {"ama", "secret"});
    auto start = client.changesSince("");
    ASSERT_TRUE(start.ok()) << start.error();

    QProcess curl;
    curl.start(QStringLiteral("curl"),
               {QStringLiteral("-sf"), QStringLiteral("-u"), QStringLiteral("ama:secret"),
                QStringLiteral("-X"), QStringLiteral("PUT"), QStringLiteral("-H"),
                QStringLiteral("Content-Type: text/calendar"), QStringLiteral("--data-binary"),
                QString::fromStdString(vtodo("phone@example.com", "Buy stamps")),
                list.toString() + QStringLiteral("phone%40example.com.ics")});
    ASSERT_TRUE(curl.waitForFinished(10000));
    ASSERT_EQ(curl.exitCode(), 0);

    // The ctag moved, so the changes are reported: two requests.
    const int before = client.requestCount();
    auto changes = client.changesSince(start->syncToken);
    ASSERT_TRUE(changes.ok()) << changes.error();
    EXPECT_EQ(client.requestCount(), before + 2);
    ASSERT_EQ(changes->changed.size(), 1U);
    // However the server spells the name, it is the href this client would use.
    EXPECT_EQ(changes->changed[0].href, client.hrefFor("phone@example.com"));
    auto fetched = client.fetch({changes->changed[0].href});
    ASSERT_TRUE(fetched.ok()) << fetched.error();
    ASSERT_EQ(fetched->size(), 1U);
    EXPECT_NE(fetched->at(0).ics.find("SUMMARY:Buy stamps"), std::string::npos);

    // Quiet again: the ctag alone answers.
    auto quiet = client.changesSince(changes->syncToken);
    ASSERT_TRUE(quiet.ok()) << quiet.error();
    EXPECT_TRUE(quiet->changed.empty());
    EXPECT_EQ(quiet->syncToken, changes->syncToken);
    EXPECT_EQ(client.requestCount(), before + 4);
}

TEST_F(CalDavRadicale, ARefusedTokenGivesACompleteListing) {
    CalDavClient client(makeList(), {"ama", "secret"});
    ASSERT_TRUE(client.put(client.hrefFor("a"), vtodo("a", "A"), std::nullopt).ok());
    auto listing = client.changesSince("http://radicale.org/ns/sync/not-a-token");
    ASSERT_TRUE(listing.ok()) << listing.error();
    EXPECT_TRUE(listing->complete);
    EXPECT_EQ(listing->changed.size(), 1U);
    EXPECT_FALSE(listing->syncToken.empty());
}

TEST_F(CalDavRadicale, FailuresAreSentences) {
    const QUrl list = makeList();
    CalDavClient wrong(list, {"ama", "wrong"});
    auto refused = wrong.changesSince("");
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error(), "The sync server refused the user name or password.");
    CalDavDiscovery wrongSetup(server.url(), {"ama", "wrong"});
    EXPECT_EQ(wrongSetup.discover().error(), "The sync server refused the user name or password.");

    // Another user's list is not ama's to read.
    CalDavClient other(list, {"bo", "other"});
    EXPECT_EQ(other.changesSince("").error(), "The sync server refused access to the task list.");

    QUrl missing = list;
    missing.setPath(QStringLiteral("/ama/no-such-list/"));
    CalDavClient lost(missing, {"ama", "secret"});
    EXPECT_EQ(lost.changesSince("").error(), "The task list was not found on the sync server: " +
                                                 missing.toDisplayString().toStdString() + ".");

    server.stop();
    CalDavClient down(list, {"ama", "secret"});
    auto unreachable = down.changesSince("");
    ASSERT_FALSE(unreachable.ok());
    EXPECT_EQ(unreachable.error().rfind("The sync server could not be reached: ", 0), 0U)
        << unreachable.error();
}

TEST(CalDavSession, SendsPasswordsOnlyOverHttpsOrToThisComputer) {
    EXPECT_FALSE(CalDavSession::urlProblem(QUrl("https://dav.example.com/")));
    EXPECT_FALSE(CalDavSession::urlProblem(QUrl("http://127.0.0.1:5232/")));
    EXPECT_FALSE(CalDavSession::urlProblem(QUrl("http://localhost/")));
    EXPECT_FALSE(CalDavSession::urlProblem(QUrl("http://[::1]:8080/")));
    EXPECT_EQ(CalDavSession::urlProblem(QUrl("http://dav.example.com/")).value_or(""),
              "Daywyn sends your password only over https; dav.example.com is not this "
              "computer, so use an https address.");
    EXPECT_TRUE(CalDavSession::urlProblem(QUrl("ftp://dav.example.com/")));
    EXPECT_TRUE(CalDavSession::urlProblem(QUrl("not a url")));

    // Nothing is sent to a refused address.
    CalDavClient client(QUrl("http://dav.example.com/ama/tasks/"), {"ama", "secret"});
    EXPECT_FALSE(client.changesSince("").ok());
    EXPECT_EQ(client.requestCount(), 0);
}

// A one-reply HTTP server in this thread: the client's wait runs this thread's events.
class CannedServer {
public:
    // An empty reply: the connection is accepted and never answered.
    explicit CannedServer(QByteArray reply)
        : reply_(std::move(reply)) {
        server_.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&server_, &QTcpServer::newConnection, [this] {
            QTcpSocket* socket = server_.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                request_ += socket->readAll();
                if (!reply_.isEmpty() && request_.contains("</")) {
                    socket->write(reply_);
                    socket->disconnectFromHost();
                }
            });
        });
    }
    QUrl url() const {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/ama/tasks/").arg(server_.serverPort()));
    }

private:
    QTcpServer server_;
    QByteArray reply_;
    QByteArray request_;
};

QByteArray httpReply(const QByteArray& head, const QByteArray& body) {
    return head + "\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

TEST(CalDavClientReplies, BrokenAndSlowServersGiveSentences) {
    struct Case {
        QByteArray reply;
        std::string error;
    };
    const Case cases[] = {
        {httpReply("HTTP/1.1 207 Multi-Status\r\nContent-Type: application/xml",
                   "<D:multistatus xmlns:D=\"DAV:\"><D:response><D:href>/a"),
         "The sync server sent a reply Daywyn could not read: Premature end of document."},
        {httpReply("HTTP/1.1 207 Multi-Status", "<html>hello</html>"),
         "The sync server sent a reply Daywyn could not read: it is not a WebDAV multistatus."},
        {httpReply("HTTP/1.1 503 Service Unavailable", ""),
         "The sync server had a problem (HTTP 503); Daywyn will try again later."},
        {httpReply("HTTP/1.1 500 Internal Server Error", "oops"),
         "The sync server had a problem (HTTP 500); Daywyn will try again later."},
        {QByteArray(), "The sync server did not answer within 1 seconds."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.error);
        CannedServer server(c.reply);
        CalDavClient client(server.url(), {"ama", "secret"}, 1000);
        auto listing = client.changesSince("");
        ASSERT_FALSE(listing.ok());
        EXPECT_EQ(listing.error(), c.error);
    }
}

TEST(CalDavClientReplies, AnUntrustedCertificateIsRefusedWithASentence) {
    QTemporaryDir folder;
    test::FakeGoogleServer server;
    ASSERT_TRUE(server.start(folder.path()));
    // The server's certificate was made for this test and nobody trusts it.
    CalDavClient client(QUrl(server.origin() + QStringLiteral("/ama/tasks/")), {"ama", "secret"});
    auto listing = client.changesSince("");
    ASSERT_FALSE(listing.ok());
    EXPECT_EQ(
        listing.error().rfind("Daywyn could not make a secure connection to the sync server: ", 0),
        0U)
        << listing.error();
}

} // namespace
} // namespace daywyn::sync
