#include "reminders/qt/NotificationManager.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "persistence/AtomicFile.h"
#include "persistence/PosixFileSystem.h"
#include "persistence/XdgPaths.h"
#include "reminders/DesiredNotifications.h"
#include "reminders/NotificationChanges.h"
#include "reminders/PendingNotificationFile.h"

namespace daywyn {
namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kInterface = QStringLiteral("org.freedesktop.Notifications");
// QTimer takes an int of milliseconds; a later moment is reached in several steps.
constexpr double kLongestWaitMilliseconds = 6.0 * 3600.0 * 1000.0;

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

bool startsWith(const std::string& text, std::string_view prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

NotificationManager::Pending pendingOf(const NotificationRequest& request) {
    return {request.identifier, request.title,  request.body,
            request.category,   request.fireAt, request.taskId};
}

PendingNotificationEntry entryOf(const NotificationManager::Pending& p) {
    return {p.identifier, p.title, p.body, p.category, p.fireAt.seconds, p.taskId};
}

NotificationManager::Pending pendingOf(const PendingNotificationEntry& e) {
    return {e.identifier, e.title, e.body, e.category, Instant{e.fireAt}, e.taskId};
}

} // namespace

NotificationManager::NotificationManager(TodayTaskStore& store, Calendar calendar, Clock clock,
                                         QString statePath, QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , store_(store)
    , calendar_(std::move(calendar))
    , clock_(std::move(clock))
    , statePath_(std::move(statePath))
    , bus_(std::move(bus)) {
    timer_.setSingleShot(true);
    // A reminder is a promise about a moment: no coalescing with other wake-ups.
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &NotificationManager::deliverDue);
}

NotificationManager::~NotificationManager() = default;

QString NotificationManager::defaultStatePath() {
    // With no home folder at all, a relative name: delivery still works for the run.
    const auto folder = daywynFolder(XdgBase::state);
    return (folder ? QString::fromStdString(folder.value()) : QStringLiteral("Daywyn")) +
           QStringLiteral("/notifications.json");
}

void NotificationManager::configure(std::function<void()> showDrawer) {
    showDrawer_ = std::move(showDrawer);
    if (configured_) {
        return;
    }
    configured_ = true;
    if (bus_.isConnected()) {
        // Filtered by the server's name here and by our own ids in the slots.
        bus_.connect(kService, kPath, kInterface, QStringLiteral("ActionInvoked"), this,
                     SLOT(onActionInvoked(uint, QString)));
        bus_.connect(kService, kPath, kInterface, QStringLiteral("NotificationClosed"), this,
                     SLOT(onNotificationClosed(uint, uint)));
        serverWatcher_ = new QDBusServiceWatcher(kService, bus_,
                                                 QDBusServiceWatcher::WatchForRegistration, this);
        // A server that starts after Daywyn (a slow session start) gets what waits.
        connect(serverWatcher_, &QDBusServiceWatcher::serviceRegistered, this, [this] {
            refreshAuthorizationStatus();
            queryCapabilities();
            refreshSchedules(store_.tasks(), store_.preferences(), clock_());
        });
    }
    refreshAuthorizationStatus();
    queryCapabilities();
    load();
    refreshSchedules(store_.tasks(), store_.preferences(), clock_());
}

void NotificationManager::queryCapabilities() {
    if (!bus_.isConnected()) {
        return;
    }
    // Asked without waiting: the server may be slow to start, and a blocking call
    // would stall the drawer.
    const QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface,
                                                             QStringLiteral("GetCapabilities"));
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* w) {
        const QDBusPendingReply<QStringList> reply = *w;
        if (reply.isValid()) {
            capabilitiesKnown_ = true;
            serverActions_ = reply.value().contains(QStringLiteral("actions"));
            Q_EMIT capabilitiesChanged();
        }
        w->deleteLater();
    });
}

void NotificationManager::refreshAuthorizationStatus() {
    bool authorized = false;
    if (bus_.isConnected()) {
        // Both questions go to the bus itself, never to the server, so they are quick.
        QDBusConnectionInterface* daemon = bus_.interface();
        authorized = daemon->isServiceRegistered(kService).value();
        if (!authorized) {
            authorized = daemon->activatableServiceNames().value().contains(kService);
        }
    }
    if (authorized != authorized_) {
        authorized_ = authorized;
        Q_EMIT authorizationChanged();
    }
}

