#include "app/qt/DaywynBusService.h"

#include <QDBusConnection>

#include "app/qt/AppEnvironment.h"
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

int DaywynBusService::Run(const QStringList& line, QString& out, QString& err) {
    std::vector<std::string> args;
    args.reserve(static_cast<std::size_t>(line.size()));
    for (const QString& word : line) {
        args.push_back(word.toStdString());
    }
    const CommandOutput result =
        runCommand(environment_.store(), args, environment_.now(), environment_.calendar(), this);
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
