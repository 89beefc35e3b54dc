#include "updates/UpdateRules.h"

#include <fstream>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "updates/AppReleaseManifest.h"
#include "updates/UpdateStatusText.h"

namespace daywyn {
namespace {

const std::optional<std::string> host = std::string("updates.daywyn.org");

std::string goodManifest() {
    std::ifstream file(std::string(DAYWYN_TEST_DATA_DIR) + "/updates/manifest.json");
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

// The good manifest with one text replaced, for the bad variants.
std::string manifestWith(const std::string& from, const std::string& to) {
    std::string text = goodManifest();
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

AppRelease releaseAt(std::string url, std::string sha256) {
    AppRelease release;
    release.version = "1.4.0";
    release.downloadURL = std::move(url);
    release.sha256 = std::move(sha256);
    return release;
}

TEST(AppReleaseManifest, DecodesEveryFieldAndIgnoresUnknownKeys) {
    const auto manifest = AppReleaseManifest::decode(goodManifest());
    ASSERT_TRUE(manifest) << manifest.error();
    EXPECT_EQ(manifest->schemaVersion, 1);
    ASSERT_EQ(manifest->releases.size(), 3U);
    const AppRelease& release = manifest->releases[1];
    EXPECT_EQ(release.build, 40);
    EXPECT_EQ(release.publishedAt, "2026-11-20");
    EXPECT_EQ(release.minimumMacOS, "Debian 12");
    EXPECT_EQ(release.notes, (std::vector<std::string>{"Quick Add understands \"next week\".",
                                                       "Reports list the week's totals."}));
    EXPECT_EQ(manifest->latestRelease(), release);
}

TEST(AppReleaseManifest, RejectsDocumentsThatAreNotAWholeManifest) {
    for (const std::string& text : {
             std::string("<html>Service unavailable</html>"),
             std::string(""),
             std::string("[]"),
             std::string(R"({"schemaVersion": 1, "latest": "1.0"})"),
             std::string(R"({"schemaVersion": "1", "latest": "1.0", "releases": []})"),
             std::string(R"({"schemaVersion": 1, "latest": "1.0", "releases": []} trailing)"),
             manifestWith("\"build\": 40,", ""),
             manifestWith("\"build\": 40", "\"build\": 40.5"),
             manifestWith("[\"Faster start-up.\"]", "[1]"),
             manifestWith("\"notes\": []", "\"notes\": []]"),
         }) {
        SCOPED_TRACE(text.substr(0, 80));
        EXPECT_FALSE(AppReleaseManifest::decode(text));
    }
}

TEST(UpdateRules, AGoodManifestIsSortedNewestFirstAndOffersItsLatest) {
    const auto checked = checkManifest(goodManifest(), host);
    ASSERT_TRUE(std::holds_alternative<CheckedManifest>(checked));
    const auto& result = std::get<CheckedManifest>(checked);
    std::vector<std::string> order;
    for (const AppRelease& release : result.releases) {
        order.push_back(release.version);
    }
    EXPECT_EQ(order, (std::vector<std::string>{"1.4.0", "1.4.0-rc2", "1.3.2"}));
    EXPECT_EQ(result.latestRelease.build, 40);
    EXPECT_TRUE(isUpdateAvailable(result.latestRelease.version, "1.3.9"));
    EXPECT_FALSE(isUpdateAvailable(result.latestRelease.version, "1.4"));
}

TEST(UpdateRules, AnyBadReleaseOrSchemaFailsTheWholeCheck) {
    const std::string shortSum = "2c26b46b68ffc68ff99b453c1d30413413422d706483bfa0f98a5e886266e7a";
    for (const std::string& text : {
             manifestWith("\"schemaVersion\": 1", "\"schemaVersion\": 2"),
             manifestWith("\"latest\": \"1.4.0\"", "\"latest\": \"1.5.0\""),
             // A checksum one digit short, or with a "g", in a release that is not the latest.
             manifestWith("fcde2b2edba56bf408601fb721fe9b5c338d10ee429ea04fae5511b68fbf8fb9",
                          shortSum),
             manifestWith("fcde2b2edba56bf408601fb721fe9b5c338d10ee429ea04fae5511b68fbf8fb9",
                          "gcde2b2edba56bf408601fb721fe9b5c338d10ee429ea04fae5511b68fbf8fb9"),
             manifestWith("https://updates.daywyn.org/daywyn_1.3.2", "http://updates.daywyn.org/x"),
             manifestWith("https://updates.daywyn.org/daywyn_1.4.0_amd64.deb",
                          "https://mirror.example.com/daywyn_1.4.0_amd64.deb"),
             std::string("not json"),
         }) {
        SCOPED_TRACE(text.substr(0, 300));
        const auto checked = checkManifest(text, host);
        ASSERT_TRUE(std::holds_alternative<UpdateError>(checked));
        EXPECT_EQ(std::get<UpdateError>(checked), UpdateError::invalidManifest);
    }
}

TEST(UpdateRules, ReleaseValidationChecksSchemeHostAndChecksum) {
    const std::string sum(64, 'A');
    EXPECT_FALSE(validateRelease(releaseAt("https://updates.daywyn.org/a.deb", sum), host));
    EXPECT_FALSE(validateRelease(releaseAt("https://UPDATES.daywyn.org:8443/a.deb", sum), host));
    EXPECT_FALSE(validateRelease(releaseAt("https://anywhere.example/a.deb", sum), std::nullopt));
    EXPECT_TRUE(validateRelease(releaseAt("HTTPS://updates.daywyn.org/a.deb", sum), host));
    EXPECT_TRUE(validateRelease(releaseAt("https:/a.deb", sum), host));
    EXPECT_TRUE(validateRelease(releaseAt("https://updates.daywyn.org.evil.example/a", sum), host));
    EXPECT_TRUE(validateRelease(releaseAt("https://updates.daywyn.org@evil.example/a", sum), host));
    EXPECT_TRUE(validateRelease(releaseAt("https://updates.daywyn.org/a.deb", sum + "0"), host));
    EXPECT_TRUE(validateRelease(releaseAt("https://updates.daywyn.org/a.deb", " " + sum), host));
}

TEST(UpdateRules, ResponsesMustBeSuccessfulAndEndOnTheManifestsHost) {
    const std::string url = "https://updates.daywyn.org/manifest.json";
    EXPECT_FALSE(validateResponse(200, url, host));
    EXPECT_FALSE(validateResponse(204, url, host));
    EXPECT_EQ(validateResponse(404, url, host), UpdateError::untrustedResponse);
    EXPECT_EQ(validateResponse(302, url, host), UpdateError::untrustedResponse);
    EXPECT_EQ(validateResponse(std::nullopt, url, host), UpdateError::untrustedResponse);
    EXPECT_EQ(validateResponse(200, "http://updates.daywyn.org/manifest.json", host),
              UpdateError::untrustedResponse);
    EXPECT_EQ(validateResponse(200, "https://127.0.0.1/manifest.json", host),
              UpdateError::untrustedResponse);
}

TEST(UpdateRules, ChecksumsMatchWhateverTheCaseOfTheManifest) {
    const std::string digest = "2c26b46b68ffc68ff99b453c1d30413413422d706483bfa0f98a5e886266e7ae";
    EXPECT_TRUE(checksumMatches(
        digest, "2C26B46B68FFC68FF99B453C1D30413413422D706483BFA0F98A5E886266E7AE"));
    EXPECT_FALSE(checksumMatches(
        digest, "3c26b46b68ffc68ff99b453c1d30413413422d706483bfa0f98a5e886266e7ae"));
}

TEST(UpdateRules, DestinationTakesTheFirstFreeNumberedName) {
    std::set<std::string> taken = {"Daywyn-1.4.0.deb", "Daywyn-1.4.0-2.deb"};
    const auto exists = [&taken](const std::string& name) {
        return taken.count(name) > 0;
    };
    const std::string url = "https://updates.daywyn.org/pool/daywyn_1.4.0_amd64.deb?sig=1";
    EXPECT_EQ(destinationFileName("1.4.0", url, exists), "Daywyn-1.4.0-3.deb");

    taken.clear();
    EXPECT_EQ(destinationFileName("1.4.0", url, exists), "Daywyn-1.4.0.deb");
    EXPECT_EQ(destinationFileName("1.4.0", "https://h/pool/image.dmg", exists), "Daywyn-1.4.0.dmg");
    EXPECT_EQ(destinationFileName("1.4.0", "https://h/download", exists), "Daywyn-1.4.0");

    taken.insert("Daywyn-1.4.0.deb");
    for (int n = 2; n <= 99; ++n) {
        taken.insert("Daywyn-1.4.0-" + std::to_string(n) + ".deb");
    }
    EXPECT_EQ(destinationFileName("1.4.0", url, exists), std::nullopt);
}

TEST(UpdateRules, AVersionFromTheManifestCannotNameAFileOutsideDownloads) {
    const auto none = [](const std::string&) {
        return false;
    };
    const auto name = destinationFileName("../../.bashrc", "https://h/x.d/eb", none);
    ASSERT_TRUE(name);
    EXPECT_EQ(name->find('/'), std::string::npos);
    EXPECT_EQ(*name, "Daywyn-.._.._.bashrc");
}

TEST(UpdateStatusText, FailuresEndInOneOfTwoDownloadSentences) {
    EXPECT_EQ(UpdateStatusText::downloadFailed(UpdateError::checksumMismatch),
              "The installer could not be verified, so Daywyn did not keep it.");
    for (UpdateError error : {UpdateError::invalidManifest, UpdateError::untrustedResponse,
                              UpdateError::downloadFolderUnavailable}) {
        EXPECT_EQ(UpdateStatusText::downloadFailed(error),
                  "The installer could not be downloaded. Try again.");
    }
    EXPECT_EQ(UpdateStatusText::downloading("1.4.0"), "Downloading Daywyn 1.4.0\u2026");
}

} // namespace
} // namespace daywyn
