#include "base/Calendar.h"

#include <gtest/gtest.h>

#include "support/TaskBuilder.h"

namespace daywyn {
namespace {

using test::at;

constexpr double kHour = 3600.0;

TEST(Calendar, DayStartsFollowTheZoneAcrossDaylightSavingChanges) {
    const Calendar ny = test::newYork();
    // 8 March 2026: clocks jump from 02:00 to 03:00, so the day lasts 23 hours.
    const Instant springDay = at(ny, 2026, 3, 8, 15);
    EXPECT_EQ(isoText(ny.startOfDay(springDay)), "2026-03-08T05:00:00Z");
    EXPECT_EQ(*ny.addingDays(ny.startOfDay(springDay), 1) - ny.startOfDay(springDay), 23 * kHour);
    // 1 November 2026: 01:00-02:00 happens twice, so the day lasts 25 hours.
    const Instant fallDay = ny.startOfDay(at(ny, 2026, 11, 1, 12));
    EXPECT_EQ(*ny.addingDays(fallDay, 1) - fallDay, 25 * kHour);

    const Calendar berlin = test::berlin();
    const Instant berlinSpring = berlin.startOfDay(at(berlin, 2026, 3, 29, 12));
    EXPECT_EQ(isoText(berlinSpring), "2026-03-28T23:00:00Z");
    EXPECT_EQ(*berlin.addingDays(berlinSpring, 1) - berlinSpring, 23 * kHour);
    EXPECT_TRUE(berlin.isSameDay(berlinSpring, at(berlin, 2026, 3, 29, 23, 59, 59)));
    EXPECT_FALSE(berlin.isSameDay(berlinSpring, at(berlin, 2026, 3, 30)));
}

TEST(Calendar, AddingDaysKeepsTheWallClockTime) {
    const Calendar ny = test::newYork();
    const Instant saturday = at(ny, 2026, 3, 7, 9, 30);
    EXPECT_EQ(ny.parts(*ny.addingDays(saturday, 1)), (DateParts{2026, 3, 8, 9, 30, 0, 1}));
    EXPECT_EQ(*ny.addingDays(saturday, 1) - saturday, 23 * kHour);
    const Calendar berlin = test::berlin();
    const Instant october = at(berlin, 2026, 10, 24, 9, 30);
    EXPECT_EQ(berlin.hour(*berlin.addingDays(october, 7)), 9);
}

TEST(Calendar, AddingMonthsClampsToTheEndOfShorterMonths) {
    const Calendar utc = test::utc();
    EXPECT_EQ(utc.parts(*utc.addingMonths(at(utc, 2026, 1, 31, 8), 1)),
              (DateParts{2026, 2, 28, 8, 0, 0, 7}));
    EXPECT_EQ(utc.parts(*utc.addingMonths(at(utc, 2028, 1, 31, 8), 1)).day, 29);
    EXPECT_EQ(utc.parts(*utc.addingMonths(at(utc, 2026, 12, 15), 1)).year, 2027);
}

TEST(Calendar, AddingMinutesIsElapsedTime) {
    const Calendar ny = test::newYork();
    const Instant before = at(ny, 2026, 3, 8, 1, 50);
    const Instant after = *ny.addingMinutes(before, 20);
    EXPECT_EQ(after - before, 20 * 60.0);
    EXPECT_EQ(ny.parts(after).hour, 3);
}

TEST(Calendar, SkippedWallTimesMoveForwardAndRepeatedOnesTakeTheFirst) {
    const Calendar ny = test::newYork();
    const Instant spring = at(ny, 2026, 3, 8);
    EXPECT_EQ(isoText(*ny.settingTime(spring, 2, 30, 0)), "2026-03-08T07:00:00Z"); // 03:00 EDT
    const Instant fall = at(ny, 2026, 11, 1);
    EXPECT_EQ(isoText(*ny.settingTime(fall, 1, 30, 0)), "2026-11-01T05:30:00Z"); // first, EDT
    const Calendar berlin = test::berlin();
    EXPECT_EQ(isoText(*berlin.settingTime(at(berlin, 2026, 3, 29), 2, 15, 0)),
              "2026-03-29T01:00:00Z");
    EXPECT_EQ(isoText(*berlin.settingTime(at(berlin, 2026, 10, 25), 2, 15, 0)),
              "2026-10-25T00:15:00Z");
}

TEST(Calendar, SettingTimeStaysOnTheGivenDay) {
    const Calendar berlin = test::berlin();
    const Instant lateEvening = at(berlin, 2026, 6, 10, 23, 45);
    EXPECT_EQ(berlin.parts(*berlin.settingTime(lateEvening, 0, 5, 0)),
              (DateParts{2026, 6, 10, 0, 5, 0, 4}));
}

TEST(Calendar, WeekendsComeFromTheLocale) {
    const Calendar ny = test::newYork();
    EXPECT_FALSE(ny.isWeekend(at(ny, 2026, 11, 20, 18))); // Friday
    EXPECT_TRUE(ny.isWeekend(at(ny, 2026, 11, 21, 9)));   // Saturday
    EXPECT_TRUE(ny.isWeekend(at(ny, 2026, 11, 22, 23)));  // Sunday
    const Calendar cairo("Africa/Cairo", "ar_EG");        // Friday and Saturday
    EXPECT_TRUE(cairo.isWeekend(at(cairo, 2026, 11, 20, 12)));
    EXPECT_FALSE(cairo.isWeekend(at(cairo, 2026, 11, 22, 12)));
}

TEST(Calendar, UnknownZonesAreReported) {
    EXPECT_FALSE(Calendar("Mars/Olympus_Mons").isValid());
    EXPECT_TRUE(Calendar("Asia/Kathmandu").isValid());
}

TEST(Calendar, DefaultCalendarUsesTheProcessZone) {
    // The tests run with TZ=Asia/Kathmandu, five hours forty-five ahead of UTC.
    const Calendar process;
    EXPECT_EQ(process.zoneId(), "Asia/Kathmandu");
    EXPECT_EQ(isoText(process.startOfDay(Instant{1772612100.0})), "2026-03-03T18:15:00Z");
}

TEST(Calendar, ShortTimeTextFollowsTheCalendarsZoneAndLocale) {
    // The same instant reads differently in each calendar, whatever the process zone.
    const Calendar ny = test::newYork();
    const Instant evening = at(ny, 2026, 11, 20, 18, 5);
    EXPECT_EQ(ny.shortTimeText(evening), "6:05\u202FPM");
    EXPECT_EQ(test::berlin().shortTimeText(evening), "00:05");
    EXPECT_EQ(ny.shortTimeText(Instant{1e300}), "");
}

} // namespace
} // namespace daywyn
