// The app's own wiring: the calendar folder under the data folder feeds the drawer's
// events and the drawer reminders, and turning the integration off empties them.
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <gtest/gtest.h>

#include "app/qt/AppEnvironment.h"
#include "calendar/qt/CalendarManager.h"
#include "calendar/qt/IcsFolderCalendarSource.h"
#include "persistence/qt/UserSettings.h"
#include "reminders/qt/DrawerReminderCoordinator.h"
#include "support/FakeRepository.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

Instant wallClock() {
    return Instant{static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0};
}

// An event starting a few minutes from now, in a calendar file of the folder.
void writeCalendarStartingSoon() {
    const QDateTime start = QDateTime::currentDateTimeUtc().addSecs(240);
    const QString stamp = QStringLiteral("yyyyMMdd'T'HHmmss'Z'");
    QDir().mkpath(IcsFolderCalendarSource::defaultFolder());
    QFile file(IcsFolderCalendarSource::defaultFolder() + QStringLiteral("/team.ics"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QStringLiteral("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nX-WR-CALNAME:Team\r\n"
                              "BEGIN:VEVENT\r\nUID:soon@example.org\r\nSUMMARY:Design review\r\n"
                              "DTSTART:%1\r\nDTEND:%2\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n")
                   .arg(start.toString(stamp), start.addSecs(1800).toString(stamp))
                   .toUtf8());
}

TEST(CalendarWiring, FolderEventsReachTheDrawerAndItsReminders) {
    writeCalendarStartingSoon();
    {
        // Pop-outs allowed at every hour, whenever the test runs.
        QSettings settings(UserSettings::defaultFilePath(), QSettings::IniFormat);
        settings.setValue("inAppActiveStart", 0);
        settings.setValue("inAppActiveEnd", 0);
    }
    PersistedState state;
    state.preferences.calendarIntegrationEnabled = true;
    state.preferences.selectedCalendarIdentifiers = {"ics:team.ics"};
    AppEnvironment app(test::FakeRepository::holding(state), Calendar(), wallClock);
    app.start();
    ASSERT_TRUE(test::waitUntil([&] { return !app.calendarManager().todayEvents().empty(); }));
    EXPECT_EQ(app.calendarManager().todayEvents()[0].title, "Design review");
    EXPECT_EQ(app.calendarManager().todayEvents()[0].calendarTitle, "Team");

    // Four minutes before its start the event is inside its five-minute reminder window.
    app.performMaintenance();
    const auto& seen = app.drawerReminders().state().seen;
    EXPECT_TRUE(std::any_of(seen.begin(), seen.end(), [](const auto& entry) {
        return entry.first.rfind("event:ics:team.ics|soon@example.org|", 0) == 0;
    }));

    // Turned off through the store (the settings page, the command line): both lists empty.
    app.store().updatePreferences([](AppPreferences& p) { p.calendarIntegrationEnabled = false; });
    EXPECT_TRUE(app.calendarManager().todayEvents().empty());
    EXPECT_TRUE(app.calendarManager().calendars().empty());
}

} // namespace
} // namespace daywyn
