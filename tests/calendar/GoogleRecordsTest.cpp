#include <gtest/gtest.h>

#include "calendar/GoogleAccount.h"
#include "calendar/GoogleReplies.h"
#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

constexpr double kReferenceDate = 978'307'200.0;

GoogleAccount account() {
    GoogleAccount a;
    a.id = "1081";
    a.email = "ama@example.com";
    a.accessToken = "ya29.access";
    a.refreshToken = "1//refresh";
    a.expiresAt = Instant{kReferenceDate + 785'000'000.5};
    a.calendars = {{"primary@example.com", "Ama", "#9fc6e7"}, {"team", std::nullopt, std::nullopt}};
    a.selected = {"team", "gone"};
    a.didLoadCalendars = true;
    return a;
}

TEST(GoogleAccount, BlobRoundTripsWithSortedKeysAndReferenceDates) {
    GoogleAccount older = account();
    older.id = "2";
    older.didLoadCalendars.reset();
    const std::string blob = GoogleAccount::encodeAll({account(), older});
    EXPECT_LT(blob.find("\"accessToken\""), blob.find("\"calendars\""));
    EXPECT_LT(blob.find("\"refreshToken\""), blob.find("\"selected\""));
    EXPECT_NE(blob.find("\"expiresAt\": 785000000.5"), std::string::npos);
    const auto decoded = GoogleAccount::decodeAll(blob);
    ASSERT_TRUE(decoded.ok()) << decoded.error();
    EXPECT_EQ(decoded.value(), (std::vector<GoogleAccount>{account(), older}));
    EXPECT_EQ(GoogleAccount::decodeAll("[]").value(), std::vector<GoogleAccount>{});
}

TEST(GoogleAccount, OlderBlobsWithoutTheLoadFlagAndBrokenBlobsAreToldApart) {
    const auto old = GoogleAccount::decodeAll(
        R"([{"id":"1","email":"e","accessToken":"a","refreshToken":"r","expiresAt":10,)"
        R"("calendars":[],"selected":[]}])");
    ASSERT_TRUE(old.ok()) << old.error();
    EXPECT_FALSE(old->front().didLoadCalendars.has_value());
    EXPECT_EQ(old->front().expiresAt, Instant{kReferenceDate + 10});

    for (const char* bad : {"", "{}", "[{\"id\":\"1\"}]", "[1]", "[] []",
                            R"([{"id":"1","email":"e","accessToken":"secret-token",)"
                            R"("refreshToken":"r","expiresAt":"soon","calendars":[],)"
                            R"("selected":[]}])"}) {
        SCOPED_TRACE(bad);
        const auto result = GoogleAccount::decodeAll(bad);
        ASSERT_FALSE(result.ok());
        EXPECT_EQ(result.error().find("secret-token"), std::string::npos);
    }
}

