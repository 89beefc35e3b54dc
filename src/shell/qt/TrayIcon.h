#pragma once

#include <functional>

#include <QObject>

class QAction;
class QMenu;
class QSystemTrayIcon;

namespace daywyn {

class EdgePanelController;
class QuickCaptureController;

// Daywyn's icon in the panel's status area (a StatusNotifierItem where the desktop
// has a watcher): Show drawer, Quick Add, Settings and Quit. Activating the icon
// toggles the drawer.
class TrayIcon : public QObject {
    Q_OBJECT

public:
    explicit TrayIcon(EdgePanelController& drawer, QObject* parent = nullptr);
    ~TrayIcon() override;

    // "Quick Add" opens the floating panel instead of the drawer's add field.
    void setQuickCapture(QuickCaptureController& quickCapture);
    // "Settings" becomes live and calls `open`.
    void setSettingsOpener(std::function<void()> open);

private:
    QSystemTrayIcon* icon_ = nullptr;
    QMenu* menu_ = nullptr;
    QAction* quickAdd_ = nullptr;
    QAction* settings_ = nullptr;
};

} // namespace daywyn
