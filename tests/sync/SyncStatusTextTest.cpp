#include "sync/SyncStatusText.h"

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn::sync {
namespace {

const Calendar kBerlin = test::berlin();
const Instant kNow = test::at(kBerlin, 2026, 3, 4, 15, 30);

SyncState setUp() {
    SyncState state;
    state.account =
        SyncAccount{"https://dav.example.org/", "ama", "https://dav.example.org/l/", "Daywyn"};
    return state;
}

TEST(SyncStatusText, TheDrawerLineSaysHowLongAgoOrWhatFailed) {
    EXPECT_EQ(SyncStatusText::drawerLine(SyncState{}, false, kNow, kBerlin), "");
    SyncState state = setUp();
    EXPECT_EQ(SyncStatusText::drawerLine(state, false, kNow, kBerlin), "Not synced yet");
    EXPECT_EQ(SyncStatusText::drawerLine(state, true, kNow, kBerlin), "Syncing…");

    const struct {
        double secondsAgo;
        const char* line;
    } cases[] = {
        {0, "Synced just now"},
        {59, "Synced just now"},
        {60, "Synced 1 min ago"},
        {150, "Synced 2 min ago"},
        {3599, "Synced 59 min ago"},
        {3600, "Synced 1 h ago"},
        {23 * 3600 + 59 * 60, "Synced 23 h ago"},
        {26 * 3600, "Synced yesterday"},
        {3 * 86400, "Synced on Sunday 1 March"},
        // Another machine's clock ahead of this one.
        {-600, "Synced just now"},
    };
    for (const auto& c : cases) {
        state.lastPassAt = kNow - c.secondsAgo;
        EXPECT_EQ(SyncStatusText::drawerLine(state, false, kNow, kBerlin), c.line) << c.secondsAgo;
    }
    // A failure is said instead, whenever the last good pass was.
    state.lastError = "The sync server refused the user name or password.";
    EXPECT_EQ(SyncStatusText::drawerLine(state, false, kNow, kBerlin), state.lastError);
}

TEST(SyncStatusText, TheSettingsPageShowsTheLastPassAndEachConflict) {
    SyncState state = setUp();
    EXPECT_EQ(SyncStatusText::lastPass(state, kNow, kBerlin), "No pass yet.");
    state.lastPassAt = test::at(kBerlin, 2026, 3, 4, 9, 5);
    state.lastSummary = "Sent 3 changes, received 1.";
    EXPECT_EQ(SyncStatusText::lastPass(state, kNow, kBerlin),
              "Today 09:05: Sent 3 changes, received 1.");
    state.lastError = "The sync server did not answer.";
    EXPECT_EQ(SyncStatusText::lastPass(state, kNow, kBerlin),
              "Today 09:05: The sync server did not answer.");

    ConflictRecord record;
    record.title = "Pay rent";
    record.field = "title";
    record.keptValue = "Pay rent by noon";
    record.setAsideValue = "Pay rent today";
    record.lost = ConflictSide::local;
    EXPECT_EQ(SyncStatusText::conflict(record),
              "Title \"Pay rent by noon\" kept; \"Pay rent today\" from this computer replaced.");
    record.lost = ConflictSide::remote;
    EXPECT_NE(SyncStatusText::conflict(record).find("from the server replaced"), std::string::npos);
    // A field of two words reads as words, not as the record's key.
    record.field = "estimatedMinutes";
    record.keptValue = "20";
    record.setAsideValue = "45";
    EXPECT_EQ(SyncStatusText::conflict(record),
              "Estimated minutes \"20\" kept; \"45\" from the server replaced.");
    EXPECT_EQ(SyncStatusText::when(test::at(kBerlin, 2026, 3, 3, 22, 0), kNow, kBerlin),
              "Yesterday 22:00");
}

} // namespace
} // namespace daywyn::sync