TEST(GoogleReplies, TokenProfileAndRegistrationRead) {
    const auto token = GoogleToken::decode(R"({"access_token":"a","expires_in":3599,"scope":"x"})");
    ASSERT_TRUE(token.ok());
    EXPECT_EQ(token->accessToken, "a");
    EXPECT_FALSE(token->refreshToken.has_value());
    EXPECT_EQ(token->expiresIn, 3599);
    EXPECT_FALSE(GoogleToken::decode(R"({"access_token":"a"})").ok());
    EXPECT_FALSE(GoogleToken::decode("<html>").ok());

    const auto profile = GoogleProfile::decode(R"({"id":"42","email":"a@b.c","picture":"p"})");
    ASSERT_TRUE(profile.ok());
    EXPECT_EQ(profile->id, "42");

    const auto registration = GoogleClientRegistration::decode(
        R"({"installed":{"client_id":"cid","client_secret":"cs","redirect_uris":["http://localhost"]}})");
    ASSERT_TRUE(registration.ok());
    EXPECT_EQ(registration.value(), (GoogleClientRegistration{"cid", "cs"}));
    EXPECT_FALSE(GoogleClientRegistration::decode(R"({"web":{"client_id":"cid"}})").ok());
}

TEST(GoogleReplies, PagesReadItemsAndTheNextTokenAndRefuseHalfPages) {
    const auto page = GooglePage<GoogleEventPayload>::decode(
        R"({"kind":"calendar#events","nextPageToken":"p2","items":[)"
        R"({"id":"e1","summary":"Stand-up","start":{"dateTime":"2026-03-05T09:00:00+01:00"},)"
        R"("end":{"dateTime":"2026-03-05T09:15:00+01:00"},"htmlLink":"https://g/e1"},)"
        R"({"id":"e2","status":"cancelled"}]})");
    ASSERT_TRUE(page.ok()) << page.error();
    EXPECT_EQ(page->nextPageToken, "p2");
    ASSERT_EQ(page->items.size(), 2U);
    EXPECT_EQ(page->items[0].start->dateTime, "2026-03-05T09:00:00+01:00");
    EXPECT_EQ(page->items[1].status, "cancelled");

    const auto empty = GooglePage<GoogleCalendarChoice>::decode(R"({"kind":"x"})");
    ASSERT_TRUE(empty.ok());
    EXPECT_TRUE(empty->items.empty());
    EXPECT_FALSE(empty->nextPageToken.has_value());

    for (const char* bad : {R"({"items":[{"id":"a"},{"summary":"no id"}]})",
                            R"({"items":[{"id":"a"}, )", R"({"items":{}})", "[]"}) {
        SCOPED_TRACE(bad);
        EXPECT_FALSE(GooglePage<GoogleCalendarChoice>::decode(bad).ok());
    }
}

TEST(GoogleMoment, ParsesInternetTimesAndLocalDates) {
    const Calendar kathmandu("Asia/Kathmandu");
    EXPECT_EQ(parseInternetDateTime("2026-03-05T09:00:00Z"), test::at(test::utc(), 2026, 3, 5, 9));
    EXPECT_EQ(parseInternetDateTime("2026-03-05T09:00:00.250+01:00"),
              test::at(test::utc(), 2026, 3, 5, 8) + 0.25);
    EXPECT_EQ(parseInternetDateTime("2026-03-05T09:00:00-05:30"),
              test::at(test::utc(), 2026, 3, 5, 14, 30));
    for (const char* bad : {"2026-03-05T09:00:00", "2026-03-05 09:00:00Z", "2026-02-30T09:00:00Z",
                            "2026-03-05T09:00:00.Z", "2026-03-05T24:00:00Z", "2026-03-05"}) {
        SCOPED_TRACE(bad);
        EXPECT_FALSE(parseInternetDateTime(bad).has_value());
    }
    EXPECT_EQ((GoogleMoment{std::nullopt, "2026-03-05"}.parsed(kathmandu)),
              test::at(kathmandu, 2026, 3, 5));
    EXPECT_FALSE((GoogleMoment{std::nullopt, "2026-3-5"}.parsed(kathmandu)).has_value());
    EXPECT_FALSE((GoogleMoment{}.parsed(kathmandu)).has_value());
}

TEST(GoogleEventPayload, MapsToADrawerItemKeyedByAccountAndCalendar) {
    const Calendar kathmandu("Asia/Kathmandu");
    GoogleEventPayload payload;
    payload.id = "e1";
    payload.start = GoogleMoment{"2026-03-05T09:00:00Z", std::nullopt};
    payload.end = GoogleMoment{"2026-03-05T10:00:00Z", std::nullopt};
    payload.htmlLink = "https://www.google.com/calendar/event?eid=1";
    const GoogleCalendarChoice team{"team@group", "Team", "#9fc6e7"};

    const auto item = payload.item("42", team, kathmandu);
    ASSERT_TRUE(item.has_value());
    EXPECT_EQ(item->calendarIdentifier, "google:42:team@group");
    EXPECT_EQ(item->id, CalendarEventItem::occurrenceId("google:42:team@group", "e1",
                                                        test::at(test::utc(), 2026, 3, 5, 9)));
    EXPECT_EQ(item->title, "Untitled event");
    EXPECT_EQ(item->colorHex, "#9FC6E7");
    EXPECT_EQ(item->calendarTitle, "Team");
    EXPECT_FALSE(item->isAllDay);
    EXPECT_EQ(item->url, payload.htmlLink);
    // The same event seen through another account is another item.
    EXPECT_NE(payload.item("43", team, kathmandu)->id, item->id);

    GoogleEventPayload allDay = payload;
    allDay.summary = "Holiday";
    allDay.start = GoogleMoment{std::nullopt, "2026-03-05"};
    allDay.end = GoogleMoment{std::nullopt, "2026-03-06"};
    allDay.htmlLink = "http://www.google.com/calendar/event?eid=1";
    const auto holiday =
        allDay.item("42", GoogleCalendarChoice{"x", std::nullopt, std::nullopt}, kathmandu);
    ASSERT_TRUE(holiday.has_value());
    EXPECT_TRUE(holiday->isAllDay);
    EXPECT_EQ(holiday->start, test::at(kathmandu, 2026, 3, 5));
    EXPECT_EQ(holiday->colorHex, "#4285F4");
    EXPECT_FALSE(holiday->url.has_value());

    GoogleEventPayload cancelled = payload;
    cancelled.status = "cancelled";
    EXPECT_FALSE(cancelled.item("42", team, kathmandu).has_value());
    GoogleEventPayload noEnd = payload;
    noEnd.end.reset();
    EXPECT_FALSE(noEnd.item("42", team, kathmandu).has_value());
}

} // namespace
} // namespace daywyn
