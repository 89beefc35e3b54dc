#include "calendar/qt/CalendarManager.h"

#include <algorithm>

#include <QDesktopServices>
#include <QPointer>
#include <QUrl>
#include <QVariantMap>

#include "base/Uuid.h"
#include "calendar/CalendarReading.h"
#include "store/TodayTaskStore.h"

namespace daywyn {

CalendarManager::CalendarManager(CalendarSource& source, Calendar calendar, Clock clock,
                                 QObject* parent)
    : QObject(parent)
    , source_(source)
    , calendar_(std::move(calendar))
    , clock_(std::move(clock)) {
    changeDelay_.setSingleShot(true);
    changeDelay_.setInterval(200);
    connect(&changeDelay_, &QTimer::timeout, this, &CalendarManager::refresh);
    source_.setChangeHandler([this] { changeDelay_.start(); });
}

CalendarManager::~CalendarManager() {
    source_.setChangeHandler({});
}

void CalendarManager::configure(TodayTaskStore* store) {
    store_ = store;
    refresh();
}

bool CalendarManager::integrationEnabled() const {
    return store_ != nullptr && store_->preferences().calendarIntegrationEnabled;
}

std::vector<std::string> CalendarManager::selectedIdentifiers() const {
    return store_ != nullptr ? store_->preferences().selectedCalendarIdentifiers
                             : std::vector<std::string>{};
}

void CalendarManager::refresh() {
    refreshEvents(clock_());
}

void CalendarManager::publishEmpty() {
    // A read still under way must not bring the lists back.
    ++generation_;
    pendingGeneration_ = 0;
    requestedDay_.reset();
    calendars_.clear();
    todayEvents_.clear();
    mergeEvents();
    Q_EMIT changed();
}

void CalendarManager::refreshEvents(Instant day) {
    if (!integrationEnabled()) {
        publishEmpty();
        return;
    }
    const auto interval = calendarDay(day, calendar_);
    if (!interval) {
        return;
    }
    const unsigned generation = ++generation_;
    pendingGeneration_ = generation;
    requestedDay_ = interval->start;
    ++readsStarted_;
    QPointer<CalendarManager> self = this;
    const DayInterval span = *interval;
    source_.read(CalendarQuery{span, selectedIdentifiers()},
                 [self, generation, span](CalendarSnapshot snapshot) {
                     if (!self || generation != self->generation_) {
                         return;
                     }
                     self->apply(std::move(snapshot), span);
                 });
    Q_EMIT changed();
}

void CalendarManager::apply(CalendarSnapshot snapshot, DayInterval day) {
    pendingGeneration_ = 0;
    if (!integrationEnabled()) {
        publishEmpty();
        return;
    }
    status_ = snapshot.status;
    errorMessage_ = snapshot.errorMessage;
    if (status_ != CalendarAccessStatus::fullAccess) {
        calendars_.clear();
        todayEvents_.clear();
    } else {
        calendars_ = calendarChoices(snapshot.calendars);
        todayEvents_ = dayEventItems(snapshot, selectedIdentifiers(), day,
                                     [] { return Uuid::random().text(); });
    }
    displayedDay_ = day.start;
    mergeEvents();
    Q_EMIT changed();
}

void CalendarManager::setOtherEvents(std::vector<CalendarEventItem> events) {
    otherEvents_ = std::move(events);
    mergeEvents();
    Q_EMIT changed();
}

void CalendarManager::mergeEvents() {
    std::vector<CalendarEventItem> all = todayEvents_;
    all.insert(all.end(), otherEvents_.begin(), otherEvents_.end());
    mergedEvents_ = CalendarEventItem::deduplicated(std::move(all));
}

void CalendarManager::refreshIfDayChanged(Instant now) {
    if (!integrationEnabled()) {
        return;
    }
    const Instant today = calendar_.startOfDay(now);
    const auto shown = requestedDay_ ? requestedDay_ : displayedDay_;
    if (shown && *shown == today) {
        return;
    }
    refreshEvents(now);
}

void CalendarManager::setIntegrationEnabled(bool enabled) {
    if (store_ == nullptr) {
        return;
    }
    errorMessage_.reset();
    if (store_->preferences().calendarIntegrationEnabled != enabled) {
        store_->updatePreferences([enabled](AppPreferences& preferences) {
            preferences.calendarIntegrationEnabled = enabled;
        });
    }
    refresh();
}

void CalendarManager::setCalendarSelected(const QString& id, bool selected) {
    if (store_ == nullptr || id.isEmpty()) {
        return;
    }
    const std::string calendarId = id.toStdString();
    const auto& current = store_->preferences().selectedCalendarIdentifiers;
    const bool present = std::find(current.begin(), current.end(), calendarId) != current.end();
    if (present != selected) {
        store_->updatePreferences([&](AppPreferences& preferences) {
            auto& ids = preferences.selectedCalendarIdentifiers;
            if (selected) {
                ids.push_back(calendarId);
            } else {
                ids.erase(std::remove(ids.begin(), ids.end(), calendarId), ids.end());
            }
        });
    }
    refresh();
}

bool CalendarManager::openLink(const QString& link) {
    CalendarEventItem probe;
    probe.url = link.toStdString();
    const auto safe = meetingLink(probe);
    if (!safe) {
        return false;
    }
    return QDesktopServices::openUrl(QUrl(QString::fromStdString(*safe), QUrl::StrictMode));
}

QString CalendarManager::authorizationStatusText() const {
    return QString::fromUtf8(rawValue(status_));
}

QVariantList CalendarManager::calendarGroups() const {
    const auto selected = selectedIdentifiers();
    QVariantList groups;
    QVariantMap group;
    QVariantList members;
    QString currentSource;
    const auto flush = [&] {
        if (!members.isEmpty()) {
            group.insert(QStringLiteral("sourceTitle"), currentSource);
            group.insert(QStringLiteral("calendars"), members);
            groups.append(group);
        }
        group.clear();
        members.clear();
    };
    for (const auto& choice : calendars_) {
        const QString source = QString::fromStdString(choice.sourceTitle);
        if (source != currentSource || members.isEmpty()) {
            flush();
            currentSource = source;
        }
        QVariantMap row;
        row.insert(QStringLiteral("id"), QString::fromStdString(choice.id));
        row.insert(QStringLiteral("title"), QString::fromStdString(choice.title));
        row.insert(QStringLiteral("colorHex"), QString::fromStdString(choice.colorHex));
        row.insert(QStringLiteral("selected"),
                   std::find(selected.begin(), selected.end(), choice.id) != selected.end());
        members.append(row);
    }
    flush();
    return groups;
}

QVariantList CalendarManager::todayEventRows() const {
    QVariantList rows;
    for (const auto& event : mergedEvents_) {
        QVariantMap row;
        row.insert(QStringLiteral("id"), QString::fromStdString(event.id));
        row.insert(QStringLiteral("title"), QString::fromStdString(event.title));
        row.insert(QStringLiteral("colorHex"), QString::fromStdString(event.colorHex));
        row.insert(QStringLiteral("calendarTitle"), QString::fromStdString(event.calendarTitle));
        row.insert(QStringLiteral("timeText"),
                   QString::fromStdString(eventTimeSpanText(event, calendar_)));
        row.insert(QStringLiteral("isAllDay"), event.isAllDay);
        const auto link = meetingLink(event);
        row.insert(QStringLiteral("link"), link ? QString::fromStdString(*link) : QString());
        rows.append(row);
    }
    return rows;
}

QString CalendarManager::errorMessageText() const {
    return errorMessage_ ? QString::fromStdString(*errorMessage_) : QString();
}

QStringList CalendarManager::explanations() const {
    QStringList texts;
    // The first read after turning on is still under way: nothing is known to explain.
    if (isLoading() && status_ == CalendarAccessStatus::notDetermined) {
        return texts;
    }
    for (const auto& text :
         calendarExplanations(status_, integrationEnabled(), calendars_, selectedIdentifiers())) {
        texts << QString::fromStdString(text);
    }
    return texts;
}

} // namespace daywyn
