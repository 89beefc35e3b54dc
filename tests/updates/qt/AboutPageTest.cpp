#include <QDir>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <gtest/gtest.h>

#include "LocalHttpsServer.h"
#include "app/qt/AppEnvironment.h"
#include "app/qt/ScreenEngine.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"
#include "ui/qt/SettingsWindow.h"
#include "updates/qt/AppUpdateManager.h"

namespace daywyn {
namespace {

using test::LocalHttpsServer;

QString textOf(QQuickWindow& window, const char* name) {
    QQuickItem* item = test::findItem(window, QString::fromLatin1(name));
    return item ? item->property("text").toString() : QStringLiteral("<missing>");
}

bool isShown(QQuickWindow& window, const char* name) {
    QQuickItem* item = test::findItem(window, QString::fromLatin1(name));
    return item && item->isVisible();
}

// Saves the window when DAYWYN_UPDATE_SCREENSHOTS names a folder (scripts/
// update-screenshots.sh runs this test on a virtual display for that).
void screenshot(QQuickWindow& window, const char* name) {
    const QString folder = qEnvironmentVariable("DAYWYN_UPDATE_SCREENSHOTS");
    if (!folder.isEmpty()) {
        QDir().mkpath(folder);
        window.grabWindow().save(QDir(folder).filePath(QString::fromLatin1(name) + ".png"));
    }
}

// The About page driven as a user drives it: the version, a check, a download with its
// progress, and the offer to open what was saved.
TEST(AboutPage, ChecksDownloadsAndOffersTheVerifiedPackage) {
    LocalHttpsServer server;
    ASSERT_TRUE(server.start());
    constexpr qint64 size = 3 * 1024 * 1024;
    const QString path = QStringLiteral("/pool/daywyn_1.4.0_amd64.deb");
    LocalHttpsServer::Reply package;
    package.generatedSize = size;
    package.holdAfter = size * 2 / 5;
    server.setReply(path, package);
    const QByteArray manifest =
        R"({"schemaVersion": 1, "latest": "1.4.0", "releases": [{"version": "1.4.0",
        "build": 40, "publishedAt": "2026-11-20", "minimumMacOS": "Debian 12",
        "downloadURL": ")" +
        server.url(QStringLiteral("localhost"), path).toString().toUtf8() + R"(", "sha256": ")" +
        LocalHttpsServer::generatedSha256(size) +
        R"(", "notes": ["Quick Add understands next week.", "Reports list the week's totals."]}]})";
    server.setReply(QStringLiteral("/manifest.json"), {200, manifest, -1, {}, -1, -1});

    AppUpdateManager::Options options;
    options.manifestURL = server.url(QStringLiteral("localhost"), QStringLiteral("/manifest.json"));
    options.extraCaCertificates = {server.certificate()};
    // Outlives the environment, whose window binds to it.
    AppUpdateManager updates(options);
    AppEnvironment environment(nullptr, test::berlin(),
                               test::ManualClock(Instant{1779440400.0}).function());
    // The About page of an engine with this test's update manager in place of the app's.
    ScreenServices parts = environment.screenServices();
    parts.updates = &updates;
    ScreenEngine engine(parts);
    SettingsWindow settings(engine);
    settings.show(QStringLiteral("about"));
    QQuickWindow& window = *settings.window();

    ASSERT_TRUE(
        test::waitUntil([&] { return test::findItem(window, QStringLiteral("checkForUpdates")); }));
    EXPECT_EQ(textOf(window, "aboutVersion"),
              QStringLiteral("Daywyn %1 (build %2)")
                  .arg(updates.currentVersion(), updates.currentBuild()));
    EXPECT_FALSE(isShown(window, "downloadUpdate"));

    test::click(window, *test::findItem(window, QStringLiteral("checkForUpdates")));
    ASSERT_TRUE(test::waitUntil([&] { return isShown(window, "downloadUpdate"); }));
    EXPECT_EQ(textOf(window, "updateStatus"), QStringLiteral("Daywyn 1.4.0 is available."));
    EXPECT_EQ(textOf(window, "downloadUpdate"), QStringLiteral("Download Daywyn 1.4.0"));

    test::click(window, *test::findItem(window, QStringLiteral("downloadUpdate")));
    // The server holds the rest back, so the page stays mid-download.
    ASSERT_TRUE(test::waitUntil([&] { return updates.bytesReceived() >= size * 2 / 5; }));
    EXPECT_TRUE(isShown(window, "downloadProgress"));
    EXPECT_EQ(textOf(window, "updateStatus"), QStringLiteral("Downloading Daywyn 1.4.0\u2026"));
    EXPECT_FALSE(test::findItem(window, QStringLiteral("checkForUpdates"))->isEnabled());
    screenshot(window, "about-downloading");

    server.resume();
    ASSERT_TRUE(test::waitUntil([&] { return isShown(window, "openDownloadedInstaller"); }));
    EXPECT_EQ(textOf(window, "updateStatus"),
              QStringLiteral("Daywyn 1.4.0 is downloaded and verified."));
    EXPECT_FALSE(isShown(window, "downloadProgress"));
    EXPECT_EQ(textOf(window, "downloadedInstallerPath"), updates.downloadedInstallerPath());
    EXPECT_TRUE(updates.downloadedInstallerPath().endsWith(QStringLiteral("/Daywyn-1.4.0.deb")));
    screenshot(window, "about-downloaded");
}

} // namespace
} // namespace daywyn
