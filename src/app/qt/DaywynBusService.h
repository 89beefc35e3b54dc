#pragma once

#include <functional>
#include <string>
#include <vector>

#include <QObject>
#include <QString>
#include <QStringList>

namespace daywyn {

class AppEnvironment;
struct CommandOutput;

// The running app's D-Bus interface (org.daywyn.Daywyn at /org/daywyn/Daywyn): a second
// launch shows the drawer through it, and the command line forwards every writing verb
// to it so the app stays the only writer of the state file. Calls arrive on the main
// thread and answer with the same output the command line would print.
class DaywynBusService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.daywyn.Daywyn")

public:
    static constexpr const char* serviceName = "org.daywyn.Daywyn";
    static constexpr const char* objectPath = "/org/daywyn/Daywyn";

    // Runs one command-line verb (args[0] is the verb) on the app's own store; the app
    // passes runCommand over its store, clock and calendar.
    using VerbRunner = std::function<CommandOutput(const std::vector<std::string>& args)>;

    DaywynBusService(AppEnvironment& environment, VerbRunner runVerb, QObject* parent = nullptr);

public Q_SLOTS:
    void Show();
    void Hide();
    void Toggle();
    // Opens the floating Quick Add panel in front of whatever is open.
    void QuickAdd();
    // Adds a task titled exactly as typed (not parsed), starting at startIso when given
    // ("2026-03-04T08:15:00Z"). Status 0 with "Added <title> to Daywyn.", else 1 or 2
    // with the sentence to show.
    int AddTask(const QString& title, const QString& startIso, QString& message);
    int Add(const QStringList& args, QString& out, QString& err);
    int Done(const QStringList& args, QString& out, QString& err);
    int Reopen(const QStringList& args, QString& out, QString& err);
    int Start(const QStringList& args, QString& out, QString& err);
    int Stop(const QStringList& args, QString& out, QString& err);
    int Pin(const QStringList& args, QString& out, QString& err);
    int Delete(const QStringList& args, QString& out, QString& err);
    int Report(const QStringList& args, QString& out, QString& err);

private:
    int run(const char* verb, const QStringList& args, QString& out, QString& err);

    AppEnvironment& environment_;
    VerbRunner runVerb_;
};

} // namespace daywyn
