#include "calendar/qt/GoogleLoopback.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <gtest/gtest.h>

#include "calendar/GoogleLoopbackRequest.h"
#include "calendar/GoogleOAuthUtilities.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

using test::waitUntil;

// A raw client of the receiver: what it sends and everything it gets back.
struct Client {
    QTcpSocket socket;
    QByteArray answer;
    bool closed = false;

    explicit Client(quint16 port) {
        QObject::connect(&socket, &QTcpSocket::readyRead, [this] { answer += socket.readAll(); });
        QObject::connect(&socket, &QTcpSocket::disconnected, [this] { closed = true; });
        socket.connectToHost(QHostAddress::LocalHost, port);
        EXPECT_TRUE(socket.waitForConnected(5000));
    }
    void send(const QByteArray& bytes) {
        socket.write(bytes);
        socket.flush();
    }
};

QByteArray reply(bool accepted) {
    return QByteArray::fromStdString(loopbackReply(accepted));
}

TEST(GoogleLoopback, AnIdleConnectionDoesNotHoldUpTheRealCallback) {
    GoogleLoopback loopback;
    const auto port = loopback.start("S");
    ASSERT_TRUE(port.ok());
    Client idle(port.value());
    Client browser(port.value());
    std::optional<Result<std::string>> result;
    loopback.code([&](Result<std::string> r) { result = std::move(r); });

    browser.send("GET /?state=S&code=4%2Fabc HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    ASSERT_TRUE(waitUntil([&] { return browser.closed && result.has_value(); }));
    EXPECT_EQ(browser.answer, reply(true));
    ASSERT_TRUE(result->ok());
    EXPECT_EQ(result->value(), "4/abc");
    // The listener is gone once the sign-in has its answer.
    QTcpSocket late;
    late.connectToHost(QHostAddress::LocalHost, port.value());
    EXPECT_FALSE(late.waitForConnected(1000));
}

TEST(GoogleLoopback, AWrongStateIsRefusedAndEndsTheSignIn) {
    GoogleLoopback loopback;
    const auto port = loopback.start("S");
    ASSERT_TRUE(port.ok());
    Client browser(port.value());
    browser.send("GET /?state=T&code=abc HTTP/1.1\r\n\r\n");
    ASSERT_TRUE(waitUntil([&] { return browser.closed; }));
    EXPECT_EQ(browser.answer, reply(false));
    // Nobody waited yet: the result is kept for the later waiter.
    std::optional<Result<std::string>> result;
    loopback.code([&](Result<std::string> r) { result = std::move(r); });
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->error(), kGoogleNotGranted);
}

TEST(GoogleLoopback, GarbageOversizedAndSlowClientsGetA400WhileTheSignInGoesOn) {
    GoogleLoopback loopback;
    loopback.setConnectionTimeout(300);
    const auto port = loopback.start("S");
    ASSERT_TRUE(port.ok());
    Client garbage(port.value());
    garbage.send(QByteArray("\x16\x03\x01\x02\x00", 5));
    Client oversized(port.value());
    oversized.send("GET /?state=S&code=x HTTP/1.1\r\nX-Pad: " +
                   QByteArray(static_cast<int>(kLoopbackMaxHeadBytes) * 2, 'a'));
    Client slow(port.value());
    slow.send("GET /?state=S&co");
    ASSERT_TRUE(waitUntil([&] { return garbage.closed && oversized.closed && slow.closed; }));
    for (Client* client : {&garbage, &oversized, &slow}) {
        EXPECT_EQ(client->answer, reply(false));
    }
    Client browser(port.value());
    browser.send("GET /?code=ok&state=S HTTP/1.1\r\n\r\n");
    std::optional<Result<std::string>> result;
    loopback.code([&](Result<std::string> r) { result = std::move(r); });
    ASSERT_TRUE(waitUntil([&] { return result.has_value(); }));
    EXPECT_EQ(result->value(), "ok");
}

TEST(GoogleLoopback, NoCallbackInTimeEndsTheSignInWithTheTimeoutSentence) {
    GoogleLoopback loopback;
    ASSERT_TRUE(loopback.start("S", 50).ok());
    std::optional<Result<std::string>> result;
    loopback.code([&](Result<std::string> r) { result = std::move(r); });
    ASSERT_TRUE(waitUntil([&] { return result.has_value(); }));
    EXPECT_EQ(result->error(), kGoogleSignInTimedOut);
}

} // namespace
} // namespace daywyn
