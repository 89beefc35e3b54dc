#pragma once

#include <QObject>

class QMenu;
class QSystemTrayIcon;

namespace daywyn {

class EdgePanelController;

// Daywyn's icon in the panel's status area (a StatusNotifierItem where the desktop
// has a watcher): Show drawer, Quick Add, Settings and Quit. Activating the icon
// toggles the drawer.
class TrayIcon : public QObject {
    Q_OBJECT

public:
    explicit TrayIcon(EdgePanelController& drawer, QObject* parent = nullptr);
    ~TrayIcon() override;

private:
    QSystemTrayIcon* icon_ = nullptr;
    QMenu* menu_ = nullptr;
};

} // namespace daywyn
