#include "ui/qt/SettingsModel.h"

#include <cmath>

#include <QFileInfo>
#include <QUrl>

#include "base/Version.h"
#include "persistence/AtomicFile.h"
#include "persistence/PosixFileSystem.h"
#include "persistence/TaskDataExport.h"
#include "persistence/qt/UserSettings.h"
#include "ui/qt/DisplayFormat.h"

namespace daywyn {
namespace {

const QString appearanceKey = QStringLiteral("appearance");

QString anchorLabel(EdgeAnchor anchor) {
    switch (anchor) {
    case EdgeAnchor::topLeft:
        return QStringLiteral("Top left");
    case EdgeAnchor::topCenter:
        return QStringLiteral("Top centre");
    case EdgeAnchor::topRight:
        return QStringLiteral("Top right");
    case EdgeAnchor::rightCenter:
        return QStringLiteral("Right centre");
    case EdgeAnchor::bottomRight:
        return QStringLiteral("Bottom right");
    case EdgeAnchor::bottomCenter:
        return QStringLiteral("Bottom centre");
    case EdgeAnchor::bottomLeft:
        return QStringLiteral("Bottom left");
    case EdgeAnchor::leftCenter:
        return QStringLiteral("Left centre");
    }
    return {};
}

QString minutesText(double seconds) {
    return QStringLiteral("%1 min").arg(static_cast<long long>(std::floor(seconds / 60)));
}

// A whole number in [low, high], or nothing.
std::optional<int> wholeNumber(const QVariant& value, int low, int high) {
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok || number != std::floor(number) || number < low || number > high) {
        return std::nullopt;
    }
    return static_cast<int>(number);
}

} // namespace

SettingsModel::SettingsModel(TodayTaskStore& store, const Calendar& calendar, Clock clock,
                             UserSettings& settings, QString dataFilePath, QObject* parent)
    : QObject(parent)
    , store_(store)
    , calendar_(calendar)
    , clock_(std::move(clock))
    , settings_(settings)
    , dataFilePath_(std::move(dataFilePath)) {
    observer_ = store_.addObserver([this] { Q_EMIT changed(); });
}

SettingsModel::~SettingsModel() {
    store_.removeObserver(observer_);
}

QVariantMap SettingsModel::preferences() const {
    const AppPreferences& p = store_.preferences();
    return {
        {QStringLiteral("taskRemindersEnabled"), p.taskRemindersEnabled},
        {QStringLiteral("budgetNotificationsEnabled"), p.budgetNotificationsEnabled},
        {QStringLiteral("scheduledEndAlertsEnabled"), p.scheduledEndAlertsEnabled},
        {QStringLiteral("budgetWarningLeadMinutes"), p.budgetWarningLeadMinutes},
        {QStringLiteral("endWarningLeadMinutes"), p.endWarningLeadMinutes},
        {QStringLiteral("defaultTaskMinutes"), p.defaultTaskMinutes},
        {QStringLiteral("unfinishedReminderCadence"), rawValue(p.unfinishedReminderCadence)},
        {QStringLiteral("activeHoursStart"), p.activeHoursStart},
        {QStringLiteral("activeHoursEnd"), p.activeHoursEnd},
        {QStringLiteral("dailyReviewEnabled"), p.dailyReviewEnabled},
        {QStringLiteral("dailyReviewHour"), p.dailyReviewHour},
        {QStringLiteral("dailyReviewMinute"), p.dailyReviewMinute},
        {QStringLiteral("calendarIntegrationEnabled"), p.calendarIntegrationEnabled},
        {QStringLiteral("edgeAnchor"),
         QString::fromLatin1(rawValue(p.edgeAnchor).data(),
                             static_cast<int>(rawValue(p.edgeAnchor).size()))},
    };
}

