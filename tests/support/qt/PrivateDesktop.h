#pragma once

#include <memory>

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace daywyn::test {

// A private X server (Xvfb) with the openbox window manager, for tests that need real
// windows, focus and window-manager hints. Test programs run in parallel, and a server
// that is shutting down can still hold the display number a new one picks; such a
// start is retried with a fresh server.
class PrivateDesktop {
public:
    explicit PrivateDesktop(QString screenSize);
    ~PrivateDesktop();

    // True once the window manager answers on the display.
    bool ready() const { return ready_; }
    // What went wrong when not ready: the servers' own words.
    QString failure() const { return failure_; }
    // ":N"
    QString display() const { return display_; }
    // The test process's environment with DISPLAY set to the private display.
    QProcessEnvironment environment() const { return environment_; }

    // Runs a tool on the private display; its standard output, trimmed.
    QString run(const QString& program, const QStringList& args) const;

private:
    bool start(const QString& screenSize);
    void stop();

    std::unique_ptr<QProcess> server_;
    std::unique_ptr<QProcess> windowManager_;
    QString display_;
    QProcessEnvironment environment_;
    QString failure_;
    bool ready_ = false;
};

} // namespace daywyn::test