QString NotificationManager::authorizationStatus() const {
    return authorized_ ? QStringLiteral("authorized") : QStringLiteral("denied");
}

void NotificationManager::load() {
    QFile file(statePath_);
    if (!file.exists()) {
        return;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        setError("The pending reminders could not be read: " + file.errorString().toStdString() +
                 ". They will be planned again from your tasks.");
        return;
    }
    const QByteArray bytes = file.readAll();
    file.close();
    auto decoded = PendingNotificationFile::decode(
        std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    if (!decoded) {
        // Kept aside for a look, never overwritten: the rules plan everything again.
        const QString aside = statePath_ + QStringLiteral(".unreadable");
        QFile::remove(aside);
        QFile::rename(statePath_, aside);
        setError("The pending reminders file is not valid JSON (" + decoded.error() +
                 "); it was moved to " + aside.toStdString() +
                 " and the reminders are planned again from your tasks.");
        return;
    }
    const Instant now = clock_();
    std::vector<Pending> late;
    for (const PendingNotificationEntry& entry : decoded->pending) {
        const Pending p = pendingOf(entry);
        if (p.fireAt > now) {
            pending_[p.identifier] = p;
        } else if (now - p.fireAt < kLateDeliveryLimitSeconds) {
            late.push_back(p);
        }
    }
    // Notifications still on screen from the last run keep their actions, as long as
    // the same server process shows them.
    const QString server =
        bus_.isConnected() ? bus_.interface()->serviceOwner(kService).value() : QString();
    for (const ShownNotificationEntry& shown : decoded->shown) {
        const QString owner = QString::fromStdString(shown.server);
        // An id that is no notification id (hand-edited, say) is dropped, not converted.
        if (server.isEmpty() || owner != server || !(shown.id >= 0.0) ||
            shown.id > static_cast<double>(std::numeric_limits<uint>::max())) {
            continue;
        }
        sent_[static_cast<uint>(shown.id)] = Sent{shown.identifier, shown.taskId, owner};
    }
    std::sort(late.begin(), late.end(),
              [](const Pending& a, const Pending& b) { return a.fireAt < b.fireAt; });
    // Saved before delivering: a crash now must not show them again at the next start.
    save();
    for (const Pending& p : late) {
        deliver(p, now);
    }
    arm();
}

std::optional<std::string> NotificationManager::save() {
    QDir().mkpath(QFileInfo(statePath_).absolutePath());
    PendingNotificationFile file;
    for (const Pending& p : pending()) {
        file.pending.push_back(entryOf(p));
    }
    for (const auto& [id, sent] : sent_) {
        file.shown.push_back(
            {static_cast<double>(id), sent.identifier, sent.server.toStdString(), sent.taskId});
    }
    PosixFileSystem fs;
    // Private like the state file: it holds the titles of the user's tasks.
    if (auto written = writeFileAtomically(fs, statePath_.toStdString(), file.encode(), 0600);
        !written) {
        return written.error();
    }
    return std::nullopt;
}

void NotificationManager::refreshSchedules(const std::vector<TaskItem>& tasks,
                                           const AppPreferences& preferences, Instant now) {
    if (!authorized_ || reconciling_) {
        return;
    }
    reconciling_ = true;
    DesiredNotifications desired = desiredNotifications(tasks, preferences, now, calendar_);
    // We hold absolute fire times, so a task reminder whose start or reminder moved
    // while it waited is replaced: the reminder follows the task.
    for (const NotificationRequest& r : desired.requests) {
        const auto it = pending_.find(r.identifier);
        if (startsWith(r.identifier, "daywyn.task.") && it != pending_.end() &&
            std::abs(it->second.fireAt - r.fireAt) >= 1.0) {
            pending_.erase(it);
        }
    }
    std::vector<std::string> pendingIds;
    for (const auto& entry : pending_) {
        pendingIds.push_back(entry.first);
    }
    const NotificationChanges changes = reconcileNotifications(std::move(desired), pendingIds);
    std::vector<NotificationRequest> added;
    for (const NotificationRequest& r : changes.toAdd) {
        pending_[r.identifier] = pendingOf(r);
        added.push_back(r);
    }
    for (const std::string& identifier : changes.toRemove) {
        pending_.erase(identifier);
    }
    if (!added.empty() || !changes.toRemove.empty()) {
        if (const auto failure = save()) {
            // The requests still fire while Daywyn runs; only a restart would lose them.
            setError(std::string(kScheduleFailedPrefix) + *failure);
        }
    }
    arm();
    reconciling_ = false;
    // Each mark saves the store, whose listener reconciles again and finds these
    // requests pending.
    for (const NotificationRequest& r : added) {
        recordMark(r);
    }
}

void NotificationManager::recordMark(const NotificationRequest& request) {
    if (!request.taskId) {
        return;
    }
    switch (request.mark) {
    case NotificationMark::nothing:
        break;
    case NotificationMark::taskReminderDate:
        if (request.markedDate) {
            store_.markTaskReminderScheduled(*request.taskId, *request.markedDate);
        }
        break;
    case NotificationMark::budgetAlert:
        if (request.markedBudgetAlert) {
            store_.markBudgetAlertScheduled(*request.markedBudgetAlert, *request.taskId);
        }
        break;
    case NotificationMark::overdueEnd:
        if (request.markedDate) {
            store_.markOverdueEndScheduled(*request.taskId, *request.markedDate);
        }
        break;
    }
}

std::vector<NotificationManager::Pending> NotificationManager::pending() const {
    std::vector<Pending> result;
    for (const auto& entry : pending_) {
        result.push_back(entry.second);
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const Pending& a, const Pending& b) { return a.fireAt < b.fireAt; });
    return result;
}