bool SettingsModel::setPreference(const QString& name, const QVariant& value) {
    std::function<void(AppPreferences&)> change;
    QString problem;
    auto flag = [&](bool AppPreferences::*field) {
        const bool on = value.toBool();
        change = [field, on](AppPreferences& p) {
            p.*field = on;
        };
    };
    auto number = [&](int AppPreferences::*field, int low, int high, const QString& what) {
        const auto n = wholeNumber(value, low, high);
        if (!n) {
            problem = QStringLiteral("%1 must be a whole number from %2 to %3.")
                          .arg(what)
                          .arg(low)
                          .arg(high);
            return;
        }
        change = [field, n](AppPreferences& p) {
            p.*field = *n;
        };
    };
    if (name == QLatin1String("taskRemindersEnabled")) {
        flag(&AppPreferences::taskRemindersEnabled);
    } else if (name == QLatin1String("budgetNotificationsEnabled")) {
        flag(&AppPreferences::budgetNotificationsEnabled);
    } else if (name == QLatin1String("scheduledEndAlertsEnabled")) {
        flag(&AppPreferences::scheduledEndAlertsEnabled);
    } else if (name == QLatin1String("dailyReviewEnabled")) {
        flag(&AppPreferences::dailyReviewEnabled);
    } else if (name == QLatin1String("calendarIntegrationEnabled")) {
        flag(&AppPreferences::calendarIntegrationEnabled);
    } else if (name == QLatin1String("defaultTaskMinutes")) {
        number(&AppPreferences::defaultTaskMinutes, 1, 720, QStringLiteral("The default estimate"));
    } else if (name == QLatin1String("budgetWarningLeadMinutes")) {
        number(&AppPreferences::budgetWarningLeadMinutes, 1, 120,
               QStringLiteral("The warning lead"));
    } else if (name == QLatin1String("endWarningLeadMinutes")) {
        number(&AppPreferences::endWarningLeadMinutes, 1, 120, QStringLiteral("The warning lead"));
    } else if (name == QLatin1String("activeHoursStart")) {
        number(&AppPreferences::activeHoursStart, 0, 23, QStringLiteral("The first active hour"));
    } else if (name == QLatin1String("activeHoursEnd")) {
        number(&AppPreferences::activeHoursEnd, 1, 24, QStringLiteral("The last active hour"));
    } else if (name == QLatin1String("dailyReviewHour")) {
        number(&AppPreferences::dailyReviewHour, 0, 23, QStringLiteral("The review hour"));
    } else if (name == QLatin1String("dailyReviewMinute")) {
        number(&AppPreferences::dailyReviewMinute, 0, 59, QStringLiteral("The review minute"));
    } else if (name == QLatin1String("unfinishedReminderCadence")) {
        const auto cadence = cadenceFromRaw(value.toLongLong());
        if (!cadence) {
            problem = QStringLiteral("Choose off, every 30 minutes, hourly or every 2 hours.");
        } else {
            change = [cadence](AppPreferences& p) {
                p.unfinishedReminderCadence = *cadence;
            };
        }
    } else if (name == QLatin1String("edgeAnchor")) {
        const auto anchor = edgeAnchorFromRaw(value.toString().toStdString());
        if (!anchor) {
            problem = QStringLiteral("Choose one of the eight drawer positions.");
        } else {
            change = [anchor](AppPreferences& p) {
                p.edgeAnchor = *anchor;
            };
        }
    } else {
        problem = QStringLiteral("Daywyn has no setting called %1.").arg(name);
    }
    if (!change) {
        setMessage(problem);
        Q_EMIT changed();
        return false;
    }
    setMessage({});
    store_.updatePreferences(change);
    return true;
}

QVariantList SettingsModel::anchors() const {
    QVariantList list;
    for (const EdgeAnchor anchor : kAllAnchors) {
        const std::string_view raw = rawValue(anchor);
        list.append(QVariantMap{{QStringLiteral("value"),
                                 QString::fromLatin1(raw.data(), static_cast<int>(raw.size()))},
                                {QStringLiteral("label"), anchorLabel(anchor)}});
    }
    return list;
}

QString SettingsModel::appearance() const {
    const QString stored = settings_.stringValue(appearanceKey);
    return stored == QLatin1String("light") || stored == QLatin1String("dark")
               ? stored
               : QStringLiteral("system");
}

