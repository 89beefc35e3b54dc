#include "calendar/qt/GoogleCalendarManager.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QUrlQuery>
#include <gtest/gtest.h>

#include "support/FakeGoogleHttp.h"
#include "support/FakeSecretStore.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

using test::waitUntil;

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

GoogleAccount account(std::string id, double expiresIn, Instant now) {
    GoogleAccount a;
    a.id = id;
    a.email = id + "@example.com";
    a.accessToken = "access-" + id;
    a.refreshToken = "refresh-" + id;
    a.expiresAt = now + expiresIn;
    return a;
}

// The manager on a scripted Google: each account has one calendar with one event;
// the account named in `failing` gets a 401 for its calendar list.
class GoogleCalendarManagerTest : public ::testing::Test {
protected:
    GoogleCalendarManagerTest() {
        http.answer = [this](const GoogleHttpRequest& r) -> GoogleHttpResponse {
            if (r.url == "https://g.test/token") {
                return {200, R"({"access_token":"fresh","expires_in":3600,"refresh_token":"r2"})"};
            }
            if (r.url == "https://g.test/oauth2/v2/userinfo") {
                return {200, R"({"id":"new","email":"new@example.com"})"};
            }
            if (failing && r.bearerToken == "access-" + *failing) {
                return {401, "{}"};
            }
            if (has(r.url, "calendarList")) {
                return {200, R"({"items":[{"id":"main"}]})"};
            }
            return {200, R"({"items":[{"id":"e","start":{"dateTime":"2026-03-05T04:00:00Z"},)"
                         R"("end":{"dateTime":"2026-03-05T05:00:00Z"}}]})"};
        };
    }

    std::unique_ptr<GoogleCalendarManager> manager(bool withRegistration = true) {
        return std::make_unique<GoogleCalendarManager>(
            http, secrets, GoogleEndpoints::under("https://g.test"), calendar, clock.function(),
            [withRegistration]() -> Result<GoogleClientRegistration> {
                if (!withRegistration) {
                    return Result<GoogleClientRegistration>::failure(
                        std::string(kGoogleRegistrationMissing));
                }
                return GoogleClientRegistration{"cid", "cs"};
            },
            [this](const QUrl& url) {
                opened.push_back(url);
                return true;
            });
    }

    Calendar calendar{"Asia/Kathmandu"};
    test::ManualClock clock{test::at(calendar, 2026, 3, 5, 9)};
    test::FakeGoogleHttp http;
    test::FakeSecretStore secrets;
    std::optional<std::string> failing;
    std::vector<QUrl> opened;
};

TEST_F(GoogleCalendarManagerTest, RestoreTellsAMissingItemFromALockedOrBrokenOne) {
    auto google = manager();
    google->restore();
    EXPECT_TRUE(google->accounts().empty());
    EXPECT_FALSE(google->errorMessage().has_value());

    secrets.locked = true;
    google->restore();
    EXPECT_EQ(google->errorMessage(), "Google accounts could not be restored securely. Unlock "
                                      "your login Keychain to restore Google accounts.");

    secrets.locked = false;
    secrets.secret = "{not json";
    google->restore();
    ASSERT_TRUE(google->errorMessage().has_value());
    EXPECT_TRUE(has(*google->errorMessage(), "Google accounts could not be restored securely. "));
}

TEST_F(GoogleCalendarManagerTest, OneFailingAccountLeavesTheOthersEventsAndSavesTheLoadedLists) {
    const Instant now = clock.now();
    secrets.secret = GoogleAccount::encodeAll({account("a", 3600, now), account("b", 30, now)});
    auto google = manager();
    google->restore();
    google->refresh();
    // Both accounts are under way at once, not one after the other.
    EXPECT_EQ(http.pending(), 2U);
    http.deliverAll();
    EXPECT_FALSE(google->isRefreshing());
    ASSERT_EQ(google->events().size(), 2U);
    EXPECT_FALSE(google->errorMessage().has_value());
    const auto saved = GoogleAccount::decodeAll(*secrets.secret);
    ASSERT_TRUE(saved.ok());
    EXPECT_EQ(saved->at(0).didLoadCalendars, true);
    EXPECT_EQ(saved->at(1).accessToken, "fresh");
    EXPECT_EQ(saved->at(1).refreshToken, "r2");

    failing = "a";
    clock.advance(400);
    google->refresh();
    http.deliverAll();
    ASSERT_EQ(google->events().size(), 2U) << "a keeps today's last good events";
    EXPECT_EQ(google->errorMessage(), "a@example.com is showing its last available events. " +
                                          std::string(kGoogleAccessExpired));
}

