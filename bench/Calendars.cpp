// Refreshing today's events from 10 calendars holding 2,000 events (200 today): from a
// folder of .ics files (after the first load, which parses) and through Evolution Data
// Server. The Evolution half needs a private bus and home: run it through
// scripts/bench-calendars.sh, which sets both up (without it, it is skipped).
// A third measure runs the manager's refresh against Evolution while the main loop
// ticks every millisecond and reports the longest gap between ticks.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>
#include <benchmark/benchmark.h>

#include "calendar/CalendarReading.h"
#include "calendar/qt/CalendarManager.h"
#include "calendar/qt/EdsCalendarSource.h"
#include "calendar/qt/IcsFolderCalendarSource.h"
#include "store/TodayTaskStore.h"

namespace {

using namespace daywyn;
namespace fs = std::filesystem;

constexpr int kCalendars = 10;
constexpr int kEventsPerCalendar = 200;
constexpr int kTodayPerCalendar = 20;

const Calendar& benchCalendar() {
    static const Calendar calendar("Europe/Berlin", "en_US");
    return calendar;
}

// 12:00 on 10 March 2026 in Berlin.
Instant benchNoon() {
    return *benchCalendar().date(2026, 3, 10, 12);
}

std::string utcStamp(Instant at) {
    std::string iso = isoText(at); // 2026-03-10T11:00:00Z
    std::string out;
    for (char c : iso) {
        if (c != '-' && c != ':') {
            out += c;
        }
    }
    return out;
}

// One calendar's events: 20 today (a few repeating weekly from earlier weeks), the
// rest spread over three months around it.
std::string calendarText(int index) {
    std::string text = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Daywyn bench//EN\r\n";
    const Instant dayStart = benchCalendar().startOfDay(benchNoon());
    for (int k = 0; k < kEventsPerCalendar; ++k) {
        Instant start;
        std::string rule;
        if (k < kTodayPerCalendar) {
            start = dayStart + 7 * 3600.0 + k * 1800.0;
            if (k % 5 == 0) {
                start = start - 5 * 7 * 86400.0;
                rule = "RRULE:FREQ=WEEKLY\r\n";
            }
        } else {
            const int offset = (k % 2 == 0 ? 1 : -1) * (1 + (k * 7) % 45);
            start = dayStart + offset * 86400.0 + 9 * 3600.0;
        }
        text += "BEGIN:VEVENT\r\nUID:bench-" + std::to_string(index) + "-" + std::to_string(k) +
                "\r\nSUMMARY:Event " + std::to_string(k) + "\r\nDTSTART:" + utcStamp(start) +
                "\r\nDTEND:" + utcStamp(start + 1800.0) + "\r\n" + rule + "END:VEVENT\r\n";
    }
    return text + "END:VCALENDAR\r\n";
}

CalendarQuery benchQuery(const std::string& prefix) {
    CalendarQuery query{*calendarDay(benchNoon(), benchCalendar()), {}};
    for (int i = 0; i < kCalendars; ++i) {
        query.calendarIdentifiers.push_back(prefix + std::to_string(i) +
                                            (prefix == "ics:bench-" ? ".ics" : ""));
    }
    return query;
}

void BM_RefreshDayFromIcsFolder(benchmark::State& state) {
    QTemporaryDir dir;
    for (int i = 0; i < kCalendars; ++i) {
        std::ofstream(fs::path(dir.path().toStdString()) / ("bench-" + std::to_string(i) + ".ics"))
            << calendarText(i);
    }
    IcsFolderCalendarSource source(dir.path(), benchCalendar());
    const CalendarQuery query = benchQuery("ics:bench-");
    // The first read parses every file; later reads reuse the parsed calendars.
    source.readNow(query);
    std::size_t shown = 0;
    for (auto _ : state) {
        const auto snapshot = source.readNow(query);
        const auto items = dayEventItems(snapshot, query.calendarIdentifiers, query.day,
                                         [] { return std::string(); });
        shown = items.size();
        benchmark::DoNotOptimize(items.data());
    }
    state.counters["eventsToday"] = static_cast<double>(shown);
}
BENCHMARK(BM_RefreshDayFromIcsFolder)->Unit(benchmark::kMillisecond);

void BM_FirstLoadOfIcsFolder(benchmark::State& state) {
    QTemporaryDir dir;
    for (int i = 0; i < kCalendars; ++i) {
        std::ofstream(fs::path(dir.path().toStdString()) / ("bench-" + std::to_string(i) + ".ics"))
            << calendarText(i);
    }
    const CalendarQuery query = benchQuery("ics:bench-");
    for (auto _ : state) {
        IcsFolderCalendarSource source(dir.path(), benchCalendar());
        benchmark::DoNotOptimize(source.readNow(query).events.size());
    }
}
BENCHMARK(BM_FirstLoadOfIcsFolder)->Unit(benchmark::kMillisecond);

bool inSandbox() {
    return std::getenv("DAYWYN_BENCH_SANDBOX") != nullptr;
}

// Seeds the sandbox's Evolution with the ten calendars, once, before it starts.
void seedEvolution() {
    static bool seeded = false;
    if (seeded) {
        return;
    }
    seeded = true;
    const fs::path config = fs::path(std::getenv("XDG_CONFIG_HOME")) / "evolution" / "sources";
    const fs::path data = fs::path(std::getenv("XDG_DATA_HOME")) / "evolution" / "calendar";
    fs::create_directories(config);
    for (int i = 0; i < kCalendars; ++i) {
        const std::string uid = "bench-" + std::to_string(i);
        std::ofstream(config / (uid + ".source"))
            << "[Data Source]\nDisplayName=Bench " << i
            << "\nEnabled=true\nParent=local-stub\n\n[Calendar]\nBackendName=local\n"
            << "Color=#3465a4\nSelected=true\n";
        fs::create_directories(data / uid);
        std::ofstream(data / uid / "calendar.ics") << calendarText(i);
    }
}

void BM_RefreshDayThroughEvolution(benchmark::State& state) {
    if (!inSandbox()) {
        state.SkipWithError("run through scripts/bench-calendars.sh (private bus and home)");
        return;
    }
    seedEvolution();
    EdsCalendarSource source(benchCalendar());
    const CalendarQuery query = benchQuery("bench-");
    // The first read starts the calendar factory and opens every calendar.
    source.readNow(query);
    std::size_t shown = 0;
    for (auto _ : state) {
        const auto snapshot = source.readNow(query);
        const auto items = dayEventItems(snapshot, query.calendarIdentifiers, query.day,
                                         [] { return std::string(); });
        shown = items.size();
        benchmark::DoNotOptimize(items.data());
    }
    state.counters["eventsToday"] = static_cast<double>(shown);
}
BENCHMARK(BM_RefreshDayThroughEvolution)->Unit(benchmark::kMillisecond)->UseRealTime();

// The manager refreshing against Evolution from cold (the service starting, ten calendars
// opening: the slowest refresh there is) while a 1 ms timer ticks on the main loop.
void BM_MainLoopGapDuringColdRefresh(benchmark::State& state) {
    if (!inSandbox()) {
        state.SkipWithError("run through scripts/bench-calendars.sh (private bus and home)");
        return;
    }
    seedEvolution();
    double worstGap = 0.0;
    for (auto _ : state) {
        TodayTaskStore store(nullptr, benchNoon(), benchCalendar());
        store.updatePreferences([](AppPreferences& p) {
            p.calendarIntegrationEnabled = true;
            for (int i = 0; i < kCalendars; ++i) {
                p.selectedCalendarIdentifiers.push_back("bench-" + std::to_string(i));
            }
        });
        EdsCalendarSource source(benchCalendar());
        CalendarManager manager(source, benchCalendar(), [] { return benchNoon(); });
        QElapsedTimer clock;
        clock.start();
        qint64 last = 0;
        qint64 gap = 0;
        QTimer tick;
        tick.setInterval(1);
        tick.setTimerType(Qt::PreciseTimer);
        QObject::connect(&tick, &QTimer::timeout, [&] {
            const qint64 now = clock.nsecsElapsed();
            gap = std::max(gap, now - last);
            last = now;
        });
        tick.start();
        manager.configure(&store);
        while (manager.isLoading() || manager.todayEvents().empty()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            if (clock.elapsed() > 30'000) {
                break;
            }
        }
        worstGap = std::max(worstGap, static_cast<double>(gap) / 1e6);
        state.counters["eventsToday"] = static_cast<double>(manager.todayEvents().size());
    }
    state.counters["maxMainThreadGapMs"] = worstGap;
}
BENCHMARK(BM_MainLoopGapDuringColdRefresh)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

// The same 1 ms tick for 300 ms with nothing else to do: the machine's own scheduling
// noise, to read the gap above against.
void BM_MainLoopGapIdle(benchmark::State& state) {
    double worstGap = 0.0;
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        qint64 last = 0;
        qint64 gap = 0;
        QTimer tick;
        tick.setInterval(1);
        tick.setTimerType(Qt::PreciseTimer);
        QObject::connect(&tick, &QTimer::timeout, [&] {
            const qint64 now = clock.nsecsElapsed();
            gap = std::max(gap, now - last);
            last = now;
        });
        tick.start();
        while (clock.elapsed() < 300) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        }
        worstGap = std::max(worstGap, static_cast<double>(gap) / 1e6);
    }
    state.counters["maxMainThreadGapMs"] = worstGap;
}
BENCHMARK(BM_MainLoopGapIdle)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
