#include "calendar/qt/IcsFolderCalendarSource.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

using test::at;

void write(const QString& path, const QByteArray& text) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

QByteArray fixture(const char* name) {
    QFile file(QStringLiteral(DAYWYN_TEST_DATA_DIR "/calendar/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray oneEvent(const char* uid, const char* title, const char* start) {
    return QByteArray("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:") + uid +
           "\r\nSUMMARY:" + title + "\r\nDTSTART:" + start + "\r\nDURATION:PT1H\r\n" +
           "END:VEVENT\r\nEND:VCALENDAR\r\n";
}

struct Folder {
    QTemporaryDir root;
    QString path = root.path() + QStringLiteral("/calendars");
    Calendar calendar = test::berlin();
    CalendarQuery query{*calendarDay(at(calendar, 2026, 3, 10, 12), calendar), {}};
};

TEST(IcsFolderCalendarSource, ListsFilesAndVdirFoldersAndNamesUnreadableFiles) {
    Folder folder;
    write(folder.path + "/team.ics", fixture("weekly.ics"));
    write(folder.path + "/broken.ics", fixture("broken.ics"));
    write(folder.path + "/notes.txt", "not a calendar");
    write(folder.path + "/family/displayname", "Family\n");
    write(folder.path + "/family/color", "#e66100\n");
    write(folder.path + "/family/a.ics", oneEvent("a", "Swimming", "20260310T160000Z"));
    write(folder.path + "/family/b.ics", oneEvent("b", "Dinner", "20260310T180000Z"));
    IcsFolderCalendarSource source(folder.path, folder.calendar);
    folder.query.calendarIdentifiers = {"ics:family"};
    const auto snapshot = source.readNow(folder.query);
    EXPECT_EQ(snapshot.status, CalendarAccessStatus::fullAccess);
    ASSERT_EQ(snapshot.calendars.size(), 2u);
    EXPECT_EQ(snapshot.calendars[0],
              (SourceCalendar{"ics:family", "Family", "Calendar files", "#e66100"}));
    EXPECT_EQ(snapshot.calendars[1].title, "Team");
    // Only the selected calendar's events; the unreadable file is named, not listed.
    EXPECT_EQ(snapshot.events.size(), 2u);
    EXPECT_EQ(snapshot.errorMessage, "Daywyn could not read these calendar files: broken.ics.");
}

TEST(IcsFolderCalendarSource, NoFolderMeansNoAccessUntilItAppears) {
    Folder folder;
    IcsFolderCalendarSource source(folder.path, folder.calendar);
    int changes = 0;
    source.setChangeHandler([&] { ++changes; });
    EXPECT_EQ(source.readNow(folder.query).status, CalendarAccessStatus::unavailable);

    write(folder.path + "/team.ics", oneEvent("x", "Standup", "20260310T080000Z"));
    ASSERT_TRUE(test::waitUntil([&] { return changes > 0; }));
    folder.query.calendarIdentifiers = {"ics:team.ics"};
    // Read in the background and answered on this thread.
    std::optional<CalendarSnapshot> answer;
    source.read(folder.query, [&](CalendarSnapshot s) { answer = std::move(s); });
    ASSERT_TRUE(test::waitUntil([&] { return answer.has_value(); }));
    EXPECT_EQ(answer->status, CalendarAccessStatus::fullAccess);
    ASSERT_EQ(answer->events.size(), 1u);

    // An edited file is noticed and read again.
    const int before = changes;
    write(folder.path + "/team.ics", oneEvent("x", "Standup moved", "20260310T090000Z"));
    ASSERT_TRUE(test::waitUntil([&] { return changes > before; }));
    const auto edited = source.readNow(folder.query);
    ASSERT_EQ(edited.events.size(), 1u);
    EXPECT_EQ(edited.events[0].title, "Standup moved");
}

} // namespace
} // namespace daywyn
