#include "calendar/GoogleApi.h"

#include <gtest/gtest.h>

#include "calendar/GoogleOAuthUtilities.h"
#include "support/FakeGoogleHttp.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

const GoogleClientRegistration kRegistration{"cid", "csecret"};

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.rfind(prefix, 0) == 0;
}

// A fake Google with one account: a calendar list over two pages and one event in
// each calendar.
class GoogleApiTest : public ::testing::Test {
protected:
    GoogleApiTest()
        : api(http, GoogleEndpoints::under("https://g.test"), calendar) {
        http.answer = [this](const GoogleHttpRequest& r) {
            return route(r);
        };
        account.id = "42";
        account.email = "ama@example.com";
        account.accessToken = "old-access";
        account.refreshToken = "refresh-1";
        account.expiresAt = now + 3600;
    }

    GoogleHttpResponse route(const GoogleHttpRequest& r) {
        if (auto special = override ? override(r) : std::optional<GoogleHttpResponse>()) {
            return *special;
        }
        const std::string base = "https://g.test/calendar/v3/";
        if (r.url == "https://g.test/token") {
            return {200, R"({"access_token":"new-access","expires_in":3600})"};
        }
        if (startsWith(r.url, base + "users/me/calendarList?maxResults=250&pageToken=p2")) {
            return {200, R"({"items":[{"id":"team","summary":"Team"}]})"};
        }
        if (startsWith(r.url, base + "users/me/calendarList")) {
            return {200, R"({"items":[{"id":"me@x","summary":"Ama","backgroundColor":"#9fc6e7"}],)"
                         R"("nextPageToken":"p2"})"};
        }
        if (startsWith(r.url, base + "calendars/")) {
            const std::string id = r.url.substr(base.size() + 10, 4);
            return {200, R"({"items":[{"id":")" + id +
                             R"(","summary":"Sync","start":{"dateTime":"2026-03-05T04:00:00Z"},)"
                             R"("end":{"dateTime":"2026-03-05T04:30:00Z"}}]})"};
        }
        return {404, "{}"};
    }

    GoogleAccountRefresh
    refresh(std::optional<GoogleClientRegistration> registration = kRegistration) {
        std::optional<GoogleAccountRefresh> result;
        api.refreshAccount(account, *calendarDay(now, calendar), now, registration,
                           [&](GoogleAccountRefresh r) { result = std::move(r); });
        http.deliverAll();
        EXPECT_TRUE(result.has_value());
        return result ? std::move(*result) : GoogleAccountRefresh{};
    }

    Calendar calendar{"Asia/Kathmandu"};
    Instant now = at(calendar, 2026, 3, 5, 9);
    test::FakeGoogleHttp http;
    GoogleApi api;
    GoogleAccount account;
    std::function<std::optional<GoogleHttpResponse>(const GoogleHttpRequest&)> override;
};

TEST_F(GoogleApiTest, FirstRefreshListsEveryPageSelectsAllAndAsksForCalendarsTogether) {
    std::optional<GoogleAccountRefresh> result;
    api.refreshAccount(account, *calendarDay(now, calendar), now, kRegistration,
                       [&](GoogleAccountRefresh r) { result = std::move(r); });
    http.deliver();
    http.deliver();
    EXPECT_EQ(http.pending(), 2U) << "both calendars' events are asked for at once";
    http.deliverAll();
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(http.sent.front().bearerToken, "old-access");
    EXPECT_EQ(result->account.calendars.size(), 2U);
    EXPECT_EQ(result->account.selected, (std::set<std::string>{"me@x", "team"}));
    EXPECT_EQ(result->account.didLoadCalendars, true);
    EXPECT_TRUE(result->accountChanged);
    ASSERT_TRUE(result->outcome.events.has_value());
    ASSERT_EQ(result->outcome.events->size(), 2U);
    EXPECT_EQ(result->outcome.events->at(0).calendarIdentifier, "google:42:me@x");
    EXPECT_EQ(result->outcome.events->at(0).colorHex, "#9FC6E7");
    EXPECT_EQ(http.sent[2].url.find("calendars/me%40x/events?timeMin=2026-03-04T18%3A15%3A00Z&"),
              std::string("https://g.test/calendar/v3/").size());
}