TEST_F(GoogleCalendarManagerTest, ThrottledRefreshesSendNothingUntilDueAndFoldRequests) {
    secrets.secret = GoogleAccount::encodeAll({account("a", 7200, clock.now())});
    auto google = manager();
    google->refreshIfNeeded();
    EXPECT_TRUE(http.sent.empty()) << "no accounts yet";
    google->restore();
    google->refreshIfNeeded();
    google->refresh();
    google->refresh();
    http.deliverAll();
    EXPECT_EQ(google->refreshPasses(), 2) << "two requests during a pass make one more pass";

    const std::size_t sent = http.sent.size();
    for (int minute = 1; minute <= 5; ++minute) {
        clock.advance(60);
        google->refreshIfNeeded();
    }
    EXPECT_EQ(http.sent.size(), sent);
    clock.advance(1);
    google->refreshIfNeeded();
    EXPECT_GT(http.sent.size(), sent);
    http.deliverAll();
}

TEST_F(GoogleCalendarManagerTest, DisconnectingTheLastAccountLeavesAnEmptyList) {
    secrets.secret = GoogleAccount::encodeAll({account("a", 3600, clock.now())});
    auto google = manager();
    google->restore();
    google->refresh();
    http.deliverAll();
    ASSERT_EQ(google->events().size(), 1U);
    google->disconnectAccount("a");
    EXPECT_TRUE(google->events().empty());
    EXPECT_EQ(GoogleAccount::decodeAll(*secrets.secret).value(), std::vector<GoogleAccount>{});
}

TEST_F(GoogleCalendarManagerTest, SignInThroughTheBrowserAddsTheAccount) {
    auto google = manager();
    google->restore();
    google->connectAccount();
    ASSERT_EQ(opened.size(), 1U);
    EXPECT_TRUE(google->isConnecting());
    const QUrlQuery query(opened.front());
    const QUrl redirect(query.queryItemValue("redirect_uri", QUrl::FullyDecoded));
    EXPECT_EQ(redirect.host(), "127.0.0.1");
    EXPECT_EQ(query.queryItemValue("code_challenge_method"), "S256");

    QTcpSocket browser;
    browser.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(redirect.port()));
    ASSERT_TRUE(browser.waitForConnected(5000));
    browser.write("GET /?code=c1&state=" + query.queryItemValue("state").toUtf8() +
                  " HTTP/1.1\r\n\r\n");
    ASSERT_TRUE(waitUntil([&] { return http.pending() > 0; }));
    http.deliverAll();
    ASSERT_TRUE(waitUntil([&] { return !google->isConnecting(); }));
    ASSERT_EQ(google->accounts().size(), 1U);
    EXPECT_EQ(google->accounts().front().email, "new@example.com");
    EXPECT_EQ(google->accounts().front().refreshToken, "r2");
    EXPECT_TRUE(has(http.sent.front().formBody.value_or(""), "code=c1&code_verifier="));
    EXPECT_FALSE(google->errorMessage().has_value());
}

TEST_F(GoogleCalendarManagerTest, WithoutARegistrationNothingOpens) {
    auto google = manager(false);
    google->connectAccount();
    EXPECT_TRUE(opened.empty());
    EXPECT_EQ(google->errorMessage(), std::string(kGoogleRegistrationMissing));
    EXPECT_EQ(google->registrationProblem(), QString::fromUtf8(kGoogleRegistrationMissing.data()));
}

} // namespace
} // namespace daywyn
