#include "app/qt/DaywynBusService.h"

#include <algorithm>
#include <memory>
#include <optional>

#include <QDBusConnection>
#include <QEventLoop>
#include <QTimer>

#include "app/qt/AppEnvironment.h"
#include "calendar/qt/CalendarManager.h"
#include "cli/BusAddress.h"
#include "cli/CommandLine.h"
#include "cli/SyncStatus.h"
#include "daywyn_adaptor.h"
#include "shell/qt/EdgePanelController.h"
#include "shell/qt/QuickCaptureController.h"
#include "sync/qt/SyncController.h"

namespace daywyn {

DaywynBusService::DaywynBusService(AppEnvironment& environment, QObject* parent)
    : QObject(parent)
    , environment_(environment) {
    new DaywynAdaptor(this);
}

bool DaywynBusService::registerOn(QDBusConnection& bus) {
    bus.registerObject(QString::fromLatin1(kBusObjectPath), this);
    return bus.registerService(QString::fromLatin1(kBusName));
}

namespace {

// The calendars as the app last read them, for `daywyn calendars` handed over to it: the
// bus call is answered at once, never by waiting for a calendar service. The list is
// only known while calendar events are on.
class PublishedCalendars : public CalendarReader {
public:
    explicit PublishedCalendars(const CalendarManager& manager)
        : manager_(manager) {}

    CalendarSnapshot readCalendars(const CalendarQuery&) override {
        CalendarSnapshot snapshot;
        if (!manager_.integrationEnabled()) {
            return snapshot;
        }
        snapshot.status = manager_.authorizationStatus();
        for (const auto& choice : manager_.calendars()) {
            snapshot.calendars.push_back(
                SourceCalendar{choice.id, choice.title, choice.sourceTitle, choice.colorHex});
        }
        snapshot.errorMessage = manager_.errorMessage();
        return snapshot;
    }

private:
    const CalendarManager& manager_;
};

// `daywyn sync` handed over while the app runs: the app keeps the sync state, so its
// controller runs the pass. The call is answered when the pass has ended; meanwhile
// the main thread goes on serving the screens (the network work is on a worker).
class AppTaskSync : public TaskSyncRunner {
public:
    explicit AppTaskSync(sync::SyncController& controller)
        : controller_(controller) {}

    CommandOutput sync(const std::vector<std::string>& args, Instant) override {
        const auto given = [&args](const char* word) {
            return std::find(args.begin(), args.end(), word) != args.end();
        };
        if (given("setup")) {
            return CommandOutput{1,
                                 {},
                                 "Daywyn is running and keeps the sync state while it runs; set "
                                 "task sync up in Settings › Calendars › Task sync.\n"};
        }
        std::optional<sync::PassReport> report;
        QEventLoop loop;
        controller_.runPass([&report, &loop](const sync::PassReport& ended) {
            report = ended;
            loop.quit();
        });
        if (!report) {
            loop.exec();
        }
        CommandOutput output;
        output.status = report->error.empty() ? 0 : 1;
        if (!controller_.isSetUp()) {
            output.err = report->error + "\n";
            return output;
        }
        output.out = given("--json") ? syncPassJson(report->summary, report->error)
                                     : report->summary.sentence() + "\n";
        if (!report->error.empty()) {
            output.err = report->error + "\n";
        }
        return output;
    }

private:
    sync::SyncController& controller_;
};

} // namespace

int DaywynBusService::Run(const QStringList& line, QString& out, QString& err) {
    std::vector<std::string> args;
    args.reserve(static_cast<std::size_t>(line.size()));
    for (const QString& word : line) {
        args.push_back(word.toStdString());
    }
    PublishedCalendars calendars(environment_.calendarManager());
    // The caller waits for the answer, which needs the change saved and nothing more:
    // the screens, the reminders and the calendars hear of it once the answer is sent.
    auto hold = std::make_shared<TodayTaskStore::NotificationHold>(
        environment_.store().holdNotifications());
    QTimer::singleShot(0, this, [hold]() mutable { hold.reset(); });
    AppTaskSync taskSync(environment_.taskSync());
    const CommandOutput result = runCommand(environment_.store(), args, environment_.now(),
                                            environment_.calendar(), this, &calendars, &taskSync);
    out = QString::fromStdString(result.out);
    err = QString::fromStdString(result.err);
    return result.status;
}

void DaywynBusService::showDrawer() {
    environment_.drawerController().show();
}
void DaywynBusService::hideDrawer() {
    environment_.drawerController().hide();
}
void DaywynBusService::toggleDrawer() {
    environment_.drawerController().toggle();
}
void DaywynBusService::showQuickAdd() {
    environment_.quickCapture().show();
}

} // namespace daywyn
