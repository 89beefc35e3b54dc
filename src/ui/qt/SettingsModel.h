#pragma once

#include <functional>

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "store/TodayTaskStore.h"

namespace daywyn {

class UserSettings;

// What the settings window's pages show and change: the preferences that travel with
// the tasks (through the store, saved at once), the machine's own appearance setting,
// the completed-task history, the saved reports, data export and the about facts.
// Every text it returns is a whole sentence for the page to show.
class SettingsModel : public QObject {
    Q_OBJECT
    // A plain value to the screens (var), which read its keys by name.
    Q_PROPERTY(QVariant preferences READ preferences NOTIFY changed)
    Q_PROPERTY(QVariantList anchors READ anchors CONSTANT)
    Q_PROPERTY(QString appearance READ appearance WRITE setAppearance NOTIFY appearanceChanged)
    Q_PROPERTY(QVariantList reports READ reports NOTIFY changed)
    Q_PROPERTY(QVariantList completedTasks READ completedTasks NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY messageChanged)
    Q_PROPERTY(QString version READ version CONSTANT)
    Q_PROPERTY(QString dataFilePath READ dataFilePath CONSTANT)
    Q_PROPERTY(QString settingsFilePath READ settingsFilePath CONSTANT)

public:
    SettingsModel(TodayTaskStore& store, const Calendar& calendar, Clock clock,
                  UserSettings& settings, QString dataFilePath, QObject* parent = nullptr);
    ~SettingsModel() override;

    // The store's preferences by field name ("edgeAnchor" as its raw value,
    // "unfinishedReminderCadence" in minutes).
    QVariantMap preferences() const;
    // Changes one preference; a value out of range is refused with a sentence in
    // message and nothing is saved. True when stored.
    Q_INVOKABLE bool setPreference(const QString& name, const QVariant& value);

    // The eight drawer positions: {value, label} in the order the page lists them.
    QVariantList anchors() const;

    // "light", "dark" or "system", written to the settings file; the screens take it
    // up the next time Daywyn starts.
    QString appearance() const;
    void setAppearance(const QString& appearance);

    // Newest day first: {day, generated, completed, unfinished, lines}.
    QVariantList reports() const;
    // Newest first: {title, completed}.
    QVariantList completedTasks() const;

    // Runs the report generation now and says what came of it.
    Q_INVOKABLE void generateDueReport();
    // Writes the export to `path` (a local path or file: URL) atomically and says
    // "Export saved to <name>." or "Export failed: <reason>.". True when saved.
    Q_INVOKABLE bool exportData(bool asCsv, const QString& path);
    // The save dialog did not appear: says so, and how to export without it.
    Q_INVOKABLE void exportDialogFailed(bool asCsv);

    // A switch kept in this machine's settings file (the drawer pop-outs'), or
    // `fallback` when it was never set; setting it writes the file at once.
    Q_INVOKABLE bool userSwitch(const QString& key, bool fallback) const;
    Q_INVOKABLE void setUserSwitch(const QString& key, bool on);
    // A whole number in this machine's settings file (the pop-outs' active hours).
    Q_INVOKABLE int userNumber(const QString& key, int fallback) const;
    Q_INVOKABLE void setUserNumber(const QString& key, int value);

    QString message() const { return message_; }
    Q_INVOKABLE void clearMessage() { setMessage({}); }

    QString version() const;
    QString dataFilePath() const { return dataFilePath_; }
    QString settingsFilePath() const;

Q_SIGNALS:
    void changed();
    void appearanceChanged();
    void messageChanged();

private:
    void setMessage(const QString& message);

    TodayTaskStore& store_;
    const Calendar& calendar_;
    Clock clock_;
    UserSettings& settings_;
    QString dataFilePath_;
    QString message_;
    TodayTaskStore::ObserverId observer_ = 0;
};

} // namespace daywyn
