#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include "cli/Verb.h"

class QDBusConnection;

namespace daywyn {

class AppEnvironment;

// The running app's side of org.daywyn.Daywyn (adaptor made from org.daywyn.Daywyn.xml):
// a second launch shows the drawer through it, and the command line hands it every
// writing verb, so the app stays the only writer of the state file, and every window
// verb. Calls arrive on the main thread and answer with the same output the command
// line would print.
class DaywynBusService : public QObject, public AppWindows {
    Q_OBJECT

public:
    explicit DaywynBusService(AppEnvironment& environment, QObject* parent = nullptr);

    // Registers the object and the adaptor, then takes the bus name; false when
    // another process owns the name already.
    bool registerOn(QDBusConnection& bus);

    // The D-Bus method: runs one verb line on the app's store and windows.
    int Run(const QStringList& line, QString& out, QString& err);

    void showDrawer() override;
    void hideDrawer() override;
    void toggleDrawer() override;
    void showQuickAdd() override;

private:
    AppEnvironment& environment_;
};

} // namespace daywyn
