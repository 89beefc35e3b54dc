#include "persistence/qt/UserSettings.h"

#include "persistence/XdgPaths.h"

namespace daywyn {

UserSettings::UserSettings(const QString& filePath, QObject* parent)
    : QObject(parent)
    , settings_(filePath, QSettings::IniFormat) {}

QString UserSettings::defaultFilePath() {
    // With no home folder at all, a relative name: the settings still work for the run.
    const auto folder = daywynFolder(XdgBase::config);
    return folder ? QString::fromStdString(folder.value()) + QStringLiteral("/Daywyn.conf")
                  : QStringLiteral("Daywyn.conf");
}

bool UserSettings::boolValue(const QString& key, bool fallback) const {
    const QVariant value = settings_.value(key);
    // INI stores booleans as the words true and false; anything else is not a choice the
    // user made, so the default stands.
    const QString word = value.toString().trimmed().toLower();
    if (word == QLatin1String("true") || word == QLatin1String("1")) {
        return true;
    }
    if (word == QLatin1String("false") || word == QLatin1String("0")) {
        return false;
    }
    return fallback;
}

QString UserSettings::stringValue(const QString& key, const QString& fallback) const {
    return settings_.value(key, fallback).toString();
}

void UserSettings::setValue(const QString& key, const QVariant& value) {
    settings_.setValue(key, value);
    settings_.sync();
    Q_EMIT valueChanged(key);
}

} // namespace daywyn
