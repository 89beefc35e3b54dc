// Google accounts end to end: a fake Google over TLS on loopback, a stand-in for
// xdg-open that plays the browser, the real loopback receiver, Qt Network and a real
// gnome-keyring-daemon on the test's private bus.
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QQmlEngine>
#include <QQuickView>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "app/qt/ScreenEngine.h"
#include "calendar/qt/GoogleCalendarManager.h"
#include "calendar/qt/NetworkGoogleHttp.h"
#include "calendar/qt/SecretServiceStore.h"
#include "support/TaskBuilder.h"
#include "support/qt/FakeGoogleServer.h"
#include "support/qt/QtTestSupport.h"
#include "ui/qt/SettingsWindow.h"

namespace daywyn {
namespace {

using test::FakeGoogleServer;

bool writeFile(const QString& path, const QByteArray& bytes, bool executable = false) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(bytes) != bytes.size()) {
        return false;
    }
    if (executable) {
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
    }
    return true;
}

// Five calendars, listed two to a page.
FakeGoogleServer::Account account(const char* id, const char* email, int expiresIn) {
    FakeGoogleServer::Account account;
    account.id = QString::fromUtf8(id);
    account.email = QString::fromUtf8(email);
    account.calendars = 5;
    account.calendarsPerPage = 2;
    account.expiresIn = expiresIn;
    return account;
}

QString keyringItem() {
    QProcess lookup;
    lookup.start(QStringLiteral("secret-tool"),
                 {QStringLiteral("lookup"), QStringLiteral("service"),
                  QStringLiteral("com.daywyn.google-calendar"), QStringLiteral("account"),
                  QStringLiteral("accounts.v1")});
    lookup.waitForFinished(10'000);
    return QString::fromUtf8(lookup.readAllStandardOutput());
}

// The texts of every item under `item`, depth first.
void collectTexts(QQuickItem* item, QStringList& texts) {
    const QVariant text = item->property("text");
    if (text.isValid() && item->isVisible()) {
        texts << text.toString();
    }
    for (QQuickItem* child : item->childItems()) {
        collectTexts(child, texts);
    }
}

// The Calendars settings page as the app shows it, bound to `google`: what it says, and
// a picture of it when DAYWYN_GOOGLE_SCREENSHOTS names a folder
// (scripts/google-screenshots.sh runs this test on a virtual display for that).
QStringList calendarsPageTexts(GoogleCalendarManager& google) {
    AppEnvironment environment(nullptr, Calendar(), [] { return Instant{}; });
    // The Calendars page of an engine with this test's manager in place of the app's.
    ScreenServices parts = environment.screenServices();
    parts.googleCalendars = &google;
    ScreenEngine engine(parts);
    SettingsWindow settings(engine);
    settings.show(QStringLiteral("calendars"));
    QQuickWindow& window = *settings.window();
    QStringList texts;
    if (!test::waitUntil(
            [&] { return test::findItem(window, QStringLiteral("connectGoogleButton")); })) {
        return texts;
    }
    QTest::qWait(200);
    collectTexts(window.contentItem(), texts);
    if (const QString folder = qEnvironmentVariable("DAYWYN_GOOGLE_SCREENSHOTS");
        !folder.isEmpty()) {
        QDir().mkpath(folder);
        window.grabWindow().save(QDir(folder).filePath(QStringLiteral("calendars-google.png")));
    }
    return texts;
}

class GoogleCalendarsTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        ASSERT_TRUE(google.start(folder.path()));
        // The fake's certificate is trusted by this process and by the stand-in browser.
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.addCaCertificate(google.certificate());
        QSslConfiguration::setDefaultConfiguration(tls);
        ASSERT_TRUE(writeFile(
            QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME")) + "/Daywyn/GoogleDesktop.json",
            R"({"installed":{"client_id":"test-client.apps","client_secret":"test-secret"}})"));
        ASSERT_TRUE(writeFile(folder.filePath("bin/xdg-open"),
                              "#!/bin/sh\nexec curl -sS -L --max-time 20 --cacert '" +
                                  google.certificatePath().toUtf8() + "' -o /dev/null \"$1\"\n",
                              true));
        qputenv("PATH", folder.filePath("bin").toLocal8Bit() + ":" + qgetenv("PATH"));

        ASSERT_TRUE(test::startUnlockedKeyring(keyring));
    }

    void TearDown() override { test::stopProcess(&keyring); }

    std::unique_ptr<GoogleCalendarManager> manager() {
        return std::make_unique<GoogleCalendarManager>(
            http, secrets, GoogleEndpoints::under(google.origin().toStdString()), calendar,
            clock.function(), loadGoogleRegistration, openInBrowser);
    }

    bool connectOne(GoogleCalendarManager& manager, std::size_t expected) {
        manager.connectAccount();
        return test::waitUntil([&] { return !manager.isConnecting(); }) &&
               manager.accounts().size() == expected &&
               test::waitUntil([&] { return !manager.isRefreshing(); });
    }

    QTemporaryDir folder;
    FakeGoogleServer google;
    QProcess keyring;
    Calendar calendar;
    // A fixed afternoon (14:45 in the tests' zone): the test moves an hour on and must
    // stay within one day, whatever the time the suite runs at.
    test::ManualClock clock{Instant{1779440400.0}};
    NetworkGoogleHttp http;
    SecretServiceStore secrets{"com.daywyn.google-calendar", "accounts.v1"};
};

