#include "app/qt/DaywynBusService.h"

#include <memory>

#include <QDBusConnection>
#include <QTimer>

#include "app/qt/AppEnvironment.h"
#include "calendar/qt/CalendarManager.h"
#include "cli/BusAddress.h"
#include "cli/CommandLine.h"
#include "daywyn_adaptor.h"
#include "shell/qt/EdgePanelController.h"
#include "shell/qt/QuickCaptureController.h"

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
    const CommandOutput result = runCommand(environment_.store(), args, environment_.now(),
                                            environment_.calendar(), this, &calendars);
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
