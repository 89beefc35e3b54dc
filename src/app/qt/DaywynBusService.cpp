#include "shell/qt/DaywynBusService.h"

#include "base/Text.h"
#include "shell/CommandLine.h"
#include "shell/qt/AppEnvironment.h"
#include "shell/qt/EdgePanelController.h"
#include "shell/qt/QuickCaptureController.h"

namespace daywyn {

DaywynBusService::DaywynBusService(AppEnvironment& environment, VerbRunner runVerb, QObject* parent)
    : QObject(parent)
    , environment_(environment)
    , runVerb_(std::move(runVerb)) {}

void DaywynBusService::Show() {
    environment_.drawerController().show();
}
void DaywynBusService::Hide() {
    environment_.drawerController().hide();
}
void DaywynBusService::Toggle() {
    environment_.drawerController().toggle();
}
void DaywynBusService::QuickAdd() {
    environment_.quickCapture().show();
}

int DaywynBusService::AddTask(const QString& title, const QString& startIso, QString& message) {
    TaskDraft draft;
    draft.title = title.toStdString();
    if (!startIso.isEmpty()) {
        const auto start = parseIsoText(startIso.toStdString());
        if (!start) {
            message = QStringLiteral("The start time must look like 2026-03-04T08:15:00Z.");
            return 2;
        }
        draft.hasScheduledStart = true;
        draft.scheduledStart = *start;
    }
    if (const auto problem = environment_.store().addTaskReliably(draft, environment_.now(),
                                                                  environment_.calendar())) {
        message = QString::fromStdString(*problem);
        return 1;
    }
    message = QStringLiteral("Added %1 to Daywyn.")
                  .arg(QString::fromStdString(trimWhitespace(draft.title)));
    return 0;
}

int DaywynBusService::run(const char* verb, const QStringList& args, QString& out, QString& err) {
    std::vector<std::string> words{verb};
    for (const QString& arg : args) {
        words.push_back(arg.toStdString());
    }
    const CommandOutput result = runVerb_(words);
    out = QString::fromStdString(result.out);
    err = QString::fromStdString(result.err);
    return result.status;
}

int DaywynBusService::Add(const QStringList& args, QString& out, QString& err) {
    return run("add", args, out, err);
}
int DaywynBusService::Done(const QStringList& args, QString& out, QString& err) {
    return run("done", args, out, err);
}
int DaywynBusService::Reopen(const QStringList& args, QString& out, QString& err) {
    return run("reopen", args, out, err);
}
int DaywynBusService::Start(const QStringList& args, QString& out, QString& err) {
    return run("start", args, out, err);
}
int DaywynBusService::Stop(const QStringList& args, QString& out, QString& err) {
    return run("stop", args, out, err);
}
int DaywynBusService::Pin(const QStringList& args, QString& out, QString& err) {
    return run("pin", args, out, err);
}
int DaywynBusService::Delete(const QStringList& args, QString& out, QString& err) {
    return run("delete", args, out, err);
}
int DaywynBusService::Report(const QStringList& args, QString& out, QString& err) {
    return run("report", args, out, err);
}

} // namespace daywyn
