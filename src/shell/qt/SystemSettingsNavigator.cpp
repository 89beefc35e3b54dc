#include "shell/qt/SystemSettingsNavigator.h"

#include <QProcess>
#include <QStandardPaths>

namespace daywyn {

SystemSettingsNavigator::SystemSettingsNavigator(QObject* parent)
    : SystemSettingsNavigator(
          [](const QString& program, const QStringList& arguments) {
              // startDetached reports a missing program, not one that starts and then
              // fails; looking the program up first keeps the message honest on a
              // desktop that has none of them.
              return !QStandardPaths::findExecutable(program).isEmpty() &&
                     QProcess::startDetached(program, arguments);
          },
          parent) {}

SystemSettingsNavigator::SystemSettingsNavigator(Launcher launcher, QObject* parent)
    : QObject(parent)
    , launcher_(std::move(launcher)) {}

bool SystemSettingsNavigator::open(SystemSettingsDestination destination) {
    const auto commands = SystemSettingsCommands::forDestination(
        destination, qEnvironmentVariable("XDG_CURRENT_DESKTOP").toStdString());
    for (const auto& command : commands) {
        QStringList arguments;
        for (std::size_t i = 1; i < command.size(); ++i) {
            arguments << QString::fromStdString(command[i]);
        }
        if (launcher_(QString::fromStdString(command[0]), arguments)) {
            return true;
        }
    }
    return false;
}

bool SystemSettingsNavigator::open(const QString& destination) {
    if (destination == QLatin1String("microphone")) {
        return open(SystemSettingsDestination::microphone);
    }
    if (destination == QLatin1String("speechRecognition")) {
        return open(SystemSettingsDestination::speechRecognition);
    }
    if (destination == QLatin1String("calendars")) {
        return open(SystemSettingsDestination::calendars);
    }
    if (destination == QLatin1String("notifications")) {
        return open(SystemSettingsDestination::notifications);
    }
    return false;
}

QString SystemSettingsNavigator::failureMessage() const {
    return QString::fromStdString(SystemSettingsCommands::failureMessage());
}

} // namespace daywyn