std::optional<Instant> NotificationManager::nextDelivery() const {
    if (!timer_.isActive() || pending_.empty()) {
        return std::nullopt;
    }
    return pending().front().fireAt;
}

void NotificationManager::arm() {
    if (pending_.empty()) {
        timer_.stop();
        return;
    }
    const Instant earliest = pending().front().fireAt;
    const double wait =
        std::clamp(std::ceil((earliest - clock_()) * 1000.0), 0.0, kLongestWaitMilliseconds);
    timer_.start(static_cast<int>(wait));
}

void NotificationManager::catchUp() {
    deliverDue();
}

void NotificationManager::deliverDue() {
    const Instant now = clock_();
    std::vector<Pending> due;
    for (auto it = pending_.begin(); it != pending_.end();) {
        if (it->second.fireAt <= now) {
            due.push_back(it->second);
            it = pending_.erase(it);
        } else {
            ++it;
        }
    }
    if (!due.empty()) {
        std::sort(due.begin(), due.end(),
                  [](const Pending& a, const Pending& b) { return a.fireAt < b.fireAt; });
        // Out of the file before they go out: a crash must not repeat them.
        save();
        for (const Pending& p : due) {
            deliver(p, now);
        }
    }
    arm();
}

void NotificationManager::deliver(const Pending& request, Instant now) {
    QString body = qs(request.body);
    QStringList actions;
    // The "default" action is the click on the notification itself.
    actions << QString::fromLatin1(kDefaultAction.data(), qsizetype(kDefaultAction.size()))
            << QStringLiteral("Show Daywyn");
    const bool endActions = request.category && *request.category == kEndActionsCategory;
    if (endActions) {
        if (serverActions_) {
            for (const auto& [key, label] : kEndActions) {
                actions << QString::fromLatin1(key.data(), qsizetype(key.size()))
                        << QString::fromLatin1(label.data(), qsizetype(label.size()));
            }
        } else {
            body +=
                QStringLiteral(" Open the Daywyn drawer to finish the task or give it more time.");
        }
    }
    if (!serverActions_) {
        actions.clear();
    }
    QVariantMap hints;
    hints[QStringLiteral("desktop-entry")] = QStringLiteral("daywyn");
    hints[QStringLiteral("sound-name")] = QStringLiteral("message-new-instant");
    hints[QStringLiteral("urgency")] = QVariant::fromValue(uchar(1));
    if (request.category) {
        hints[QStringLiteral("x-daywyn-category")] = qs(*request.category);
    }

    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Notify"));
    call << QStringLiteral("Daywyn") << uint(0) << QStringLiteral("daywyn") << qs(request.title)
         << body << actions << hints << int(-1);
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    const Sent sent{request.identifier, request.taskId, QString()};
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, sent](QDBusPendingCallWatcher* w) {
                const QDBusPendingReply<uint> reply = *w;
                if (reply.isValid()) {
                    Sent shown = sent;
                    shown.server = w->reply().service();
                    sent_[reply.value()] = shown;
                    save();
                } else {
                    setError("A reminder could not be shown: " +
                             reply.error().message().toStdString());
                }
                w->deleteLater();
            });
    Q_EMIT delivered(qs(request.identifier), request.fireAt.seconds, clock_().seconds);
    // The review reminder is the moment the day's report is due: make it now, so the
    // drawer has it when the user follows the notification.
    if (startsWith(request.identifier, kReviewIdentifierPrefix)) {
        store_.generateDueReportIfNeeded(now, calendar_);
    }
}

