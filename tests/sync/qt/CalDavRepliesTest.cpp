#include <gtest/gtest.h>

#include "sync/qt/CalDavSession.h"

namespace daywyn::sync {
namespace {

TEST(CalDavReplies, AMultistatusGivesHrefsStatusesAndTheGoodPropstatOnly) {
    const QByteArray body = R"(<?xml version="1.0"?>
<multistatus xmlns="DAV:" xmlns:C="urn:ietf:params:xml:ns:caldav">
  <response>
    <href>/ama/tasks/a.ics</href>
    <propstat><prop><getetag>"e1"</getetag></prop><status>HTTP/1.1 200 OK</status></propstat>
    <propstat><prop><C:calendar-data/></prop><status>HTTP/1.1 404 Not Found</status></propstat>
  </response>
  <response><href>/ama/tasks/gone.ics</href><status>HTTP/1.1 404 Not Found</status></response>
  <response>
    <href>/ama/</href>
    <propstat><prop>
      <resourcetype><collection/><C:calendar/></resourcetype>
      <C:supported-calendar-component-set><C:comp name="VEVENT"/><C:comp name="vtodo"/>
      </C:supported-calendar-component-set>
      <C:calendar-home-set><href>/ama/</href></C:calendar-home-set>
    </prop><status>HTTP/1.1 200 OK</status></propstat>
  </response>
  <sync-token>http://radicale.org/ns/sync/abc</sync-token>
</multistatus>)";
    auto parsed = parseMultiStatus(body);
    ASSERT_TRUE(parsed.ok()) << parsed.error();
    EXPECT_EQ(parsed->syncToken, QStringLiteral("http://radicale.org/ns/sync/abc"));
    ASSERT_EQ(parsed->responses.size(), 3U);
    const DavResponse& a = parsed->responses[0];
    EXPECT_EQ(a.property("DAV:|getetag")->text, QStringLiteral("\"e1\""));
    EXPECT_EQ(a.property("urn:ietf:params:xml:ns:caldav|calendar-data"), nullptr);
    EXPECT_EQ(parsed->responses[1].status, 404);
    const DavResponse& home = parsed->responses[2];
    const auto& types = home.property("DAV:|resourcetype")->children;
    EXPECT_EQ(types,
              (std::vector<QString>{"DAV:|collection", "urn:ietf:params:xml:ns:caldav|calendar"}));
    EXPECT_EQ(home.property("urn:ietf:params:xml:ns:caldav|supported-calendar-component-set")
                  ->componentNames,
              (std::vector<QString>{"VEVENT", "VTODO"}));
    EXPECT_EQ(home.property("urn:ietf:params:xml:ns:caldav|calendar-home-set")->hrefs,
              std::vector<QString>{"/ama/"});
}

TEST(CalDavReplies, BrokenXmlIsASentence) {
    for (const QByteArray& body :
         {QByteArray(""), QByteArray("<multistatus xmlns=\"DAV:\"><response>"),
          QByteArray("<html/>"), QByteArray("<a:multistatus xmlns:a=\"DAV:\"><b:x/>")}) {
        SCOPED_TRACE(body.toStdString());
        auto parsed = parseMultiStatus(body);
        ASSERT_FALSE(parsed.ok());
        EXPECT_EQ(parsed.error().rfind("The sync server sent a reply Daywyn could not read: ", 0),
                  0U);
    }
}

TEST(CalDavReplies, HrefsCompareEqualHoweverTheServerSpellsThem) {
    const std::string canonical = canonicalHref(QStringLiteral("/ama/tasks/a%40b.ics"));
    EXPECT_EQ(canonicalHref(QStringLiteral("/ama/tasks/a@b.ics")), canonical);
    EXPECT_EQ(canonicalHref(QStringLiteral("https://dav.example.com/ama/tasks/a@b.ics")),
              canonical);
    EXPECT_EQ(canonicalHref(QStringLiteral("/ama/tasks/a b.ics")), "/ama/tasks/a%20b.ics");
    // A slash inside a name stays inside it.
    EXPECT_EQ(canonicalHref(QStringLiteral("/ama/tasks/a%2Fb.ics")), "/ama/tasks/a%2Fb.ics");
    EXPECT_EQ("/ama/tasks/" + hrefSegment(QStringLiteral("a/b.ics")), "/ama/tasks/a%2Fb.ics");
}

} // namespace
} // namespace daywyn::sync