TEST_F(GoogleApiTest, AnExpiringTokenIsRefreshedFirstAndKeepsItsRefreshToken) {
    account.expiresAt = now + 59;
    const auto result = refresh();
    ASSERT_FALSE(http.sent.empty());
    EXPECT_EQ(http.sent[0].url, "https://g.test/token");
    EXPECT_EQ(http.sent[0].formBody, "client_id=cid&client_secret=csecret&grant_type=refresh_"
                                     "token&refresh_token=refresh-1");
    EXPECT_EQ(http.sent[1].bearerToken, "new-access");
    EXPECT_EQ(result.account.accessToken, "new-access");
    EXPECT_EQ(result.account.refreshToken, "refresh-1");
    EXPECT_EQ(result.account.expiresAt, now + 3600);
    EXPECT_TRUE(result.outcome.events.has_value());

    http.sent.clear();
    const auto without = refresh(std::nullopt);
    EXPECT_TRUE(http.sent.empty());
    EXPECT_EQ(without.outcome.error, kGoogleRegistrationMissing);
}

TEST_F(GoogleApiTest, EachKindOfFailureGivesItsSentence) {
    const struct {
        const char* name;
        std::function<std::optional<GoogleHttpResponse>(const GoogleHttpRequest&)> fault;
        std::string_view error;
    } cases[] = {
        {"revoked refresh token",
         [](const GoogleHttpRequest& r) -> std::optional<GoogleHttpResponse> {
             if (r.formBody) {
                 return GoogleHttpResponse{400, R"({"error":"invalid_grant"})"};
             }
             return std::nullopt;
         },
         kGoogleAccessExpired},
        {"401 on the second page",
         [](const GoogleHttpRequest& r) -> std::optional<GoogleHttpResponse> {
             if (r.url.find("pageToken") != std::string::npos) {
                 return GoogleHttpResponse{401, "{}"};
             }
             return std::nullopt;
         },
         kGoogleAccessExpired},
        {"500 for one calendar",
         [](const GoogleHttpRequest& r) -> std::optional<GoogleHttpResponse> {
             if (r.url.find("calendars/team") != std::string::npos) {
                 return GoogleHttpResponse{500, "oops"};
             }
             return std::nullopt;
         },
         kGoogleCouldNotLoad},
        {"no answer",
         [](const GoogleHttpRequest&) {
             return GoogleHttpResponse{0, ""};
         },
         kGoogleCouldNotLoad},
        {"invalid JSON",
         [](const GoogleHttpRequest& r) -> std::optional<GoogleHttpResponse> {
             if (r.url.find("calendars/") != std::string::npos) {
                 return GoogleHttpResponse{200, R"({"items":[{"id":)"};
             }
             return std::nullopt;
         },
         kGoogleCouldNotLoad},
        {"a page token that comes back",
         [](const GoogleHttpRequest& r) -> std::optional<GoogleHttpResponse> {
             if (r.url.find("calendarList") != std::string::npos) {
                 return GoogleHttpResponse{200, R"({"items":[],"nextPageToken":"again"})"};
             }
             return std::nullopt;
         },
         kGoogleIncompletePage},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        account.expiresAt = now + 30;
        override = c.fault;
        const auto result = refresh();
        EXPECT_FALSE(result.outcome.events.has_value());
        EXPECT_EQ(result.outcome.error, c.error);
        EXPECT_EQ(result.outcome.email, "ama@example.com");
    }
}

TEST(GoogleSignIn, AReconnectUpdatesTheAccountAndKeepsItsRefreshToken) {
    const Instant now = Instant{1'000'000};
    GoogleAccount stored;
    stored.id = "42";
    stored.email = "old@example.com";
    stored.refreshToken = "kept";
    stored.selected = {"team"};
    GoogleToken token{"access", std::nullopt, 3599};

    const auto updated = accountsAfterSignIn({stored}, token, GoogleProfile{"42", "new@x"}, now);
    ASSERT_TRUE(updated.ok());
    ASSERT_EQ(updated->size(), 1U);
    EXPECT_EQ(updated->front().refreshToken, "kept");
    EXPECT_EQ(updated->front().email, "new@x");
    EXPECT_EQ(updated->front().selected, std::set<std::string>{"team"});
    EXPECT_EQ(updated->front().expiresAt, now + 3599);

    const auto refused = accountsAfterSignIn({stored}, token, GoogleProfile{"7", "b@x"}, now);
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error(), kGoogleNoOfflineAccess);
    token.refreshToken = "fresh";
    const auto added = accountsAfterSignIn({stored}, token, GoogleProfile{"7", "b@x"}, now);
    ASSERT_TRUE(added.ok());
    EXPECT_EQ(added->size(), 2U);
    EXPECT_EQ(added->back().refreshToken, "fresh");
}

} // namespace
} // namespace daywyn