TEST_F(GoogleCalendarsTest, TwoAccountsSignInRefreshAndOneFailsWhileTheOtherKeepsItsEvents) {
    google.addAccount(account("111", "ama@example.com", 120));
    google.addAccount(account("222", "kofi@example.com", 3600));
    auto manager = this->manager();
    manager->restore();
    EXPECT_FALSE(manager->errorMessage().has_value()) << *manager->errorMessage();

    ASSERT_TRUE(connectOne(*manager, 1)) << manager->errorMessageText().toStdString();
    EXPECT_EQ(manager->events().size(), 5U);
    ASSERT_TRUE(connectOne(*manager, 2)) << manager->errorMessageText().toStdString();
    EXPECT_FALSE(manager->errorMessage().has_value()) << *manager->errorMessage();
    // Five calendars each, listed over three pages, one event (and one cancelled) each.
    ASSERT_EQ(manager->events().size(), 10U);
    EXPECT_EQ(manager->accounts()[0].calendars.size(), 5U);
    EXPECT_EQ(google.requests().count("GET /calendar/v3/users/me/calendarList"), 3 * 2 + 3);

    // The keyring holds the one item, with both accounts.
    const auto stored = GoogleAccount::decodeAll(keyringItem().toStdString());
    ASSERT_TRUE(stored.ok()) << stored.error();
    ASSERT_EQ(stored->size(), 2U);
    EXPECT_EQ(stored->at(1).refreshToken, "rt-222");

    // Ama's token has under a minute left: it is refreshed before her calendars load.
    clock.advance(61);
    manager->refresh();
    ASSERT_TRUE(test::waitUntil([&] { return !manager->isRefreshing(); }));
    EXPECT_EQ(google.account(0).tokenRefreshes, 1);
    EXPECT_EQ(google.account(1).tokenRefreshes, 0);
    EXPECT_EQ(manager->accounts()[0].accessToken, "at-111-1");
    EXPECT_EQ(manager->events().size(), 10U);

    const QStringList texts = calendarsPageTexts(*manager);
    for (const char* shown : {"Connect Google Account", "ama@example.com", "kofi@example.com",
                              "ama 0", "kofi 4", "Disconnect"}) {
        EXPECT_TRUE(texts.contains(QString::fromUtf8(shown))) << shown;
    }

    // Kofi's calendar answers 500: Ama's fresh events and his last good ones remain.
    google.account(1).failEvents = true;
    manager->refresh();
    ASSERT_TRUE(test::waitUntil([&] { return !manager->isRefreshing(); }));
    EXPECT_EQ(manager->events().size(), 10U);
    EXPECT_EQ(manager->errorMessageText().toStdString(),
              "kofi@example.com is showing its last available events. Google Calendar could "
              "not be loaded. Check your connection and calendar permissions, then refresh.");

    // A revoked refresh token gives its own sentence for Ama only.
    google.account(0).revoked = true;
    clock.advance(3600);
    google.account(1).failEvents = false;
    manager->refresh();
    ASSERT_TRUE(test::waitUntil([&] { return !manager->isRefreshing(); }));
    EXPECT_EQ(manager->errorMessageText().toStdString(),
              "ama@example.com is showing its last available events. Google access expired or "
              "was declined. Connect the account again.");

    // No file written during all this holds a token.
    const QStringList roots = {qEnvironmentVariable("HOME"),
                               qEnvironmentVariable("XDG_DATA_HOME"),
                               qEnvironmentVariable("XDG_CONFIG_HOME"),
                               qEnvironmentVariable("XDG_STATE_HOME"),
                               qEnvironmentVariable("XDG_CACHE_HOME"),
                               qEnvironmentVariable("XDG_RUNTIME_DIR")};
    const QList<QByteArray> tokens = {"at-111-", "at-222-", "rt-111", "rt-222"};
    int filesRead = 0;
    for (const QString& root : roots) {
        QDirIterator files(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (!file.open(QIODevice::ReadOnly)) {
                continue;
            }
            ++filesRead;
            const QByteArray bytes = file.readAll();
            for (const QByteArray& token : tokens) {
                EXPECT_FALSE(bytes.contains(token)) << file.fileName().toStdString();
            }
        }
    }
    EXPECT_GT(filesRead, 0);
}

} // namespace
} // namespace daywyn