void SettingsModel::setAppearance(const QString& appearance) {
    const QString value =
        appearance == QLatin1String("light") || appearance == QLatin1String("dark")
            ? appearance
            : QStringLiteral("system");
    if (value == this->appearance() && settings_.contains(appearanceKey)) {
        return;
    }
    settings_.setValue(appearanceKey, value);
    Q_EMIT appearanceChanged();
}

QVariantList SettingsModel::reports() const {
    QVariantList list;
    for (const DailyReport& report : store_.reports()) {
        QStringList lines;
        for (const DailyTaskSummary& task : report.tasks) {
            QString line =
                (task.wasComplete ? QStringLiteral("Done: ") : QStringLiteral("Open: ")) +
                QString::fromStdString(task.title) + QStringLiteral(" · ") +
                minutesText(task.actualSeconds);
            if (task.estimatedMinutes) {
                line += QStringLiteral(" of %1 min").arg(*task.estimatedMinutes);
            }
            lines << line;
        }
        list.append(QVariantMap{
            {QStringLiteral("day"), DisplayFormat::dayTitle(report.day, calendar_)},
            {QStringLiteral("completed"), static_cast<int>(report.completedItems().size())},
            {QStringLiteral("unfinished"), static_cast<int>(report.unfinishedItems().size())},
            {QStringLiteral("lines"), lines}});
    }
    return list;
}

QVariantList SettingsModel::completedTasks() const {
    QVariantList list;
    const Instant now = clock_();
    for (const TaskItem* task : store_.completedTaskHistory()) {
        list.append(QVariantMap{{QStringLiteral("title"), QString::fromStdString(task->title)},
                                {QStringLiteral("completed"),
                                 task->completedAt
                                     ? DisplayFormat::dateTime(*task->completedAt, now, calendar_)
                                     : QString()}});
    }
    return list;
}

void SettingsModel::generateDueReport() {
    const auto report = store_.generateDueReportIfNeeded(clock_(), calendar_);
    setMessage(report ? QStringLiteral("The review for %1 is ready below.")
                            .arg(DisplayFormat::dayTitle(report->day, calendar_))
                      : QStringLiteral("No review is due now."));
}

bool SettingsModel::exportData(bool asCsv, const QString& path) {
    const QUrl url(path);
    const QString localPath = url.isLocalFile() ? url.toLocalFile() : path;
    TaskDataExport data;
    data.exportedAt = clock_();
    data.tasks = store_.tasks();
    data.reports = store_.reports();
    PosixFileSystem files;
    const Status written =
        writeFileAtomically(files, localPath.toStdString(), asCsv ? data.csv() : data.json());
    if (!written) {
        setMessage(QString::fromStdString(exportFailedMessage(written.error())));
        return false;
    }
    setMessage(QString::fromStdString(exportSavedMessage(localPath.toStdString())));
    return true;
}

bool SettingsModel::userSwitch(const QString& key, bool fallback) const {
    return settings_.boolValue(key, fallback);
}

void SettingsModel::setUserSwitch(const QString& key, bool on) {
    settings_.setValue(key, on);
}

int SettingsModel::userNumber(const QString& key, int fallback) const {
    bool ok = false;
    const int value = settings_.stringValue(key).toInt(&ok);
    return ok ? value : fallback;
}

void SettingsModel::setUserNumber(const QString& key, int value) {
    settings_.setValue(key, value);
}

QString SettingsModel::version() const {
    return QString::fromStdString(versionLine());
}

QString SettingsModel::settingsFilePath() const {
    return settings_.filePath();
}

void SettingsModel::exportDialogFailed(bool asCsv) {
    setMessage(QStringLiteral("The save dialog could not open, so nothing was exported. In a "
                              "terminal, run: daywyn export %1 ~/Daywyn-export.%2")
                   .arg(asCsv ? QStringLiteral("--csv") : QStringLiteral("--json"),
                        asCsv ? QStringLiteral("csv") : QStringLiteral("json")));
}

void SettingsModel::setMessage(const QString& message) {
    if (message != message_) {
        message_ = message;
        Q_EMIT messageChanged();
    }
}

} // namespace daywyn
