// The desktop's calendars through a real Evolution Data Server: its source registry and
// calendar factory are started by D-Bus activation on the test's private session bus,
// with a temporary home seeded with two local calendars.
#include <filesystem>
#include <fstream>
#include <libecal/libecal.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <gtest/gtest.h>

#include "calendar/CalendarReading.h"
#include "calendar/qt/CalendarManager.h"
#include "calendar/qt/EdsCalendarSource.h"
#include "store/TodayTaskStore.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

namespace fs = std::filesystem;
using test::at;

constexpr const char* kRegistry = "/usr/libexec/evolution-source-registry";

// Waits longer than test::waitUntil: the calendar service starts on first use.
bool waitLong(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > 30'000) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(10);
    }
    return true;
}

fs::path env(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? fs::path(value) : fs::path();
}

// Writes a local calendar the way Evolution keeps one: a source file and its data.
void seedCalendar(const std::string& uid, const std::string& title, const std::string& color,
                  const std::string& fixture) {
    const fs::path sources = env("XDG_CONFIG_HOME") / "evolution" / "sources";
    fs::create_directories(sources);
    std::ofstream source(sources / (uid + ".source"));
    source << "[Data Source]\nDisplayName=" << title << "\nEnabled=true\nParent=local-stub\n\n"
           << "[Calendar]\nBackendName=local\nSelected=true\n";
    if (!color.empty()) {
        source << "Color=" << color << "\n";
    }
    const fs::path data = env("XDG_DATA_HOME") / "evolution" / "calendar" / uid;
    fs::create_directories(data);
    fs::copy_file(fs::path(DAYWYN_TEST_DATA_DIR) / "calendar" / "evolution" / fixture,
                  data / "calendar.ics", fs::copy_options::overwrite_existing);
}

class EvolutionCalendars : public ::testing::Test {
protected:
    void SetUp() override {
        if (!fs::exists(kRegistry)) {
            GTEST_SKIP() << "evolution-data-server is not installed";
        }
        // No dconf on a test machine: keep GSettings in memory, quietly.
        qputenv("GSETTINGS_BACKEND", "memory");
        seedCalendar("daywyn-test-work", "Work", "#3465a4", "work.ics");
        seedCalendar("daywyn-test-home", "Home", "", "home.ics");
    }

    CalendarSnapshot readDay(EdsCalendarSource& source, std::vector<std::string> ids) {
        return source.readNow(CalendarQuery{day, std::move(ids)});
    }

    Calendar calendar = test::berlin();
    DayInterval day = *calendarDay(at(calendar, 2026, 3, 10, 12), calendar);
};

const SourceCalendar* findCalendar(const CalendarSnapshot& snapshot, const std::string& id) {
    for (const auto& calendar : snapshot.calendars) {
        if (calendar.id == id) {
            return &calendar;
        }
    }
    return nullptr;
}

TEST_F(EvolutionCalendars, ListsCalendarsWithTheirAccountAndColour) {
    EdsCalendarSource source(calendar);
    const auto snapshot = readDay(source, {});
    ASSERT_EQ(snapshot.status, CalendarAccessStatus::fullAccess);
    const auto* work = findCalendar(snapshot, "daywyn-test-work");
    ASSERT_NE(work, nullptr);
    EXPECT_EQ(work->title, "Work");
    EXPECT_EQ(work->sourceTitle, "On This Computer");
    EXPECT_EQ(CalendarEventItem::hexColorFromText(work->colorText), "#3465A4");
    const auto* home = findCalendar(snapshot, "daywyn-test-home");
    ASSERT_NE(home, nullptr);
    // Evolution gives every calendar a colour of its own when the source has none; any
    // colour Daywyn shows is in the "#RRGGBB" form.
    EXPECT_EQ(CalendarEventItem::hexColorFromText(home->colorText).size(), 7u);
    EXPECT_TRUE(snapshot.events.empty());
}

TEST_F(EvolutionCalendars, TodaysEventsIncludeOvernightAllDayAndRepeatingOnes) {
    EdsCalendarSource source(calendar);
    const auto snapshot = readDay(source, {"daywyn-test-work", "daywyn-test-home"});
    ASSERT_EQ(snapshot.status, CalendarAccessStatus::fullAccess);
    const auto items = dayEventItems(snapshot, {"daywyn-test-work", "daywyn-test-home"}, day,
                                     [] { return std::string("fresh"); });
    std::vector<std::string> seen;
    for (const auto& item : items) {
        seen.push_back(item.title + " " + isoText(item.start) + (item.isAllDay ? " all day" : ""));
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"Night shift 2026-03-09T22:00:00Z",
                                              "Company holiday 2026-03-09T23:00:00Z all day",
                                              "Weekly review 2026-03-10T13:00:00Z",
                                              "Dentist 2026-03-10T15:00:00Z"}));
    // The excluded Tuesday a week earlier has no review.
    const DayInterval excluded = *calendarDay(at(calendar, 2026, 3, 3, 12), calendar);
    const auto before = source.readNow(CalendarQuery{excluded, {"daywyn-test-work"}});
    for (const auto& event : before.events) {
        EXPECT_NE(event.title, "Weekly review");
    }
    const auto review = std::find_if(items.begin(), items.end(),
                                     [](const auto& i) { return i.title == "Weekly review"; });
    ASSERT_NE(review, items.end());
    EXPECT_EQ(review->url, "https://meet.example.org/review");
    EXPECT_EQ(review->colorHex, "#3465A4");
    EXPECT_EQ(review->id, "daywyn-test-work|review@example.org|794840400.0");
}

