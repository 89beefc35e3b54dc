#pragma once

#include <QObject>
#include <QSettings>
#include <QString>
#include <QVariant>

namespace daywyn {

// The settings that stay on this machine and do not travel with the tasks (quick capture
// on or off, the appearance, whether onboarding ran, the drawer reminders' switches and
// memory): one INI file, by default $XDG_CONFIG_HOME/Daywyn/Daywyn.conf, and the one
// object in the app that opens it. Every change is written to the file at once.
class UserSettings : public QObject {
    Q_OBJECT

public:
    explicit UserSettings(const QString& filePath, QObject* parent = nullptr);

    // $XDG_CONFIG_HOME/Daywyn/Daywyn.conf (~/.config when the variable is unset).
    static QString defaultFilePath();

    QString filePath() const { return settings_.fileName(); }
    bool contains(const QString& key) const { return settings_.contains(key); }
    // The stored value, or `fallback` when the key is absent or not a boolean.
    bool boolValue(const QString& key, bool fallback) const;
    QString stringValue(const QString& key, const QString& fallback = {}) const;
    QVariant value(const QString& key, const QVariant& fallback = {}) const {
        return settings_.value(key, fallback);
    }
    void setValue(const QString& key, const QVariant& value);

Q_SIGNALS:
    void valueChanged(const QString& key);

private:
    QSettings settings_;
};

} // namespace daywyn
