#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QTimer>

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Instant.h"
#include "model/AppPreferences.h"
#include "model/TaskItem.h"
#include "reminders/NotificationMessages.h"
#include "reminders/NotificationRequest.h"
#include "store/TodayTaskStore.h"

class QDBusServiceWatcher;

namespace daywyn {

// Daywyn's system notifications over the desktop's notification server
// (org.freedesktop.Notifications). The server cannot schedule, so the manager keeps
// the pending requests itself, in a file that survives a restart, and delivers each
// from one main-thread timer armed for the earliest. Clicks on the end-of-block
// actions finish or extend the task through the store; a click on the notification
// shows the drawer. Only signals about notifications this process sent are acted on.
class NotificationManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString authorizationStatus READ authorizationStatus NOTIFY authorizationChanged)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY messagesChanged)
    Q_PROPERTY(QString actionMessage READ actionMessage NOTIFY messagesChanged)

public:
    // A request fallen due while Daywyn was closed is delivered at start when it is
    // less than this late, and dropped otherwise.
    static constexpr double kLateDeliveryLimitSeconds = 3600.0;

    // One request waiting for its moment.
    struct Pending {
        std::string identifier;
        std::string title;
        std::string body;
        std::optional<std::string> category;
        Instant fireAt;
        std::optional<Uuid> taskId;
        bool operator==(const Pending&) const = default;
    };

    // statePath: the pending requests' file (see defaultStatePath). bus: where the
    // notification server is reached.
    NotificationManager(TodayTaskStore& store, Calendar calendar, Clock clock, QString statePath,
                        QDBusConnection bus, QObject* parent = nullptr);
    ~NotificationManager() override;

    // `$XDG_STATE_HOME/Daywyn/notifications.json`, `~/.local/state/...` without it.
    static QString defaultStatePath();

    // Loads the pending requests kept by the last run (delivering those fallen due
    // within the hour, dropping older ones), asks the server what it can do, listens
    // for its signals and reconciles with the store. `showDrawer` answers a click on a
    // notification (none: the click does nothing).
    void configure(std::function<void()> showDrawer);

    // Makes the pending set what the rules want for these tasks and preferences at
    // now. A pending "daywyn.task." request whose wanted moment moved (the task's
    // start or reminder changed) is replaced, so the reminder follows the task.
    void refreshSchedules(const std::vector<TaskItem>& tasks, const AppPreferences& preferences,
                          Instant now);
    // Delivers whatever fell due and re-arms the timer from the wall clock; the
    // timer's clock stands still while the machine sleeps.
    void catchUp();

    // "daywyn.manual-test", three seconds from now.
    Q_INVOKABLE void sendTestNotification();
    // The settings switches: turning one on needs a notification server.
    Q_INVOKABLE void setTaskRemindersEnabled(bool enabled);
    Q_INVOKABLE void setBudgetNotificationsEnabled(bool enabled);
    Q_INVOKABLE void setScheduledEndAlertsEnabled(bool enabled);
    Q_INVOKABLE void setUnfinishedReminderCadence(int minutes);
    Q_INVOKABLE void setDailyReviewEnabled(bool enabled);

    // "authorized" while a notification server owns or can be started for the bus
    // name, "denied" otherwise (asked again on every call).
    Q_INVOKABLE void refreshAuthorizationStatus();
    bool hasAuthorization() const { return authorized_; }
    QString authorizationStatus() const;
    QString errorMessage() const { return errorMessage_; }
    QString actionMessage() const { return actionMessage_; }

    // What is waiting, earliest first; when the timer fires next (absent: idle).
    std::vector<Pending> pending() const;
    std::optional<Instant> nextDelivery() const;
    // Whether the server's answer to GetCapabilities has arrived, and its "actions".
    bool capabilitiesKnown() const { return capabilitiesKnown_; }
    bool serverShowsActions() const { return serverActions_; }

Q_SIGNALS:
    void authorizationChanged();
    void messagesChanged();
    void capabilitiesChanged();
    // A request was handed to the server (for logs and tests): when it was due and
    // when it went out.
    void delivered(const QString& identifier, double fireAt, double deliveredAt);
    // The server answered an action or click of ours and the store has been told.
    void responseHandled(const QString& identifier, const QString& action);

private Q_SLOTS:
    void onActionInvoked(uint id, const QString& action);
    void onNotificationClosed(uint id, uint reason);

private:
    // A notification on screen: the server's id belongs to the server process that
    // answered (its unique bus name); another server process reuses ids.
    struct Sent {
        std::string identifier;
        std::optional<Uuid> taskId;
        QString server;
    };

    void queryCapabilities();
    void load();
    // Absent on success, else the system's reason.
    std::optional<std::string> save();
    void arm();
    void deliverDue();
    void deliver(const Pending& request, Instant now);
    void setPreference(NotificationPreference preference, bool enabled,
                       const std::function<void(AppPreferences&)>& change);
    void setError(const std::string& text);
    void setAction(const std::string& text);
    void recordMark(const NotificationRequest& request);

    TodayTaskStore& store_;
    Calendar calendar_;
    Clock clock_;
    QString statePath_;
    QDBusConnection bus_;
    std::function<void()> showDrawer_;
    QDBusServiceWatcher* serverWatcher_ = nullptr;
    std::map<std::string, Pending> pending_;
    std::map<uint, Sent> sent_;
    QTimer timer_;
    bool configured_ = false;
    bool authorized_ = false;
    bool capabilitiesKnown_ = false;
    bool serverActions_ = false;
    bool reconciling_ = false;
    QString errorMessage_;
    QString actionMessage_;
};

} // namespace daywyn
