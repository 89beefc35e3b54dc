#include <gtest/gtest.h>

#include "model/RecordJson.h"

namespace daywyn {
namespace {

Result<AppPreferences> decode(std::string_view json) {
    return decodePreferences(json);
}

std::string encode(const AppPreferences& p) {
    JsonBuffer buffer;
    CompactJsonWriter writer(buffer);
    encodeRecord(writer, p);
    return buffer.GetString();
}

TEST(PreferencesJson, MissingKeysTakeTheirDefaults) {
    EXPECT_EQ(decode("{}").value(), AppPreferences{});
    auto partial = decode(R"({"dailyReviewHour": 18, "edgeAnchor": "bottomCenter"})");
    ASSERT_TRUE(partial.ok());
    AppPreferences expected;
    expected.dailyReviewHour = 18;
    expected.edgeAnchor = EdgeAnchor::bottomCenter;
    EXPECT_EQ(partial.value(), expected);
}

TEST(PreferencesJson, ReadsTheOlderReminderKeyButNeverWritesIt) {
    auto old = decode(R"({"dueNotificationsEnabled": true})");
    ASSERT_TRUE(old.ok());
    EXPECT_TRUE(old->taskRemindersEnabled);
    const std::string written = encode(old.value());
    EXPECT_NE(written.find("\"taskRemindersEnabled\":true"), std::string::npos);
    EXPECT_EQ(written.find("dueNotificationsEnabled"), std::string::npos);
    EXPECT_FALSE(decode(R"({"taskRemindersEnabled": false, "dueNotificationsEnabled": true})")
                     ->taskRemindersEnabled);
    // The newer key wins wherever it stands; a null one gives no value.
    EXPECT_FALSE(decode(R"({"dueNotificationsEnabled": true, "taskRemindersEnabled": false})")
                     ->taskRemindersEnabled);
    EXPECT_TRUE(decode(R"({"taskRemindersEnabled": null, "dueNotificationsEnabled": true})")
                    ->taskRemindersEnabled);
    EXPECT_FALSE(
        decode(R"({"taskRemindersEnabled": true, "dueNotificationsEnabled": "yes"})").ok());
}

TEST(PreferencesJson, OnlyListedCadencesAndAnchorsDecode) {
    EXPECT_EQ(decode(R"({"unfinishedReminderCadence": 120})")->unfinishedReminderCadence,
              UnfinishedReminderCadence::every2Hours);
    EXPECT_FALSE(decode(R"({"unfinishedReminderCadence": 45})").ok());
    EXPECT_FALSE(decode(R"({"edgeAnchor": "middle"})").ok());
    EXPECT_FALSE(decode(R"({"dailyReviewHour": "21"})").ok());
    EXPECT_FALSE(decode(R"({"selectedCalendarIdentifiers": [1]})").ok());
    EXPECT_FALSE(decode(R"({"activeHoursStart": 9.5})").ok());
    EXPECT_FALSE(decode(R"([])").ok());
}

TEST(PreferencesJson, EveryFieldRoundTrips) {
    AppPreferences p;
    p.taskRemindersEnabled = true;
    p.budgetNotificationsEnabled = true;
    p.scheduledEndAlertsEnabled = true;
    p.budgetWarningLeadMinutes = 7;
    p.endWarningLeadMinutes = 3;
    p.defaultTaskMinutes = 50;
    p.unfinishedReminderCadence = UnfinishedReminderCadence::hourly;
    p.activeHoursStart = 22;
    p.activeHoursEnd = 6;
    p.dailyReviewEnabled = false;
    p.dailyReviewHour = 17;
    p.dailyReviewMinute = 45;
    p.calendarIntegrationEnabled = true;
    p.selectedCalendarIdentifiers = {"work", "Ünïcode"};
    p.edgeAnchor = EdgeAnchor::leftCenter;
    auto back = decode(encode(p));
    ASSERT_TRUE(back.ok());
    EXPECT_EQ(back.value(), p);
}

} // namespace
} // namespace daywyn
