#include <gtest/gtest.h>

#include "calendar/GoogleLoopbackRequest.h"
#include "calendar/GoogleOAuthUtilities.h"

namespace daywyn {
namespace {

using Oauth = GoogleOAuthUtilities;

TEST(GoogleOAuthUtilities, RandomValuesAre43UrlSafeCharactersAndDiffer) {
    const auto a = Oauth::random();
    const auto b = Oauth::random();
    ASSERT_TRUE(a.ok());
    ASSERT_TRUE(b.ok());
    EXPECT_EQ(a->size(), 43U);
    EXPECT_EQ(
        a->find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"),
        std::string::npos);
    EXPECT_NE(*a, *b);
}

TEST(GoogleOAuthUtilities, ChallengeIsTheS256OfTheVerifier) {
    // The example pair of RFC 7636, appendix B.
    EXPECT_EQ(Oauth::challenge("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
    // Bytes that standard base64 writes with "+", "/" and padding.
    EXPECT_EQ(Oauth::base64Url(std::string("\xfb\xff\xbf", 3)), "-_-_");
    EXPECT_EQ(Oauth::base64Url("a"), "YQ");
    EXPECT_EQ(Oauth::base64Url("ab"), "YWI");
}

TEST(GoogleOAuthUtilities, FormSortsKeysAndEscapesAllButUnreservedCharacters) {
    EXPECT_EQ(Oauth::form({{"redirect_uri", "http://127.0.0.1:5000"},
                           {"code", "4/0A b+c"},
                           {"client_id", "id.apps"},
                           {"grant_type", "authorization_code"},
                           {"x", "~-._\xc3\xa9"}}),
              "client_id=id.apps&code=4%2F0A%20b%2Bc&grant_type=authorization_code&"
              "redirect_uri=http%3A%2F%2F127.0.0.1%3A5000&x=~-._%C3%A9");
    EXPECT_EQ(Oauth::form({}), "");
}

TEST(GoogleOAuthUtilities, AuthorizationUrlCarriesItsItemsInOrder) {
    const std::string url = Oauth::authorizationUrl("https://accounts.google.com/o/oauth2/v2/auth",
                                                    "cid", "http://127.0.0.1:4242", "st", "ch");
    EXPECT_EQ(url, "https://accounts.google.com/o/oauth2/v2/auth?client_id=cid&redirect_uri=http%"
                   "3A%2F%2F127.0.0.1%3A4242&response_type=code&scope=https%3A%2F%2Fwww."
                   "googleapis.com%2Fauth%2Fcalendar.calendarlist.readonly%20https%3A%2F%2Fwww."
                   "googleapis.com%2Fauth%2Fcalendar.events.readonly%20https%3A%2F%2Fwww."
                   "googleapis.com%2Fauth%2Fuserinfo.email&state=st&code_challenge=ch&code_"
                   "challenge_method=S256&access_type=offline&prompt=consent%20select_account");
}

TEST(GoogleOAuthUtilities, CallbackGivesTheCodeOnlyForTheRightStateAndPath) {
    const struct {
        const char* target;
        std::optional<std::string> code;
    } cases[] = {
        {"/?state=S&code=4%2F0Ab", "4/0Ab"},
        {"/?code=abc&state=S&scope=x", "abc"},
        {"/?code=abc&state=S#frag", "abc"},
        {"/?state=T&code=abc", std::nullopt},
        {"/?state=S&state=S&code=abc", std::nullopt},
        {"/?code=abc", std::nullopt},
        {"/?state=S", std::nullopt},
        {"/?state=S&error=access_denied", std::nullopt},
        {"/?state=S&code=a&code=b", std::nullopt},
        {"/?state=S&code", std::nullopt},
        {"/?state=S&code=", std::nullopt},
        {"/favicon.ico?state=S&code=abc", std::nullopt},
        {"//evil.example/?state=S&code=abc", std::nullopt},
        {"http://127.0.0.1/?state=S&code=abc", std::nullopt},
        {"", std::nullopt},
        {"/?state=S&code=a%zz", std::nullopt},
        {"/?state=S&code=a%2", std::nullopt},
        {"/?state=S&code=a b", std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.target);
        EXPECT_EQ(Oauth::callbackCode(c.target, "S"), c.code);
    }
}

TEST(LoopbackRequestHead, WaitsForTheEmptyLineThenGivesTheTarget) {
    const std::string request =
        "GET /?state=S&code=c HTTP/1.1\r\nHost: 127.0.0.1:5000\r\nAccept: */*\r\n\r\n";
    for (std::size_t cut = 0; cut < request.size(); ++cut) {
        SCOPED_TRACE(cut);
        EXPECT_EQ(LoopbackRequestHead::parse(request.substr(0, cut)).state,
                  LoopbackRequestHead::State::incomplete);
    }
    const auto head = LoopbackRequestHead::parse(request);
    EXPECT_EQ(head.state, LoopbackRequestHead::State::complete);
    EXPECT_EQ(head.target, "/?state=S&code=c");
}

TEST(LoopbackRequestHead, RefusesOtherMethodsVersionsAndOversizedHeads) {
    for (const char* text :
         {"POST / HTTP/1.1\r\n\r\n", "GET / HTTP/2\r\n\r\n", "GET  HTTP/1.1\r\n\r\n",
          "GET /\r\n\r\n", "\x16\x03\x01", "GET /\x01 HTTP/1.1\r\n\r\n"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(LoopbackRequestHead::parse(text).state, LoopbackRequestHead::State::malformed);
    }
    std::string big = "GET /?state=S HTTP/1.1\r\nX: " + std::string(kLoopbackMaxHeadBytes, 'a');
    EXPECT_EQ(LoopbackRequestHead::parse(big).state, LoopbackRequestHead::State::malformed);
    EXPECT_EQ(LoopbackRequestHead::parse(big + "\r\n\r\n").state,
              LoopbackRequestHead::State::malformed);
}

TEST(LoopbackRequestHead, RepliesAreExactlyTheDocumentedBytes) {
    EXPECT_EQ(loopbackReply(true),
              "HTTP/1.1 200 OK\r\nContent-Type: text/plain; charset=utf-8\r\nCache-Control: "
              "no-store\r\nContent-Length: 62\r\nConnection: close\r\n\r\nReturn to Daywyn to "
              "finish connecting. You can close this tab.");
    EXPECT_EQ(loopbackReply(false),
              "HTTP/1.1 400 Bad Request\r\nContent-Type: text/plain; charset=utf-8\r\n"
              "Cache-Control: no-store\r\nContent-Length: 57\r\nConnection: close\r\n\r\nThis "
              "sign-in callback was not accepted. Return to Daywyn.");
}

} // namespace
} // namespace daywyn
