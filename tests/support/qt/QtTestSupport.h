#pragma once

#include <functional>
#include <memory>
#include <ostream>

#include <QProcess>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>

#include "base/Calendar.h"
#include "base/Instant.h"
#include "model/PersistedState.h"

// Readable QString values in test failure messages.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace daywyn::test {

// A clock the test moves by hand; copies share the same time.
class ManualClock {
public:
    explicit ManualClock(Instant start)
        : now_(std::make_shared<Instant>(start)) {}
    Instant now() const { return *now_; }
    void set(Instant at) { *now_ = at; }
    void advance(double seconds) { *now_ += seconds; }
    std::function<Instant()> function() const {
        return [now = now_] {
            return *now;
        };
    }

private:
    std::shared_ptr<Instant> now_;
};

// Runs the event loop until `condition` holds or five seconds pass; the result says
// which (the time is a safety net, never what a test checks).
bool waitUntil(const std::function<bool()>& condition);

// Polls `condition` without running this process's event loop until it holds or
// `seconds` pass: for what another process (the app, the X server) brings about. The
// limit is a safety net on a loaded machine, never what a test checks.
bool eventually(const std::function<bool()>& condition, int seconds = 20);

// Ends a helper process (an X server, a window manager): politely first, then by force.
void stopProcess(QProcess* process);

// Starts gnome-keyring-daemon's secrets component, unlocked, on the test's private bus
// in `keyring`; true once it answers there. Stop it with stopProcess().
bool startUnlockedKeyring(QProcess& keyring);

// The item with this objectName under the window's content, or null.
QQuickItem* findItem(QQuickWindow& window, const QString& objectName);

// Clicks the middle of an item with the left button.
void click(QQuickWindow& window, QQuickItem& item);

} // namespace daywyn::test
