#pragma once

#include <memory>
#include <optional>

#include <QApplication>

#include "base/Clock.h"

namespace daywyn {

class AppEnvironment;
class DaywynBusService;
class TrayIcon;

// The desktop app as a process: the Qt application, the one-instance-per-user name on
// the session bus, the state file's writer lock, the parts and the tray.
class DesktopApp {
public:
    // Chooses the window system and the renderer before Qt starts.
    DesktopApp(int& argc, char** argv);
    ~DesktopApp();

    // Builds the parts with `clock` once this process may run the app: the state file
    // is locked for writing and the bus name is taken. Otherwise the exit status, after
    // another instance was asked to show its drawer or the user was told why not.
    std::optional<int> open(Clock clock);
    AppEnvironment& environment() { return *environment_; }
    // Starts the parts and puts the icon in the panel; a first run also greets the user
    // when `greet`.
    void start(bool greet);
    int exec();

private:
    QApplication application_;
    std::unique_ptr<AppEnvironment> environment_;
    std::unique_ptr<DaywynBusService> service_;
    std::unique_ptr<TrayIcon> tray_;
};

// The wall clock, the one real clock of the app.
Instant wallClock();

// Starts the desktop app: the edge drawer, quick capture and reminders. Returns the
// process's exit status.
int runDesktopApp(int argc, char** argv);

} // namespace daywyn