void NotificationManager::onActionInvoked(uint id, const QString& action) {
    const auto it = sent_.find(id);
    // The signal comes from whoever owns the server's name now; an id handed out by
    // an earlier server process means some other notification.
    if (it == sent_.end() ||
        it->second.server != bus_.interface()->serviceOwner(kService).value()) {
        return;
    }
    const Sent sent = it->second;
    const NotificationResponse response = notificationResponse(
        action.toStdString(), sent.taskId ? sent.taskId->text() : std::string());
    const Instant now = clock_();
    switch (response.kind) {
    case NotificationResponse::Kind::ignore:
        break;
    case NotificationResponse::Kind::showDrawer:
        if (showDrawer_) {
            showDrawer_();
        }
        break;
    case NotificationResponse::Kind::finishTask:
        store_.completeTask(*response.taskId, now, calendar_);
        break;
    case NotificationResponse::Kind::extendEnd:
        store_.extendScheduledEnd(*response.taskId, response.minutes, now, calendar_);
        break;
    }
    Q_EMIT responseHandled(qs(sent.identifier), action);
}

void NotificationManager::onNotificationClosed(uint id, uint /*reason*/) {
    if (sent_.erase(id) > 0) {
        save();
    }
}

void NotificationManager::sendTestNotification() {
    refreshAuthorizationStatus();
    if (!authorized_) {
        setError(std::string(kTestNotAllowedMessage));
        return;
    }
    const NotificationRequest request = testNotificationRequest(clock_());
    pending_[request.identifier] = pendingOf(request);
    arm();
    if (const auto failure = save()) {
        setError(std::string(kTestFailedPrefix) + *failure);
        return;
    }
    setAction(std::string(kTestScheduledMessage));
}

void NotificationManager::setPreference(NotificationPreference preference, bool enabled,
                                        const std::function<void(AppPreferences&)>& change) {
    if (enabled) {
        refreshAuthorizationStatus();
        if (!authorized_) {
            setError(std::string(kNotificationsOffMessage));
            return;
        }
    }
    store_.updatePreferences(change);
    setAction(std::string(preferenceMessage(preference, enabled)));
    refreshSchedules(store_.tasks(), store_.preferences(), clock_());
}

void NotificationManager::setTaskRemindersEnabled(bool enabled) {
    setPreference(NotificationPreference::taskReminders, enabled,
                  [enabled](AppPreferences& p) { p.taskRemindersEnabled = enabled; });
}

void NotificationManager::setBudgetNotificationsEnabled(bool enabled) {
    setPreference(NotificationPreference::budgetAlerts, enabled,
                  [enabled](AppPreferences& p) { p.budgetNotificationsEnabled = enabled; });
}

void NotificationManager::setScheduledEndAlertsEnabled(bool enabled) {
    setPreference(NotificationPreference::endAlerts, enabled,
                  [enabled](AppPreferences& p) { p.scheduledEndAlertsEnabled = enabled; });
}

void NotificationManager::setUnfinishedReminderCadence(int minutes) {
    const auto cadence = cadenceFromRaw(minutes);
    if (!cadence) {
        setError("A nudge every " + std::to_string(minutes) +
                 " minutes is not offered; choose off, 30, 60 or 120 minutes.");
        return;
    }
    setPreference(NotificationPreference::unfinishedCadence,
                  *cadence != UnfinishedReminderCadence::off,
                  [c = *cadence](AppPreferences& p) { p.unfinishedReminderCadence = c; });
}

void NotificationManager::setDailyReviewEnabled(bool enabled) {
    setPreference(NotificationPreference::dailyReview, enabled,
                  [enabled](AppPreferences& p) { p.dailyReviewEnabled = enabled; });
}

void NotificationManager::setError(const std::string& text) {
    errorMessage_ = qs(text);
    actionMessage_.clear();
    Q_EMIT messagesChanged();
}

void NotificationManager::setAction(const std::string& text) {
    actionMessage_ = qs(text);
    errorMessage_.clear();
    Q_EMIT messagesChanged();
}

} // namespace daywyn