// Connects to a calendar the way another program (Evolution, GNOME Calendar) would.
ECalClient* connectAsAnotherProgram(ESourceRegistry* registry, const char* uid) {
    ESource* source = e_source_registry_ref_source(registry, uid);
    if (source == nullptr) {
        return nullptr;
    }
    EClient* client = e_cal_client_connect_sync(source, E_CAL_CLIENT_SOURCE_TYPE_EVENTS,
                                                static_cast<guint32>(-1), nullptr, nullptr);
    g_object_unref(source);
    return client != nullptr ? E_CAL_CLIENT(client) : nullptr;
}

struct RunningManager {
    Calendar calendar = test::berlin();
    test::ManualClock clock{at(calendar, 2026, 3, 10, 9)};
    TodayTaskStore store{nullptr, clock.now(), calendar};
    EdsCalendarSource source{calendar};
    CalendarManager manager{source, calendar, clock.function()};

    RunningManager() {
        store.updatePreferences([](AppPreferences& p) {
            p.calendarIntegrationEnabled = true;
            p.selectedCalendarIdentifiers = {"daywyn-test-work"};
        });
        manager.configure(&store);
    }
    bool hasEvent(const std::string& title) const {
        const auto& events = manager.todayEvents();
        return std::any_of(events.begin(), events.end(),
                           [&](const auto& e) { return e.title == title; });
    }
    bool hasCalendar(const std::string& id) const {
        const auto& calendars = manager.calendars();
        return std::any_of(calendars.begin(), calendars.end(),
                           [&](const auto& c) { return c.id == id; });
    }
};

TEST_F(EvolutionCalendars, AnEventAddedByAnotherProgramAppearsWithoutARestart) {
    RunningManager running;
    ASSERT_TRUE(waitLong([&] { return running.hasEvent("Weekly review"); }));
    EXPECT_FALSE(running.hasEvent("Added later"));

    ESourceRegistry* registry = e_source_registry_new_sync(nullptr, nullptr);
    ASSERT_NE(registry, nullptr);
    ECalClient* client = connectAsAnotherProgram(registry, "daywyn-test-work");
    ASSERT_NE(client, nullptr);
    ICalComponent* event = i_cal_component_new_from_string(
        "BEGIN:VEVENT\r\nUID:added@example.org\r\nSUMMARY:Added later\r\n"
        "DTSTART:20260310T160000Z\r\nDTEND:20260310T170000Z\r\nEND:VEVENT\r\n");
    ASSERT_NE(event, nullptr);
    gchar* uid = nullptr;
    GError* error = nullptr;
    ASSERT_TRUE(e_cal_client_create_object_sync(client, event, E_CAL_OPERATION_FLAG_NONE, &uid,
                                                nullptr, &error))
        << (error != nullptr ? error->message : "");
    g_free(uid);
    g_object_unref(event);

    EXPECT_TRUE(waitLong([&] { return running.hasEvent("Added later"); }));
    g_object_unref(client);
    g_object_unref(registry);
}

TEST_F(EvolutionCalendars, ARemovedCalendarDisappears) {
    RunningManager running;
    ASSERT_TRUE(waitLong([&] { return running.hasCalendar("daywyn-test-home"); }));
    ESourceRegistry* registry = e_source_registry_new_sync(nullptr, nullptr);
    ASSERT_NE(registry, nullptr);
    ESource* home = e_source_registry_ref_source(registry, "daywyn-test-home");
    ASSERT_NE(home, nullptr);
    GError* error = nullptr;
    ASSERT_TRUE(e_source_remove_sync(home, nullptr, &error))
        << (error != nullptr ? error->message : "");
    g_object_unref(home);

    EXPECT_TRUE(waitLong([&] { return !running.hasCalendar("daywyn-test-home"); }));
    EXPECT_TRUE(running.hasCalendar("daywyn-test-work"));
    EXPECT_TRUE(running.hasEvent("Weekly review"));
    g_object_unref(registry);
}

TEST(EvolutionCalendarsAbsent, NoCalendarServiceOnTheBusIsUnavailableNotAHang) {
    // A bus address nobody listens on, set before anything in this process talks D-Bus.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/daywyn-test-bus");
    Calendar calendar = test::berlin();
    EdsCalendarSource source(calendar);
    const auto day = *calendarDay(at(calendar, 2026, 3, 10, 12), calendar);
    bool answered = false;
    CalendarSnapshot snapshot;
    source.read(CalendarQuery{day, {"anything"}}, [&](CalendarSnapshot s) {
        answered = true;
        snapshot = std::move(s);
    });
    ASSERT_TRUE(waitLong([&] { return answered; }));
    EXPECT_EQ(snapshot.status, CalendarAccessStatus::unavailable);
    EXPECT_TRUE(snapshot.calendars.empty());
}

} // namespace
} // namespace daywyn
